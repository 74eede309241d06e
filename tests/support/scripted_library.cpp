// Makes the scripted engine a library that takes the place of libKelvo.so under the real program.
// As it is loaded, it reads its script from the file that KELVO_SCRIPT names; it appends each call,
// as it is made, to the file that KELVO_CALLS names. Either may be missing.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>

#include "support/script_file.h"

namespace scripted {
namespace {

void load_script(const char* path) {
  std::ifstream script(path, std::ios::binary);
  if (!script) {
    throw std::runtime_error(std::string("cannot open the script ") + path);
  }
  read_script(script, &engine());
}

/// Each line goes out by itself and at once: the program may be killed at any time, and a test may
/// be waiting for it.
void record_calls(const char* path) {
  const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (file < 0) {
    throw std::runtime_error(std::string("cannot open the record ") + path);
  }
  engine().report_calls_to([file](const std::string& line) {
    const std::string text = line + "\n";
    if (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
      std::abort();
    }
  });
}

bool set_up() {
  try {
    if (const char* script = std::getenv("KELVO_SCRIPT")) {
      load_script(script);
    }
    if (const char* calls = std::getenv("KELVO_CALLS")) {
      record_calls(calls);
    }
    return true;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "scripted engine: %s\n", error.what());
    std::abort();
  }
}

[[maybe_unused]] const bool is_set_up = set_up();

}  // namespace
}  // namespace scripted
