// The interactive loop: prompt, line joining, and the dispatch of EXIT, HELP and statements.
#pragma once

#include <cstdio>

#include "cli/options.h"

/// The prompt for the next line: "." while statement holds the beginning of one, else the engine's
/// group in use and ">", or ">" alone. May be formatted into buffer.
const char* choose_prompt(const char* statement, int no_path, char (&buffer)[text_size]);

/// Appends a line to the statement that it begins or goes on with. True when the statement is
/// complete.
bool join_line(const char* line, char (&statement)[text_size]);

enum Command { command_exit, command_help, command_statement };

/// What a normalised statement asks for.
Command recognize_command(const char* normalized);

/// Reads and runs statements until EXIT. Closes save_file (null when there is none). Returns the
/// process's exit status.
int run_interactive(const StartupSettings& settings, std::FILE* save_file);
