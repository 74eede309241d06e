// Values from files of bytes: NumPy's .npy, and raw .bin.
#pragma once

#include <memory>
#include <string>

#include "values/element_stream.h"

namespace kelvo {

/// A NumPy array in C order, of numbers, fixed strings or a structured type; each value is
/// converted, and refused where it does not fit.
std::unique_ptr<ElementStream> open_npy(const std::string& path, const Type& type);

/// The elements as they lie in memory, little endian, without anything else. Refused for types with
/// varying parts.
std::unique_ptr<ElementStream> open_bin(const std::string& path, const Type& type);

}  // namespace kelvo
