// The save file: the statements that ran, one a line.
#pragma once

#include <cstdio>

/// Appends a statement to the open save file and flushes it. A failed write is reported on standard
/// output, path naming the file, and has no other effect.
void save_statement(const char* statement, const char* path, std::FILE* file);
