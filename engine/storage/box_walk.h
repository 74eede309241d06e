// Cuts a whole space into boxes that are read or written at once, in C order. Boxes hold whole
// chunks, so that no chunk is coded twice.
#pragma once

#include <vector>

#include "values/selection.h"
#include "values/space.h"

namespace kelvo {

class BoxWalk {
 public:
  /// `unit`: the chunk's extents, or none. Boxes have about 4 MiB, or one unit where that is more.
  BoxWalk(const Space& space, std::vector<Extent> unit, std::size_t element_size);

  /// The next box in C order of boxes; false when there are none left.
  bool next(Selection* box);

 private:
  std::vector<Extent> extents_;
  std::vector<Extent> box_;
  std::vector<Extent> at_;  // where the next box begins
  bool done_ = false;
};

}  // namespace kelvo
