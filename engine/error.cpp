// How names are shown in messages.
#include "error.h"

#include <array>
#include <cstdio>

namespace kelvo {

std::string quoted(const std::string& name) {
  std::string text = "\"";
  for (const char byte : name) {
    const auto code = static_cast<unsigned char>(byte);
    if (code >= 0x20 && code != 0x7f) {
      text += byte;
      continue;
    }
    std::array<char, 5> escape{};
    std::snprintf(escape.data(), escape.size(), "\\x%02x", code);
    text += escape.data();
  }
  return text + '"';
}

}  // namespace kelvo
