// The start-up sequence: every argument is read before anything happens, then exactly one mode
// runs.
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "cli/banner.h"
#include "cli/file_error.h"
#include "cli/interactive.h"
#include "cli/options.h"
#include "cli/script.h"
#include "executor/interrupt.h"
#include "executor/kelvo.h"
#include "executor/row_output.h"

int main(int argument_count, char** arguments) {
  interrupt_status = 0;
  widen_output();
  StartupSettings settings = {};
  if (!read_options(argument_count, arguments, &settings)) return EXIT_FAILURE;
  if (settings.help_requested != 0) {
    show_header();
    print_usage();
    return EXIT_SUCCESS;
  }
  if (settings.version_requested != 0) {
    std::puts(program_version);
    return EXIT_SUCCESS;
  }
  // Straight to the engine: nothing is shown, timed or saved for it, whatever its status.
  if (settings.debug_requested != 0) kelvo_execute("SET DEBUG ENABLE");
  std::FILE* save_file = nullptr;
  if (settings.save_file_path[0] != '\0') {
    save_file = std::fopen(settings.save_file_path, "a");
    if (save_file == nullptr) {
      report_open_error(settings.save_file_path, errno);
      return EXIT_FAILURE;
    }
  }
  const bool script = settings.statement_text[0] != '\0' || settings.statement_file_path[0] != '\0';
  return script ? run_script(&settings, save_file) : run_interactive(settings, save_file);
}
