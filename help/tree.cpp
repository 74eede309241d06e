// The topic tree, made from the rows of the menus. Some descriptions read differently here: see
// Topic::tree_description.
#include "help/tree.h"

#include <cstring>

#include "help/layout.h"
#include "help/topics.h"

namespace {

constexpr int topic_indent = 2;
// Topics are not aligned with one another, unlike those of the main menu.
constexpr int topic_gap = 2;
constexpr int subtopic_indent = 4;

const char* tree_description(const Topic& topic) {
  return topic.tree_description != nullptr ? topic.tree_description : topic.description;
}

void print_subtopics(const Menu& menu, int topic_word_length) {
  const int skipped = topic_word_length + 1;  // the topic word and the blank after it
  const int column = subtopic_indent + longest_keyword(menu) - skipped + menu.tree_gap;
  for (const Topic& topic : menu.topics) {
    print_row(subtopic_indent, topic.keyword + skipped, column, tree_description(topic));
  }
}

}  // namespace

void show_topic_tree() {
  print_heading("topics/subtopics", main_menu.example);
  for (const Topic& topic : main_menu.topics) {
    const int length = static_cast<int>(std::strlen(topic.keyword));
    print_row(topic_indent, topic.keyword, topic_indent + length + topic_gap,
              tree_description(topic));
    if (topic.subtopics != nullptr) print_subtopics(*topic.subtopics, length);
  }
}
