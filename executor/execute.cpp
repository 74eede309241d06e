// Enters, runs the statements line by line, and leaves by one door.
#include "executor/execute.h"

#include "executor/interrupt.h"
#include "executor/kelvo.h"
#include "executor/render.h"
#include "executor/save.h"
#include "executor/splitter.h"
#include "executor/timer.h"
#include "help/markup.h"

namespace {

// Times the engine's call alone, not the display. Without status the timestamps stay as they are.
int run_statement(const char* statement, int no_status) {
  if (no_status != 0) return kelvo_execute(statement);
  timer_start();
  const int status = kelvo_execute(statement);
  timer_stop();
  return status;
}

// Plainly, without mark-up: the message is the engine's. The position is told within the line, as
// the engine got it.
void report_error(int status, int line_number) {
  if (status == KELVO_ERROR_WITH_POSITION) {
    const int position = kelvo_error_get_position();
    std::printf("%s (line %d at position %d - status %d).\n", kelvo_error_get_message(),
                line_number, position, status);
  } else {
    std::printf("%s (status %d).\n", kelvo_error_get_message(), status);
  }
}

// The singular is for exactly one element; none takes the plural.
void print_count() {
  const int count = _kelvo_get_last_data_count();
  const double seconds = timer_elapsed() / 1000.0;
  char line[1024];
  std::snprintf(line, sizeof line, "<b>(%d %s returned in %.1f seconds)</b>\n", count,
                count == 1 ? "element" : "elements", seconds);
  print_text(line);
}

int run_statements(char* text, int no_status, const char* save_file_path, std::FILE* save_file) {
  StatementScan scan = start_scan(text);
  while (const char* statement = next_statement(&scan)) {
    const int status = run_statement(statement, no_status);
    if (status != KELVO_SUCCESS) {
      report_error(status, scan.line_number);
      return status;
    }
    // A display cut short ends the text but is no failure: the statement itself succeeded.
    if (render_result() != render_finished) return KELVO_SUCCESS;
    if (no_status == 0) print_count();
    if (save_file != nullptr) save_statement(statement, save_file_path, save_file);
  }
  return KELVO_SUCCESS;
}

}  // namespace

int execute(char* text, int no_status, const char* save_file_path, std::FILE* save_file) {
  // The flag is not cleared here: one that is up already stops the display at the first value.
  struct sigaction saved;
  take_interrupt(&saved);
  const int status = run_statements(text, no_status, save_file_path, save_file);
  return_interrupt(&saved);
  kelvo_cursor_clear(nullptr);
  return status;
}
