// SELECT's road from a query to its elements, for the other families that read one.
#pragma once

#include "language/query.h"
#include "query/element_source.h"

namespace kelvo {

class Session;

/// Finds and opens what the query reads, and checks the query against it. The text must have been
/// read to its end before.
Selected open_query(Query query, Session& session);

}  // namespace kelvo
