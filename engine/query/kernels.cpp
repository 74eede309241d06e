// Comparing and calculating, one instance of a loop for each combination of domains.
#include "query/kernels.h"

#include <algorithm>
#include <cmath>
#include <compare>
#include <concepts>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include "query/wide.h"

namespace kelvo {
namespace {

// The exact order of an integer and a double, which may have no common type that holds both.
template <std::integral Integer>
std::partial_ordering exact_order(Integer integer, double real) {
  constexpr double end = std::is_signed_v<Integer> ? 9223372036854775808.0 : 18446744073709551616.0;
  constexpr double begin = std::is_signed_v<Integer> ? -9223372036854775808.0 : 0.0;
  if (std::isnan(real)) return std::partial_ordering::unordered;
  if (real >= end) return std::partial_ordering::less;
  if (real < begin) return std::partial_ordering::greater;
  const auto whole = static_cast<Integer>(real);
  if (integer < whole) return std::partial_ordering::less;
  if (integer > whole) return std::partial_ordering::greater;
  return static_cast<double>(whole) <=> real;
}

std::partial_ordering reversed(std::partial_ordering order) {
  if (std::is_lt(order)) return std::partial_ordering::greater;
  return std::is_gt(order) ? std::partial_ordering::less : order;
}

template <Comparison comparison>
bool holds(std::partial_ordering order) {
  switch (comparison) {
    case Comparison::equal:
      return std::is_eq(order);
    case Comparison::not_equal:
      return std::is_neq(order);
    case Comparison::less:
      return std::is_lt(order);
    case Comparison::less_equal:
      return std::is_lteq(order);
    case Comparison::greater:
      return std::is_gt(order);
    case Comparison::greater_equal:
      return std::is_gteq(order);
  }
}

// Written out with the plain operators, which the compiler turns into vector instructions.
template <Comparison comparison, typename Value>
bool holds_plainly(const Value& left, const Value& right) {
  switch (comparison) {
    case Comparison::equal:
      return left == right;
    case Comparison::not_equal:
      return left != right;
    case Comparison::less:
      return left < right;
    case Comparison::less_equal:
      return left <= right;
    case Comparison::greater:
      return left > right;
    case Comparison::greater_equal:
      return left >= right;
  }
}

template <Comparison comparison, typename Left, typename Right>
bool compare(const Left& left, const Right& right) {
  if constexpr (std::same_as<Left, Right>) {
    return holds_plainly<comparison>(left, right);
  } else if constexpr (std::integral<Left> && std::integral<Right>) {
    if (std::cmp_equal(left, right)) return holds<comparison>(std::partial_ordering::equivalent);
    return holds<comparison>(std::cmp_less(left, right) ? std::partial_ordering::less
                                                        : std::partial_ordering::greater);
  } else if constexpr (std::integral<Left>) {
    return holds<comparison>(exact_order(left, right));
  } else {
    return holds<comparison>(reversed(exact_order(right, left)));
  }
}

template <Comparison comparison, typename Left, typename Right>
[[gnu::always_inline]] inline void compare_columns(const void* left, const void* right,
                                                   std::size_t count, Mask* __restrict out) {
  const auto* lefts = static_cast<const Left*>(left);
  const auto* rights = static_cast<const Right*>(right);
  for (std::size_t i = 0; i < count; ++i)
    out[i] = static_cast<Mask>(compare<comparison>(lefts[i], rights[i]));
}

template <typename Left, typename Right>
CompareKernel kernel_of(Comparison comparison) {
  switch (comparison) {
    case Comparison::equal:
      return quickest<compare_columns<Comparison::equal, Left, Right>>();
    case Comparison::not_equal:
      return quickest<compare_columns<Comparison::not_equal, Left, Right>>();
    case Comparison::less:
      return quickest<compare_columns<Comparison::less, Left, Right>>();
    case Comparison::less_equal:
      return quickest<compare_columns<Comparison::less_equal, Left, Right>>();
    case Comparison::greater:
      return quickest<compare_columns<Comparison::greater, Left, Right>>();
    case Comparison::greater_equal:
      return quickest<compare_columns<Comparison::greater_equal, Left, Right>>();
  }
  return nullptr;
}

template <typename Left>
CompareKernel number_kernel(Comparison comparison, Domain right) {
  switch (right) {
    case Domain::signed_integer:
      return kernel_of<Left, std::int64_t>(comparison);
    case Domain::unsigned_integer:
      return kernel_of<Left, std::uint64_t>(comparison);
    case Domain::real:
      return kernel_of<Left, double>(comparison);
    case Domain::text:
      break;
  }
  return nullptr;
}

// --- arithmetic ---

template <typename Integer>
std::uint64_t magnitude(Integer value) {
  const auto bits = static_cast<std::uint64_t>(value);
  return std::cmp_less(value, 0) ? 0 - bits : bits;
}

// Truncates toward zero; a remainder has the sign of the dividend.
template <Arithmetic arithmetic, typename Left, typename Right, typename Result>
Fault divide(Left left, Right right, Result* result) {
  if (right == 0) return Fault::division_by_zero;
  constexpr bool quotient = arithmetic == Arithmetic::divide;
  const std::uint64_t size =
      quotient ? magnitude(left) / magnitude(right) : magnitude(left) % magnitude(right);
  const bool negative = std::cmp_less(left, 0) != (quotient && std::cmp_less(right, 0));
  const bool overflow =
      negative ? __builtin_sub_overflow(0, size, result) : __builtin_add_overflow(0, size, result);
  return overflow ? Fault::overflow : Fault::none;
}

template <Arithmetic arithmetic, typename Left, typename Right, typename Result>
Fault calculate(Left left, Right right, Result* result) {
  bool overflow = false;
  // The builtins calculate as if with endless digits, whatever the signs of the types.
  if constexpr (arithmetic == Arithmetic::add) {
    overflow = __builtin_add_overflow(left, right, result);
  } else if constexpr (arithmetic == Arithmetic::subtract) {
    overflow = __builtin_sub_overflow(left, right, result);
  } else if constexpr (arithmetic == Arithmetic::multiply) {
    overflow = __builtin_mul_overflow(left, right, result);
  } else {
    return divide<arithmetic>(left, right, result);
  }
  return overflow ? Fault::overflow : Fault::none;
}

template <Arithmetic arithmetic>
double calculate_real(double left, double right) {
  switch (arithmetic) {
    case Arithmetic::add:
      return left + right;
    case Arithmetic::subtract:
      return left - right;
    case Arithmetic::multiply:
      return left * right;
    case Arithmetic::divide:
      return left / right;
    case Arithmetic::remainder:
      return std::fmod(left, right);
  }
}

template <Arithmetic arithmetic, typename Left, typename Right>
Fault arithmetic_columns(const void* left, const void* right, std::size_t count, const Mask* active,
                         void* out) {
  const auto* lefts = static_cast<const Left*>(left);
  const auto* rights = static_cast<const Right*>(right);
  if constexpr (std::same_as<Left, double>) {
    auto* results = static_cast<double*>(out);
    for (std::size_t i = 0; i < count; ++i)
      results[i] = calculate_real<arithmetic>(lefts[i], rights[i]);
    return Fault::none;
  } else {
    constexpr bool is_signed =
        arithmetic == Arithmetic::subtract || (std::is_signed_v<Left> && std::is_signed_v<Right>);
    auto* results = static_cast<std::conditional_t<is_signed, std::int64_t, std::uint64_t>*>(out);
    Fault fault = Fault::none;
    for (std::size_t i = 0; i < count; ++i) {
      const Fault one = calculate<arithmetic>(lefts[i], rights[i], &results[i]);
      if (one != Fault::none && active[i] != 0) fault = one;
    }
    return fault;
  }
}

template <typename Left, typename Right>
ArithmeticKernel arithmetic_of(Arithmetic arithmetic) {
  switch (arithmetic) {
    case Arithmetic::add:
      return arithmetic_columns<Arithmetic::add, Left, Right>;
    case Arithmetic::subtract:
      return arithmetic_columns<Arithmetic::subtract, Left, Right>;
    case Arithmetic::multiply:
      return arithmetic_columns<Arithmetic::multiply, Left, Right>;
    case Arithmetic::divide:
      return arithmetic_columns<Arithmetic::divide, Left, Right>;
    case Arithmetic::remainder:
      return arithmetic_columns<Arithmetic::remainder, Left, Right>;
  }
  return nullptr;
}

}  // namespace

CompareKernel compare_kernel(Comparison comparison, Domain left, Domain right) {
  switch (left) {
    case Domain::signed_integer:
      return number_kernel<std::int64_t>(comparison, right);
    case Domain::unsigned_integer:
      return number_kernel<std::uint64_t>(comparison, right);
    case Domain::real:
      return number_kernel<double>(comparison, right);
    case Domain::text:
      break;
  }
  return right == Domain::text ? kernel_of<std::string_view, std::string_view>(comparison)
                               : nullptr;
}

Domain arithmetic_domain(Arithmetic arithmetic, Domain left, Domain right) {
  if (left == Domain::real || right == Domain::real) return Domain::real;
  const bool is_signed = arithmetic == Arithmetic::subtract ||
                         (left == Domain::signed_integer && right == Domain::signed_integer);
  return is_signed ? Domain::signed_integer : Domain::unsigned_integer;
}

ArithmeticKernel arithmetic_kernel(Arithmetic arithmetic, Domain left, Domain right) {
  if (left == Domain::real) return arithmetic_of<double, double>(arithmetic);
  const bool right_signed = right == Domain::signed_integer;
  if (left == Domain::signed_integer) {
    return right_signed ? arithmetic_of<std::int64_t, std::int64_t>(arithmetic)
                        : arithmetic_of<std::int64_t, std::uint64_t>(arithmetic);
  }
  return right_signed ? arithmetic_of<std::uint64_t, std::int64_t>(arithmetic)
                      : arithmetic_of<std::uint64_t, std::uint64_t>(arithmetic);
}

namespace {

constexpr std::size_t word_size = sizeof(std::uint64_t);

// Eight values of a mask, each in a byte of its own.
std::uint64_t word_at(const Mask* mask) {
  std::uint64_t word = 0;
  std::memcpy(&word, mask, word_size);
  return word;
}

}  // namespace

std::size_t count_true(const Mask* mask, std::size_t count) {
  // As many words as their bytes can be added without an overflow into the next byte.
  constexpr std::size_t most = 255 * word_size;
  std::size_t found = 0;
  std::size_t i = 0;
  while (count - i >= word_size) {
    const std::size_t end = i + std::min(most, (count - i) / word_size * word_size);
    std::uint64_t sums = 0;
    for (; i < end; i += word_size) sums += word_at(mask + i);
    for (; sums != 0; sums >>= 8U) found += sums & 0xffU;
  }
  for (; i < count; ++i) found += mask[i];
  return found;
}

bool any_true(const Mask* mask, std::size_t count) {
  Mask found = 0;
  for (std::size_t i = 0; i < count; ++i) found |= mask[i];
  return found != 0;
}

void keep_true(const Mask* __restrict other, std::size_t count, Mask* __restrict mask) {
  for (std::size_t i = 0; i < count; ++i) mask[i] &= other[i];
}

void add_true(const Mask* __restrict other, std::size_t count, Mask* __restrict mask) {
  for (std::size_t i = 0; i < count; ++i) mask[i] |= other[i];
}

void take_true(const Mask* __restrict other, std::size_t count, Mask* __restrict mask) {
  for (std::size_t i = 0; i < count; ++i) mask[i] &= other[i] ^ 1U;
}

}  // namespace kelvo
