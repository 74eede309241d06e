// Reals as text. Their millionths are made as integers are.
#include "executor/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace {

#if defined(__SIZEOF_INT128__) && defined(__SSE2_MATH__)

__extension__ using Wide = unsigned __int128;

constexpr std::uint32_t million = 1'000'000;
constexpr double two_to_64 = 18446744073709551616.0;

char* write_millionths(char* text, std::uint64_t whole, std::uint32_t millionths) {
  text = write_number(text, whole);
  // Seven digits with a zero in front; the point takes the zero's place.
  const std::uint64_t digits = (eight_digits(millionths) + eight_zeros) >> 8;
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

char* write_number(char* text, double value) { return write_double(text, value); }
