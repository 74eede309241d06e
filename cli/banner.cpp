// The version number comes from the build, which is the only place of it.
#include "cli/banner.h"

#include <cstdio>
#include <string>

#include "executor/kelvo.h"

const char* const program_version = KELVO_VERSION;

void show_header() {
  // A copy, since the engine's text need not outlast the next call.
  const std::string architecture = _kelvo_get_architecture();
  const char* compiler = _kelvo_get_compiler();
  std::printf("KelvoCLI (Command-Line Interface) version %s (using %s %s library)\n",
              program_version, compiler, architecture.c_str());
  std::puts("KelvoCLI comes with no warranty of any kind.\n");
}
