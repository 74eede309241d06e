// Calculating, one instance of a loop for each operator and combination of domains.
#include "query/arithmetic_kernel.h"

#include <cmath>
#include <concepts>
#include <type_traits>
#include <utility>

namespace kelvo {
namespace {

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

}  // namespace kelvo
