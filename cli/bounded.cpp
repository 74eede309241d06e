// libc's checking functions, called by their own names: the usual names lead to them only in builds
// that ask for it with optimisation on.
#include "cli/bounded.h"

void bounded_copy(char (&destination)[text_size], const char* source) {
  // NOLINTNEXTLINE(clang-analyzer-security.insecureAPI.strcpy): this one is bounded.
  __builtin___strcpy_chk(destination, source, text_size);
}

void bounded_append(char (&destination)[text_size], const char* source, std::size_t length) {
  __builtin___strncat_chk(destination, source, length, text_size);
}

void bounded_prompt(char (&destination)[text_size], const char* path) {
  // Not formatted by __sprintf_chk: the address sanitizer puts its own in the place of that one and
  // does not pass the size on.
  bounded_copy(destination, path);
  bounded_append(destination, ">", 1);
}
