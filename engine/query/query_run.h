// What the stages of a running query share.
#pragma once

#include <memory>

#include "language/query.h"
#include "query/compile.h"
#include "query/projection.h"
#include "query/scan.h"

namespace kelvo {

/// Made once and never moved: its parts refer to each other.
struct QueryRun {
  Query query;
  Scope scope;
  std::unique_ptr<Scan> scan;
  std::unique_ptr<Projection> projection;  // none for aggregates
};

using QueryRunPointer = std::unique_ptr<QueryRun>;

}  // namespace kelvo
