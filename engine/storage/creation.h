// Making datasets.
#pragma once

#include <string>

#include "storage/handle.h"
#include "values/space.h"
#include "values/storage_options.h"
#include "values/type.h"

namespace kelvo {

/// How a new dataset is stored, checked against its type and its space, and ready to be used.
/// Throws StatementError where they do not agree or a filter is not available. `path` as messages
/// show the dataset. A fill value is not set where `options` has none.
PropertyHandle storage_list(const std::string& path, const Type& type, const Space& space,
                            const StorageOptions& options);

/// Makes a dataset at a free path, the missing groups on the way with it.
DatasetHandle create_dataset(hid_t file, const std::string& path, const Type& type,
                             const Space& space, const StorageOptions& options);

/// The same of a type and a storage made elsewhere.
DatasetHandle create_dataset(hid_t file, const std::string& path, hid_t file_type,
                             const Space& space, hid_t storage);

/// The chunk shape chosen where none is given: about 256 KiB, the fastest dimensions whole first.
std::vector<Extent> choose_chunk(const Space& space, std::size_t element_size);

/// The chunk's extents of an open dataset; none where it is not chunked.
std::vector<Extent> chunk_of(hid_t dataset);

}  // namespace kelvo
