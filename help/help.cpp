// Finds the topic among the rows of the menus and prints what it stands for.
#include "help/help.h"

#include <cstdio>
#include <cstring>

#include "help/data_types.h"
#include "help/layout.h"
#include "help/markup.h"
#include "help/normalize.h"
#include "help/topics.h"
#include "help/tree.h"

namespace {

constexpr std::size_t help_length = 4;  // of the word HELP
constexpr int menu_indent = 2;
constexpr int menu_gap = 2;  // blanks after the longest keyword

void show_menu(const Menu& menu, const char* choices) {
  print_heading(choices, menu.example);
  const int column = menu_indent + longest_keyword(menu) + menu_gap;
  for (const Topic& topic : menu.topics) {
    print_row(menu_indent, topic.keyword, column, topic.description);
  }
}

void show_entry(const Topic& topic) {
  constexpr char undefined[] = "To be defined\n";
  print_text("<b>Syntax:</b>\n");
  if (topic.syntax != nullptr) {
    std::puts(topic.syntax);
  } else {
    print_text(undefined);
  }
  std::putchar('\n');
  print_text("<b>Description:</b>\n");
  print_text(undefined);
}

void show_topic(const Topic& topic) {
  switch (topic.output) {
    case TopicOutput::entry:
      return show_entry(topic);
    case TopicOutput::menu:
      return show_menu(*topic.subtopics, "subtopics");
    case TopicOutput::tree:
      return show_topic_tree();
    case TopicOutput::data_types:
      return show_data_types();
  }
}

const Topic* find_topic(const Menu& menu, const char* keyword) {
  for (const Topic& topic : menu.topics) {
    if (std::strcmp(topic.keyword, keyword) == 0) return &topic;
    if (topic.subtopics == nullptr) continue;
    const Topic* subtopic = find_topic(*topic.subtopics, keyword);
    if (subtopic != nullptr) return subtopic;
  }
  return nullptr;
}

char* skip_blanks(char* text) {
  while (is_blank(*text)) ++text;
  return text;
}

void cut_trailing_blanks(char* text) {
  char* end = text + std::strlen(text);
  while (end != text && is_blank(end[-1])) --end;
  *end = '\0';
}

// The topic is quoted as typed. No mark-up: a tag in it is the user's text.
void show_not_found(char* statement) {
  const char* topic = skip_blanks(skip_blanks(statement) + help_length);
  cut_trailing_blanks(statement);
  std::printf("Help topic/subtopic \"%s\" not found.\n", topic);
}

}  // namespace

void show_help(char* statement, const char* normalized) {
  if (normalized[help_length] == '\0') return show_menu(main_menu, "topics");
  const char* keyword = normalized + help_length + 1;
  const Topic* topic = find_topic(main_menu, keyword);
  if (topic != nullptr) {
    show_topic(*topic);
  } else {
    show_not_found(statement);
  }
}
