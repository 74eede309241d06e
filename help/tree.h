// HELP ALL.
#pragma once

/// Writes every topic and subtopic, in two indented levels.
void show_topic_tree();
