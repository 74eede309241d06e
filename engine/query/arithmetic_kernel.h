// Calculating one column from two.
#pragma once

#include <cstddef>

#include "language/expression.h"
#include "query/column.h"
#include "query/mask.h"

namespace kelvo {

enum class Fault { none, overflow, division_by_zero };

/// out[i] = left[i] combined with right[i], in the domain of the result. A fault counts only where
/// active[i] is 1; elsewhere the result is anything.
using ArithmeticKernel = Fault (*)(const void* left, const void* right, std::size_t count,
                                   const Mask* active, void* out);

/// The domain that two numbers give: DOUBLE with a DOUBLE; with unsigned BIGINT that, but signed
/// for a difference; else signed.
Domain arithmetic_domain(Arithmetic arithmetic, Domain left, Domain right);

/// Both are numbers, and both or none of them reals.
ArithmeticKernel arithmetic_kernel(Arithmetic arithmetic, Domain left, Domain right);

}  // namespace kelvo
