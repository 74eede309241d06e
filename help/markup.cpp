// The four tags and the bytes that they become (ECMA-48, Select Graphic Rendition):
//   <b>  ESC [ 1 m   bold              <c>  ESC [ 3 6 m   cyan foreground
//   </b> ESC [ 0 m   attributes off    </c> ESC [ 0 m     attributes off
// Nothing tests for a terminal: a redirected output holds the same bytes.
#include "help/markup.h"

#include <cstdio>
#include <string_view>

namespace {

struct Tag {
  std::string_view text;
  const char* sequence;
};

// Attributes are not stacked: either closing tag ends bold and cyan at once.
constexpr Tag tags[] = {
    {"<b>", "\x1b[1m"},
    {"<c>", "\x1b[36m"},
    {"</b>", "\x1b[0m"},
    {"</c>", "\x1b[0m"},
};

const Tag* tag_at_start(std::string_view text) {
  for (const Tag& tag : tags) {
    if (text.substr(0, tag.text.size()) == tag.text) return &tag;
  }
  return nullptr;
}

void write(std::string_view bytes) { std::fwrite(bytes.data(), 1, bytes.size(), stdout); }

}  // namespace

void print_text(const char* text) {
  std::string_view rest = text;
  while (!rest.empty()) {
    const Tag* tag = tag_at_start(rest);
    if (tag != nullptr) {
      std::fputs(tag->sequence, stdout);
      rest.remove_prefix(tag->text.size());
      continue;
    }
    // Up to the next '<', which may open a tag. A '<' at the very start opens none, so it is part
    // of the run.
    const std::string_view run = rest.substr(0, rest.find('<', 1));
    write(run);
    rest.remove_prefix(run.size());
  }
}
