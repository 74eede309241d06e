// What is saved, and what is said where it cannot be.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "executor/execute_fixture.h"
#include "support/scripted_engine.h"

namespace {

using scripted::engine;

TEST_F(ExecuteTest, WithoutSaveFileNothingIsWritten) {
  EXPECT_EQ(0, run_without_save_file("a"));
  EXPECT_EQ(no_elements, output());
}

TEST_F(ExecuteTest, StatementIsInTheFileBeforeTheNextOneRuns) {
  std::string seen;
  engine().answers("b").on("kelvo_execute", 1, [&] { seen = saved(); });
  run("a\nb");
  EXPECT_EQ("a\n", seen);
}

TEST_F(ExecuteTest, StatementIsSavedAfterItsCountLine) {
  std::string seen = "not asked";
  engine().answers("a").on("_kelvo_get_last_data_count", 1, [&] { seen = saved(); });
  run("a");
  EXPECT_EQ("", seen);
  EXPECT_EQ("a\n", saved());
}

TEST_F(ExecuteTest, SavedStatementIsNoFormat) {
  run("insert %s%d%n");
  EXPECT_EQ("insert %s%d%n\n", saved());
}

class FullDeviceTest : public ExecuteTest {
 protected:
  /// Longer than any stream's buffer, so that the write itself fails and not only the flush.
  const std::string long_statement = std::string(300000, 'x');
  File full{std::fopen("/dev/full", "a")};
};

TEST_F(FullDeviceTest, WriteErrorForLackOfSpaceIsReportedAsSuch) {
  EXPECT_EQ(0, run(long_statement, 0, "full.txt", full.get()));
  EXPECT_EQ(no_elements + "Error when writing operation \"" + long_statement +
                "\" into file \"full.txt\" as there is not enough space available.\n",
            output());
}

TEST_F(FullDeviceTest, WriteErrorDoesNotStopTheText) {
  const std::string message = "Error when writing operation \"" + long_statement +
                              "\" into file \"full.txt\" as there is not enough space available.\n";
  EXPECT_EQ(0, run(long_statement + "\n" + long_statement + "\n", 1, "full.txt", full.get()));
  EXPECT_EQ(message + message, output());
}

TEST_F(FullDeviceTest, ErrorThatShowsOnlyAtTheFlushGoesUnreported) {
  EXPECT_EQ(0, run("a\nb", 0, "full.txt", full.get()));
  EXPECT_EQ(no_elements + no_elements, output());
}

TEST_F(ExecuteTest, OtherWriteErrorIsReportedPlainly) {
  const File unwritable(std::fopen("/dev/null", "r"));
  EXPECT_EQ(0, run("a %s <b>", 0, "saved %d.txt", unwritable.get()));
  EXPECT_EQ(no_elements + "Error when writing operation \"a %s <b>\" into file \"saved %d.txt\".\n",
            output());
}

TEST_F(ExecuteTest, StatementAfterAWriteErrorIsStillSaved) {
  const File file(std::tmpfile());
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  // For the first statement alone the file's descriptor is one that cannot be written to.
  const File writable(fdopen(dup(fileno(file.get())), "r"));
  const File unwritable(std::fopen("/dev/null", "r"));
  engine().answers("a").on("kelvo_execute", 1,
                           [&] { dup2(fileno(unwritable.get()), fileno(file.get())); });
  engine().answers("b").on("kelvo_execute", 1,
                           [&] { dup2(fileno(writable.get()), fileno(file.get())); });
  EXPECT_EQ(0, run("a\nb", 1, "saved.txt", file.get()));
  EXPECT_EQ("Error when writing operation \"a\" into file \"saved.txt\".\n", output());
  char content[16] = "";
  EXPECT_EQ(2, pread(fileno(writable.get()), content, sizeof content, 0));
  EXPECT_STREQ("b\n", content);
}

}  // namespace
