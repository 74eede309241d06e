// Making datasets and attributes.
#pragma once

#include <string>

#include "storage/handle.h"
#include "values/space.h"
#include "values/type.h"

namespace kelvo {

/// Makes a dataset at a free path, the missing groups on the way with it. One with room to grow is
/// chunked.
DatasetHandle create_dataset(hid_t file, const std::string& path, const Type& type,
                             const Space& space);

/// Makes an attribute that is not there yet. `shown` is its name in messages: path@name.
AttributeHandle create_attribute(hid_t object, const std::string& name, const std::string& shown,
                                 const Type& type, const Space& space);

/// The chunk shape chosen where none is given: between 64 KiB and 1 MiB, the fastest dimensions
/// whole first.
std::vector<Extent> choose_chunk(const Space& space, std::size_t element_size);

}  // namespace kelvo
