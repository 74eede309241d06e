// The text of rows, put straight into the buffer of the standard output stream: rows are short and
// many, and a call of the stream for each value takes longer than making its text. Everything keeps
// its place among what others write to the stream, and a terminal or an unbuffered stream gets each
// value as it comes: such a stream offers no room, so the ordinary calls are made.
#pragma once

#include <cstddef>
#include <cstdio>

#include "executor/number_text.h"

/// Where bytes can be put into the stream's buffer, or null where fewer are free. The room ends
/// where the stream's own unlocked character output would flush; the program has one thread.
inline char* stream_room(std::size_t bytes) {
#if defined(__GLIBC__)
  const auto free = static_cast<std::size_t>(stdout->_IO_write_end - stdout->_IO_write_ptr);
  if (stdout->_IO_write_ptr < stdout->_IO_write_end && free >= bytes) return stdout->_IO_write_ptr;
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

inline void add_text(const char* text, std::size_t length) {
  fwrite_unlocked(text, 1, length, stdout);
}

template <typename Number>
void add_number(Number value) {
  if (char* room = stream_room(number_text_room))
    return fill_stream_room(write_number(room, value));
  char text[number_text_room];
  add_text(text, static_cast<std::size_t>(write_number(text, value) - text));
}
