// A HELP request as typed at the prompt, its answer, and how expected answers are written down.
#pragma once

#include <regex>
#include <string>

#include "help/help.h"
#include "help/normalize.h"
#include "support/capture.h"

/// What the request prints.
inline std::string help(std::string typed) {
  std::string normalized(typed.size() + 1, '\0');
  normalize_text(typed.c_str(), normalized.data());
  return capture_stdout([&] { show_help(typed.data(), normalized.c_str()); });
}

/// The bytes of a text in which <b> and </b> stand for the terminal's sequences.
inline std::string shown(const std::string& text) {
  const std::string bold = std::regex_replace(text, std::regex("<b>"), "\x1b[1m");
  return std::regex_replace(bold, std::regex("</b>"), "\x1b[0m");
}
