// The header of NumPy's .npy format, versions 1 to 3.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "values/type.h"

namespace kelvo {

/// What a file holds. In `type` the orders are those of the bytes in the file, reals may have 2
/// bytes, and varying text stands for characters of 4 bytes each (NumPy's "U").
struct NpyArray {
  Type type;
  std::vector<std::uint64_t> shape;
  bool columns_first = false;  // Fortran order; never of one dimension, where both are the same
};

/// Reads the header at the start of `file` and leaves the file at its first element. Throws
/// StatementError where the file is no .npy file, or one of a type that is not read.
NpyArray read_npy_header(std::FILE* file, const std::string& path);

/// An array of elements of the type, one after the other.
Type npy_array_of(Type base, std::vector<std::uint64_t> extents);

}  // namespace kelvo
