// The values that the memory engine serves and the limit program writes: one block, repeated, so
// that both make the same bytes and neither is held up by memory.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace bench {

constexpr std::size_t sample_size = 65536;
constexpr std::uint64_t seed = 20;
constexpr std::size_t list_length = 10;

/// Numbers of all lengths in mixed order, which a formatter cannot guess.
template <typename Number>
std::vector<Number> sample_numbers() {
  std::mt19937_64 random(seed);
  std::vector<Number> numbers(sample_size);
  for (Number& number : numbers) {
    if constexpr (std::is_floating_point_v<Number>) {
      const auto exponent = static_cast<int>(random() % 30);
      const auto fraction = static_cast<double>(random() >> 11) * 0x1p-53;
      number = static_cast<Number>(std::ldexp(fraction - 0.5, exponent));
    } else {
      const auto narrowing = random() % (8 * sizeof(Number));
      const auto bits = random() >> (64 - 8 * sizeof(Number));
      number = static_cast<Number>(bits >> narrowing);
      if (random() % 2 != 0) number = static_cast<Number>(~number);
    }
  }
  return numbers;
}

/// Strings of 0 to 40 bytes.
inline std::vector<std::string> sample_texts() {
  std::mt19937_64 random(seed);
  std::vector<std::string> texts(sample_size);
  for (std::string& text : texts)
    text.assign(random() % 41, static_cast<char>('a' + random() % 26));
  return texts;
}

}  // namespace bench
