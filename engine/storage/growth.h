// Extents of datasets that change: by ALTER, and where rows are added to the first dimension.
#pragma once

#include <string>
#include <vector>

#include "storage/element_io.h"
#include "values/selection.h"

namespace kelvo {

/// The extents of an open dataset, and what they may become. `shown` as in `Dataset "/x"`.
Space space_of(hid_t dataset, const std::string& shown);

/// Gives it other extents, none above its maximum.
void set_extents(hid_t dataset, const std::vector<Extent>& extents, const std::string& shown);

/// Throws unless the place is a dataset with a first dimension that may grow. `with_slice`: a slice
/// was written, which says nothing about new rows.
void expect_growing(const ElementPlace& place, bool with_slice);

/// Elements of one step of the first dimension.
Extent elements_of_row(const ElementPlace& place);

/// Adds rows at the end of the first dimension and selects them. Throws out_of_range beyond the
/// maximum.
Selection add_rows(const ElementPlace& place, Extent rows);

}  // namespace kelvo
