// Blocks and batches.
#include "query/scan.h"

#include <algorithm>
#include <utility>

namespace kelvo {

Scan::Scan(FileHandle file, ElementPlace place, Selection selection)
    : file_(std::move(file)), place_(std::move(place)), selection_(std::move(selection)) {
  restart();
}

void Scan::select(Selection selection) {
  selection_ = std::move(selection);
  restart();
}

void Scan::restart() {
  reader_.emplace(place_, selection_);
  next_ = 0;
  before_ = block_count_ = 0;
}

bool Scan::next_block() {
  before_ += block_count_;
  next_ = 0;
  // Memory that nobody took is used again.
  if (!movable_.empty()) block_.swap_bytes(movable_);
  const bool found = reader_->next(block_);
  block_count_ = block_.count();
  return found;
}

bool Scan::next_batch(Batch* batch, const Mask** selected) {
  if (next_ >= block_.count()) return false;
  const std::size_t size = place_.type.size;
  batch->elements = block_.data() + next_ * size;
  batch->stride = size;
  batch->count = std::min(batch_size, block_.count() - next_);
  batch->ordinal = before_ + next_;
  if (selection_.start.size() == 1) {
    batch->step = static_cast<std::int64_t>(selection_.stride[0]);
    batch->position = static_cast<std::int64_t>(selection_.start[0]) +
                      static_cast<std::int64_t>(batch->ordinal) * batch->step;
  }
  next_ += batch->count;
  *selected = all_active();
  if (condition_ == nullptr) return true;
  condition_->evaluate(*batch, all_active(), mask_.data());
  *selected = mask_.data();
  return true;
}

Elements Scan::whole_block() {
  if (place_.type.has_varying_parts()) return {block_.data(), block_.count(), nullptr};
  const std::size_t count = block_.count();
  block_.swap_bytes(movable_);
  return {movable_.data(), count, &movable_};
}

}  // namespace kelvo
