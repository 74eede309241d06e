// A JSON file as the parser reads it: byte by byte, counted by line. The names that begin with a
// capital are the parser's.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "error.h"
#include "import/host_file.h"
#include "values/text.h"

namespace kelvo {

class JsonInput {
 public:
  using Ch = char;

  explicit JsonInput(const std::string& path) : path_(path), file_(open_host_file(path)) {
    fill();
    if (std::string_view(buffer_.data(), end_).starts_with(byte_order_mark))
      at_ = line_begin_ = byte_order_mark.size();
  }

  [[nodiscard]] Ch Peek() const { return at_ < end_ ? buffer_[at_] : '\0'; }
  Ch Take() {
    const Ch byte = Peek();
    if (byte == '\n') {
      ++line_;
      line_begin_ = Tell() + 1;
    }
    if (++at_ >= end_) fill();
    return byte;
  }
  [[nodiscard]] std::size_t Tell() const { return before_ + at_; }

  // Of the interface, for parsing in place, which is not done here.
  static Ch* PutBegin() { return nullptr; }
  void Put(Ch /*byte*/) {}
  void Flush() {}
  static std::size_t PutEnd(Ch* /*begin*/) { return 0; }

  [[nodiscard]] bool at_end() const { return at_ >= end_; }

  [[noreturn]] void fail(const StatementError& error) const {
    fail_in_file(path_, line_, Tell() - line_begin_ + 1, error);
  }

 private:
  void fill() {
    before_ += end_;
    at_ = 0;
    end_ = std::fread(buffer_.data(), 1, buffer_.size(), file_.get());
    if (end_ == 0 && std::ferror(file_.get()) != 0) refuse_host_file(path_);
  }

  std::string path_;
  HostFile file_;
  std::array<char, 65536> buffer_{};
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  std::size_t before_ = 0;  // bytes of the file before the buffer
  std::size_t line_ = 1;
  std::size_t line_begin_ = 0;
};

}  // namespace kelvo
