// A slice resolved against the extents that it is meant for: what to read, and the shape that comes
// out.
#pragma once

#include <string>
#include <vector>

#include "values/slice.h"
#include "values/space.h"

namespace kelvo {

struct Selection {
  // One entry a dimension of the object; none for a scalar one.
  std::vector<Extent> start;
  std::vector<Extent> stride;
  std::vector<Extent> count;
  // The extents of the result: those of the dimensions that no single index removed.
  std::vector<Extent> shape;
  bool is_null = false;  // of an object without any element by its kind

  [[nodiscard]] Extent elements() const;
};

/// Whether the selection is all of an object with that space.
bool selects_all(const Selection& selection, const Space& space);

/// NumPy's meaning: negative counts from the end, a bound outside is clipped, a single index
/// outside is an error. `name` as messages show the object: `Dataset "/x"`.
Selection resolve_slice(const Slice& slice, const Space& space, const std::string& name);

}  // namespace kelvo
