// Compiles expressions: each name is looked up once, and each comparison settled between its sides.
#include "query/compile.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "error.h"
#include "language/lexer.h"
#include "query/arithmetic_operand.h"
#include "query/constants.h"
#include "values/literal.h"

namespace kelvo {
namespace {

// One side of a comparison while it is compiled.
struct Side {
  const Expression* expression;
  std::optional<Field> field;  // of a name
  OperandPointer operand;

  [[nodiscard]] const Literal* literal() const {
    return expression->operation == Operation::literal ? &expression->literal : nullptr;
  }
  [[nodiscard]] bool is_enumeration() const {
    return field && field->type != nullptr && field->type->kind == Kind::enumeration;
  }
};

std::string described(const Expression& expression, const std::optional<Field>& field) {
  if (expression.operation == Operation::literal) return describe(expression.literal);
  if (expression.operation != Operation::name) return "A calculated number";
  const std::string type =
      !field ? "" : " (" + (field->type == nullptr ? "BIGINT" : type_name(*field->type)) + ")";
  return quoted(expression.text) + type;
}

[[noreturn]] void refuse(const Side& side, const std::string& why) {
  throw StatementError(Status::wrong_kind, described(*side.expression, side.field) + " " + why);
}

class Compiler {
 public:
  explicit Compiler(const Scope& scope) : scope_(scope) {}

  ConditionPointer condition(const Expression& expression) {
    switch (expression.operation) {
      case Operation::conjunction:
        return all_of(parts_of(expression));
      case Operation::disjunction:
        return any_of(parts_of(expression));
      case Operation::negation:
        return negation(condition(expression.operands[0]));
      default:
        return leaf(expression);
    }
  }

  OperandPointer value(const Expression& expression) { return side(expression).operand; }

 private:
  std::vector<ConditionPointer> parts_of(const Expression& expression) {
    std::vector<ConditionPointer> parts;
    for (const Expression& operand : expression.operands) parts.push_back(condition(operand));
    return parts;
  }

  ConditionPointer leaf(const Expression& expression) {
    if (lacks_value(expression)) return never();
    try {
      return bound(expression);
    } catch (const StatementError& error) {
      if (!scope_.lenient || error.status() != Status::wrong_kind) throw;
      return never();
    }
  }

  bool lacks_value(const Expression& expression) {
    if (expression.operation == Operation::name) return !scope_.find(expression);
    return std::any_of(expression.operands.begin(), expression.operands.end(),
                       [this](const Expression& operand) { return lacks_value(operand); });
  }

  ConditionPointer bound(const Expression& expression) {
    ConditionPointer result;
    switch (expression.operation) {
      case Operation::comparison:
        return compare(expression.comparison, side(expression.operands[0]),
                       side(expression.operands[1]));
      case Operation::between:
        result = between(expression);
        break;
      case Operation::in:
        result = in(expression);
        break;
      case Operation::like:
        result = matching(text(side(expression.operands[0])), expression.pattern);
        break;
      case Operation::is_nan:
        result = is_nan(side(expression.operands[0]));
        break;
      default:
        return not_zero(side(expression));
    }
    if (expression.negated) result = negation(std::move(result));
    return result;
  }

  Side side(const Expression& expression) {
    Side side{&expression, std::nullopt, nullptr};
    switch (expression.operation) {
      case Operation::literal:
        side.operand = literal_operand(expression.literal);
        break;
      case Operation::name:
        side.field = scope_.find(expression);
        check_field(side);
        side.operand = field_operand(*side.field, scope_.namer);
        break;
      case Operation::negate:
        side.operand = arithmetic_operand(Arithmetic::subtract, constant_operand(std::int64_t{0}),
                                          number(expression.operands[0]));
        break;
      default:
        side.operand = arithmetic_operand(expression.arithmetic, number(expression.operands[0]),
                                          number(expression.operands[1]));
    }
    return side;
  }

  void check_field(const Side& side) const {
    const Type* type = side.field->type;
    if (type != nullptr && !is_comparable(*type)) refuse(side, "cannot be compared");
    if (type != nullptr || scope_.position_is_number) return;
    throw StatementError(Status::wrong_kind,
                         "INDEX can be compared in one dimension only (a slice chooses by "
                         "positions in several)");
  }

  OperandPointer number(const Expression& expression) {
    Side one = side(expression);
    if (one.operand->domain() == Domain::text) refuse(one, "is no number to calculate with");
    return std::move(one.operand);
  }

  OperandPointer text(Side side) {
    if (side.is_enumeration()) return name_operand(*side.field, scope_.namer);
    if (side.operand->domain() != Domain::text) refuse(side, "is no text for LIKE");
    return std::move(side.operand);
  }

  static ConditionPointer is_nan(Side side) {
    if (side.operand->domain() == Domain::text) refuse(side, "is no number for IS NAN");
    return being_nan(real_operand(std::move(side.operand)));
  }

  static ConditionPointer not_zero(Side side) {
    const Domain domain = side.operand->domain();
    if (domain == Domain::text || domain == Domain::real)
      refuse(side, "is no condition (compare it with a value)");
    return comparing(compare_kernel(Comparison::not_equal, domain, Domain::signed_integer),
                     std::move(side.operand), constant_operand(std::int64_t{0}));
  }

  ConditionPointer compare(Comparison comparison, Side left, Side right) {
    const bool equality = comparison == Comparison::equal || comparison == Comparison::not_equal;
    settle_literal(&left, right, equality);
    settle_literal(&right, left, equality);
    settle_names(&left, right);
    settle_names(&right, left);
    const CompareKernel kernel =
        compare_kernel(comparison, left.operand->domain(), right.operand->domain());
    if (kernel == nullptr)
      refuse(left, "cannot be compared with " + described(*right.expression, right.field));
    return comparing(kernel, std::move(left.operand), std::move(right.operand));
  }

  // A literal takes the form that suits the other side.
  static void settle_literal(Side* side, const Side& other, bool equality) {
    const Literal* literal = side->literal();
    if (literal == nullptr) return;
    if (other.is_enumeration()) {
      const bool is_word = literal->kind == LiteralKind::word;
      if (is_word || (equality && literal->is_text())) settle_name(side, *literal, other);
    } else if (literal->is_number()) {
      const Type* type = other.field ? other.field->type : nullptr;
      side->operand = number_beside(*literal, type, other.operand->domain());
    }
  }

  // An enumeration stands for its names where it is compared with text.
  void settle_names(Side* side, const Side& other) {
    if (side->is_enumeration() && other.operand->domain() == Domain::text)
      side->operand = name_operand(*side->field, scope_.namer);
  }

  // The name of an enumeration becomes its number: that is quicker to compare, and a name that is
  // not there is a mistake worth telling.
  static void settle_name(Side* side, const Literal& literal, const Side& other) {
    const Type& type = *other.field->type;
    const bool is_word = literal.kind == LiteralKind::word;
    for (const EnumName& name : type.names) {
      if (name.name != literal.text && !(is_word && to_upper(name.name) == literal.text)) continue;
      side->operand = type.is_signed ? constant_operand(static_cast<std::int64_t>(name.bits))
                                     : constant_operand(name.bits);
      return;
    }
    if (is_word) return;
    throw StatementError(Status::out_of_range, described(*other.expression, other.field) +
                                                   " has no value " + describe(literal) +
                                                   " (SHOW MEMBER lists them)");
  }

  ConditionPointer between(const Expression& expression) {
    const std::vector<Expression>& operands = expression.operands;
    std::vector<ConditionPointer> parts;
    parts.push_back(compare(Comparison::greater_equal, side(operands[0]), side(operands[1])));
    parts.push_back(compare(Comparison::less_equal, side(operands[0]), side(operands[2])));
    return all_of(std::move(parts));
  }

  ConditionPointer in(const Expression& expression) {
    Side value = side(expression.operands[0]);
    const bool is_plain_field = value.field && !value.is_enumeration();
    if (is_plain_field && value.operand->domain() == Domain::text) {
      if (ConditionPointer set = in_set<std::string_view>(expression)) return set;
    } else if (is_plain_field && value.operand->domain() == Domain::signed_integer) {
      if (ConditionPointer set = in_set<std::int64_t>(expression)) return set;
    }
    std::vector<ConditionPointer> parts;
    for (auto item = expression.operands.begin() + 1; item != expression.operands.end(); ++item)
      parts.push_back(compare(Comparison::equal, side(expression.operands[0]), side(*item)));
    return any_of(std::move(parts));
  }

  // Null where an item is no literal of that domain.
  template <typename Value>
  ConditionPointer in_set(const Expression& expression) {
    std::vector<Value> values;
    const Batch nothing;
    Side value = side(expression.operands[0]);
    for (auto item = expression.operands.begin() + 1; item != expression.operands.end(); ++item) {
      Side one = side(*item);
      if (one.literal() == nullptr || one.operand->domain() != value.operand->domain())
        return nullptr;
      values.push_back(*static_cast<const Value*>(one.operand->evaluate(nothing, all_active())));
    }
    return being_in(std::move(value.operand), std::move(values));
  }

  const Scope& scope_;
};

}  // namespace

ConditionPointer compile_condition(const Expression& expression, const Scope& scope) {
  return Compiler(scope).condition(expression);
}

OperandPointer compile_value(const Expression& expression, const Scope& scope) {
  return Compiler(scope).value(expression);
}

bool is_fulfilled(const Expression& condition,
                  const std::function<std::optional<NamedValue>(const std::string& name)>& find) {
  Scope scope;
  scope.lenient = true;
  scope.find = [&find](const Expression& name) -> std::optional<Field> {
    const std::optional<NamedValue> value = find(name.text);
    if (!value) return std::nullopt;
    return Field{value->type, 0, value->element};
  };
  Batch batch;
  batch.count = 1;
  Mask fulfilled = 0;
  compile_condition(condition, scope)->evaluate(batch, all_active(), &fulfilled);
  return fulfilled != 0;
}

}  // namespace kelvo
