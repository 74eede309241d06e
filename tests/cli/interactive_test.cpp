// The pieces of the interactive loop, and the loop itself reading its lines from a file. What a
// terminal adds is tested in tests/terminal.
#include "cli/interactive.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include <readline/history.h>
#include <readline/readline.h>

#include "support/capture.h"
#include "support/scripted_engine.h"

namespace {

using scripted::Calls;

// --- Joining lines ---

struct Joined {
  std::string statement;
  bool complete;
  bool operator==(const Joined&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Joined& joined) {
  return out << '"' << joined.statement << "\" complete: " << joined.complete;
}

Joined join(const std::vector<std::string>& lines) {
  char statement[text_size] = "";
  bool complete = false;
  for (const std::string& line : lines) complete = join_line(line.c_str(), statement);
  return {statement, complete};
}

std::string text(std::size_t length) { return std::string(length, 'x'); }

}  // namespace

TEST(JoinLine, LineWithoutBackslashIsComplete) {
  EXPECT_EQ((Joined{"show group", true}), join({"show group"}));
}

TEST(JoinLine, BlanksAreContent) { EXPECT_EQ((Joined{"  ", true}), join({"  "})); }

TEST(JoinLine, BackslashContinuesWithNothingInBetween) {
  EXPECT_EQ((Joined{"show", false}), join({"show\\"}));
  EXPECT_EQ((Joined{"showgroup", true}), join({"show\\", "group"}));
  EXPECT_EQ((Joined{"show group", true}), join({"show \\", "group"}));
  EXPECT_EQ((Joined{"exit", true}), join({"ex\\", "it"}));
  EXPECT_EQ((Joined{"abc", true}), join({"a\\", "b\\", "c"}));
}

TEST(JoinLine, TwoBackslashesAreOneAndEndTheStatement) {
  EXPECT_EQ((Joined{"a\\", true}), join({"a\\\\"}));
  EXPECT_EQ((Joined{"\\", true}), join({"\\\\"}));
}

TEST(JoinLine, ThreeBackslashesAreOneAndContinue) {
  EXPECT_EQ((Joined{"a\\", false}), join({"a\\\\\\"}));
  EXPECT_EQ((Joined{"a\\b", true}), join({"a\\\\\\", "b"}));
}

TEST(JoinLine, EachPairIsOne) {
  EXPECT_EQ((Joined{"a\\\\", true}), join({"a\\\\\\\\"}));
  EXPECT_EQ((Joined{"a\\\\", false}), join({"a\\\\\\\\\\"}));
}

TEST(JoinLine, BackslashesElsewhereAreKept) {
  EXPECT_EQ((Joined{"\\\\a\\ ", true}), join({"\\\\a\\ "}));
}

TEST(JoinLine, LoneBackslashBeginsNothing) {
  EXPECT_EQ((Joined{"", false}), join({"\\"}));
  EXPECT_EQ((Joined{"", false}), join({"\\", ""}));
}

TEST(JoinLine, EmptyLineEndsAStatementBegun) {
  EXPECT_EQ((Joined{"show", true}), join({"show\\", ""}));
}

TEST(JoinLine, EmptyLineOtherwiseIsNoStatement) { EXPECT_EQ((Joined{"", false}), join({""})); }

TEST(JoinLine, LongestStatementFits) {
  EXPECT_EQ((Joined{text(1023), true}), join({text(1023)}));
  EXPECT_EQ((Joined{text(1023), true}), join({text(1000) + "\\", text(23)}));
  EXPECT_EQ((Joined{text(1023), false}), join({text(1023) + "\\"}));
  EXPECT_EQ((Joined{text(1022) + "\\", true}), join({text(1022) + "\\\\"}));
}

TEST(JoinLineDeathTest, LongerStatementAborts) {
  EXPECT_EXIT(join({text(1024)}), testing::KilledBySignal(SIGABRT), "");
  EXPECT_EXIT(join({text(1000) + "\\", text(24)}), testing::KilledBySignal(SIGABRT), "");
}

// --- Prompts ---

namespace {

class Prompt : public testing::Test {
 protected:
  Prompt() { scripted::engine().reset(); }

  std::string choose(const char* statement, int no_path) {
    return choose_prompt(statement, no_path, buffer_);
  }

 private:
  char buffer_[text_size];
};

using PromptDeathTest = Prompt;

}  // namespace

TEST_F(Prompt, ShowsTheGroupInUseAskedForTwice) {
  scripted::engine().groups({"/a b"});
  EXPECT_EQ("/a b>", choose("", 0));
  EXPECT_EQ((Calls{"_kelvo_show_use_group()", "_kelvo_show_use_group()"}),
            scripted::engine().calls());
}

TEST_F(Prompt, ShowsTheSecondAnswer) {
  scripted::engine().groups({"/first", "/second"});
  EXPECT_EQ("/second>", choose("", 0));
}

// Not guarded against: what libc makes of a null string under "%s" shows.
TEST_F(Prompt, ShowsTheSecondAnswerThoughItBeNull) {
  scripted::engine().groups({"/first", std::nullopt});
  EXPECT_EQ("(null)>", choose("", 0));
}

TEST_F(Prompt, WithoutAGroupInUseIsTheSignAloneAskedForOnce) {
  EXPECT_EQ(">", choose("", 0));
  EXPECT_EQ(Calls{"_kelvo_show_use_group()"}, scripted::engine().calls());
}

TEST_F(Prompt, WithoutPathAsksNothing) {
  scripted::engine().groups({"/a"});
  EXPECT_EQ(">", choose("", 1));
  EXPECT_EQ(Calls{}, scripted::engine().calls());
}

TEST_F(Prompt, OfAStatementBegunIsADotAndAsksNothing) {
  scripted::engine().groups({"/a"});
  EXPECT_EQ(".", choose("show", 0));
  EXPECT_EQ(".", choose("show", 1));
  EXPECT_EQ(Calls{}, scripted::engine().calls());
}

TEST_F(Prompt, LongestPathFits) {
  scripted::engine().groups({text(1022)});
  EXPECT_EQ(text(1022) + ">", choose("", 0));
}

TEST_F(PromptDeathTest, LongerPathAborts) {
  scripted::engine().groups({text(1023)});
  EXPECT_EXIT(choose("", 0), testing::KilledBySignal(SIGABRT), "");
}

// --- Commands ---

TEST(Command, ExitIsTheWholeText) {
  EXPECT_EQ(command_exit, recognize_command("EXIT"));
  for (const char* other : {"EXIT;", "EXIT NOW", "EXI", "", "EXIT\r"}) {
    EXPECT_EQ(command_statement, recognize_command(other)) << other;
  }
}

TEST(Command, HelpIsTheWordAloneOrWithMore) {
  EXPECT_EQ(command_help, recognize_command("HELP"));
  EXPECT_EQ(command_help, recognize_command("HELP SHOW GROUP"));
  for (const char* other : {"HELPME", "HELP;", "HEL", "HELP\r"}) {
    EXPECT_EQ(command_statement, recognize_command(other)) << other;
  }
}

// --- The loop ---

namespace {

constexpr char greeting[] =
    "KelvoCLI (Command-Line Interface) version 2.3.0 (using scripted test library)\n"
    "KelvoCLI comes with no warranty of any kind.\n\n"
    "Type \"help\" to get more information or \"exit\" to return to the terminal.\n\n";

class InteractiveLoop : public testing::Test {
 protected:
  InteractiveLoop() {
    scripted::engine().reset();
    clear_history();
    settings.no_status = 1;
  }

  // Readline's echo goes elsewhere, so that the output is the program's own.
  int run(const std::string& lines, std::FILE* save_file = nullptr) {
    std::string typed = lines;
    rl_instream = std::tmpfile();
    std::fputs(typed.c_str(), rl_instream);
    std::rewind(rl_instream);
    rl_outstream = std::fopen("/dev/null", "w");
    int status = -1;
    output = capture_stdout([&] { status = run_interactive(settings, save_file); });
    std::fclose(rl_instream);
    std::fclose(rl_outstream);
    return status;
  }

  static std::vector<std::string> history() {
    std::vector<std::string> lines;
    for (int i = 0; i < history_length; ++i)
      lines.emplace_back(history_get(history_base + i)->line);
    return lines;
  }

  StartupSettings settings = {};
  std::string output;
};

}  // namespace

TEST_F(InteractiveLoop, GreetsAndEndsWithExit) {
  EXPECT_EQ(EXIT_SUCCESS, run("  Exit  \nnot reached\n"));
  EXPECT_EQ(greeting, output);
  EXPECT_EQ(Calls{}, scripted::engine().executed());
}

TEST_F(InteractiveLoop, BindsTabToItself) {
  run("exit\n");
  EXPECT_EQ(&rl_insert, rl_function_of_keyseq("\t", nullptr, nullptr));
}

TEST_F(InteractiveLoop, RunsStatementsAsTyped) {
  run("  Show\t group # x\nexit;\nexit now\nhelpme\nhelp;\n  \n#c\neXiT\n");
  EXPECT_EQ((Calls{"  Show\t group # x", "exit;", "exit now", "helpme", "help;"}),
            scripted::engine().executed());
}

TEST_F(InteractiveLoop, BlankAndCommentLinesAreRunsOfTheirOwn) {
  settings.no_path = 1;
  run("  \n#c\nexit\n");
  EXPECT_EQ((Calls{"_kelvo_get_architecture()", "_kelvo_get_compiler()", "kelvo_cursor_clear(null)",
                   "kelvo_cursor_clear(null)"}),
            scripted::engine().calls());
}

TEST_F(InteractiveLoop, JoinsLinesAndStartsAfresh) {
  run("show \\\ngroup\nshow\\\n\n\n\\\na\nex\\\nit\n");
  EXPECT_EQ((Calls{"show group", "show", "a"}), scripted::engine().executed());
}

TEST_F(InteractiveLoop, AnswersHelpWithTheTopicAsTyped) {
  run("help   No\\\n  Topic \nexit\n");
  EXPECT_EQ(greeting + std::string("Help topic/subtopic \"No  Topic\" not found.\n"), output);
  EXPECT_EQ(Calls{}, scripted::engine().executed());
}

TEST_F(InteractiveLoop, GoesOnAfterAFailedStatement) {
  scripted::engine().fails("bad", 2, 0, "No");
  EXPECT_EQ(EXIT_SUCCESS, run("bad\ngood\nexit\n"));
  EXPECT_EQ(greeting + std::string("No (status 2).\n"), output);
  EXPECT_EQ((Calls{"bad", "good"}), scripted::engine().executed());
}

TEST_F(InteractiveLoop, KeepsEveryNonEmptyLineInTheHistory) {
  run("a\na\n\nb\\\n c\\\\\n  \nhelp x\nexit\n");
  EXPECT_EQ((std::vector<std::string>{"a", "a", "b\\", " c\\\\", "  ", "help x", "exit"}),
            history());
}

TEST_F(InteractiveLoop, SavesStatementsButNoCommandsAndClosesTheFile) {
  std::string path = testing::TempDir() + "/kelvocli_saved_XXXXXX";
  close(mkstemp(path.data()));
  std::FILE* save_file = std::fopen(path.c_str(), "a");
  const int descriptor = fileno(save_file);
  run("a\nhelp x\nb \\\nc\nexit\n", save_file);
  EXPECT_EQ(-1, fcntl(descriptor, F_GETFD)) << "not closed";
  std::ifstream saved(path);
  EXPECT_EQ("a\nb c\n", std::string(std::istreambuf_iterator<char>(saved), {}));
  std::remove(path.c_str());
}

TEST_F(InteractiveLoop, AsksForTheGroupBeforeEachNewStatement) {
  run("a\\\nb\n\nexit\n");
  int asked = 0;
  for (const std::string& call : scripted::engine().calls()) {
    if (call == "_kelvo_show_use_group()") ++asked;
  }
  EXPECT_EQ(3, asked);
}
