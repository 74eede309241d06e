// The lines of a text file of any size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "error.h"
#include "import/host_file.h"

namespace kelvo {

class LineReader {
 public:
  /// Throws StatementError where the file does not exist or cannot be read.
  explicit LineReader(const std::string& path);

  /// Bytes that a line may have, so that a file without lines does not fill the memory.
  static constexpr std::size_t longest_line = std::size_t{256} * 1024 * 1024;

  /// The next line without its end ("\n" or "\r\n"); good until the next call. False at the end of
  /// the file. Throws out_of_range for a line that is too long.
  bool next(std::string_view* line);

  /// The whole lines that are in memory by now, with their ends, after reading more where there are
  /// none: those that next would give. Good until the next call; empty at the end of the file,
  /// where a line may lack its end, and where a line is long.
  std::string_view whole_lines();

  /// Takes the first of the whole lines for given, which have so many bytes with their ends.
  void pass_lines(std::size_t bytes, std::uint64_t count) {
    begin_ += bytes;
    line_number_ += count;
  }

  /// Whether the line given last ended with "\r\n".
  [[nodiscard]] bool had_return() const { return had_return_; }

  /// Of the line given last, from 1.
  [[nodiscard]] std::uint64_t line_number() const { return line_number_; }

  /// Throws the error with the file and the line in front, and the column (a field's number, from
  /// 1) where it is not 0.
  [[noreturn]] void fail(std::uint64_t line, std::uint64_t column,
                         const StatementError& error) const;

 private:
  bool fill();
  [[noreturn]] void fail_length() const;

  std::string path_;
  HostFile file_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  // of what has not been given yet
  std::size_t end_ = 0;
  std::uint64_t line_number_ = 0;
  bool had_return_ = false;
};

}  // namespace kelvo
