// How names are shown in messages.
#include "error.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace kelvo {
namespace {

constexpr std::string_view scheme_end = "://";
constexpr std::string_view address_ends = " \t\"'";
constexpr std::string_view mask = "***";

}  // namespace

std::string without_secrets(const std::string& text) {
  std::string shown = text;
  for (std::size_t at = shown.find(scheme_end); at != std::string::npos;
       at = shown.find(scheme_end, at + 1)) {
    const std::size_t host = at + scheme_end.size();
    std::size_t end = std::min(shown.find_first_of(address_ends, host), shown.size());
    const std::size_t query = shown.find('?', host);
    if (query < end) {
      shown.replace(query + 1, end - query - 1, mask);
      end = query;
    }
    // The last one: a password may hold others.
    const std::size_t user_end = shown.rfind('@', std::min(shown.find('/', host), end));
    if (user_end != std::string::npos && user_end > host)
      shown.replace(host, user_end - host, mask);
  }
  return shown;
}

std::string quoted(const std::string& name) {
  std::string text = "\"";
  for (const char byte : without_secrets(name)) {
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
