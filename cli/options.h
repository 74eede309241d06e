// The command line: what was asked for, and the texts about it.
#pragma once

#include "cli/bounded.h"

/// What the command line settled, once for the whole run. An empty text means that its option was
/// not given: an empty value is refused.
struct StartupSettings {
  int help_requested;
  int version_requested;
  int debug_requested;
  int no_path;
  int no_status;
  char statement_text[text_size];
  char statement_file_path[text_size];
  char save_file_path[text_size];
};

/// Reads all arguments into settings that start zeroed. False when one was refused, which ends the
/// reading: the banner and a message have been printed. A value that does not fit its buffer ends
/// the process (see bounded.h).
bool read_options(int argument_count, char* const* arguments, StartupSettings* settings);

/// Writes the list of the options.
void print_usage();
