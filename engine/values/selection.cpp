// Resolves slices.
#include "values/selection.h"

#include <algorithm>

#include "error.h"

namespace kelvo {
namespace {

// The items with the ellipsis, or the missing end, written out: exactly one for each dimension.
std::vector<SliceItem> fill_in(const Slice& slice, std::size_t rank, const std::string& name) {
  const auto ellipsis = std::find_if(slice.begin(), slice.end(), [](const SliceItem& item) {
    return item.kind == SliceItemKind::ellipsis;
  });
  const std::size_t written = slice.size() - (ellipsis == slice.end() ? 0 : 1);
  if (written > rank) {
    throw StatementError(Status::out_of_range, name + " has " + std::to_string(rank) +
                                                   (rank == 1 ? " dimension" : " dimensions") +
                                                   ", the slice has " + std::to_string(written));
  }
  std::vector<SliceItem> items(slice.begin(), ellipsis);
  items.resize(items.size() + rank - written);
  if (ellipsis != slice.end()) items.insert(items.end(), ellipsis + 1, slice.end());
  return items;
}

std::int64_t from_start(std::int64_t bound, std::int64_t extent) {
  return std::clamp<std::int64_t>(bound < 0 ? bound + extent : bound, 0, extent);
}

void add_index(std::int64_t index, std::int64_t extent, std::size_t dimension,
               const std::string& name, Selection* selection) {
  const std::int64_t at = index < 0 ? index + extent : index;
  if (at < 0 || at >= extent) {
    throw StatementError(Status::out_of_range, name + " has no index " + std::to_string(index) +
                                                   " in dimension " + std::to_string(dimension) +
                                                   " of extent " + std::to_string(extent));
  }
  selection->start.push_back(static_cast<Extent>(at));
  selection->stride.push_back(1);
  selection->count.push_back(1);
}

void add_range(const SliceItem& item, std::int64_t extent, Selection* selection) {
  const std::int64_t begin = from_start(item.begin.value_or(0), extent);
  const std::int64_t end = from_start(item.end.value_or(extent), extent);
  const std::int64_t length = end > begin ? (end - begin - 1) / item.step + 1 : 0;
  selection->start.push_back(static_cast<Extent>(begin));
  selection->stride.push_back(static_cast<Extent>(item.step));
  selection->count.push_back(static_cast<Extent>(length));
  selection->shape.push_back(static_cast<Extent>(length));
}

}  // namespace

Extent Selection::elements() const {
  if (is_null) return 0;
  Extent elements = 1;
  for (const Extent one : count) elements *= one;
  return elements;
}

bool selects_all(const Selection& selection, const Space& space) {
  // Rows that are about to be added may be as many as there are.
  const bool from_begin = std::all_of(selection.start.begin(), selection.start.end(),
                                      [](Extent start) { return start == 0; });
  return from_begin && std::equal(selection.count.begin(), selection.count.end(),
                                  space.extents.begin(), space.extents.end());
}

Selection resolve_slice(const Slice& slice, const Space& space, const std::string& name) {
  const std::vector<SliceItem> items = fill_in(slice, space.extents.size(), name);
  Selection selection;
  selection.is_null = space.is_null;
  for (std::size_t dimension = 0; dimension < items.size(); ++dimension) {
    const SliceItem& item = items[dimension];
    const auto extent = static_cast<std::int64_t>(space.extents[dimension]);
    if (item.kind == SliceItemKind::index) {
      add_index(item.begin.value_or(0), extent, dimension, name, &selection);
    } else {
      add_range(item, extent, &selection);
    }
  }
  return selection;
}

}  // namespace kelvo
