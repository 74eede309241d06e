// The help topics as data: the main menu and the nine menus of subtopics. Every topic that HELP
// answers is a row of them.
#pragma once

#include <span>

struct Menu;

/// What HELP shows for a topic.
enum class TopicOutput { entry, menu, tree, data_types };

struct Topic {
  // With its topic word in front: "CREATE FILE". Selected by "HELP " and the keyword.
  const char* keyword;
  const char* description;
  const char* tree_description = nullptr;  // null: the tree shows the same description
  TopicOutput output = TopicOutput::entry;
  const Menu* subtopics = nullptr;  // of output menu only
  const char* syntax = nullptr;     // of output entry only; null: not defined yet
};

struct Menu {
  const char* example;  // what the heading suggests to type after "help"
  std::span<const Topic> topics;
  int tree_gap = 2;  // blanks after the longest keyword of this menu in the topic tree
};

extern const Menu main_menu;
