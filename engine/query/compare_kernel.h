// Comparing two columns.
#pragma once

#include <cstddef>

#include "language/expression.h"
#include "query/column.h"
#include "query/mask.h"

namespace kelvo {

/// out[i] = left[i] compared with right[i]. Numbers of different domains compare by their exact
/// values; a NAN is unequal to everything.
using CompareKernel = void (*)(const void* left, const void* right, std::size_t count, Mask* out);

/// Null where text would be compared with a number.
CompareKernel compare_kernel(Comparison comparison, Domain left, Domain right);

}  // namespace kelvo
