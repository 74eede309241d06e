// Plans blocks and walks them.
#include "values/block_walk.h"

#include <algorithm>

namespace kelvo {

BlockWalk::BlockWalk(const Selection& selection, Extent most)
    : selection_(selection),
      at_(selection.count.size(), 0),
      start_(at_.size()),
      count_(at_.size(), 1),
      done_(selection.elements() == 0) {
  if (at_.empty()) return;
  Extent below = 1;
  split_ = at_.size() - 1;
  while (split_ > 0 && below * selection.count[split_] <= most) below *= selection.count[split_--];
  rows_ = std::clamp<Extent>(most / std::max<Extent>(1, below), 1,
                             std::max<Extent>(1, selection.count[split_]));
}

bool BlockWalk::next() {
  if (done_) return false;
  elements_ = 1;
  for (std::size_t d = 0; d < at_.size(); ++d) {
    start_[d] = selection_.start[d] + at_[d] * selection_.stride[d];
    if (d == split_) count_[d] = std::min(rows_, selection_.count[d] - at_[d]);
    if (d > split_) count_[d] = selection_.count[d];
    elements_ *= count_[d];
  }
  if (at_.empty()) {
    done_ = true;
    return true;
  }
  at_[split_] += count_[split_];
  for (std::size_t d = split_; at_[d] == selection_.count[d]; --d) {
    if (d == 0) {
      done_ = true;
      break;
    }
    at_[d] = 0;
    ++at_[d - 1];
  }
  return true;
}

}  // namespace kelvo
