// New extents, and new rows.
#include "storage/growth.h"

#include <string>

#include "storage/check.h"
#include "storage/object.h"

namespace kelvo {

Space space_of(hid_t dataset, const std::string& shown) {
  const DataspaceHandle space(
      check_id(H5Dget_space(dataset), [&shown] { return shown + " cannot be changed"; }));
  return describe_space(space.get());
}

void set_extents(hid_t dataset, const std::vector<Extent>& extents, const std::string& shown) {
  check_done(H5Dset_extent(dataset, extents.data()),
             [&shown] { return shown + " cannot be changed"; });
}

void expect_growing(const ElementPlace& place, bool with_slice) {
  if (with_slice) {
    throw StatementError(Status::out_of_range,
                         "APPEND adds rows behind the last one and takes no slice");
  }
  if (place.attribute)
    throw StatementError(Status::wrong_kind, place.name + " cannot grow: it is an attribute");
  if (place.space.is_null)
    throw StatementError(Status::wrong_kind, place.name + " is of empty kind and cannot grow");
  if (place.space.extents.empty())
    throw StatementError(Status::wrong_kind, place.name + " is a scalar and cannot grow");
  if (place.space.maximum[0] == place.space.extents[0]) {
    throw StatementError(Status::out_of_range, place.name + " is at its maximum of " +
                                                   std::to_string(place.space.maximum[0]) +
                                                   " in the first dimension");
  }
}

Extent elements_of_row(const ElementPlace& place) {
  Extent elements = 1;
  for (std::size_t d = 1; d < place.space.extents.size(); ++d) elements *= place.space.extents[d];
  return elements;
}

Selection add_rows(const ElementPlace& place, Extent rows) {
  std::vector<Extent> extents = place.space.extents;
  if (rows > place.space.maximum[0] - extents[0]) {
    throw StatementError(Status::out_of_range,
                         place.name + " may have " + std::to_string(place.space.maximum[0]) +
                             " rows, " + std::to_string(rows) + " more than its " +
                             std::to_string(extents[0]) + " are too many");
  }
  Selection selection;
  selection.start.assign(extents.size(), 0);
  selection.start[0] = extents[0];
  selection.stride.assign(extents.size(), 1);
  selection.count = extents;
  selection.count[0] = rows;
  selection.shape = selection.count;
  extents[0] += rows;
  check_done(H5Dset_extent(place.dataset.get(), extents.data()),
             [&place] { return place.name + " cannot be extended"; });
  return selection;
}

}  // namespace kelvo
