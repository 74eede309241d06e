// Appending to the save file, and what is said when that fails.
#include "executor/save.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "support/capture.h"

namespace {

class Save : public testing::Test {
 protected:
  ~Save() override {
    if (file_ != nullptr) std::fclose(file_);
  }

  void open(const char* path, const char* mode) {
    file_ = std::fopen(path, mode);
    ASSERT_NE(nullptr, file_) << path;
  }
  void open_empty() { file_ = std::tmpfile(); }
  void write_at_once() { std::setvbuf(file_, nullptr, _IONBF, 0); }

  // What is said while the statement is saved.
  std::string save(const char* statement) {
    return capture_stdout([&] { save_statement(statement, "my_file.txt", file_); });
  }

  // What has left the program, buffers left aside.
  std::string written() {
    char bytes[4096];
    const ssize_t count = pread(fileno(file_), bytes, sizeof bytes, 0);
    return {bytes, static_cast<std::size_t>(count)};
  }

 private:
  std::FILE* file_ = nullptr;
};

}  // namespace

TEST_F(Save, WritesTheStatementAsRunAndFlushes) {
  open_empty();
  EXPECT_EQ("", save("\t show  Group # %s "));
  EXPECT_EQ("\t show  Group # %s \n", written());
  EXPECT_EQ("", save("b"));
  EXPECT_EQ("\t show  Group # %s \nb\n", written());
}

TEST_F(Save, FullDeviceIsReported) {
  open("/dev/full", "a");
  write_at_once();
  EXPECT_EQ(
      "Error when writing operation \"use <b>%d\" into file \"my_file.txt\" as there is not enough "
      "space available.\n",
      save("use <b>%d"));
}

TEST_F(Save, AnyOtherFailureIsReportedPlainly) {
  open("/dev/null", "r");
  EXPECT_EQ("Error when writing operation \"a\" into file \"my_file.txt\".\n", save("a"));
}

TEST_F(Save, FailureThatShowsAtTheFlushIsNotReported) {
  open("/dev/full", "a");
  EXPECT_EQ("", save("a"));
}
