// From a query that has been read to the source of what it selects.
#pragma once

#include "language/query.h"
#include "query/element_source.h"
#include "storage/element_io.h"

namespace kelvo {

/// Checks the query against the place that it reads. `file` keeps open what the place is in, where
/// nothing else does; `namer` names what references in it point to. Throws StatementError:
/// does_not_exist for a member, wrong_kind for one of a type that an item or a comparison has no
/// use for, out_of_range for an index.
Selected plan_query(Query query, FileHandle file, ElementPlace place, ReferenceNamer namer);

}  // namespace kelvo
