// Sizes boxes and walks over them.
#include "storage/box_walk.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr std::size_t box_bytes = std::size_t{4} * 1024 * 1024;

}  // namespace

BoxWalk::BoxWalk(const Space& space, std::vector<Extent> unit, std::size_t element_size)
    : extents_(space.extents), box_(std::move(unit)), at_(space.extents.size(), 0) {
  done_ = space.elements() == 0;
  if (box_.empty()) box_.assign(extents_.size(), 1);
  Extent bytes = std::max<std::size_t>(1, element_size);
  for (const Extent extent : box_) bytes *= extent;
  // The box grows in the fastest dimensions first, by whole units.
  for (std::size_t d = extents_.size(); d-- > 0 && bytes < box_bytes;) {
    const Extent units = (extents_[d] + box_[d] - 1) / box_[d];
    const Extent factor = std::clamp<Extent>(box_bytes / bytes, 1, std::max<Extent>(1, units));
    box_[d] *= factor;
    bytes *= factor;
  }
}

bool BoxWalk::next(Selection* box) {
  if (done_) return false;
  box->start = at_;
  box->stride.assign(at_.size(), 1);
  box->count.resize(at_.size());
  for (std::size_t d = 0; d < at_.size(); ++d) {
    box->count[d] = std::min(box_[d], extents_[d] - at_[d]);
  }
  box->shape = box->count;
  done_ = true;
  for (std::size_t d = at_.size(); d-- > 0;) {
    at_[d] += box_[d];
    if (at_[d] < extents_[d]) {
      done_ = false;
      break;
    }
    at_[d] = 0;
  }
  return true;
}

}  // namespace kelvo
