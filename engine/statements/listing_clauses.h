// The clauses that choose among what SHOW lists, for all forms that list names.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "language/expression.h"
#include "language/parser.h"

namespace kelvo {

/// Which clauses a form has besides LIKE and GLOB.
struct ClauseSet {
  bool recursive = false;
  bool by_order = false;
  bool where = false;
};

struct ListingClauses {
  std::optional<LikePattern> like;
  std::optional<std::string> glob;
  bool recursive = false;  // also where the GLOB pattern itself says so, by a "/" or "**"
  bool by_order = false;
  std::optional<Expression> where;  // over attributes

  [[nodiscard]] bool any() const { return like || glob || recursive || by_order || where; }

  /// Whether LIKE and GLOB admit it. `path` is relative to `base`, an absolute path, and ends in
  /// `name`.
  [[nodiscard]] bool admit(std::string_view name, std::string_view path,
                           const std::string& base) const;
};

/// The object whose content is listed; it may be left out.
ObjectName parse_listed_object(Parser& parser);

/// Reads the clauses, WHERE last and the others in any order, each at most once, to the end of the
/// statement.
ListingClauses parse_listing_clauses(Parser& parser, ClauseSet set);

}  // namespace kelvo
