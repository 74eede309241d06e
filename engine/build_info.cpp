// Texts from the compiler's own definitions.
#include "build_info.h"

#define KELVO_TEXT_OF(value) #value
#define KELVO_TEXT(value) KELVO_TEXT_OF(value)

namespace kelvo {

const char* version() noexcept { return KELVO_VERSION; }

const char* compiler() noexcept {
#if defined(__clang__)
  return "Clang " KELVO_TEXT(__clang_major__) "." KELVO_TEXT(__clang_minor__) "." KELVO_TEXT(
      __clang_patchlevel__);
#else
  return "GCC " KELVO_TEXT(__GNUC__) "." KELVO_TEXT(__GNUC_MINOR__) "." KELVO_TEXT(
      __GNUC_PATCHLEVEL__);
#endif
}

const char* architecture() noexcept {
#if defined(__x86_64__)
  return "x86-64";
#elif defined(__i386__)
  return "x86";
#elif defined(__aarch64__)
  return "ARM64";
#else
  return sizeof(void*) == 8 ? "64-bit" : "32-bit";
#endif
}

}  // namespace kelvo
