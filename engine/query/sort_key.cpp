// Makes keys. Numbers are 8 bytes, the highest first; text ends with two null bytes, and a null
// byte in it is followed by 0xFF, so that a longer text is behind its beginning.
#include "query/sort_key.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace kelvo {
namespace {

constexpr std::uint64_t sign = std::uint64_t{1} << 63U;

void append_number_key(std::uint64_t bits, std::string* key) {
  for (unsigned shift = 64; shift > 0; shift -= 8)
    key->push_back(static_cast<char>(bits >> (shift - 8)));
}

std::uint64_t real_bits(double value) {
  // Both zeros are one.
  const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);
  return (bits & sign) != 0 ? ~bits : bits ^ sign;
}

void append_text_key(std::string_view text, bool descending, std::string* key) {
  const std::size_t begin = key->size();
  for (const char byte : text) {
    key->push_back(byte);
    if (byte == '\0') key->push_back('\xff');
  }
  key->append(2, '\0');
  if (!descending) return;
  for (std::size_t i = begin; i < key->size(); ++i) (*key)[i] = static_cast<char>(~(*key)[i]);
}

}  // namespace

void append_key(Domain domain, const void* column, std::size_t i, bool descending,
                std::string* key) {
  std::uint64_t bits = 0;
  switch (domain) {
    case Domain::signed_integer:
      bits = static_cast<std::uint64_t>(static_cast<const std::int64_t*>(column)[i]) ^ sign;
      break;
    case Domain::unsigned_integer:
      bits = static_cast<const std::uint64_t*>(column)[i];
      break;
    case Domain::real: {
      const double value = static_cast<const double*>(column)[i];
      if (std::isnan(value)) return append_number_key(~std::uint64_t{0}, key);
      bits = real_bits(value);
      break;
    }
    case Domain::text:
      return append_text_key(static_cast<const std::string_view*>(column)[i], descending, key);
  }
  append_number_key(descending ? ~bits : bits, key);
}

}  // namespace kelvo
