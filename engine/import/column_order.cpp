// Gathering rows, a column at a time as they lie in the file.
#include "import/column_order.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kelvo {

ColumnOrder::ColumnOrder(std::FILE* file, std::vector<std::uint64_t> shape,
                         std::size_t element_size)
    : file_(file), begin_(::ftello(file)), shape_(std::move(shape)), element_size_(element_size) {
  for (std::size_t d = 1; d < shape_.size(); ++d)
    row_length_ *= static_cast<std::size_t>(shape_[d]);
}

std::size_t ColumnOrder::read(std::byte* bytes, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    if (taken_ == rows_.size() && !gather_rows()) break;
    const std::size_t part = std::min(count - done, rows_.size() - taken_);
    std::memcpy(bytes + done, rows_.data() + taken_, part);
    taken_ += part;
    done += part;
  }
  return done;
}

bool ColumnOrder::gather_rows() {
  first_row_ += row_count_;
  const std::uint64_t left = shape_[0] - first_row_;
  if (left == 0) return false;
  const std::size_t row_bytes = row_length_ * element_size_;
  row_count_ = static_cast<std::size_t>(
      std::min<std::uint64_t>(left, std::max<std::size_t>(1, budget / row_bytes)));
  rows_.resize(row_count_ * row_bytes);
  column_.resize(row_count_ * element_size_);
  at_.assign(shape_.size() - 1, 0);
  taken_ = 0;
  std::size_t place = 0;
  for (std::size_t column = 0; column < row_length_; ++column) {
    if (!gather_column(column, place)) {
      rows_.clear();
      return false;
    }
    next_place(&place);
  }
  return true;
}

// The rows' elements of one column lie side by side in the file.
bool ColumnOrder::gather_column(std::size_t column, std::size_t place) {
  const std::uint64_t element = column * shape_[0] + first_row_;
  const auto offset = static_cast<off_t>(element * element_size_);
  const bool follows = row_count_ == shape_[0] && column > 0;
  if (!follows && ::fseeko(file_, begin_ + offset, SEEK_SET) != 0) return false;
  if (std::fread(column_.data(), 1, column_.size(), file_) != column_.size()) return false;
  for (std::size_t row = 0; row < row_count_; ++row) {
    std::memcpy(rows_.data() + (row * row_length_ + place) * element_size_,
                column_.data() + row * element_size_, element_size_);
  }
  return true;
}

// Moves on to the next column of the file; `place` is where in its row it belongs.
void ColumnOrder::next_place(std::size_t* place) {
  std::size_t below = row_length_;  // elements of the row from one index to the next
  for (std::size_t d = 0; d < at_.size(); ++d) {
    const auto extent = static_cast<std::size_t>(shape_[d + 1]);
    below /= extent;
    *place += below;
    if (++at_[d] < extent) return;
    *place -= below * extent;
    at_[d] = 0;
  }
}

}  // namespace kelvo
