// The mark-up printer: every bold heading, menu row, usage line and status line goes through it.
#pragma once

/// Writes a text to standard output with its four tags turned into terminal attributes: <b> bold
/// on, <c> cyan on, </b> and </c> everything off. Tags are lower case; all other bytes are written
/// as they are. It adds no line end and no reset, and does not flush, so its output keeps its place
/// among that of printf and its family.
void print_text(const char* text);
