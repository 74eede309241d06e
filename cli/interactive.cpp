// Only EXIT leaves the loop. SIGINT at the prompt is Readline's affair and, by default, ends the
// program.
#include "cli/interactive.h"

#include <cstdlib>
#include <cstring>

// Readline's header uses FILE without declaring it, so it comes after <cstdio>.
#include <readline/history.h>
#include <readline/readline.h>

#include "cli/banner.h"
#include "executor/execute.h"
#include "executor/kelvo.h"
#include "help/help.h"
#include "help/normalize.h"

namespace {

std::size_t count_trailing_backslashes(const char* line, std::size_t length) {
  std::size_t count = 0;
  while (count < length && line[length - 1 - count] == '\\') ++count;
  return count;
}

// Reads lines until they make a complete statement, which it leaves in statement.
void read_statement(int no_path, char (&statement)[text_size], char (&buffer)[text_size]) {
  bool complete = false;
  while (!complete) {
    char* line = readline(choose_prompt(statement, no_path, buffer));
    if (line == nullptr) {
      // The end of input ends nothing, by design: on a terminal more input may come, and what was
      // begun stays.
      std::putchar('\n');
      continue;
    }
    if (line[0] != '\0') add_history(line);
    complete = join_line(line, statement);
    std::free(line);
  }
}

}  // namespace

const char* choose_prompt(const char* statement, int no_path, char (&buffer)[text_size]) {
  if (statement[0] != '\0') return ".";
  if (no_path != 0) return ">";
  if (_kelvo_show_use_group() == nullptr) return ">";
  // Asked again, since an answer may not be kept over another call.
  bounded_prompt(buffer, _kelvo_show_use_group());
  return buffer;
}

// Of the backslashes at a line's end each pair stands for one; a single one left over continues the
// statement. Nothing is put between the pieces: a blank that is wanted there has to be typed.
//   line      appended   complete
//   show\     show       no
//   show\\    show\      yes
//   show\\\   show\      no
bool join_line(const char* line, char (&statement)[text_size]) {
  const std::size_t length = std::strlen(line);
  if (length == 0) return statement[0] != '\0';
  const std::size_t backslashes = count_trailing_backslashes(line, length);
  const std::size_t continuation = backslashes % 2;
  bounded_append(statement, line, length - backslashes / 2 - continuation);
  return continuation == 0;
}

Command recognize_command(const char* normalized) {
  if (std::strcmp(normalized, "EXIT") == 0) return command_exit;
  if (std::strcmp(normalized, "HELP") == 0) return command_help;
  if (std::strncmp(normalized, "HELP ", 5) == 0) return command_help;
  return command_statement;
}

int run_interactive(const StartupSettings& settings, std::FILE* save_file) {
  // TAB inserts itself, instead of completing file names.
  rl_bind_key('\t', rl_insert);
  show_header();
  std::puts("Type \"help\" to get more information or \"exit\" to return to the terminal.\n");
  char statement[text_size] = "";
  char normalized[text_size];  // and the prompt, between two statements
  for (;;) {
    read_statement(settings.no_path, statement, normalized);
    normalize_text(statement, normalized);
    switch (recognize_command(normalized)) {
      case command_exit:
        if (save_file != nullptr) std::fclose(save_file);
        return EXIT_SUCCESS;
      case command_help:
        show_help(statement, normalized);
        break;
      case command_statement:
        execute(statement, settings.no_status, settings.save_file_path, save_file);
        break;
    }
    statement[0] = '\0';
  }
}
