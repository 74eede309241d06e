// Numbers as most files hold them, "-12.5" or "3e-7", read eight digits at a time. All else is left
// to std::from_chars, whose results these are, to the last bit.
#pragma once

#include <array>
#include <bit>
#include <cfloat>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <system_error>

namespace kelvo {

/// Reads a number at `at`; returns what is behind it, or null where there is none or it does not
/// fit.
template <typename Number>
const char* read_by_library(const char* at, const char* end, Number* number) {
  const auto result = std::from_chars(at, end, *number);
  return result.ec == std::errc() ? result.ptr : nullptr;
}

constexpr bool is_digit(char byte) { return byte >= '0' && byte <= '9'; }

/// How many of the eight bytes are digits, before the first other one. The sum sets the top bit of
/// a byte over '9', the difference that of one under '0'; what they carry goes to later bytes only.
constexpr unsigned count_digits(std::uint64_t bytes) {
  const std::uint64_t others =
      ((bytes + 0x4646464646464646U) | (bytes - 0x3030303030303030U)) & 0x8080808080808080U;
  return static_cast<unsigned>(std::countr_zero(others)) / 8;
}

/// The number of eight decimal digits, the first in the lowest byte: pairs of digits become one
/// number, then pairs of those, then the two halves.
constexpr std::uint64_t join_digits(std::uint64_t digits) {
  digits = (digits & 0x0F0F0F0F0F0F0F0FU) * (10 * (1U << 8U) + 1) >> 8U;
  digits = (digits & 0x00FF00FF00FF00FFU) * (100 * (1U << 16U) + 1) >> 16U;
  return (digits & 0x0000FFFF0000FFFFU) * (10000 * (std::uint64_t{1} << 32U) + 1) >> 32U;
}

/// Reads digits behind those that `value` is made of already; returns what is behind them. The
/// value is right as long as there are not more than 19.
inline const char* read_digits(const char* at, const char* end, std::uint64_t* value) {
  constexpr std::array<std::uint64_t, 8> powers = {1,      10,      100,       1000,
                                                   10'000, 100'000, 1'000'000, 10'000'000};
  while (std::endian::native == std::endian::little && end - at >= 8) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, at, sizeof bytes);
    const unsigned count = count_digits(bytes);
    if (count == 8) {
      *value = *value * 100'000'000 + join_digits(bytes);
      at += 8;
      continue;
    }
    // Others are shifted out; the zeros that come in are digits before the first.
    const std::uint64_t digits = bytes << 8 * (7 - count) << 8U;
    *value = *value * powers[count] + join_digits(digits);
    return at + count;
  }
  for (; at < end && is_digit(*at); ++at) *value = *value * 10 + static_cast<unsigned>(*at - '0');
  return at;
}

/// As read_by_library.
template <std::integral Number>
const char* read_plain_number(const char* at, const char* end, Number* number) {
  constexpr std::ptrdiff_t most_digits = 18;  // fit any 64 bits
  const bool negative = std::is_signed_v<Number> && at < end && *at == '-';
  const char* const digits = at + (negative ? 1 : 0);
  std::uint64_t size = 0;
  const char* const behind = read_digits(digits, end, &size);
  const auto largest = static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
  if (behind == digits || behind - digits > most_digits || size > largest + (negative ? 1 : 0))
    return read_by_library(at, end, number);
  *number = static_cast<Number>(negative ? ~size + 1 : size);
  return behind;
}

/// A decimal number without its sign: the digits as an integer, times a power of ten.
struct Decimal {
  std::uint64_t digits = 0;
  std::int64_t exponent = 0;
  const char* behind = nullptr;  // null where it is not plain, or has more than 19 digits
};

/// Moves `at` behind an exponent if one is there; its value, or one out of all range.
inline std::int64_t read_exponent(const char** at, const char* end) {
  const char* sign = *at + 1;
  if (sign >= end || (**at != 'e' && **at != 'E')) return 0;
  const char* const digits = sign + (*sign == '-' || *sign == '+' ? 1 : 0);
  std::uint64_t size = 0;
  const char* const behind = read_digits(digits, end, &size);
  if (behind == digits || behind - digits > 4) return std::numeric_limits<std::int32_t>::max();
  *at = behind;
  return *sign == '-' ? -static_cast<std::int64_t>(size) : static_cast<std::int64_t>(size);
}

inline Decimal read_decimal(const char* at, const char* end) {
  constexpr std::ptrdiff_t most_digits = 19;  // fit 64 bits
  Decimal decimal;
  const char* const point = read_digits(at, end, &decimal.digits);
  const char* behind = point;
  if (point < end && *point == '.') {
    behind = read_digits(point + 1, end, &decimal.digits);
    decimal.exponent = point + 1 - behind;
  }
  if (point == at || behind - at > most_digits + (behind > point ? 1 : 0)) return decimal;
  decimal.exponent += read_exponent(&behind, end);
  decimal.behind = behind;
  return decimal;
}

/// Scales an integer by a power of ten that is exact in the type, in one operation, which rounds
/// as IEEE 754 says.
template <typename Real, std::size_t size>
Real scaled(std::uint64_t digits, std::int64_t exponent, const std::array<Real, size>& powers) {
  const auto number = static_cast<Real>(digits);
  return exponent < 0 ? number / powers[static_cast<std::size_t>(-exponent)]
                      : number * powers[static_cast<std::size_t>(exponent)];
}

template <typename Real, std::size_t size>
constexpr std::array<Real, size> powers_of_ten() {
  std::array<Real, size> powers{};
  Real power = 1;
  for (Real& one : powers) {
    one = power;
    power *= 10;
  }
  return powers;
}

// The bits of a number's significand, as the lowest of the result.
inline std::uint64_t significand_bits(double number) {
  return std::bit_cast<std::uint64_t>(number);
}
inline std::uint64_t significand_bits(long double number) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

/// Rounds what was rounded once already to a wider type. That is rounding at once, unless the wide
/// number lies just between two of the narrow type, where it may have come to lie by its rounding.
template <typename Real, typename Wide>
bool narrow(Wide wide, Real* number) {
  constexpr int dropped = std::numeric_limits<Wide>::digits - std::numeric_limits<Real>::digits;
  constexpr std::uint64_t half = std::uint64_t{1} << (dropped - 1);
  if ((significand_bits(wide) & (2 * half - 1)) == half) return false;
  *number = static_cast<Real>(wide);
  return true;
}

// Integers and powers of ten up to these are exact in the types, and one operation on them rounds
// once. False where it cannot be done so.
inline bool round_decimal(const Decimal& decimal, double* number) {
  constexpr std::int64_t most = 22;
  constexpr std::int64_t most_extended = 27;
  static constexpr auto powers = powers_of_ten<double, most + 1>();
  if (decimal.digits <= std::uint64_t{1} << 53U && decimal.exponent >= -most &&
      decimal.exponent <= most) {
    *number = scaled(decimal.digits, decimal.exponent, powers);
    return true;
  }
  if constexpr (std::numeric_limits<long double>::digits == 64) {
    static constexpr auto extended = powers_of_ten<long double, most_extended + 1>();
    if (decimal.exponent >= -most_extended && decimal.exponent <= most_extended)
      return narrow(scaled(decimal.digits, decimal.exponent, extended), number);
  }
  return false;
}

inline bool round_decimal(const Decimal& decimal, float* number) {
  constexpr std::int64_t most = 22;
  static constexpr auto powers = powers_of_ten<double, most + 1>();
  if (decimal.digits > std::uint64_t{1} << 53U || decimal.exponent < -most ||
      decimal.exponent > most)
    return false;
  // Neither too large nor so small that a single has fewer bits for it: from 1e-22 to 1e38.
  return narrow(scaled(decimal.digits, decimal.exponent, powers), number);
}

/// As read_by_library.
template <std::floating_point Number>
const char* read_plain_number(const char* at, const char* end, Number* number) {
  // Machines that calculate in wider types than they store round twice.
  constexpr bool rounds_once = FLT_EVAL_METHOD == 0;
  // Signs are random, and a branch would be mispredicted.
  static constexpr Number signs[] = {1, -1};
  const bool negative = at < end && *at == '-';
  const Decimal decimal = read_decimal(at + (negative ? 1 : 0), end);
  if (!rounds_once || decimal.behind == nullptr || !round_decimal(decimal, number))
    return read_by_library(at, end, number);
  *number *= signs[negative ? 1 : 0];
  return decimal.behind;
}

/// A reader (import/field.h) of the type's numbers.
template <typename Number>
const char* read_number(const char* at, const char* end, std::byte* element) {
  Number number{};
  const char* const behind = read_plain_number(at, end, &number);
  if (behind != nullptr) std::memcpy(element, &number, sizeof number);
  return behind;
}

}  // namespace kelvo
