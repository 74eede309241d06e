// Cuts a text into statements, in place, one physical line at a time.
//   - A line ends at "\n" or "\r\n"; the end of the text ends the last one.
//   - A line of blanks, or one whose first content is '#', holds no statement but counts as a line.
//   - Any other line is one statement, whole: quotes mean nothing here, and a '#' after content is
//   part of it. So is a
//     carriage return that no line feed follows: it is content like any other byte.
#pragma once

struct StatementScan {
  char* next;       // first byte not looked at yet
  char* end;        // the text's terminating NUL
  int line_number;  // line of the statement returned last, from 1
};

/// A scan that stands before the first line of a text. The text is cut in place while it is
/// scanned.
StatementScan start_scan(char* text);

/// The next statement, NUL-terminated inside the text, or nullptr when the text is used up. What
/// follows the statement's line is not looked at before the next call.
char* next_statement(StatementScan* scan);
