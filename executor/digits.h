// Integers as text, for the program and the default engine. Digits are made eight at a time in one
// 64-bit word, without a branch that depends on how many there are: numbers of mixed lengths would
// make the processor guess wrong at every one of them.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

static_assert(std::endian::native == std::endian::little,
              "digits are placed by their byte in a word");

constexpr std::uint32_t ten_to_8 = 100'000'000;
constexpr std::uint64_t ten_to_16 = 10'000'000'000'000'000;

// The eight digits of a value below 10^8, the first in the lowest byte, each 0 to 9. The value is
// halved three times: into two numbers of four digits, four of two, eight of one, each step for all
// parts at once. 10486 / 2^20 is 1 / 100 and 103 / 2^10 is 1 / 10, exact for numbers that small.
inline std::uint64_t eight_digits(std::uint32_t value) {
  const std::uint64_t fours = value / 10000 | static_cast<std::uint64_t>(value % 10000) << 32;
  const std::uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007f0000007f;
  const std::uint64_t twos = hundreds | (fours - 100 * hundreds) << 16;
  const std::uint64_t tens = (twos * 103 >> 10) & 0x000f000f000f000f;
  return tens | (twos - 10 * tens) << 8;
}

constexpr std::uint64_t eight_zeros = 0x3030303030303030;  // their text

inline char* write_eight(char* text, std::uint32_t value) {
  const std::uint64_t digits = eight_digits(value) + eight_zeros;
  std::memcpy(text, &digits, sizeof digits);
  return text + sizeof digits;
}

// Without leading zeros: their bytes are shifted out at the word's low end.
inline char* write_up_to_eight(char* text, std::uint32_t value) {
  const std::uint64_t digits = eight_digits(value);
  // The top byte's low bit stands in for a last digit of 0, which is to be written.
  const auto leading =
      static_cast<unsigned>(std::countr_zero(digits | std::uint64_t{1} << 56)) & ~7U;
  const std::uint64_t shown = (digits + eight_zeros) >> leading;
  std::memcpy(text, &shown, sizeof shown);
  return text + 8 - leading / 8;
}

inline char* write_up_to_sixteen(char* text, std::uint64_t value) {
  if (value < ten_to_8) return write_up_to_eight(text, static_cast<std::uint32_t>(value));
  text = write_up_to_eight(text, static_cast<std::uint32_t>(value / ten_to_8));
  return write_eight(text, static_cast<std::uint32_t>(value % ten_to_8));
}

/// Bytes that a caller must have free behind the place it writes an integer to: a sign, 19 or 20
/// digits; whole words are stored at their end.
constexpr std::size_t integer_text_room = 32;

// Each writes the integer's text, without a NUL, and returns the byte behind it. What is written
// behind that byte, within the room, is left undefined.

inline char* write_number(char* text, std::uint32_t value) {
  if (value < ten_to_8) return write_up_to_eight(text, value);
  text = write_up_to_eight(text, value / ten_to_8);
  return write_eight(text, value % ten_to_8);
}

inline char* write_number(char* text, std::uint64_t value) {
  if (value < ten_to_16) return write_up_to_sixteen(text, value);
  text = write_up_to_eight(text, static_cast<std::uint32_t>(value / ten_to_16));
  const std::uint64_t rest = value % ten_to_16;
  text = write_eight(text, static_cast<std::uint32_t>(rest / ten_to_8));
  return write_eight(text, static_cast<std::uint32_t>(rest % ten_to_8));
}

// A negative number's size is made by arithmetic, for the compiler would make a branch of a choice:
// signs in no order would be guessed wrong every other time.
template <typename Unsigned>
char* write_signed(char* text, Unsigned bits) {
  const auto negative = static_cast<Unsigned>(bits >> (8 * sizeof bits - 1));
  *text = '-';  // always stored, and only sometimes kept
  return write_number(text + negative, static_cast<Unsigned>((bits ^ (0 - negative)) + negative));
}

inline char* write_number(char* text, std::int32_t value) {
  return write_signed(text, static_cast<std::uint32_t>(value));
}

inline char* write_number(char* text, std::int64_t value) {
  return write_signed(text, static_cast<std::uint64_t>(value));
}
