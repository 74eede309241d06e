// LIKE, GLOB, RECURSIVE, BY ORDER and WHERE.
#include "statements/listing_clauses.h"

#include <algorithm>
#include <array>
#include <vector>

#include "values/pattern.h"

namespace kelvo {
namespace {

void parse_like(Parser& parser, ListingClauses* clauses) {
  clauses->like = parser.expect_like_pattern();
}

void parse_glob(Parser& parser, ListingClauses* clauses) {
  clauses->glob = parser.expect_string("a pattern");
  const bool goes_down = clauses->glob->find('/') != std::string::npos ||
                         clauses->glob->find("**") != std::string::npos;
  clauses->recursive = clauses->recursive || goes_down;
}

void set_recursive(Parser& /*parser*/, ListingClauses* clauses) { clauses->recursive = true; }
void set_by_order(Parser& /*parser*/, ListingClauses* clauses) { clauses->by_order = true; }

// Nothing can follow a condition.
void parse_where(Parser& parser, ListingClauses* clauses) {
  clauses->where = parse_condition(parser, NameForm::attribute);
  parser.expect_end(Mode::expression);
}

struct Clause {
  std::string_view keywords;
  bool ClauseSet::*needed;  // null: every form has it
  void (*parse)(Parser& parser, ListingClauses* clauses);
};

constexpr std::array<Clause, 5> clause_table = {{
    {"LIKE", nullptr, parse_like},
    {"GLOB", nullptr, parse_glob},
    {"RECURSIVE", &ClauseSet::recursive, set_recursive},
    {"BY ORDER", &ClauseSet::by_order, set_by_order},
    {"WHERE", &ClauseSet::where, parse_where},
}};

}  // namespace

ObjectName parse_listed_object(Parser& parser) {
  return parser.matching_words("BY ORDER") == 2 ? ObjectName() : parser.optional_object();
}

ListingClauses parse_listing_clauses(Parser& parser, ClauseSet set) {
  std::vector<const Clause*> left;
  for (const Clause& clause : clause_table) {
    if (clause.needed == nullptr || set.*clause.needed) left.push_back(&clause);
  }
  ListingClauses clauses;
  for (;;) {
    const auto next = std::find_if(left.begin(), left.end(), [&parser](const Clause* clause) {
      return parser.accept_clause(clause->keywords);
    });
    if (next == left.end()) break;
    const Clause* clause = *next;
    left.erase(next);
    clause->parse(parser, &clauses);
  }
  parser.expect_end();
  return clauses;
}

bool ListingClauses::admit(std::string_view name, std::string_view path,
                           const std::string& base) const {
  if (like && !like->matches(name)) return false;
  if (!glob) return true;
  if (!glob->starts_with('/')) return kelvo::glob(*glob, path);
  return kelvo::glob(*glob, (base == "/" ? base : base + "/") + std::string(path));
}

}  // namespace kelvo
