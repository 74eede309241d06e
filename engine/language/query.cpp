// Reads queries.
#include "language/query.h"

#include <array>
#include <string_view>
#include <utility>

#include "error.h"
#include "language/slice.h"

namespace kelvo {
namespace {

struct AggregateName {
  std::string_view name;
  Aggregate aggregate;
};

constexpr std::array<AggregateName, 7> aggregates = {{{"COUNT", Aggregate::count},
                                                      {"MIN", Aggregate::minimum},
                                                      {"MAX", Aggregate::maximum},
                                                      {"SUM", Aggregate::sum},
                                                      {"AVG", Aggregate::average},
                                                      {"STDDEV", Aggregate::deviation},
                                                      {"MEDIAN", Aggregate::median}}};

std::string aggregate_names() {
  std::string names;
  for (const AggregateName& one : aggregates) {
    if (!names.empty()) names += &one == &aggregates.back() ? " and " : ", ";
    names += one.name;
  }
  return names;
}

std::string label_of(const Expression& expression) {
  switch (expression.operation) {
    case Operation::name:
      return expression.text;
    case Operation::literal:
      return expression.literal.text;
    case Operation::negate:
      return "-" + label_of(expression.operands[0]);
    default:
      return label_of(expression.operands[0]) + " " + symbol_of(expression.arithmetic) + " " +
             label_of(expression.operands[1]);
  }
}

Expression parse_item_value(Parser& parser) {
  Expression value = parse_value(parser, NameForm::plain);
  if (value.operation == Operation::literal) {
    throw StatementError::at(
        value.position, "Expected a name or an aggregate, found " + quoted(value.literal.text));
  }
  return value;
}

// Behind the name of an aggregate and "(".
QueryItem aggregate_item(Parser& parser, const AggregateName& name) {
  QueryItem item;
  item.aggregate = name.aggregate;
  item.all = name.aggregate == Aggregate::count && parser.accept_symbol("*", Mode::expression);
  if (!item.all) item.value = parse_item_value(parser);
  parser.expect_symbol(")", Mode::expression);
  item.label = std::string(name.name) + "(" + (item.all ? "*" : label_of(item.value)) + ")";
  return item;
}

QueryItem parse_item(Parser& parser) {
  for (const AggregateName& name : aggregates) {
    if (parser.accept_call(name.name)) return aggregate_item(parser, name);
  }
  QueryItem item;
  item.all = parser.accept_symbol("*", Mode::expression);
  if (!item.all) item.value = parse_item_value(parser);
  item.label = item.all ? "VALUE" : label_of(item.value);
  return item;
}

void parse_items(Parser& parser, Query* query) {
  do {
    const std::size_t position = parser.peek(Mode::expression).position;
    query->items.push_back(parse_item(parser));
    const bool is_aggregate = query->items.back().aggregate != Aggregate::none;
    if (is_aggregate != query->is_aggregate()) {
      throw StatementError::at(position, query->is_aggregate()
                                             ? "Expected an aggregate beside the other aggregates"
                                             : "Expected no aggregate beside single values");
    }
  } while (parser.accept_symbol(",", Mode::expression));
}

// A function of another language reads as the name of a member and "(".
void expect_from(Parser& parser) {
  if (parser.peek(Mode::expression).is_symbol("("))
    parser.fail_expected("FROM (the functions are " + aggregate_names() + ")", Mode::expression);
  parser.expect_keyword("FROM", Mode::expression);
}

void parse_object(Parser& parser, Query* query) {
  query->object = parser.expect_object("a dataset or attribute");
  query->slice = parse_optional_slice(parser);
  if (!query->object.file && parser.accept_keyword("IN")) query->object.file = parser.expect_file();
}

void parse_order(Parser& parser, Query* query) {
  do {
    OrderKey key;
    key.value = parse_item_value(parser);
    key.descending = parser.accept_keyword("DESC", Mode::expression);
    if (!key.descending) parser.accept_keyword("ASC", Mode::expression);
    query->order.push_back(std::move(key));
  } while (parser.accept_symbol(",", Mode::expression));
}

}  // namespace

Query parse_query(Parser& parser) {
  Query query;
  parse_items(parser, &query);
  expect_from(parser);
  parse_object(parser, &query);
  if (parser.accept_keyword("WHERE", Mode::expression))
    query.condition = parse_condition(parser, NameForm::plain);
  if (!query.is_aggregate() && parser.accept_clause("ORDER BY", Mode::expression))
    parse_order(parser, &query);
  if (parser.accept_keyword("LIMIT", Mode::expression)) {
    query.limit = parser.expect_unsigned("a number of rows");
    if (parser.accept_keyword("OFFSET", Mode::expression))
      query.offset = parser.expect_unsigned("a number of rows");
  }
  return query;
}

}  // namespace kelvo
