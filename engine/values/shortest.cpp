// Finds the shortest decimal between the halves of the ways to a value's neighbours, by three
// multiplications with one power of ten, and writes it in the shorter of two notations.
#include "values/shortest.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>

#if defined(__SIZEOF_INT128__)
#include "digits.h"
#include "values/powers_of_ten.h"
#endif

namespace kelvo {
namespace {

// What needs care, and comes seldom.
template <typename Real>
char* write_by_library(Real value, char* text) {
  // The sign of a NAN is no part of its value.
  if (std::isnan(value)) value = std::fabs(value);
  return std::to_chars(text, text + shortest_room, value).ptr;
}

#if defined(__SIZEOF_INT128__)

constexpr PowersOfTen powers_of_ten;

// digits * 10^exponent
struct Decimal {
  std::uint64_t digits;
  int exponent;
};

// floor(log10(2^exponent)), or of three quarters of that.
int log10_of_two_to(int exponent, bool three_quarters) {
  return (exponent * 1262611 - (three_quarters ? 524031 : 0)) >> 22;
}

// number * power / 2^128, its last bit set where anything was cut off: what compares right with
// quarters stays so.
std::uint64_t scale(std::uint64_t number, PowerOfTen power) {
  const Wide low = Wide{number} * power.low;
  const Wide high = Wide{number} * power.high + static_cast<std::uint64_t>(low >> 64U);
  return static_cast<std::uint64_t>(high >> 64U) |
         (static_cast<std::uint64_t>(high) > 1 ? std::uint64_t{1} : 0);
}

// The shortest decimal for mantissa * 2^exponent. Everything is counted in quarters of a unit of
// the result, where the value and the ends of its interval are whole or known to lie between.
Decimal shortest(std::uint64_t mantissa, int exponent, bool neighbour_below_is_nearer) {
  const std::uint64_t odd = mantissa & 1U;  // the ends themselves read back only to an even one
  const int power = log10_of_two_to(exponent, neighbour_below_is_nearer);
  const int shift = exponent + log2_of_ten_to(-power) + 1;
  const PowerOfTen factor = powers_of_ten[-power];
  const std::uint64_t center = 4 * mantissa;
  const std::uint64_t value = scale(center << shift, factor);
  const std::uint64_t lower =
      scale((center - (neighbour_below_is_nearer ? 1 : 2)) << shift, factor) + odd;
  const std::uint64_t upper = scale((center + 2) << shift, factor) - odd;

  // Choices are made by arithmetic, since which it is cannot be guessed.
  const std::uint64_t below = value / 4;
  const std::uint64_t tens = below / 10;  // at most one multiple of ten lies in the interval
  const auto tens_below = std::uint64_t{lower <= 40 * tens};
  const auto tens_above = std::uint64_t{40 * tens + 40 <= upper};
  const auto below_in = std::uint64_t{lower <= 4 * below};
  const auto above_in = std::uint64_t{4 * below + 4 <= upper};
  const auto above_nearer = std::uint64_t{value % 4 + below % 2 > 2};  // of a tie, the even one
  const std::uint64_t one_in = below_in ^ above_in;
  const std::uint64_t nearest = below + ((one_in & above_in) | (~one_in & above_nearer));
  const std::uint64_t of_tens = 10 * (tens + tens_above);
  const std::uint64_t take_tens = 0 - (tens_below ^ tens_above);  // all bits or none
  return {nearest ^ ((nearest ^ of_tens) & take_tens), power};
}

// The digits of a decimal as text, with zeros behind the last one.
struct Digits {
  char first;
  Wide others;  // 16 of them, the next one in the lowest byte
  int count;    // without those zeros
  int before;   // digits before the point; negative: zeros between the point and the first digit
};

constexpr int most_digits = 17;

// Of a decimal of 16 or 17 digits.
Digits spread(Decimal decimal) {
  const auto is_short = std::uint64_t{decimal.digits < ten_to_16};
  const std::uint64_t number = decimal.digits + (9 * decimal.digits & (0 - is_short));
  const std::uint64_t rest = number % ten_to_16;
  const std::uint64_t high = eight_digits(static_cast<std::uint32_t>(rest / ten_to_8));
  const std::uint64_t low = eight_digits(static_cast<std::uint32_t>(rest % ten_to_8));
  // The last digit is in the highest byte.
  const int zeros = low != 0 ? std::countl_zero(low) / 8 : 8 + std::countl_zero(high) / 8;
  return {static_cast<char>('0' + number / ten_to_16),
          Wide{low + eight_zeros} << 64U | (high + eight_zeros), most_digits - zeros,
          decimal.exponent + most_digits - static_cast<int>(is_short)};
}

void store(Wide bytes, char* text) { std::memcpy(text, &bytes, sizeof bytes); }

constexpr std::array zeros_to_come = {'0', '.', '0', '0', '0'};

// With a point among the digits, or with "0.", up to three zeros and then the digits. One way for
// both, since which of them it is can often not be guessed either.
char* write_point(const Digits& digits, char* text) {
  const bool begins = digits.before <= 0;
  const int before = begins ? 1 : digits.before;
  std::memcpy(text, zeros_to_come.data(), zeros_to_come.size());
  char* number = text + (begins ? 2 - digits.before : 0);
  *number = digits.first;
  store(digits.others, number + 1);
  text[before] = '.';
  store(digits.others >> (8 * (before - 1)), number + before + (begins ? 0 : 1));
  return number + digits.count + (begins ? 0 : 1);
}

char* write_whole(const Digits& digits, char* text) {
  *text = digits.first;
  store(digits.others, text + 1);
  return text + digits.before;
}

char* write_exponent(const Digits& digits, char* text) {
  *text++ = digits.first;
  *text = '.';
  store(digits.others, text + 1);
  text += digits.count > 1 ? digits.count : 0;
  const int exponent = digits.before - 1;
  *text++ = 'e';
  *text++ = exponent < 0 ? '-' : '+';
  const auto size = static_cast<std::uint32_t>(std::abs(exponent));
  if (size < 10) *text++ = '0';
  return write_number(text, size);
}

template <typename Real>
struct Layout {
  using Bits = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;
  static constexpr int fraction_bits = std::numeric_limits<Real>::digits - 1;
  static constexpr Bits first_bit = Bits{1} << fraction_bits;  // of a mantissa, not stored
  static constexpr Bits most_exponent = 2 * std::numeric_limits<Real>::max_exponent - 1;
  static constexpr int exponent_of_one = std::numeric_limits<Real>::max_exponent - 1;
};

template <typename Real>
Decimal decimal_of(Real size) {
  using Parts = Layout<Real>;
  const auto bits = std::bit_cast<typename Parts::Bits>(size);
  const auto exponent = static_cast<int>(bits >> Parts::fraction_bits);
  const auto fraction = bits & (Parts::first_bit - 1);
  constexpr int of_last_bit = 1 - Parts::exponent_of_one - Parts::fraction_bits;
  Decimal decimal = shortest(fraction | (exponent == 0 ? 0 : Parts::first_bit),
                             of_last_bit + std::max(exponent - 1, 0),
                             /*neighbour_below_is_nearer=*/fraction == 0 && exponent > 1);
  // Floats have 7 to 9 digits, and the smallest numbers fewer than others.
  if (sizeof(Real) < sizeof(double)) decimal = {decimal.digits * ten_to_8, decimal.exponent - 8};
  for (; decimal.digits < ten_to_16 / 10; --decimal.exponent) decimal.digits *= 10;
  return decimal;
}

template <typename Real>
char* write(Real value, char* text) {
  const Real size = std::fabs(value);
  if (!(size > 0 && size <= std::numeric_limits<Real>::max())) return write_by_library(value, text);
  const Digits digits = spread(decimal_of(size));
  *text = '-';  // always stored, and only sometimes kept
  char* begin = text;
  text += std::signbit(value) ? 1 : 0;
  // The shorter notation, that without an exponent where both are as long.
  const int longest = digits.count + (digits.count > 1 ? 5 : 4);
  const int before = digits.before;
  if (before < digits.count && digits.count + 2 - before <= longest)
    return write_point(digits, text);
  if (before <= 0 || before > longest) return write_exponent(digits, text);
  // The library gives all digits of whole numbers, those too that need not be right to read back.
  constexpr auto first_inexact = static_cast<Real>(std::uint64_t{2} << Layout<Real>::fraction_bits);
  return size < first_inexact ? write_whole(digits, text) : write_by_library(value, begin);
}

#else

template <typename Real>
char* write(Real value, char* text) {
  return write_by_library(value, text);
}

#endif

}  // namespace

char* write_shortest(double value, char* text) { return write(value, text); }
char* write_shortest(float value, char* text) { return write(value, text); }

}  // namespace kelvo
