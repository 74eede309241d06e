// What the menus and the topic tree have in common: their heading and the make-up of their rows.
#pragma once

#include "help/topics.h"

/// Writes "Select one of the following …" and the empty line after it. Choices names what can be
/// selected.
void print_heading(const char* choices, const char* example);

/// Writes one row: indent blanks, the keyword in bold, blanks up to the description's column, the
/// description. Columns count from 0 on the visible line.
void print_row(int indent, const char* keyword, int description_column, const char* description);

/// Length of the longest keyword of a menu, its topic word included.
int longest_keyword(const Menu& menu);
