// The answers to HELP.
#pragma once

/// Answers one HELP request: a menu, a topic's entry, the topic tree, the data types, or that there
/// is no such topic. Normalized selects the topic and is "HELP" or begins with "HELP "; statement
/// is the same request as typed, of which an unknown topic is quoted, its trailing blanks cut in
/// place.
void show_help(char* statement, const char* normalized);
