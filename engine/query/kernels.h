// The loops of the evaluator: each works on columns of up to batch_size values of one type, so that
// the compiler can vectorise it and its operands stay in the first-level cache.
#pragma once

#include <cstddef>
#include <cstdint>

#include "language/expression.h"

namespace kelvo {

/// What the values of a column are: int64_t, uint64_t, double or string_view. Integers that fit
/// BIGINT are signed ones, whatever their type in the file.
enum class Domain { signed_integer, unsigned_integer, real, text };

constexpr std::size_t batch_size = 1024;

/// One byte a value: 1 for true, 0 for false.
using Mask = std::uint8_t;

/// out[i] = left[i] compared with right[i]. Numbers of different domains compare by their exact
/// values; a NAN is unequal to everything.
using CompareKernel = void (*)(const void* left, const void* right, std::size_t count, Mask* out);

/// Null where text would be compared with a number.
CompareKernel compare_kernel(Comparison comparison, Domain left, Domain right);

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

/// How many values of a mask are true.
std::size_t count_true(const Mask* mask, std::size_t count);

/// Whether one of them is.
bool any_true(const Mask* mask, std::size_t count);

/// mask[i] = mask[i] and other[i].
void keep_true(const Mask* other, std::size_t count, Mask* mask);

/// mask[i] = mask[i] or other[i].
void add_true(const Mask* other, std::size_t count, Mask* mask);

/// mask[i] = mask[i] and not other[i].
void take_true(const Mask* other, std::size_t count, Mask* mask);

}  // namespace kelvo
