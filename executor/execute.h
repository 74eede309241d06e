// The one road from a text of statements to the engine.
#pragma once

#include <cstdio>

/// Runs the statements of a text, one a line, until one fails or its display is cut short. For each
/// it prints the result, then, unless no_status is set, the count of elements and the time taken,
/// then appends it to save_file. The text is cut in place, not copied. Save_file is written and
/// flushed, never closed; null when nothing is saved. Save_file_path only names it in messages.
/// Returns 0, also when the display was interrupted or met a type that is not shown; else the
/// status of the statement that failed. SIGINT is taken over during the call.
int execute(char* text, int no_status, const char* save_file_path, std::FILE* save_file);
