// Integers of 1 to 8 bytes in either byte order.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "values/type.h"

namespace kelvo {

/// `bytes` need not be aligned. The result is sign-extended to 64 bits where `is_signed`. Of
/// integers wider than 8 bytes the lowest 8 count; without any byte it is 0.
inline std::uint64_t load_integer(const std::byte* bytes, std::size_t size, ByteOrder order,
                                  bool is_signed) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    value = value << 8U |
            std::to_integer<std::uint64_t>(bytes[order == ByteOrder::big ? i : size - 1 - i]);
  }
  if (!is_signed || size == 0 || size >= 8) return value;
  const std::uint64_t sign = std::uint64_t{1} << (8 * size - 1);
  return (value ^ sign) - sign;
}

/// An unsigned integer that lies lowest byte first, of a size that the compiler knows: one
/// instruction as a rule.
template <typename Number>
Number load_little(const std::byte* bytes) {
  Number value = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&value, bytes, sizeof value);
  } else {
    value = static_cast<Number>(load_integer(bytes, sizeof value, ByteOrder::little, false));
  }
  return value;
}

/// Stores the lowest `size` bytes of `value`.
inline void store_integer(std::uint64_t value, std::size_t size, ByteOrder order,
                          std::byte* bytes) {
  for (std::size_t i = 0; i < size; ++i, value >>= 8U) {
    bytes[order == ByteOrder::little ? i : size - 1 - i] = static_cast<std::byte>(value);
  }
}

}  // namespace kelvo
