// The text of rows, put straight into the buffer of the standard output stream: rows are short and
// many, and a call of the stream for each value takes longer than making its text. Everything keeps
// its place among what others write to the stream, and a terminal or an unbuffered stream gets each
// value as it comes: such a stream offers no room, so the ordinary calls are made.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "executor/number_text.h"
#include "executor/short_text.h"

// What libc's own unlocked character output does when there is room; the program has one thread.
#if defined(__GLIBC__)
/// Whether that many bytes can be put where stream_next says.
inline bool stream_has_room(std::size_t bytes) {
  // Signed: in an unbuffered stream and a terminal's, the end lies before the next byte.
  return stdout->_IO_write_end - stdout->_IO_write_ptr >= static_cast<std::ptrdiff_t>(bytes);
}
inline char* stream_next() { return stdout->_IO_write_ptr; }
/// Counts what was put where stream_next said, up to `end`.
inline void set_stream_next(char* end) { stdout->_IO_write_ptr = end; }
#else
inline bool stream_has_room(std::size_t /*bytes*/) { return false; }
inline char* stream_next() { return nullptr; }
inline void set_stream_next(char* /*end*/) {}
#endif

inline void add_byte(char byte) { putc_unlocked(byte, stdout); }

/// Puts the text and the byte behind it.
inline void add_text(const char* text, std::size_t length, char behind) {
  if (stream_has_room(length + 1)) {
    char* room = stream_next();
    std::memcpy(room, text, length);
    room[length] = behind;
    return set_stream_next(room + length + 1);
  }
  fwrite_unlocked(text, 1, length, stdout);
  add_byte(behind);
}

/// Puts the text up to its NUL and the byte behind it.
inline void add_string(const char* text, char behind) {
  if (stream_has_room(short_text_room + 1)) {
    if (char* end = copy_short_text(text, stream_next()); end != nullptr) {
      *end = behind;
      return set_stream_next(end + 1);
    }
  }
  add_text(text, std::strlen(text), behind);
}

/// Puts the number's text.
template <typename Number>
void add_number(Number value) {
  if (stream_has_room(number_text_room)) return set_stream_next(write_number(stream_next(), value));
  char text[number_text_room];
  fwrite_unlocked(text, 1, static_cast<std::size_t>(write_number(text, value) - text), stdout);
}

/// Puts the number's text and the byte behind it, asking for room but once.
template <typename Number>
void add_number(Number value, char behind) {
  if (stream_has_room(number_text_room + 1)) {
    char* end = write_number(stream_next(), value);
    *end = behind;
    return set_stream_next(end + 1);
  }
  add_number(value);
  add_byte(behind);
}

/// Gives the standard output stream a buffer of the size that pipes take best, unless it is a
/// terminal or somebody has chosen its buffering already. To be called before anything is put out.
void widen_output();
