// The text of rows, put straight into the buffer of the standard output stream: rows are short and
// many, and a call of the stream for each value takes longer than making its text. Everything keeps
// its place among what others write to the stream, and a terminal or an unbuffered stream gets each
// value as it comes: such a stream offers no room, so the ordinary calls are made.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "executor/number_text.h"

/// Where the stream's next byte goes, if that many are free in its buffer; else null. The room ends
/// where the stream's own unlocked character output would flush; the program has one thread.
inline char* stream_room(std::size_t bytes) {
#if defined(__GLIBC__)
  // Signed: of an unbuffered or a terminal's stream, the end lies before the next byte.
  char* next = stdout->_IO_write_ptr;
  if (stdout->_IO_write_end - next >= static_cast<std::ptrdiff_t>(bytes)) return next;
#else
  static_cast<void>(bytes);
#endif
  return nullptr;
}

/// Counts what was written where stream_room said, up to `end`.
inline void fill_stream_room([[maybe_unused]] char* end) {
#if defined(__GLIBC__)
  stdout->_IO_write_ptr = end;
#endif
}

inline void add_byte(char byte) { putc_unlocked(byte, stdout); }

/// Puts the text and the byte behind it.
inline void add_text(const char* text, std::size_t length, char behind) {
  if (char* room = stream_room(length + 1)) {
    std::memcpy(room, text, length);
    room[length] = behind;
    return fill_stream_room(room + length + 1);
  }
  fwrite_unlocked(text, 1, length, stdout);
  add_byte(behind);
}

/// Puts the number's text.
template <typename Number>
void add_number(Number value) {
  if (char* room = stream_room(number_text_room))
    return fill_stream_room(write_number(room, value));
  char text[number_text_room];
  fwrite_unlocked(text, 1, static_cast<std::size_t>(write_number(text, value) - text), stdout);
}

/// Puts the number's text and the byte behind it, asking for room but once.
template <typename Number>
void add_number(Number value, char behind) {
  if (char* room = stream_room(number_text_room + 1)) {
    char* end = write_number(room, value);
    *end = behind;
    return fill_stream_room(end + 1);
  }
  add_number(value);
  add_byte(behind);
}

/// Gives the standard output stream a buffer of the size that pipes take best, unless it is a
/// terminal or somebody has chosen its buffering already. To be called before anything is put out.
void widen_output();
