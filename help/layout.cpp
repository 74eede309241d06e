// Rows are formatted with their tags and handed to the mark-up printer whole.
#include "help/layout.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "help/markup.h"

namespace {

constexpr std::size_t row_size = 256;  // the longest row takes about 110 bytes

}  // namespace

void print_heading(const char* choices, const char* example) {
  std::printf("Select one of the following %s (example: \"help %s\"):\n\n", choices, example);
}

void print_row(int indent, const char* keyword, int description_column, const char* description) {
  const int gap = description_column - indent - static_cast<int>(std::strlen(keyword));
  char row[row_size];
  std::snprintf(row, sizeof row, "%*s<b>%s</b>%*s%s\n", indent, "", keyword, gap, "", description);
  print_text(row);
}

int longest_keyword(const Menu& menu) {
  std::size_t longest = 0;
  for (const Topic& topic : menu.topics) longest = std::max(longest, std::strlen(topic.keyword));
  return static_cast<int>(longest);
}
