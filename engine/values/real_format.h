// How the bits of a real number lie in a file: IEEE 754's formats, and any other that the HDF5
// library can describe.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace kelvo {

enum class Normalization {
  implied,  // the mantissa's highest bit is one and not stored
  set,      // it is one and stored
  none,     // it is stored and may be zero
};

/// Positions count from the lowest bit of the number, sizes in bits.
struct RealFormat {
  std::size_t precision = 0;  // bits in use
  std::size_t offset = 0;     // of the lowest of them in the element
  std::size_t sign_at = 0;
  std::size_t exponent_at = 0;
  std::size_t exponent_size = 0;
  std::size_t bias = 0;
  std::size_t mantissa_at = 0;
  std::size_t mantissa_size = 0;
  Normalization normalization = Normalization::implied;

  friend bool operator==(const RealFormat&, const RealFormat&) = default;
};

/// The format that a type of that many bytes has where none is named: IEEE 754's of 2, 4 and 8
/// bytes. None for another size.
std::optional<RealFormat> standard_format(std::size_t file_size);

/// 80 bits in 16 bytes: what x86 machines compute with.
RealFormat extended_format();

/// Whether single precision holds every number of the format; what it does not hold is read as
/// double.
bool fits_single(const RealFormat& format);

/// The least number too large for the format, so that it would be rounded to infinity; infinity
/// where any double fits.
double least_too_large(const RealFormat& format);

std::string_view normalization_word(Normalization normalization);

}  // namespace kelvo
