// Values from JSON: one array, nested as one likes, or values one after the other.
#pragma once

#include <memory>
#include <string>

#include "values/element_stream.h"

namespace kelvo {

/// Each value that is no array is an element; for lists (sequences and arrays) each array nested as
/// deeply as the type needs. An object is a compound; null is NAN or a null string, true and false
/// are 1 and 0 or the names TRUE and FALSE, opaque values are hexadecimal digits in a string.
/// `header`: the first value is not one of them.
std::unique_ptr<ElementStream> open_json(const std::string& path, const Type& type, bool header);

}  // namespace kelvo
