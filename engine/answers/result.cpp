// Reading ahead, and walking rows and elements.
#include "answers/result.h"

#include <new>
#include <utility>

namespace kelvo {

void Result::start(std::unique_ptr<RowSource> source) {
  reset();
  source_ = std::move(source);
  std::size_t bytes = 0;
  while (source_ != nullptr && bytes < budget_bytes) {
    Block block;
    if (!source_->next(block)) {
      source_.reset();
      break;
    }
    elements_ += block.elements;
    bytes += block.bytes();
    ahead_.push_back(std::move(block));
  }
}

void Result::clear() {
  source_.reset();
  ahead_.clear();
  block_ = Block();
  row_ = row_length_ = left_ = 0;
  value_ = next_value_ = nullptr;
}

void Result::reset() {
  clear();
  elements_ = 0;
  failure_.reset();
}

bool Result::pull(Block& block) {
  if (!ahead_.empty()) {
    block = std::move(ahead_.front());
    ahead_.pop_front();
    return true;
  }
  if (source_ == nullptr) return false;
  if (!source_->next(block)) {
    source_.reset();
    return false;
  }
  elements_ += block.elements;
  return true;
}

// What reading throws here can no longer become the statement's status: it becomes the last row.
bool Result::next_block() {
  row_ = 0;
  try {
    return pull(block_);
  } catch (const StatementError& error) {
    failure_ = error;
  } catch (const std::bad_alloc&) {
    failure_ = StatementError(Status::no_memory, "There is not enough memory for the result");
  }
  source_.reset();
  block_.restart(broken_code, RowShape::scalar, 1);
  block_.values.resize(1);
  return true;
}

bool Result::next_row() {
  if (block_.shape == RowShape::line && !skip_line()) return false;
  while (block_.shape == RowShape::line ? row_ >= block_.value_count()
                                        : row_ >= block_.row_count()) {
    if (!next_block()) {
      clear();
      return false;
    }
  }
  return enter_row();
}

// A line's elements that were not visited are passed over, into the next block where it goes on
// there.
bool Result::skip_line() {
  while (left_ > 0) {
    if (!next_element() || block_.code == broken_code) break;
  }
  return true;
}

bool Result::enter_row() {
  const std::byte* begin = block_.values.data();
  switch (block_.shape) {
    case RowShape::scalar:
      value_ = begin + row_++ * block_.value_size;
      break;
    case RowShape::line:
      row_length_ = left_ = block_.line_length;
      break;
    case RowShape::list:
      row_length_ = left_ = block_.offsets[row_ + 1] - block_.offsets[row_];
      next_value_ = begin + block_.offsets[row_] * block_.value_size;
      ++row_;
      break;
    case RowShape::text: {
      const std::size_t offset = block_.offsets[row_++];
      value_ = offset == Block::null_text ? nullptr : begin + offset;
      break;
    }
  }
  return true;
}

const char* Result::text() const { return reinterpret_cast<const char*>(value_); }

bool Result::next_element() {
  if (left_ == 0) return false;
  if (block_.shape == RowShape::line) {
    if (row_ >= block_.value_count() && (!next_block() || block_.shape != RowShape::line)) {
      // The rest could not be read: this row ends here, and the next one says so.
      left_ = 0;
      return false;
    }
    value_ = block_.values.data() + row_++ * block_.value_size;
  } else {
    value_ = next_value_;
    next_value_ += block_.value_size;
  }
  --left_;
  return true;
}

}  // namespace kelvo
