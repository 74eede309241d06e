// Makes keys. Numbers are 8 bytes, the highest first; text ends with two null bytes, and a null
// byte in it is followed by 0xFF, so that a longer text is behind its beginning.
#include "query/sort_key.h"

#include <array>
#include <bit>
#include <cmath>

namespace kelvo {
namespace {

constexpr std::uint64_t sign = std::uint64_t{1} << 63U;
constexpr std::uint64_t last = ~std::uint64_t{0};

std::uint64_t number_key(std::int64_t value, std::uint64_t flip) {
  return static_cast<std::uint64_t>(value) ^ sign ^ flip;
}

std::uint64_t number_key(std::uint64_t value, std::uint64_t flip) { return value ^ flip; }

std::uint64_t number_key(double value, std::uint64_t flip) {
  if (std::isnan(value)) return last;
  // Both zeros are one.
  const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);
  return ((bits & sign) != 0 ? ~bits : bits ^ sign) ^ flip;
}

template <typename Number>
void column_keys(const void* column, std::size_t count, bool descending, std::uint64_t* keys) {
  const auto* values = static_cast<const Number*>(column);
  const std::uint64_t flip = descending ? last : 0;
  for (std::size_t i = 0; i < count; ++i) keys[i] = number_key(values[i], flip);
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

void number_keys(Domain domain, const void* column, std::size_t count, bool descending,
                 std::uint64_t* keys) {
  with_number_of(
      domain, [&](auto number) { column_keys<decltype(number)>(column, count, descending, keys); });
}

void append_key(Domain domain, const void* column, std::size_t i, bool descending,
                std::string* key) {
  if (domain == Domain::text)
    return append_text_key(static_cast<const std::string_view*>(column)[i], descending, key);
  std::uint64_t number = 0;
  number_keys(domain, static_cast<const std::uint64_t*>(column) + i, 1, descending, &number);
  std::array<char, sizeof number> bytes{};
  for (char& byte : bytes) {
    byte = static_cast<char>(number >> 56U);
    number <<= 8U;
  }
  key->append(bytes.data(), bytes.size());
}

std::uint64_t number_of(std::string_view key) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < sizeof number; ++i)
    number = number << 8U | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
  return number;
}

}  // namespace kelvo
