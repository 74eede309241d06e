// Columns: the values of a batch of elements side by side, all of one type. Loops over them stay in
// the first-level cache, and the compiler can vectorise them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "values/type.h"

namespace kelvo {

/// What the values of a column are: int64_t, uint64_t, double or string_view. Integers that fit
/// BIGINT are signed ones, whatever their type in the file.
enum class Domain { signed_integer, unsigned_integer, real, text };

template <typename Value>
constexpr Domain domain_of = std::is_same_v<Value, double>          ? Domain::real
                             : std::is_same_v<Value, std::int64_t>  ? Domain::signed_integer
                             : std::is_same_v<Value, std::uint64_t> ? Domain::unsigned_integer
                                                                    : Domain::text;

/// Calls `function` with a zero of the type that the values of a domain of numbers have.
template <typename Function>
auto with_number_of(Domain domain, const Function& function) {
  if (domain == Domain::signed_integer) return function(std::int64_t{});
  if (domain == Domain::unsigned_integer) return function(std::uint64_t{});
  return function(double{});
}

/// The type of a calculated value: BIGINT, UNSIGNED BIGINT or DOUBLE.
Type type_of_domain(Domain domain);

/// The most values in a column.
constexpr std::size_t batch_size = 1024;

template <typename Value>
using Column = std::array<Value, batch_size>;

}  // namespace kelvo
