// Script mode: the statements that the command line gives or names.
#pragma once

#include <cstdio>

#include "cli/options.h"

/// Runs the statement text, then, when that succeeded, the statement file. Closes save_file (null
/// when there is none). Returns the process's exit status.
int run_script(StartupSettings* settings, std::FILE* save_file);
