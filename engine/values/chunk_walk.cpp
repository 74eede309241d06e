// Walking and copying.
#include "values/chunk_walk.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kelvo {
namespace {

// The shared elements in one dimension, and the bytes from one to the next on either side.
struct Axis {
  std::size_t count = 1;
  std::size_t chunk_step = 0;
  std::size_t block_step = 0;
};

// Where all elements of the faster axis lie between two of the slower one, on both sides, the two
// are one axis.
bool join(const Axis& slower, Axis* faster) {
  if (slower.chunk_step != faster->count * faster->chunk_step) return false;
  if (slower.block_step != faster->count * faster->block_step) return false;
  faster->count *= slower.count;
  return true;
}

template <std::size_t size>
void copy_apart(const Axis& axis, const std::byte* from, std::byte* to) {
  for (std::size_t i = 0; i < axis.count; ++i)
    std::memcpy(to + i * size, from + i * axis.chunk_step, size);
}

// Of the fastest axis, whose elements lie side by side in the block. The common sizes are told to
// the compiler, which then calls nothing to copy them.
void copy_row(const Axis& axis, const std::byte* from, std::byte* to) {
  const std::size_t size = axis.block_step;
  if (axis.chunk_step == size) {
    std::memcpy(to, from, axis.count * size);
    return;
  }
  switch (size) {
    case 1:
      return copy_apart<1>(axis, from, to);
    case 2:
      return copy_apart<2>(axis, from, to);
    case 4:
      return copy_apart<4>(axis, from, to);
    case 8:
      return copy_apart<8>(axis, from, to);
    default:
      for (std::size_t i = 0; i < axis.count; ++i)
        std::memcpy(to + i * size, from + i * axis.chunk_step, size);
  }
}

// From the fastest axis on; `last` is the slowest.
void copy_axes(const Axis* fastest, const Axis* last, const std::byte* from, std::byte* to) {
  if (last == fastest) return copy_row(*fastest, from, to);
  for (std::size_t i = 0; i < last->count; ++i)
    copy_axes(fastest, last - 1, from + i * last->chunk_step, to + i * last->block_step);
}

}  // namespace

ChunkWalk::ChunkWalk(std::vector<Extent> chunk)
    : chunk_(std::move(chunk)),
      origin_(chunk_.size()),
      first_(chunk_.size()),
      end_(chunk_.size()) {}

void ChunkWalk::begin(const std::vector<Steps>& block) {
  block_ = block;
  for (std::size_t d = 0; d < block_.size(); ++d) enter(d, 0);
  is_begun_ = false;
}

// Goes to the chunk that a step of the dimension is in.
void ChunkWalk::enter(std::size_t dimension, Extent step) {
  const Steps& steps = block_[dimension];
  const Extent at = steps.start + step * steps.stride;
  const Extent inside = at % chunk_[dimension];
  const Extent left = (chunk_[dimension] - inside + steps.stride - 1) / steps.stride;
  origin_[dimension] = at - inside;
  first_[dimension] = step;
  end_[dimension] = step + std::min(left, steps.count - step);
}

bool ChunkWalk::next() {
  if (!is_begun_) return is_begun_ = true;
  for (std::size_t d = block_.size(); d-- > 0;) {
    if (end_[d] < block_[d].count) {
      enter(d, end_[d]);
      return true;
    }
    enter(d, 0);
  }
  return false;
}

void ChunkWalk::copy(const std::byte* chunk, std::size_t element_size, std::byte* block) const {
  std::vector<Axis> axes;  // the fastest first
  std::size_t chunk_pitch = element_size;
  std::size_t block_pitch = element_size;
  for (std::size_t d = block_.size(); d-- > 0;) {
    const Steps& steps = block_[d];
    const Extent at = steps.start + first_[d] * steps.stride - origin_[d];
    chunk += static_cast<std::size_t>(at) * chunk_pitch;
    block += static_cast<std::size_t>(first_[d]) * block_pitch;
    const Axis axis = {static_cast<std::size_t>(end_[d] - first_[d]),
                       static_cast<std::size_t>(steps.stride) * chunk_pitch, block_pitch};
    if (axes.empty() || !join(axis, &axes.back())) axes.push_back(axis);
    chunk_pitch *= static_cast<std::size_t>(chunk_[d]);
    block_pitch *= static_cast<std::size_t>(steps.count);
  }
  copy_axes(axes.data(), &axes.back(), chunk, block);
}

}  // namespace kelvo
