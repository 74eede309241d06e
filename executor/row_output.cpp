// The buffer of the standard output stream.
#include "executor/row_output.h"

#include <stdio_ext.h>
#include <unistd.h>

void widen_output() {
  // What a pipe holds: a fuller buffer would wait for the reader in the middle of a write, libc's
  // own of a page calls the system sixteen times as often.
  static char buffer[65536];
  const bool chosen = __fbufsize(stdout) != 0 || __flbf(stdout) != 0;
  if (chosen || isatty(STDOUT_FILENO) != 0) return;
  std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
}
