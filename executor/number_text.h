// Numbers as printf writes them with "%d", "%u" and "%f", many times as fast: a large result is
// mostly numbers.
#pragma once

#include <cstddef>
#include <cstdint>

/// Bytes that a caller must have free behind the place it writes to. The longest text is that of
/// the largest double: a sign, 309 digits, the point and six digits; whole words are stored at its
/// end.
constexpr std::size_t number_text_room = 336;

/// Each writes the number's text, without a NUL, and returns the byte behind it. What is written
/// behind that byte, within the room, is left undefined.
char* write_number(char* text, std::int32_t value);
char* write_number(char* text, std::uint32_t value);
char* write_number(char* text, std::int64_t value);
char* write_number(char* text, std::uint64_t value);
char* write_number(char* text, double value);
