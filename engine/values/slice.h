// A slice as it was written, "[i, a:b, a:b:s, ..., :]", before anyone knows the extents it is meant
// for.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo {

enum class SliceItemKind { index, range, ellipsis };

struct SliceItem {
  SliceItemKind kind = SliceItemKind::range;
  std::optional<std::int64_t> begin;  // index: the index itself; negative counts from the end
  std::optional<std::int64_t> end;    // range only, excluded
  std::int64_t step = 1;              // range only, positive
};

/// One item a dimension; an empty slice selects everything.
using Slice = std::vector<SliceItem>;

}  // namespace kelvo
