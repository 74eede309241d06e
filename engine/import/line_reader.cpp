// Reads in large pieces and cuts lines out of them.
#include "import/line_reader.h"

#include <algorithm>
#include <cstring>

#include "values/text.h"

namespace kelvo {
namespace {

constexpr std::size_t piece = std::size_t{256} * 1024;

}  // namespace

LineReader::LineReader(const std::string& path) : path_(path), file_(open_host_file(path)) {
  fill();
  if (std::string_view(buffer_.data(), end_).starts_with(byte_order_mark))
    begin_ = byte_order_mark.size();
}

// Moves what is left to the front and reads behind it; the buffer grows only for a line longer than
// it.
bool LineReader::fill() {
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
            buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
  end_ -= begin_;
  begin_ = 0;
  if (buffer_.size() < end_ + piece) buffer_.resize(end_ + piece);
  const std::size_t count = std::fread(buffer_.data() + end_, 1, piece, file_.get());
  if (count == 0 && std::ferror(file_.get()) != 0) refuse_host_file(path_);
  end_ += count;
  return count > 0;
}

bool LineReader::next(std::string_view* line) {
  std::size_t searched = 0;
  const void* found = nullptr;
  for (;;) {
    const char* begin = buffer_.data() + begin_;
    const std::size_t length = end_ - begin_;
    found = length > searched ? std::memchr(begin + searched, '\n', length - searched) : nullptr;
    if (found != nullptr) break;
    searched = length;
    if (length > longest_line) fail_length();
    if (!fill()) break;
  }
  const char* begin = buffer_.data() + begin_;
  std::size_t length = end_ - begin_;
  if (found == nullptr && length == 0) return false;
  if (found != nullptr) length = static_cast<std::size_t>(static_cast<const char*>(found) - begin);
  begin_ += length + (found != nullptr ? 1 : 0);
  ++line_number_;
  *line = std::string_view(begin, length);
  had_return_ = line->ends_with('\r');
  if (had_return_) line->remove_suffix(1);
  return true;
}

std::string_view LineReader::whole_lines() {
  std::size_t searched = 0;
  for (;;) {
    const std::string_view text(buffer_.data() + begin_, end_ - begin_);
    const std::size_t last = text.substr(searched).rfind('\n');
    if (last != std::string_view::npos) return text.substr(0, searched + last + 1);
    searched = text.size();
    if (searched > longest_line || !fill()) return {};
  }
}

void LineReader::fail_length() const {
  fail(line_number_ + 1, 0,
       StatementError(Status::out_of_range,
                      "The line has more than " + std::to_string(longest_line) + " bytes"));
}

void LineReader::fail(std::uint64_t line, std::uint64_t column, const StatementError& error) const {
  fail_in_file(path_, line, column, error);
}

}  // namespace kelvo
