// The text of rows on its way to standard output. Rows are short and many: handed to the stream one
// by one, most of the time would go into the calls. They are collected here and handed over in
// pieces. A terminal gets each value as it comes.
//
// What is collected is not in the stream yet: flush_rows before anything else is written there.
#pragma once

#include <cstddef>
#include <cstring>

#include "executor/number_text.h"

/// The first piece of a display is as small as the stream's own, so that a slow result shows as
/// early as it would without this; each further one is twice as large, up to the size that pipes
/// take best.
constexpr std::size_t first_piece = 4096;
constexpr std::size_t largest_piece = 65536;

struct RowOutput {
  char text[largest_piece + number_text_room];
  std::size_t length;
  std::size_t piece;  // what is handed over at once; 0: every value
};

extern RowOutput row_output;

/// Begins a display: finds out what the stream is connected to.
void start_rows();

/// Hands what is collected to standard output.
void flush_rows();

/// Hands over a full piece; the next one will be larger.
void flush_piece();

/// Adds a text that is too long to be collected.
void add_long_text(const char* text, std::size_t length);

/// Counts what was written behind the collected text, at most number_text_room bytes.
inline void added(std::size_t length) {
  row_output.length += length;
  if (row_output.length >= row_output.piece) flush_piece();
}

inline void add_byte(char byte) {
  row_output.text[row_output.length] = byte;
  added(1);
}

inline void add_text(const char* text, std::size_t length) {
  if (length > number_text_room) return add_long_text(text, length);
  std::memcpy(row_output.text + row_output.length, text, length);
  added(length);
}

template <typename Number>
void add_number(Number value) {
  char* text = row_output.text + row_output.length;
  added(static_cast<std::size_t>(write_number(text, value) - text));
}
