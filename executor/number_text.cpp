// Digits are made eight at a time in one 64-bit word, without a branch that depends on how many
// there are: numbers of mixed lengths would make the processor guess wrong at every one of them.
#include "executor/number_text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

static_assert(std::endian::native == std::endian::little,
              "digits are placed by their byte in a word");

namespace {

constexpr std::uint32_t ten_to_8 = 100'000'000;
constexpr std::uint64_t ten_to_16 = 10'000'000'000'000'000;
constexpr std::uint32_t million = 1'000'000;

// The eight digits of a value below 10^8, the first in the lowest byte, each 0 to 9. The value is
// halved three times: into two numbers of four digits, four of two, eight of one, each step for all
// parts at once. 10486 / 2^20 is 1 / 100 and 103 / 2^10 is 1 / 10, exact for numbers that small.
std::uint64_t eight_digits(std::uint32_t value) {
  const std::uint64_t fours = value / 10000 | static_cast<std::uint64_t>(value % 10000) << 32;
  const std::uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007f0000007f;
  const std::uint64_t twos = hundreds | (fours - 100 * hundreds) << 16;
  const std::uint64_t tens = (twos * 103 >> 10) & 0x000f000f000f000f;
  return tens | (twos - 10 * tens) << 8;
}

constexpr std::uint64_t zeros = 0x3030303030303030;  // "00000000"

char* write_eight(char* text, std::uint32_t value) {
  const std::uint64_t digits = eight_digits(value) + zeros;
  std::memcpy(text, &digits, sizeof digits);
  return text + sizeof digits;
}

// Without leading zeros: their bytes are shifted out at the word's low end.
char* write_up_to_eight(char* text, std::uint32_t value) {
  const std::uint64_t digits = eight_digits(value);
  // The top byte's low bit stands in for a last digit of 0, which is to be written.
  const auto leading =
      static_cast<unsigned>(std::countr_zero(digits | std::uint64_t{1} << 56)) & ~7U;
  const std::uint64_t shown = (digits + zeros) >> leading;
  std::memcpy(text, &shown, sizeof shown);
  return text + 8 - leading / 8;
}

char* write_up_to_sixteen(char* text, std::uint64_t value) {
  if (value < ten_to_8) return write_up_to_eight(text, static_cast<std::uint32_t>(value));
  text = write_up_to_eight(text, static_cast<std::uint32_t>(value / ten_to_8));
  return write_eight(text, static_cast<std::uint32_t>(value % ten_to_8));
}

// A negative number's size is made by arithmetic, for the compiler would make a branch of a choice:
// signs in no order would be guessed wrong every other time.
template <typename Unsigned>
char* write_signed(char* text, Unsigned bits) {
  const auto negative = static_cast<Unsigned>(bits >> (8 * sizeof bits - 1));
  *text = '-';  // always stored, and only sometimes kept
  return write_number(text + negative, static_cast<Unsigned>((bits ^ (0 - negative)) + negative));
}

#if defined(__SIZEOF_INT128__) && defined(__SSE2_MATH__)

__extension__ using Wide = unsigned __int128;

constexpr double two_to_64 = 18446744073709551616.0;

char* write_millionths(char* text, std::uint64_t whole, std::uint32_t millionths) {
  text = write_number(text, whole);
  // Seven digits with a zero in front; the point takes the zero's place.
  const std::uint64_t digits = (eight_digits(millionths) + zeros) >> 8;
  std::memcpy(text, &digits, sizeof digits);
  *text = '.';
  return text + 7;
}

// Any finite size below 2^64, exactly: it is mantissa * 2^-shift, and its millionths are rounded as
// printf does, a tie to the even one.
char* write_exactly(char* text, double size) {
  int exponent = 0;
  const double fraction = std::frexp(size, &exponent);
  const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 53));
  const int shift = 53 - exponent;
  if (shift <= 0) return write_millionths(text, mantissa << -shift, 0);
  if (shift > 100) return write_millionths(text, 0, 0);  // far below half a millionth
  const Wide product = static_cast<Wide>(mantissa) * million;
  const Wide half = static_cast<Wide>(1) << (shift - 1);
  Wide rounded = product >> shift;
  const Wide rest = product - (rounded << shift);
  if (rest > half || (rest == half && (rounded & 1) != 0)) ++rounded;
  return write_millionths(text, static_cast<std::uint64_t>(rounded / million),
                          static_cast<std::uint32_t>(rounded % million));
}

char* write_special(char* text, double size) {
  return std::copy_n(std::isnan(size) ? "nan" : "inf", 3, text);
}

// Sizes below 2^32 - 1 in millionths are below 2^52, where every half is a double. So the product,
// rounded to a double, lies on the same side of each half as the true product, unless it is that
// half itself: then the true product may lie on either side. The product must not be fused with
// what follows, which the separate variable and the addition below leave no room for.
char* write_real(char* text, double size) {
  constexpr double most = 4294967295.0;
  if (!(size < most)) {
    if (!std::isfinite(size)) return write_special(text, size);
    if (size < two_to_64) return write_exactly(text, size);
    return std::to_chars(text, text + number_text_room, size, std::chars_format::fixed, 6).ptr;
  }
  const double product = size * million;
  const auto below = static_cast<std::uint64_t>(product);
  const double rest = product - static_cast<double>(below);
  if (rest == 0.5) return write_exactly(text, size);
  const std::uint64_t rounded = below + (rest > 0.5 ? 1 : 0);
  return write_millionths(text, rounded / million, static_cast<std::uint32_t>(rounded % million));
}

char* write_double(char* text, double value) {
  *text = '-';
  return write_real(text + (std::signbit(value) ? 1 : 0), std::fabs(value));
}

#else

// Without 128-bit integers, and where doubles may be held in more than 64 bits, libc does it.
char* write_double(char* text, double value) {
  return text + std::snprintf(text, number_text_room, "%f", value);
}

#endif

}  // namespace

char* write_number(char* text, std::uint32_t value) {
  if (value < ten_to_8) return write_up_to_eight(text, value);
  text = write_up_to_eight(text, value / ten_to_8);
  return write_eight(text, value % ten_to_8);
}

char* write_number(char* text, std::int32_t value) {
  return write_signed(text, static_cast<std::uint32_t>(value));
}

char* write_number(char* text, std::uint64_t value) {
  if (value < ten_to_16) return write_up_to_sixteen(text, value);
  text = write_up_to_eight(text, static_cast<std::uint32_t>(value / ten_to_16));
  const std::uint64_t rest = value % ten_to_16;
  text = write_eight(text, static_cast<std::uint32_t>(rest / ten_to_8));
  return write_eight(text, static_cast<std::uint32_t>(rest % ten_to_8));
}

char* write_number(char* text, std::int64_t value) {
  return write_signed(text, static_cast<std::uint64_t>(value));
}

char* write_number(char* text, double value) { return write_double(text, value); }
