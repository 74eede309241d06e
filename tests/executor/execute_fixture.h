// Runs texts through execute with the scripted engine, a save file and a clock of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <deque>
#include <memory>
#include <string>

/// What libc's clock answers, call by call, as milliseconds since the epoch; the last answer stays.
extern std::deque<long long> clock_readings;
extern int clock_calls;

inline const std::string no_elements = "\x1b[1m(0 elements returned in 0.0 seconds)\x1b[0m\n";
inline const std::string one_element = "\x1b[1m(1 element returned in 0.0 seconds)\x1b[0m\n";

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

class ExecuteTest : public testing::Test {
 protected:
  ExecuteTest();
  ~ExecuteTest() override;

  /// Runs a text with status shown and a save file.
  int run(const std::string& text) { return run(text, 0, "saved.txt", save_file_.get()); }

  int run_without_status(const std::string& text) {
    return run(text, 1, "saved.txt", save_file_.get());
  }

  int run_without_save_file(const std::string& text) { return run(text, 0, "", nullptr); }

  int run(const std::string& text, int no_status, const char* path, std::FILE* save_file);

  /// What the last run wrote.
  const std::string& output() const { return output_; }

  /// What has reached the save file, its stream's buffer aside.
  std::string saved() const;

 private:
  File save_file_;
  std::string output_;
};
