// The grammar of what SELECT chooses: items, object, condition, order and number. INSERT ... SELECT
// reads the same.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "language/expression.h"
#include "language/parser.h"
#include "values/slice.h"

namespace kelvo {

enum class Aggregate { none, count, minimum, maximum, sum, average, deviation, median };

struct QueryItem {
  Aggregate aggregate = Aggregate::none;
  bool all = false;   // "*": the whole element; COUNT(*): all elements
  Expression value;   // what is shown or aggregated, where it is not `all`
  std::string label;  // the item as a column's name: "x", "MIN(x)"
};

struct OrderKey {
  Expression value;
  bool descending = false;
};

struct Query {
  std::vector<QueryItem> items;  // all of them aggregates, or none
  ObjectName object;
  Slice slice;
  std::optional<Expression> condition;
  std::vector<OrderKey> order;
  std::optional<std::uint64_t> limit;
  std::uint64_t offset = 0;

  [[nodiscard]] bool is_aggregate() const { return items[0].aggregate != Aggregate::none; }
};

/// "items FROM object [slice] [WHERE ...] [ORDER BY ...] [LIMIT n [OFFSET m]]": what stands behind
/// SELECT, up to a clause that is not among these. What follows must be read in Mode::expression.
Query parse_query(Parser& parser);

}  // namespace kelvo
