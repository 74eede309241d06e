// The sentences about files.
#include "cli/file_error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "support/capture.h"

namespace {

constexpr char path[] = "my <b>%s.txt";

std::string open_error(int error_number) {
  return capture_stdout([=] { report_open_error(path, error_number); });
}

std::string statement_file_error(int error_number) {
  return capture_stdout([=] { report_statement_file_error(path, error_number); });
}

std::string read_error(ReadError error) {
  return capture_stdout([=] { report_read_error(path, error); });
}

}  // namespace

TEST(FileError, MissingStatementFile) {
  EXPECT_EQ("Error when opening file \"my <b>%s.txt\" as it does not exist.\n\n",
            statement_file_error(ENOENT));
}

TEST(FileError, StatementFileWithoutAccess) {
  EXPECT_EQ("Error when opening file \"my <b>%s.txt\" as it is not accessible.\n\n",
            statement_file_error(EACCES));
}

TEST(FileError, StatementFileThatCannotBeOpenedOtherwise) {
  EXPECT_EQ("Error when opening file \"my <b>%s.txt\".\n\n", statement_file_error(ENOTDIR));
}

TEST(FileError, SaveFileWithoutAccess) {
  EXPECT_EQ("Error when opening file \"my <b>%s.txt\" as it is not accessible.\n\n",
            open_error(EACCES));
}

TEST(FileError, SaveFileInAMissingDirectoryIsNotSaidToBeMissing) {
  EXPECT_EQ("Error when opening file \"my <b>%s.txt\".\n\n", open_error(ENOENT));
}

TEST(FileError, SaveFileThatCannotBeOpenedOtherwise) {
  EXPECT_EQ("Error when opening file \"my <b>%s.txt\".\n\n", open_error(EISDIR));
}

TEST(FileError, SizeUnknown) {
  EXPECT_EQ("Error when reading file \"my <b>%s.txt\" as its size could not be calculated.\n\n",
            read_error(read_size_unknown));
}

TEST(FileError, OutOfMemory) {
  EXPECT_EQ("Error when reading file \"my <b>%s.txt\" as there is not enough memory available.\n\n",
            read_error(read_out_of_memory));
}

TEST(FileError, TooShort) {
  EXPECT_EQ("Error when reading file \"my <b>%s.txt\".\n\n", read_error(read_too_short));
}
