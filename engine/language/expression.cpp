// Reads expressions. From the loosest to the tightest: OR, AND, NOT, comparisons, + and -, * / and
// %, signs. A condition in parentheses and a value in parentheses begin alike, so both are read by
// the same functions; each operator looks at which of the two it was given.
#include "language/expression.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "error.h"
#include "language/literal.h"
#include "language/parser.h"

namespace kelvo {
namespace {

// Deep enough for what people and programs write, and far from the end of the stack.
constexpr std::size_t deepest = 200;

// Words that end an item, so that they are names only between quotes.
constexpr std::array<std::string_view, 13> reserved_words = {
    "FROM", "WHERE", "ORDER", "LIMIT",   "FORMAT", "INTO", "AND",
    "OR",   "IN",    "LIKE",  "BETWEEN", "IS",     "NOT"};

template <typename Operator>
struct Spelling {
  std::string_view symbol;
  Operator meaning;
};

constexpr std::array<Spelling<Arithmetic>, 2> sums = {
    {{"+", Arithmetic::add}, {"-", Arithmetic::subtract}}};
constexpr std::array<Spelling<Arithmetic>, 3> products = {
    {{"*", Arithmetic::multiply}, {"/", Arithmetic::divide}, {"%", Arithmetic::remainder}}};
constexpr std::array<Spelling<Comparison>, 7> comparisons = {{{"=", Comparison::equal},
                                                              {"<>", Comparison::not_equal},
                                                              {"!=", Comparison::not_equal},
                                                              {"<", Comparison::less},
                                                              {"<=", Comparison::less_equal},
                                                              {">", Comparison::greater},
                                                              {">=", Comparison::greater_equal}}};

class Reader {
 public:
  Reader(Parser& parser, NameForm form) : parser_(parser), form_(form) {}

  Expression condition() {
    Expression expression = disjunction();
    check_condition(expression);
    return expression;
  }

  Expression value() {
    Expression expression = sum();
    check_value(expression);
    return expression;
  }

 private:
  using Part = Expression (Reader::*)();

  bool accept(std::string_view keywords) {
    return parser_.accept_keyword(keywords, Mode::expression);
  }
  bool accept_symbol(std::string_view symbol) {
    return parser_.accept_symbol(symbol, Mode::expression);
  }
  std::size_t position() { return parser_.peek(Mode::expression).position; }

  // Called wherever the result lies one level deeper than what it is made of.
  void go_deeper() {
    if (++depth_ <= deepest) return;
    throw StatementError::at(
        position(), "Expected an expression of at most " + std::to_string(deepest) + " levels");
  }

  void check_condition(const Expression& expression) {
    const bool is_name = expression.operation == Operation::name;
    if (!expression.is_condition() && !is_name)
      parser_.fail_expected("a comparison", Mode::expression);
  }

  static void check_value(const Expression& expression) {
    if (!expression.is_condition()) return;
    throw StatementError::at(expression.position, "Expected a value, found a condition");
  }

  static Expression node(Operation operation, Expression first) {
    Expression expression;
    expression.operation = operation;
    expression.position = first.position;
    expression.operands.push_back(std::move(first));
    return expression;
  }

  // `part`, or several of them with the keyword between: one flat node, however many there are.
  Expression chain(Part part, std::string_view keyword, Operation operation) {
    Expression first = (this->*part)();
    if (!parser_.at_keyword(keyword, Mode::expression)) return first;
    check_condition(first);
    Expression all = node(operation, std::move(first));
    while (accept(keyword)) {
      all.operands.push_back((this->*part)());
      check_condition(all.operands.back());
    }
    return all;
  }

  Expression disjunction() { return chain(&Reader::conjunction, "OR", Operation::disjunction); }
  Expression conjunction() { return chain(&Reader::negation, "AND", Operation::conjunction); }

  Expression negation() {
    const std::size_t begin = position();
    if (!accept("NOT")) return comparison();
    go_deeper();
    Expression operand = negation();
    check_condition(operand);
    Expression expression = node(Operation::negation, std::move(operand));
    expression.position = begin;
    --depth_;
    return expression;
  }

  Expression comparison() {
    Expression left = sum();
    if (left.is_condition()) return left;
    for (const auto& [symbol, meaning] : comparisons) {
      if (!accept_symbol(symbol)) continue;
      Expression expression = node(Operation::comparison, std::move(left));
      expression.comparison = meaning;
      expression.operands.push_back(value());
      return expression;
    }
    return worded_comparison(std::move(left));
  }

  // [NOT] BETWEEN, [NOT] IN, [NOT] LIKE, IS [NOT] NAN; or the value as it is.
  Expression worded_comparison(Expression left) {
    if (accept("IS")) {
      const bool negated = accept("NOT");
      parser_.expect_keyword("NAN", Mode::expression);
      return worded(Operation::is_nan, std::move(left), negated);
    }
    const bool negated = accept("NOT");
    if (accept("BETWEEN")) return between(worded(Operation::between, std::move(left), negated));
    if (accept("IN")) return in(worded(Operation::in, std::move(left), negated));
    if (accept("LIKE")) return like(worded(Operation::like, std::move(left), negated));
    if (negated) parser_.fail_expected("BETWEEN, IN or LIKE", Mode::expression);
    return left;
  }

  static Expression worded(Operation operation, Expression left, bool negated) {
    Expression expression = node(operation, std::move(left));
    expression.negated = negated;
    return expression;
  }

  Expression between(Expression expression) {
    expression.operands.push_back(value());
    parser_.expect_keyword("AND", Mode::expression);
    expression.operands.push_back(value());
    return expression;
  }

  Expression in(Expression expression) {
    parser_.expect_symbol("(", Mode::expression);
    do {
      expression.operands.push_back(value());
    } while (accept_symbol(","));
    parser_.expect_symbol(")", Mode::expression);
    return expression;
  }

  Expression like(Expression expression) {
    expression.pattern = parser_.expect_like_pattern(Mode::expression);
    return expression;
  }

  // A chain of operators of one rank, from the left.
  template <std::size_t Count>
  Expression operators(Part part, const std::array<Spelling<Arithmetic>, Count>& spellings) {
    Expression left = (this->*part)();
    const std::size_t depth = depth_;
    while (!left.is_condition()) {
      const auto* found = std::find_if(spellings.begin(), spellings.end(),
                                       [&](const auto& one) { return accept_symbol(one.symbol); });
      if (found == spellings.end()) break;
      go_deeper();
      left = node(Operation::arithmetic, std::move(left));
      left.arithmetic = found->meaning;
      left.operands.push_back((this->*part)());
      check_value(left.operands.back());
    }
    depth_ = depth;
    return left;
  }

  Expression sum() { return operators(&Reader::product, sums); }
  Expression product() { return operators(&Reader::with_sign, products); }

  Expression with_sign() {
    const std::size_t begin = position();
    const bool minus = accept_symbol("-");
    if (!minus && !accept_symbol("+")) return primary();
    go_deeper();
    Expression operand = with_sign();
    check_value(operand);
    --depth_;
    if (minus) operand = negative(std::move(operand));
    operand.position = begin;
    return operand;
  }

  // The sign belongs to the number, so that the least BIGINT can be written.
  static Expression negative(Expression operand) {
    const bool is_number = operand.operation == Operation::literal && operand.literal.is_number();
    if (!is_number) return node(Operation::negate, std::move(operand));
    operand.literal.negative = !operand.literal.negative;
    operand.literal.real = -operand.literal.real;
    if (operand.literal.text.starts_with('-')) {
      operand.literal.text.erase(0, 1);
    } else {
      operand.literal.text.insert(0, "-");
    }
    return operand;
  }

  Expression primary() {
    if (!accept_symbol("(")) return operand();
    go_deeper();
    Expression inner = disjunction();
    parser_.expect_symbol(")", Mode::expression);
    --depth_;
    return inner;
  }

  Expression operand() {
    const Token& token = parser_.peek(Mode::expression);
    const bool is_value = token.is_keyword("NAN") || token.is_keyword("INF") ||
                          token.is_keyword("TRUE") || token.is_keyword("FALSE") ||
                          token.kind == TokenKind::number || token.kind == TokenKind::string ||
                          token.kind == TokenKind::bytes;
    if (!is_value) return name();
    Expression expression;
    expression.position = token.position;
    expression.literal = parse_literal(parser_);
    return expression;
  }

  Expression name() {
    Expression expression;
    expression.operation = Operation::name;
    expression.position = position();
    if (form_ == NameForm::attribute && !accept_symbol("@"))
      parser_.fail_expected("an attribute (@name) or a value", Mode::expression);
    const Token& token = parser_.peek(Mode::expression);
    expression.quoted = token.kind == TokenKind::quoted_name;
    const bool is_word =
        token.kind == TokenKind::word && (form_ == NameForm::attribute || !is_reserved(token));
    if ((!expression.quoted && !is_word) || token.text.empty()) {
      parser_.fail_expected(
          form_ == NameForm::attribute ? "the name of an attribute" : "a name or a value",
          Mode::expression);
    }
    expression.text =
        form_ == NameForm::plain ? parser_.take_member_path() : parser_.take(Mode::expression).text;
    return expression;
  }

  static bool is_reserved(const Token& token) {
    return std::any_of(reserved_words.begin(), reserved_words.end(),
                       [&token](std::string_view word) { return token.is_keyword(word); });
  }

  Parser& parser_;
  NameForm form_;
  std::size_t depth_ = 0;
};

}  // namespace

Expression parse_condition(Parser& parser, NameForm form) {
  return Reader(parser, form).condition();
}

Expression parse_value(Parser& parser, NameForm form) { return Reader(parser, form).value(); }

const char* symbol_of(Arithmetic arithmetic) {
  switch (arithmetic) {
    case Arithmetic::add:
      return "+";
    case Arithmetic::subtract:
      return "-";
    case Arithmetic::multiply:
      return "*";
    case Arithmetic::divide:
      return "/";
    case Arithmetic::remainder:
      return "%";
  }
  return "";
}

}  // namespace kelvo
