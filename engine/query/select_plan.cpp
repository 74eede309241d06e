// Plans queries: which members are read, what the names mean, which stages follow each other.
#include "query/select_plan.h"

#include <algorithm>
#include <utility>

#include "error.h"
#include "language/lexer.h"
#include "query/aggregated.h"
#include "query/element_rows.h"
#include "query/members.h"
#include "query/projected.h"
#include "query/query_run.h"
#include "query/sorted.h"

namespace kelvo {
namespace {

// VALUE and INDEX are words of their own only where no member has just that name.
bool is_word(const Expression& name, const char* word) {
  return !name.quoted && to_upper(name.text) == word;
}

[[noreturn]] void refuse_name(const ElementPlace& place, const Expression& name) {
  const bool compound = place.type.kind == Kind::compound;
  std::string hint = compound ? "SHOW MEMBER lists them" : "VALUE names its elements";
  if (name.quoted) hint += "; a string stands between single quotes";
  throw StatementError(Status::does_not_exist,
                       place.name + " has no member " + quoted(name.text) + " (" + hint + ")");
}

void collect_names(const Expression& expression, std::vector<const Expression*>* names) {
  if (expression.operation == Operation::name) names->push_back(&expression);
  for (const Expression& operand : expression.operands) collect_names(operand, names);
}

// All names in the query, and whether an item asks for whole elements.
bool collect_names(const Query& query, std::vector<const Expression*>* names) {
  bool whole = false;
  for (const QueryItem& item : query.items) {
    whole = whole || (item.all && item.aggregate == Aggregate::none);
    if (!item.all) collect_names(item.value, names);
  }
  if (query.condition) collect_names(*query.condition, names);
  for (const OrderKey& key : query.order) collect_names(key.value, names);
  return whole;
}

// Leaves out the members of a compound that nobody asks for.
void narrow(const Query& query, ElementPlace* place) {
  std::vector<const Expression*> names;
  std::vector<MemberPath> paths;
  if (collect_names(query, &names)) paths.emplace_back();
  for (const Expression* name : names) {
    if (std::optional<MemberPath> path = find_member(place->type, name->text)) {
      paths.push_back(std::move(*path));
    } else if (is_word(*name, "VALUE")) {
      paths.emplace_back();
    } else if (!is_word(*name, "INDEX")) {
      refuse_name(*place, *name);
    }
  }
  if (place->type.kind != Kind::compound) return;
  if (paths.empty()) paths.push_back({0});  // something must be read to be counted
  Type type = only_members(place->type, paths);
  if (type.size != place->type.size) read_only_members(*place, std::move(type));
}

std::optional<Field> find_field(const ElementPlace& place, const Expression& name) {
  if (const std::optional<MemberPath> path = find_member(place.type, name.text)) {
    const MemberPlace member = place_of_member(place.type, *path);
    return Field{member.type, member.offset, nullptr};
  }
  if (is_word(name, "VALUE")) return Field{&place.type, 0, nullptr};
  return Field{};
}

Extent times(Extent count, Extent factor) {
  return factor > 0 && count > unlimited / factor ? unlimited : count * factor;
}

// Rows up to the last that LIMIT and OFFSET let through.
std::uint64_t wanted_rows(const Query& query) {
  if (!query.limit) return unlimited;
  return *query.limit > unlimited - query.offset ? unlimited : *query.limit + query.offset;
}

// What is not wanted is not read, where it can be told before reading.
void limit(const Query& query, Scan* scan, Selected* selected) {
  if (!query.limit) return;
  const std::size_t line = line_length(*selected);
  const Extent row = line > 0 ? line : 1;
  Extent offset = times(query.offset, row);
  const Extent count = times(*query.limit, row);
  if (!scan->is_choosy() && query.order.empty())
    scan->select(cut(scan->selection(), &offset, count));
  selected->shape.reset();
  if (line > 0) {
    const Extent elements = scan->selection().elements();
    const Extent rows = (elements - std::min(offset, elements)) / row;
    selected->shape = {std::min<Extent>(rows, *query.limit), row};
  }
  selected->source = std::make_unique<Limited>(std::move(selected->source), offset, count);
}

// An empty space has no elements, where a scalar one, without extents either, has one.
std::vector<Extent> shape_of(const Scan& scan) {
  return scan.place().space.is_null ? std::vector<Extent>{0} : scan.selection().shape;
}

QueryRunPointer make_run(Query query, FileHandle file, ElementPlace place, ReferenceNamer namer) {
  const Selection selection = resolve_slice(query.slice, place.space, place.name);
  narrow(query, &place);
  auto run = std::make_unique<QueryRun>();
  run->query = std::move(query);
  run->scan = std::make_unique<Scan>(std::move(file), std::move(place), selection);
  run->scope.namer = std::move(namer);
  run->scope.position_is_number = run->scan->place().space.extents.size() <= 1;
  run->scope.find = [scan = run->scan.get()](const Expression& name) {
    return find_field(scan->place(), name);
  };
  if (run->query.condition)
    run->scan->choose_by(compile_condition(*run->query.condition, run->scope));
  return run;
}

}  // namespace

Selected plan_query(Query query, FileHandle file, ElementPlace place, ReferenceNamer namer) {
  Selected selected;
  selected.namer = namer;
  QueryRunPointer run =
      make_run(std::move(query), std::move(file), std::move(place), std::move(namer));
  const Query& planned = run->query;
  Scan& scan = *run->scan;
  selected.several_items = planned.items.size() > 1;
  selected.label = planned.items[0].label;
  if (planned.is_aggregate()) {
    selected.source = std::make_unique<Aggregated>(std::move(run));
    if (planned.limit) {
      selected.source =
          std::make_unique<Limited>(std::move(selected.source), planned.offset, *planned.limit);
    }
    return selected;
  }
  run->projection = std::make_unique<Projection>(planned.items, scan, run->scope);
  if (planned.items.size() == 1 && !scan.is_choosy() && planned.order.empty())
    selected.shape = shape_of(scan);
  if (planned.order.empty()) {
    selected.source = std::make_unique<Projected>(std::move(run));
  } else {
    selected.source = std::make_unique<Sorted>(std::move(run), wanted_rows(planned));
  }
  limit(planned, &scan, &selected);
  return selected;
}

}  // namespace kelvo
