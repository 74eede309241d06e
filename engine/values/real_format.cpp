// The formats of real numbers that have names, and the range of any.
#include "values/real_format.h"

#include <cmath>
#include <limits>

namespace kelvo {
namespace {

// Digits of the mantissa, the one that is not stored included.
std::size_t digits(const RealFormat& format) {
  return format.mantissa_size + (format.normalization == Normalization::implied ? 1 : 0);
}

}  // namespace

std::optional<RealFormat> standard_format(std::size_t file_size) {
  switch (file_size) {
    case 2:
      return RealFormat{16, 0, 15, 10, 5, 15, 0, 10, Normalization::implied};
    case 4:
      return RealFormat{32, 0, 31, 23, 8, 127, 0, 23, Normalization::implied};
    case 8:
      return RealFormat{64, 0, 63, 52, 11, 1023, 0, 52, Normalization::implied};
    default:
      return std::nullopt;
  }
}

RealFormat extended_format() {
  return RealFormat{80, 0, 79, 64, 15, 16383, 0, 64, Normalization::none};
}

bool fits_single(const RealFormat& format) {
  return digits(format) <= 24 && format.exponent_size <= 8 &&
         (format.exponent_size < 8 ? format.bias <= 127 : format.bias == 127);
}

double least_too_large(const RealFormat& format) {
  // The highest exponent stands for infinities and NANs.
  const double highest = std::ldexp(1.0, static_cast<int>(format.exponent_size)) - 2 -
                         static_cast<double>(format.bias);
  if (highest >= 1024) return std::numeric_limits<double>::infinity();
  const double half_of_last_digit = std::ldexp(1.0, -static_cast<int>(digits(format)));
  return std::ldexp(2 - half_of_last_digit, static_cast<int>(highest));
}

std::string_view normalization_word(Normalization normalization) {
  switch (normalization) {
    case Normalization::implied:
      return "IMPLIED";
    case Normalization::set:
      return "SET";
    case Normalization::none:
      break;
  }
  return "NONE";
}

}  // namespace kelvo
