// Hyperslabs that the HDF5 library can take.
#include "storage/hyperslab.h"

#include <algorithm>

#include "storage/check.h"
#include "storage/creation.h"
#include "storage/object.h"

namespace kelvo {
namespace {

bool leaves_gaps(const std::vector<Extent>& stride, const std::vector<Extent>& count) {
  for (std::size_t d = 0; d < count.size(); ++d) {
    if (stride[d] > 1 && count[d] > 1) return true;
  }
  return false;
}

// Chunks are copied by the row where the elements form the same shape in memory as in the file.
// Where they cannot, because of gaps, the library is fastest with a line.
DataspaceHandle memory_space(const std::vector<Extent>& stride, const std::vector<Extent>& count) {
  Space space;
  space.extents = count;
  if (leaves_gaps(stride, count)) space.extents = {space.elements()};
  return make_space(space);
}

// Of chunks with as many dimensions as there can be the library divides by zero, unless the shapes
// are the same.
bool must_come_singly(const Selection& selection) {
  return selection.count.size() == H5S_MAX_RANK && leaves_gaps(selection.stride, selection.count);
}

// The library looks at each chunk between the first and the last element that it is asked for, also
// at those that the steps pass over: where they are very many, each step is asked for alone.
Extent elements_of_wide_step(const ElementPlace& place, const Selection& selection) {
  constexpr Extent most_passed_over = 1000;
  const bool is_wide = std::any_of(selection.stride.begin(), selection.stride.end(),
                                   [](Extent stride) { return stride > most_passed_over; });
  if (!is_wide) return unlimited;
  const std::vector<Extent> chunk = chunk_of(place.dataset.get());
  Extent below = 1;
  for (std::size_t d = chunk.size(); d-- > 0; below *= selection.count[d]) {
    if (selection.count[d] > 1 && selection.stride[d] / chunk[d] > most_passed_over) return below;
  }
  return unlimited;
}

}  // namespace

Extent most_elements_together(const ElementPlace& place, const Selection& selection) {
  return must_come_singly(selection) ? 1 : elements_of_wide_step(place, selection);
}

Extent elements_at_once(const ElementPlace& place, const Selection& selection, std::size_t bytes) {
  if (place.attribute) return std::max<Extent>(1, selection.elements());
  const Extent fitting = std::max<Extent>(1, bytes / std::max<std::size_t>(1, place.type.size));
  return std::min(fitting, most_elements_together(place, selection));
}

HyperslabSpaces hyperslab_spaces(const ElementPlace& place, const std::vector<Extent>& start,
                                 const std::vector<Extent>& stride,
                                 const std::vector<Extent>& count, const std::string& what) {
  const auto message = [&what] { return what; };
  HyperslabSpaces spaces;
  spaces.file = DataspaceHandle(check_id(H5Dget_space(place.dataset.get()), message));
  spaces.memory = memory_space(stride, count);
  if (!count.empty()) {
    check_done(H5Sselect_hyperslab(spaces.file.get(), H5S_SELECT_SET, start.data(), stride.data(),
                                   count.data(), nullptr),
               message);
  }
  return spaces;
}

}  // namespace kelvo
