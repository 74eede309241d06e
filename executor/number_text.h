// Numbers as printf writes them with "%d", "%u" and "%f", many times as fast: a large result is
// mostly numbers. Integers are made in place, where the compiler takes them into the loops over
// rows: a call for each takes as long as half of its digits.
#pragma once

#include <cstddef>

#include "executor/digits.h"

/// Bytes that a caller must have free behind the place it writes to. The longest text is that of
/// the largest double: a sign, 309 digits, the point and six digits; whole words are stored at its
/// end.
constexpr std::size_t number_text_room = 336;
static_assert(number_text_room >= integer_text_room);

/// Writes the number's text as the integers' functions do, within its own room.
char* write_number(char* text, double value);
