// The buffer is the only one of its kind, since standard output is.
#include "executor/row_output.h"

#include <stdio_ext.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

RowOutput row_output;

void start_rows() {
  const bool by_line = isatty(STDOUT_FILENO) != 0 || __flbf(stdout) != 0;
  row_output.piece = by_line ? 0 : first_piece;
}

void flush_rows() {
  std::fwrite(row_output.text, 1, row_output.length, stdout);
  row_output.length = 0;
}

void flush_piece() {
  flush_rows();
  row_output.piece = std::min(2 * row_output.piece, largest_piece);
}

void add_long_text(const char* text, std::size_t length) {
  if (row_output.length + length <= row_output.piece) {
    std::memcpy(row_output.text + row_output.length, text, length);
    return added(length);
  }
  flush_rows();
  std::fwrite(text, 1, length, stdout);
}
