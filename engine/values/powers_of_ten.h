// Powers of ten in 128 bits, made by the compiler. For machines with integers that long.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo {

__extension__ using Wide = unsigned __int128;

/// The greatest e with 2^e <= 10^power, for powers from -1000 to 1000.
constexpr int log2_of_ten_to(int power) { return (power * 1741647) >> 19; }

/// The 128 bits of 10^power from its first one on, rounded up where there are more.
struct PowerOfTen {
  std::uint64_t high = 0;
  std::uint64_t low = 0;
};

/// Each power that brings a double to 16 or 17 digits before the point.
class PowersOfTen {
 public:
  static constexpr int least = -292;
  static constexpr int greatest = 324;

  constexpr PowersOfTen() {
    constexpr int scale = 128;  // each stands 2^scale times as large, so that it has all its bits
    Words words{0, 0, 1};
    for (int power = 0; power <= greatest; ++power) {
      set(power, words, scale + log2_of_ten_to(power));
      multiply_by_ten(&words);
    }
    constexpr int small_scale = 64 * words_count - 1;
    words = {};
    words.back() = std::uint64_t{1} << 63U;
    for (int power = -1; power >= least; --power) {
      divide_by_ten(&words);
      set(power, words, small_scale + log2_of_ten_to(power));
    }
  }

  [[nodiscard]] constexpr PowerOfTen operator[](int power) const {
    return powers_[static_cast<std::size_t>(power - least)];
  }

 private:
  static constexpr int words_count = 19;
  using Words = std::array<std::uint64_t, words_count>;  // of one number, the lowest first

  // Takes the bits from the highest that is set on.
  constexpr void set(int power, const Words& words, int highest) {
    constexpr int greatest_exact = 55;  // 5^55 has 128 bits
    const auto lowest = static_cast<std::size_t>(highest - 127);
    const std::size_t first = lowest / 64;
    const std::size_t shift = lowest % 64;
    const auto bits_of = [&](std::size_t at) {
      return static_cast<std::uint64_t>((Wide{words[at + 1]} << 64U | words[at]) >> shift);
    };
    Wide bits = Wide{bits_of(first + 1)} << 64U | bits_of(first);
    if (power < 0 || power > greatest_exact) ++bits;
    powers_[static_cast<std::size_t>(power - least)] = {static_cast<std::uint64_t>(bits >> 64U),
                                                        static_cast<std::uint64_t>(bits)};
  }

  static constexpr void multiply_by_ten(Words* words) {
    Wide carry = 0;
    for (std::uint64_t& word : *words) {
      carry += Wide{word} * 10;
      word = static_cast<std::uint64_t>(carry);
      carry >>= 64U;
    }
  }

  static constexpr void divide_by_ten(Words* words) {
    Wide rest = 0;
    for (std::size_t i = words->size(); i-- > 0;) {
      rest = rest << 64U | (*words)[i];
      (*words)[i] = static_cast<std::uint64_t>(rest / 10);
      rest %= 10;
    }
  }

  std::array<PowerOfTen, greatest - least + 1> powers_;
};

}  // namespace kelvo
