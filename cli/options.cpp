// One table holds all there is to know of an option; reading the arguments and printing the usage
// both walk it in order.
#include "cli/options.h"

#include <cstdio>
#include <cstring>

#include "cli/banner.h"
#include "help/markup.h"

namespace {

// Either a flag, matched by the whole argument, or a value, matched by the start of the argument.
struct Option {
  const char* text;
  int StartupSettings::*flag;
  char (StartupSettings::*value)[text_size];
  const char* refusal;  // of an empty value
  const char* usage;
};

constexpr Option options[] = {
    {"--help", &StartupSettings::help_requested, nullptr, nullptr,
     "  <b>--help</b>            Show this help and exit.\n"},
    {"--version", &StartupSettings::version_requested, nullptr, nullptr,
     "  <b>--version</b>         Show the version of KelvoCLI and exit.\n"},
    {"--debug", &StartupSettings::debug_requested, nullptr, nullptr,
     "  <b>--debug</b>           Show debug information when executing Kelvo operations.\n"},
    {"--no-path", &StartupSettings::no_path, nullptr, nullptr,
     "  <b>--no-path</b>         Do not show group path currently in use in KelvoCLI prompt.\n"},
    {"--no-status", &StartupSettings::no_status, nullptr, nullptr,
     "  <b>--no-status</b>       Do not show status after executing Kelvo operations.\n"},
    {"--execute=", nullptr, &StartupSettings::statement_text,
     "Specify the operation(s) to be executed. Example: --execute=\"show group\"\n",
     "  <b>--execute=X</b>       Execute Kelvo operation(s) \"X\" and exit.\n"},
    {"--execute-file=", nullptr, &StartupSettings::statement_file_path,
     "Specify the file containing the operation(s) to be executed. Example: "
     "--execute-file=my_file.txt\n",
     "  <b>--execute-file=X</b>  Execute Kelvo operation(s) stored in file \"X\" and exit.\n"},
    {"--save-file=", nullptr, &StartupSettings::save_file_path,
     "Specify the file where the executed operation(s) will be saved. Example: "
     "--save-file=my_file.txt\n",
     "  <b>--save-file=X</b>     Save executed Kelvo operation(s) to file \"X\".\n\n"},
};

bool matches(const Option& option, const char* argument) {
  if (option.flag != nullptr) return std::strcmp(argument, option.text) == 0;
  return std::strncmp(argument, option.text, std::strlen(option.text)) == 0;
}

const Option* find_option(const char* argument) {
  for (const Option& option : options) {
    if (matches(option, argument)) return &option;
  }
  return nullptr;
}

bool read_option(const char* argument, StartupSettings* settings) {
  const Option* option = find_option(argument);
  if (option == nullptr) {
    show_header();
    std::printf("Parameter \"%s\" invalid. Execute with \"--help\" to see valid parameters.\n\n",
                argument);
    return false;
  }
  if (option->flag != nullptr) {
    settings->*option->flag = 1;
    return true;
  }
  bounded_copy(settings->*option->value, argument + std::strlen(option->text));
  if ((settings->*option->value)[0] != '\0') return true;
  show_header();
  std::puts(option->refusal);
  return false;
}

}  // namespace

bool read_options(int argument_count, char* const* arguments, StartupSettings* settings) {
  for (int i = 1; i < argument_count; ++i) {
    if (!read_option(arguments[i], settings)) return false;
  }
  return true;
}

void print_usage() {
  for (const Option& option : options) print_text(option.usage);
}
