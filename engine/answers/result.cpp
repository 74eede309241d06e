// Reading ahead, and walking from block to block.
#include "answers/result.h"

#include <algorithm>
#include <new>
#include <utility>

namespace kelvo {

void Result::start(std::unique_ptr<RowSource> source) {
  reset();
  source_ = std::move(source);
  if (source_ == nullptr) return;
  if (const std::optional<std::uint64_t> seen = source_->look_through(budget_bytes)) {
    seen_ahead_ = *seen;
    return;
  }
  std::size_t bytes = 0;
  while (bytes < budget_bytes) {
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
  row_ = left_ = 0;
  cursor_ = Cursor();
}

void Result::give_up() {
  static_cast<void>(source_.release());
  clear();
}

void Result::reset() {
  clear();
  elements_ = seen_ahead_ = 0;
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
  try {
    if (!pull(block_)) return false;
    enter_block();
    return true;
  } catch (const StatementError& error) {
    failure_ = error;
  } catch (const std::bad_alloc&) {
    failure_ = StatementError(Status::no_memory, "There is not enough memory for the result");
  }
  source_.reset();
  block_.restart(broken_code, RowShape::scalar, 1);
  block_.values.resize(1);
  enter_block();
  return true;
}

void Result::enter_block() {
  row_ = 0;
  cursor_ = Cursor();
  cursor_.code = block_.code;
  cursor_.row_size = cursor_.element_size = block_.value_size;
  if (block_.shape == RowShape::scalar) {
    cursor_.next_row = block_.values.data();
    cursor_.rows_end = cursor_.next_row + block_.value_count() * block_.value_size;
  } else if (block_.shape == RowShape::text) {
    cursor_.texts = block_.values.data();
    cursor_.next_text = block_.offsets.data();
    cursor_.texts_end = cursor_.next_text + block_.offsets.size();
  }
}

bool Result::next_row() {
  skip_line();
  while (!enter_row()) {
    if (next_block()) continue;
    clear();
    return false;
  }
  return true;
}

// A line's elements that are in later blocks are passed over where nobody visited them.
void Result::skip_line() {
  while (left_ > 0) enter_next_part();
}

bool Result::enter_row() {
  switch (block_.shape) {
    case RowShape::scalar:
    case RowShape::text:
      return cursor_.step_to_row();
    case RowShape::line:
      return enter_line();
    case RowShape::list:
      return enter_list();
  }
  return false;
}

bool Result::enter_line() {
  if (row_ == block_.value_count()) return false;
  cursor_.element_count = left_ = block_.line_length;
  enter_part();
  return true;
}

// Goes on with the line in the next block. Where that could not be read the line ends, and the next
// row says so.
bool Result::enter_next_part() {
  const std::size_t count = cursor_.element_count;
  if (!next_block() || block_.shape != RowShape::line) {
    left_ = 0;
    return false;
  }
  cursor_.element_count = count;
  enter_part();
  return true;
}

// Gives the cursor what this block has of the elements left of the line.
void Result::enter_part() {
  const std::size_t count = std::min(left_, block_.value_count() - row_);
  cursor_.next_element = block_.values.data() + row_ * block_.value_size;
  cursor_.elements_end = cursor_.next_element + count * block_.value_size;
  row_ += count;
  left_ -= count;
}

bool Result::enter_list() {
  if (row_ == block_.row_count()) return false;
  const std::byte* begin = block_.values.data();
  cursor_.next_element = begin + block_.offsets[row_] * block_.value_size;
  cursor_.elements_end = begin + block_.offsets[row_ + 1] * block_.value_size;
  cursor_.element_count = block_.offsets[row_ + 1] - block_.offsets[row_];
  ++row_;
  return true;
}

bool Result::next_element() {
  while (!cursor_.step_to_element())
    if (left_ == 0 || !enter_next_part()) return false;
  return true;
}

}  // namespace kelvo
