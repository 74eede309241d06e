// Texts go whole to execute, which divides them; EXIT and HELP mean nothing here.
#include "cli/script.h"

#include <cerrno>
#include <cstdlib>

#include "cli/file_error.h"
#include "executor/execute.h"

namespace {

// What script mode holds; all of it is released in one place.
struct Script {
  std::FILE* file;
  char* content;
};

bool run_text(char* text, const StartupSettings& settings, std::FILE* save_file) {
  return execute(text, settings.no_status, settings.save_file_path, save_file) == 0;
}

// -1 when the size cannot be told.
long find_size(std::FILE* file) {
  if (std::fseek(file, 0, SEEK_END) != 0) return -1;
  return std::ftell(file);
}

bool read_content(Script* script, const char* path) {
  const long position = find_size(script->file);
  if (position == -1) {
    report_read_error(path, read_size_unknown);
    return false;
  }
  std::rewind(script->file);
  // Unsigned before the addition: some file systems tell the largest long for a directory.
  const auto size = static_cast<std::size_t>(position);
  script->content = static_cast<char*>(std::malloc(size + 1));
  if (script->content == nullptr) {
    report_read_error(path, read_out_of_memory);
    return false;
  }
  if (std::fread(script->content, 1, size, script->file) < size) {
    report_read_error(path, read_too_short);
    return false;
  }
  script->content[size] = '\0';
  return true;
}

bool run_file(Script* script, StartupSettings* settings, std::FILE* save_file) {
  const char* path = settings->statement_file_path;
  script->file = std::fopen(path, "rb");
  if (script->file == nullptr) {
    report_statement_file_error(path, errno);
    return false;
  }
  if (!read_content(script, path)) return false;
  if (script->content[0] == '\0') return true;
  return run_text(script->content, *settings, save_file);
}

}  // namespace

int run_script(StartupSettings* settings, std::FILE* save_file) {
  Script script = {};
  bool success = true;
  if (settings->statement_text[0] != '\0') {
    success = run_text(settings->statement_text, *settings, save_file);
  }
  if (success && settings->statement_file_path[0] != '\0') {
    success = run_file(&script, settings, save_file);
  }
  std::free(script.content);
  if (save_file != nullptr) std::fclose(save_file);
  if (script.file != nullptr) std::fclose(script.file);
  return success ? EXIT_SUCCESS : EXIT_FAILURE;
}
