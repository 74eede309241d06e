// The header of NumPy's .npy format, versions 1 to 3.
#pragma once

#include <cstdio>
#include <string>

#include "values/type.h"

namespace kelvo {

/// Reads the header at the start of `file` and leaves the file at its first element. The result
/// describes the elements; their bytes are in the order that it says. Throws StatementError where
/// the file is no .npy file, or one of a type or order that is not read.
Type read_npy_header(std::FILE* file, const std::string& path);

}  // namespace kelvo
