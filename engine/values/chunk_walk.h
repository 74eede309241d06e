// The chunks that a block touches, and the elements that it takes from each.
#pragma once

#include <cstddef>
#include <vector>

#include "values/space.h"

namespace kelvo {

/// A hyperslab: in each dimension `count` steps of `stride`, the first at `start`.
struct Steps {
  Extent start = 0;
  Extent stride = 1;
  Extent count = 0;
};

class ChunkWalk {
 public:
  /// `chunk`: the extents of a chunk, one a dimension; at least one dimension, none of extent 0.
  explicit ChunkWalk(std::vector<Extent> chunk);

  /// From now on it walks over the chunks of this block, which has an element at least.
  void begin(const std::vector<Steps>& block);

  /// Goes to the next chunk that an element of the block is in, in C order; false when there is
  /// none left.
  bool next();

  /// Where the chunk begins in the dataset.
  [[nodiscard]] const std::vector<Extent>& origin() const noexcept { return origin_; }

  /// Copies the elements that the chunk and the block share from the one to the other, both of them
  /// whole in C order.
  void copy(const std::byte* chunk, std::size_t element_size, std::byte* block) const;

 private:
  void enter(std::size_t dimension, Extent step);

  std::vector<Extent> chunk_;
  std::vector<Steps> block_;
  std::vector<Extent> origin_;
  std::vector<Extent> first_;  // of the block's steps in each dimension, those in the chunk
  std::vector<Extent> end_;
  bool is_begun_ = true;  // before a block is given, it is at the end of nothing
};

}  // namespace kelvo
