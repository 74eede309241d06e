// Script mode: the statement text, the statement file, their order and their failures.
#include "cli/script.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "cli/bounded.h"
#include "support/capture.h"
#include "support/scripted_engine.h"

namespace {

using scripted::Calls;

class Script : public testing::Test {
 protected:
  Script() {
    scripted::engine().reset();
    std::string name = testing::TempDir() + "/kelvocli_script_XXXXXX";
    folder_ = mkdtemp(name.data());
    settings.no_status = 1;
  }
  ~Script() override { std::filesystem::remove_all(folder_); }

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ / name; }

  void text(const std::string& statements) {
    bounded_copy(settings.statement_text, statements.c_str());
  }
  void name_file(const std::string& file_path) {
    bounded_copy(settings.statement_file_path, file_path.c_str());
  }
  void file(const std::string& content) {
    std::ofstream(path("script.txt"), std::ios::binary) << content;
    name_file(path("script.txt"));
  }

  int run(std::FILE* save_file = nullptr) {
    int status = -1;
    output = capture_stdout([&] { status = run_script(&settings, save_file); });
    return status;
  }

  // Tells whether files were left open.
  static int lowest_free_descriptor() {
    const int descriptor = dup(STDIN_FILENO);
    close(descriptor);
    return descriptor;
  }

  static const Calls& executed() { return scripted::engine().executed(); }

  StartupSettings settings = {};
  std::string output;

 private:
  std::filesystem::path folder_;
};

}  // namespace

TEST_F(Script, RunsTheText) {
  text("a\nb");
  EXPECT_EQ(EXIT_SUCCESS, run());
  EXPECT_EQ((Calls{"a", "b"}), executed());
}

TEST_F(Script, FrontEndCommandsGoToTheEngine) {
  text("exit\nhelp");
  EXPECT_EQ(EXIT_SUCCESS, run());
  EXPECT_EQ((Calls{"exit", "help"}), executed());
  EXPECT_EQ("", output);
}

TEST_F(Script, RunsTheFileUnchangedButForItsLineEnds) {
  file("# first\r\n\r\n a \r\nb\xff\rc\n");
  EXPECT_EQ(EXIT_SUCCESS, run());
  EXPECT_EQ((Calls{" a ", "b\xff\rc"}), executed());
}

TEST_F(Script, TextRunsBeforeTheFile) {
  text("from text");
  file("from file");
  EXPECT_EQ(EXIT_SUCCESS, run());
  EXPECT_EQ((Calls{"from text", "from file"}), executed());
}

TEST_F(Script, EachOfTheTwoIsOneRun) {
  text("a\nb");
  file("c\nd");
  run();
  int clears = 0;
  for (const std::string& call : scripted::engine().calls()) {
    if (call == "kelvo_cursor_clear(null)") ++clears;
  }
  EXPECT_EQ(2, clears);
}

TEST_F(Script, FailingTextEndsTheRunAndTheFileIsNotOpened) {
  scripted::engine().fails("bad", 5, 0, "No");
  text("bad");
  name_file(path("missing.txt"));
  EXPECT_EQ(EXIT_FAILURE, run());
  EXPECT_EQ("No (status 5).\n", output);
}

TEST_F(Script, StatusIsTheFilesWhenTheTextSucceeded) {
  scripted::engine().fails("bad", -1, 3, "No");
  text("a");
  file("\nbad\nc");
  EXPECT_EQ(EXIT_FAILURE, run());
  EXPECT_EQ("No (line 2 at position 3 - status -1).\n", output);
  EXPECT_EQ((Calls{"a", "bad"}), executed());
}

TEST_F(Script, EmptyFileIsNotRun) {
  file("");
  EXPECT_EQ(EXIT_SUCCESS, run());
  EXPECT_EQ("", output);
  EXPECT_EQ(Calls{}, scripted::engine().calls());
}

TEST_F(Script, FileThatBeginsWithANulIsNotRun) {
  file(std::string("\0a", 2));
  EXPECT_EQ(EXIT_SUCCESS, run());
  EXPECT_EQ(Calls{}, scripted::engine().calls());
}

TEST_F(Script, FileEndsAtItsFirstNul) {
  file(std::string("show group\0bad\n", 15));
  EXPECT_EQ(EXIT_SUCCESS, run());
  EXPECT_EQ(Calls{"show group"}, executed());
}

TEST_F(Script, FileMayBeLongerThanAnyBuffer) {
  const std::string statement(100000, 'x');
  file(statement + "\nb");
  EXPECT_EQ(EXIT_SUCCESS, run());
  EXPECT_EQ((Calls{statement, "b"}), executed());
}

TEST_F(Script, MissingFile) {
  name_file(path("missing.txt"));
  EXPECT_EQ(EXIT_FAILURE, run());
  EXPECT_EQ("Error when opening file \"" + path("missing.txt") + "\" as it does not exist.\n\n",
            output);
}

TEST_F(Script, FileBehindAnotherFile) {
  file("a");
  name_file(path("script.txt/b"));
  EXPECT_EQ(EXIT_FAILURE, run());
  EXPECT_EQ("Error when opening file \"" + path("script.txt/b") + "\".\n\n", output);
}

TEST_F(Script, OutputOfTheTextStaysWhenTheFileFails) {
  scripted::engine().answers("a").row(KELVO_INT, {7});
  text("a");
  name_file(path("missing.txt"));
  EXPECT_EQ(EXIT_FAILURE, run());
  EXPECT_EQ("7\nError when opening file \"" + path("missing.txt") + "\" as it does not exist.\n\n",
            output);
}

TEST_F(Script, FileThatCannotBeSoughtIn) {
  // The other end of a pipe that is at hand as a path.
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  const std::string pipe_path = "/dev/fd/" + std::to_string(ends[0]);
  name_file(pipe_path);
  EXPECT_EQ(EXIT_FAILURE, run());
  EXPECT_EQ(
      "Error when reading file \"" + pipe_path + "\" as its size could not be calculated.\n\n",
      output);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(Script, ClosesBothFilesHoweverItEnds) {
  scripted::engine().fails("bad", 5, 0, "No");
  const int free_descriptor = lowest_free_descriptor();
  for (const char* statement : {"good", "bad"}) {
    file(statement);
    run(std::fopen(path("saved.txt").c_str(), "a"));
    EXPECT_EQ(free_descriptor, lowest_free_descriptor()) << statement;
  }
  name_file(path("missing.txt"));
  run(std::fopen(path("saved.txt").c_str(), "a"));
  EXPECT_EQ(free_descriptor, lowest_free_descriptor());
}

TEST_F(Script, BothRunsAppendToTheSaveFile) {
  bounded_copy(settings.save_file_path, path("saved.txt").c_str());
  std::ofstream(path("saved.txt")) << "earlier\n";
  text("a");
  file("b\r\n#c\nd # e");
  EXPECT_EQ(EXIT_SUCCESS, run(std::fopen(settings.save_file_path, "a")));
  std::ifstream saved(path("saved.txt"));
  EXPECT_EQ("earlier\na\nb\nd # e\n", std::string(std::istreambuf_iterator<char>(saved), {}));
}

TEST_F(Script, StatusIsShownUnlessSwitchedOff) {
  settings.no_status = 0;
  scripted::engine().answers("a").count(0);
  text("a");
  EXPECT_EQ(EXIT_SUCCESS, run());
  EXPECT_EQ(0U, output.find("\x1b[1m(0 elements returned in ")) << output;
}
