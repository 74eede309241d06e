// Reading the command line: what each argument settles, every refusal, and the usage text.
#include "cli/options.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "support/capture.h"
#include "support/scripted_engine.h"

namespace {

constexpr char banner[] =
    "KelvoCLI (Command-Line Interface) version 2.3.0 (using scripted test library)\n"
    "KelvoCLI comes with no warranty of any kind.\n\n";

using Arguments = std::vector<std::string>;

class Options : public testing::Test {
 protected:
  Options() { scripted::engine().reset(); }

  bool read(Arguments arguments) {
    arguments.insert(arguments.begin(), "kelvocli");
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    bool accepted = false;
    output = capture_stdout([&] {
      accepted = read_options(static_cast<int>(pointers.size()), pointers.data(), &settings);
    });
    return accepted;
  }

  void expect_invalid(const Arguments& arguments, const std::string& named) {
    EXPECT_FALSE(read(arguments)) << named;
    EXPECT_EQ(banner + ("Parameter \"" + named +
                        "\" invalid. Execute with \"--help\" to see valid parameters.\n\n"),
              output);
  }

  void expect_refused(const Arguments& arguments, const std::string& message) {
    EXPECT_FALSE(read(arguments)) << message;
    EXPECT_EQ(banner + message + "\n\n", output);
  }

  StartupSettings settings = {};
  std::string output;
};

constexpr char specify_operations[] =
    "Specify the operation(s) to be executed. Example: --execute=\"show group\"";
constexpr char specify_file[] =
    "Specify the file containing the operation(s) to be executed. Example: "
    "--execute-file=my_file.txt";
constexpr char specify_save_file[] =
    "Specify the file where the executed operation(s) will be saved. Example: "
    "--save-file=my_file.txt";

using OptionsDeathTest = Options;

}  // namespace

TEST_F(Options, NoArgumentsSettleNothing) {
  EXPECT_TRUE(read({}));
  EXPECT_EQ("", output);
  EXPECT_EQ(0, settings.help_requested + settings.version_requested + settings.debug_requested +
                   settings.no_path + settings.no_status);
  EXPECT_STREQ("", settings.statement_text);
  EXPECT_STREQ("", settings.statement_file_path);
  EXPECT_STREQ("", settings.save_file_path);
}

TEST_F(Options, EachFlagSetsItsOwnSetting) {
  const std::pair<const char*, int StartupSettings::*> flags[] = {
      {"--help", &StartupSettings::help_requested},
      {"--version", &StartupSettings::version_requested},
      {"--debug", &StartupSettings::debug_requested},
      {"--no-path", &StartupSettings::no_path},
      {"--no-status", &StartupSettings::no_status},
  };
  for (const auto& [text, flag] : flags) {
    settings = {};
    EXPECT_TRUE(read({text})) << text;
    EXPECT_EQ(1, settings.*flag) << text;
    EXPECT_EQ(1, settings.help_requested + settings.version_requested + settings.debug_requested +
                     settings.no_path + settings.no_status)
        << text;
  }
}

TEST_F(Options, FlagGivenTwiceIsHarmless) {
  EXPECT_TRUE(read({"--debug", "--debug"}));
  EXPECT_EQ(1, settings.debug_requested);
}

TEST_F(Options, EachValueGoesToItsOwnSetting) {
  EXPECT_TRUE(read({"--execute=show group", "--execute-file=a.txt", "--save-file=b.txt"}));
  EXPECT_STREQ("show group", settings.statement_text);
  EXPECT_STREQ("a.txt", settings.statement_file_path);
  EXPECT_STREQ("b.txt", settings.save_file_path);
}

TEST_F(Options, ValueIsAllThatFollowsTheEqualsSign) {
  EXPECT_TRUE(read({"--execute= a=b --help\n"}));
  EXPECT_STREQ(" a=b --help\n", settings.statement_text);
  EXPECT_EQ(0, settings.help_requested);
}

TEST_F(Options, LastOfSeveralValuesWins) {
  EXPECT_TRUE(read({"--execute=a longer one", "--execute=b"}));
  EXPECT_STREQ("b", settings.statement_text);
}

TEST_F(Options, EmptyValueIsRefused) {
  expect_refused({"--execute="}, specify_operations);
  expect_refused({"--execute-file="}, specify_file);
  expect_refused({"--save-file="}, specify_save_file);
}

TEST_F(Options, EmptyValueIsRefusedAfterHelpAndAfterAnEarlierValue) {
  expect_refused({"--help", "--execute="}, specify_operations);
  expect_refused({"--save-file=a", "--save-file="}, specify_save_file);
}

TEST_F(Options, UnknownArgumentIsInvalid) {
  for (const char* argument : {"--bogus", "-h", "help", "-", "--", "", "%s", "<b>"}) {
    expect_invalid({argument}, argument);
  }
}

TEST_F(Options, FlagIsMatchedWhole) {
  for (const char* argument : {"--help=1", "--debugX", "--versio", "--no-path ", " --no-status"}) {
    expect_invalid({argument}, argument);
  }
}

TEST_F(Options, LetterCaseMatters) {
  expect_invalid({"--Help"}, "--Help");
  expect_invalid({"--EXECUTE=a"}, "--EXECUTE=a");
}

TEST_F(Options, ValueOptionNeedsItsEqualsSign) {
  expect_invalid({"--execute"}, "--execute");
  expect_invalid({"--execute-file", "a.txt"}, "--execute-file");
  expect_invalid({"--save-file"}, "--save-file");
}

TEST_F(Options, EveryArgumentIsReadBeforeAnyTakesEffect) {
  expect_invalid({"--help", "--bogus"}, "--bogus");
}

TEST_F(Options, FirstBadArgumentEndsTheReading) {
  expect_invalid({"--one", "--execute="}, "--one");
  expect_refused({"--execute=", "--one"}, specify_operations);
}

TEST_F(Options, LongestValueIsAccepted) {
  const std::string value(1023, 'x');
  EXPECT_TRUE(read({"--execute=" + value, "--execute-file=" + value, "--save-file=" + value}));
  EXPECT_EQ(value, settings.statement_text);
  EXPECT_EQ(value, settings.statement_file_path);
  EXPECT_EQ(value, settings.save_file_path);
}

TEST_F(OptionsDeathTest, LongerValueAborts) {
  const std::string value(1024, 'x');
  for (const char* option : {"--execute=", "--execute-file=", "--save-file="}) {
    EXPECT_EXIT(read({option + value}), testing::KilledBySignal(SIGABRT), "") << option;
  }
}

TEST_F(OptionsDeathTest, LongerValueAbortsAfterHelpToo) {
  EXPECT_EXIT(read({"--help", "--execute=" + std::string(1024, 'x')}),
              testing::KilledBySignal(SIGABRT), "");
}

TEST_F(Options, AnArgumentRefusedEarlierSparesTheOverlongValue) {
  expect_invalid({"--bogus", "--execute=" + std::string(2000, 'x')}, "--bogus");
}

TEST(Usage, ListsTheOptionsInBold) {
  EXPECT_EQ(
      "  \x1b[1m--help\x1b[0m            Show this help and exit.\n"
      "  \x1b[1m--version\x1b[0m         Show the version of KelvoCLI and exit.\n"
      "  \x1b[1m--debug\x1b[0m           Show debug information when executing Kelvo operations.\n"
      "  \x1b[1m--no-path\x1b[0m         Do not show group path currently in use in KelvoCLI "
      "prompt.\n"
      "  \x1b[1m--no-status\x1b[0m       Do not show status after executing Kelvo operations.\n"
      "  \x1b[1m--execute=X\x1b[0m       Execute Kelvo operation(s) \"X\" and exit.\n"
      "  \x1b[1m--execute-file=X\x1b[0m  Execute Kelvo operation(s) stored in file \"X\" and "
      "exit.\n"
      "  \x1b[1m--save-file=X\x1b[0m     Save executed Kelvo operation(s) to file \"X\".\n\n",
      capture_stdout(print_usage));
}
