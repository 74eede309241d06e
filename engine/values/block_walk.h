// Cuts a selection into blocks that follow one another in C order, each of them a hyperslab.
#pragma once

#include <vector>

#include "values/selection.h"

namespace kelvo {

class BlockWalk {
 public:
  /// Blocks of at most `most` elements, of one element at least. `selection` must outlive the walk.
  BlockWalk(const Selection& selection, Extent most);

  /// Goes to the next block; false when there is none left.
  bool next();

  /// Where the block begins in the object, and its steps in each dimension (the selection's strides
  /// apart). Both are empty for a scalar.
  [[nodiscard]] const std::vector<Extent>& start() const { return start_; }
  [[nodiscard]] const std::vector<Extent>& count() const { return count_; }
  [[nodiscard]] Extent elements() const { return elements_; }

 private:
  const Selection& selection_;
  // A block is `rows_` steps of dimension `split_`, whole below it and one step above it.
  std::size_t split_ = 0;
  Extent rows_ = 1;
  std::vector<Extent> at_;  // the next block, in steps of the selection
  std::vector<Extent> start_;
  std::vector<Extent> count_;
  Extent elements_ = 0;
  bool done_;
};

}  // namespace kelvo
