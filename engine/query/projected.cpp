// Stages that keep the stored order.
#include "query/projected.h"

#include <algorithm>

#include "storage/plain_data.h"

namespace kelvo {

bool Projected::next(Elements& elements) {
  Scan& scan = *run_->scan;
  Projection& projection = *run_->projection;
  while (scan.next_block()) {
    if (projection.is_identity() && !scan.is_choosy()) {
      elements = scan.whole_block();
      return true;
    }
    bytes_.clear();
    projection.forget_texts();
    std::size_t count = 0;
    Batch batch;
    const Mask* selected = nullptr;
    while (scan.next_batch(&batch, &selected)) count += projection.append(batch, selected, &bytes_);
    if (count == 0) continue;
    const bool varying = projection.type().has_varying_parts();
    elements = {bytes_.data(), count, varying ? nullptr : &bytes_};
    return true;
  }
  return false;
}

bool Projected::is_plain() const {
  return run_->projection->is_identity() && !run_->scan->is_choosy() &&
         lies_plain(run_->scan->place());
}

void Limited::rewind() {
  source_->rewind();
  skip_ = offset_;
  left_ = count_;
}

bool Limited::next(Elements& elements) {
  while (left_ > 0 && source_->next(elements)) {
    const auto skipped = static_cast<std::size_t>(std::min<Extent>(skip_, elements.count));
    const auto taken = static_cast<std::size_t>(std::min<Extent>(left_, elements.count - skipped));
    skip_ -= skipped;
    left_ -= taken;
    if (taken == 0) continue;
    if (taken < elements.count) elements.movable = nullptr;
    elements.data += skipped * type().size;
    elements.count = taken;
    return true;
  }
  return false;
}

Selection cut(Selection selection, Extent* offset, Extent count) {
  if (selection.count.empty() || selection.elements() == 0) return selection;
  const Extent below = selection.elements() / selection.count[0];
  const Extent first = std::min(*offset / below, selection.count[0]);
  *offset -= std::min(*offset, first * below);
  selection.start[0] += first * selection.stride[0];
  selection.count[0] -= first;
  // Computed without a sum that could overflow.
  const Extent steps = count / below + (count % below + *offset % below + below - 1) / below;
  selection.count[0] = std::min(selection.count[0], steps);
  return selection;
}

}  // namespace kelvo
