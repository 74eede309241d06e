// Comparing, one instance of a loop for each comparison and combination of domains.
#include "query/compare_kernel.h"

#include <cmath>
#include <compare>
#include <concepts>
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

}  // namespace

CompareKernel compare_kernel(Comparison comparison, Domain left, Domain right) {
  if (left == Domain::text && right == Domain::text)
    return kernel_of<std::string_view, std::string_view>(comparison);
  if (left == Domain::text || right == Domain::text) return nullptr;
  return with_number_of(left, [&](auto left_number) {
    return with_number_of(right, [&](auto right_number) {
      return kernel_of<decltype(left_number), decltype(right_number)>(comparison);
    });
  });
}

}  // namespace kelvo
