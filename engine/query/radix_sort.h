// Sorting by numbers without comparing them.
#pragma once

#include <vector>

#include "query/sort_record.h"

namespace kelvo {

/// Sorts the entries by their numbers; those of equal ones stay in the order they have. `scratch`
/// is memory to work in, kept for the next use.
void sort_by_number(std::vector<SortEntry>* entries, std::vector<SortEntry>* scratch);

}  // namespace kelvo
