// Appending to a dataset: its first dimension grows.
#pragma once

#include "storage/element_io.h"
#include "values/selection.h"

namespace kelvo {

/// Throws unless the place is a dataset with a first dimension that may grow. `with_slice`: a slice
/// was written, which says nothing about new rows.
void expect_growing(const ElementPlace& place, bool with_slice);

/// Elements of one step of the first dimension.
Extent elements_of_row(const ElementPlace& place);

/// Adds rows at the end of the first dimension and selects them. Throws out_of_range beyond the
/// maximum.
Selection add_rows(const ElementPlace& place, Extent rows);

}  // namespace kelvo
