// Every byte is looked at once; the only bytes overwritten are those that end a line.
#include "executor/splitter.h"

#include <cstring>

#include "help/normalize.h"

namespace {

// Ends the line at the scan's position, if a line ends there, and moves past its end.
bool end_line(StatementScan* scan) {
  int length = 0;
  if (scan->next[0] == '\n') length = 1;
  if (scan->next[0] == '\r' && scan->next[1] == '\n') length = 2;
  if (length == 0) return false;
  scan->next[0] = '\0';
  scan->next += length;
  return true;
}

// Moves past one line and tells whether it holds a statement.
bool scan_line(StatementScan* scan) {
  bool content = false;
  bool comment = false;
  while (scan->next != scan->end && !end_line(scan)) {
    const char byte = *scan->next++;
    if (byte == '#' && !content) comment = true;
    if (!is_blank(byte) && !comment) content = true;
  }
  return content;
}

}  // namespace

StatementScan start_scan(char* text) { return {text, text + std::strlen(text), 0}; }

char* next_statement(StatementScan* scan) {
  while (scan->next != scan->end) {
    char* line = scan->next;
    ++scan->line_number;
    if (scan_line(scan)) return line;
  }
  return nullptr;
}
