// Numbers as printf writes them with "%d", "%u" and "%f", many times as fast: a large result is
// mostly numbers. Integers are made in place, where the compiler takes them into the loops over
// rows: a call for each takes as long as half of its digits.
#pragma once

#include <cstddef>
#include <cstdint>

#include "executor/digits.h"

/// Bytes that a caller must have free behind the place it writes to. The longest text is that of
/// the largest double: a sign, 309 digits, the point and six digits; whole words are stored at its
/// end.
constexpr std::size_t number_text_room = 336;

// Each writes the number's text, without a NUL, and returns the byte behind it. What is written
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

char* write_number(char* text, double value);
