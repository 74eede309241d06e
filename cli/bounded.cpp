// libc's checking functions, called by their own names: the usual names lead to them only in builds
// that ask for it with optimisation on.
#include "cli/bounded.h"

#include <cstdio>
#include <cstdlib>

void bounded_copy(char (&destination)[text_size], const char* source) {
  // NOLINTNEXTLINE(clang-analyzer-security.insecureAPI.strcpy): this one is bounded.
  __builtin___strcpy_chk(destination, source, text_size);
}

void bounded_append(char (&destination)[text_size], const char* source, std::size_t length) {
  __builtin___strncat_chk(destination, source, length, text_size);
}

void bounded_prompt(char (&destination)[text_size], const char* path) {
  // Not by __sprintf_chk, in whose place the address sanitizer puts its own, without the check. Nor
  // by copies alone: they, unlike a format, could not take a null path.
  char* prompt = nullptr;
  if (asprintf(&prompt, "%s>", path) < 0) std::abort();
  bounded_copy(destination, prompt);
  std::free(prompt);
}
