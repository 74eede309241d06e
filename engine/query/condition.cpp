// Compiles conditions and evaluates them.
#include "query/condition.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "error.h"
#include "language/lexer.h"
#include "values/encode.h"
#include "values/pattern.h"

namespace kelvo {
namespace {

using MaskColumn = std::array<Mask, batch_size>;

class Never : public Condition {
 public:
  void evaluate(const Batch& batch, const Mask* /*active*/, Mask* out) override {
    std::memset(out, 0, batch.count);
  }
};

class Comparing : public Condition {
 public:
  Comparing(CompareKernel kernel, OperandPointer left, OperandPointer right)
      : kernel_(kernel), left_(std::move(left)), right_(std::move(right)) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    const void* left = left_->evaluate(batch, active);
    kernel_(left, right_->evaluate(batch, active), batch.count, out);
    if (active != all_active()) keep_true(active, batch.count, out);
  }

 private:
  CompareKernel kernel_;
  OperandPointer left_;
  OperandPointer right_;
};

// AND of all parts, or OR of all: a part is asked only about the elements that are still open, so
// that "n <> 0 AND x / n > 2" divides by no zero.
class Chain : public Condition {
 public:
  Chain(std::vector<ConditionPointer> parts, bool conjunction)
      : parts_(std::move(parts)), conjunction_(conjunction) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    const std::size_t count = batch.count;
    parts_[0]->evaluate(batch, active, out);
    for (std::size_t part = 1; part < parts_.size(); ++part) {
      std::memcpy(open_.data(), conjunction_ ? out : active, count);
      if (!conjunction_) take_true(out, count, open_.data());
      if (!any_true(open_.data(), count)) return;
      parts_[part]->evaluate(batch, open_.data(), result_.data());
      // What is open in a disjunction is false up to now.
      if (conjunction_) {
        std::memcpy(out, result_.data(), count);
      } else {
        add_true(result_.data(), count, out);
      }
    }
  }

 private:
  std::vector<ConditionPointer> parts_;
  bool conjunction_;
  MaskColumn open_;
  MaskColumn result_;
};

class Negation : public Condition {
 public:
  explicit Negation(ConditionPointer operand) : operand_(std::move(operand)) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    operand_->evaluate(batch, active, result_.data());
    std::memcpy(out, active, batch.count);
    take_true(result_.data(), batch.count, out);
  }

 private:
  ConditionPointer operand_;
  MaskColumn result_;
};

class Matching : public Condition {
 public:
  Matching(OperandPointer text, const Expression& expression)
      : text_(std::move(text)), pattern_(expression.text), escape_(expression.escape) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    const auto* texts = static_cast<const std::string_view*>(text_->evaluate(batch, active));
    for (std::size_t i = 0; i < batch.count; ++i)
      out[i] = static_cast<Mask>(active[i] != 0 && like(pattern_, texts[i], escape_));
  }

 private:
  OperandPointer text_;
  std::string pattern_;
  std::optional<char> escape_;
};

class IsNan : public Condition {
 public:
  explicit IsNan(OperandPointer real) : real_(std::move(real)) {}

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    // A NAN alone differs from itself.
    const void* reals = real_->evaluate(batch, active);
    unequal_(reals, reals, batch.count, out);
    keep_true(active, batch.count, out);
  }

 private:
  OperandPointer real_;
  CompareKernel unequal_ = compare_kernel(Comparison::not_equal, Domain::real, Domain::real);
};

// IN with constants of the operand's own domain.
template <typename Value>
class InSet : public Condition {
 public:
  InSet(OperandPointer operand, std::vector<Value> values)
      : operand_(std::move(operand)), values_(std::move(values)) {
    std::sort(values_.begin(), values_.end());
  }

  void evaluate(const Batch& batch, const Mask* active, Mask* out) override {
    const auto* values = static_cast<const Value*>(operand_->evaluate(batch, active));
    for (std::size_t i = 0; i < batch.count; ++i) {
      out[i] = active[i] &
               static_cast<Mask>(std::binary_search(values_.begin(), values_.end(), values[i]));
    }
  }

 private:
  OperandPointer operand_;
  std::vector<Value> values_;
};

// --- literals ---

// The nearest value of IEEE 754's 16-bit format, as HDF5 and NumPy store it.
double rounded_to_half(double value) {
  if (value == 0 || !std::isfinite(value)) return value;
  int exponent = 0;
  std::frexp(value, &exponent);  // value = f * 2^exponent, f from 0.5
  const double unit = std::ldexp(1.0, std::max(exponent - 1, -14) - 10);
  return std::nearbyint(value / unit) * unit;
}

// A number with a fraction means what the item's type can hold of it, so that "= 0.1" finds a FLOAT
// that 0.1 was stored in; where the type cannot hold it at all, it stays what it is.
double rounded_to(const Type& type, double value) {
  if (type.kind != Kind::real || type.size != 4) return value;
  const double rounded =
      type.file_size == 2 ? rounded_to_half(value) : static_cast<double>(static_cast<float>(value));
  const double most = type.file_size == 2 ? 65504.0 : std::numeric_limits<float>::max();
  return std::fabs(rounded) > most ? value : rounded;
}

bool is_text(const Literal& literal) {
  return literal.kind == LiteralKind::string || literal.kind == LiteralKind::bytes;
}

OperandPointer integer_constant(const Literal& literal) {
  constexpr std::uint64_t least = std::uint64_t{1} << 63U;  // magnitude of the least BIGINT
  if (literal.kind == LiteralKind::word)
    return constant_operand(std::int64_t{literal.text == "TRUE" ? 1 : 0});
  if (literal.negative && literal.magnitude <= least)
    return constant_operand(static_cast<std::int64_t>(~literal.magnitude + 1));
  if (literal.negative) return constant_operand(-static_cast<double>(literal.magnitude));
  if (literal.magnitude < least)
    return constant_operand(static_cast<std::int64_t>(literal.magnitude));
  return constant_operand(literal.magnitude);
}

OperandPointer literal_operand(const Literal& literal) {
  if (is_text(literal)) return constant_operand(std::string_view(literal.text));
  if (literal.kind == LiteralKind::real) return constant_operand(literal.real);
  return integer_constant(literal);
}

// --- compiling ---

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
      case Operation::disjunction:
        return chain(expression);
      case Operation::negation:
        return std::make_unique<Negation>(condition(expression.operands[0]));
      default:
        return leaf(expression);
    }
  }

  OperandPointer value(const Expression& expression) { return side(expression).operand; }

 private:
  ConditionPointer chain(const Expression& expression) {
    std::vector<ConditionPointer> parts;
    for (const Expression& operand : expression.operands) parts.push_back(condition(operand));
    return std::make_unique<Chain>(std::move(parts),
                                   expression.operation == Operation::conjunction);
  }

  ConditionPointer leaf(const Expression& expression) {
    if (lacks_value(expression)) return std::make_unique<Never>();
    try {
      return bound(expression);
    } catch (const StatementError& error) {
      if (!scope_.lenient || error.status() != Status::wrong_kind) throw;
      return std::make_unique<Never>();
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
        result = std::make_unique<Matching>(text(side(expression.operands[0])), expression);
        break;
      case Operation::is_nan:
        result = is_nan(side(expression.operands[0]));
        break;
      default:
        return not_zero(side(expression));
    }
    if (expression.negated) result = std::make_unique<Negation>(std::move(result));
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
    return std::make_unique<IsNan>(real_operand(std::move(side.operand)));
  }

  static ConditionPointer not_zero(Side side) {
    const Domain domain = side.operand->domain();
    if (domain == Domain::text || domain == Domain::real)
      refuse(side, "is no condition (compare it with a value)");
    return std::make_unique<Comparing>(
        compare_kernel(Comparison::not_equal, domain, Domain::signed_integer),
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
    return std::make_unique<Comparing>(kernel, std::move(left.operand), std::move(right.operand));
  }

  // A literal takes the form that suits the other side.
  static void settle_literal(Side* side, const Side& other, bool equality) {
    const Literal* literal = side->literal();
    if (literal == nullptr) return;
    if (other.is_enumeration()) {
      const bool is_word = literal->kind == LiteralKind::word;
      if (is_word || (equality && is_text(*literal))) settle_name(side, *literal, other);
    } else if (literal->kind == LiteralKind::real) {
      settle_real(side, literal->real, other);
    } else if (literal->kind == LiteralKind::integer && other.operand->domain() == Domain::real) {
      settle_integer(side, *literal);
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

  static void settle_real(Side* side, double value, const Side& other) {
    if (other.field && other.field->type != nullptr)
      side->operand = constant_operand(rounded_to(*other.field->type, value));
    const bool is_integer = other.operand->domain() != Domain::real &&
                            other.operand->domain() != Domain::text &&
                            std::fabs(value) < 9007199254740992.0 && value == std::floor(value);
    // 2.0 compares with integers as 2 does, only quicker.
    if (is_integer) side->operand = constant_operand(static_cast<std::int64_t>(value));
  }

  static void settle_integer(Side* side, const Literal& literal) {
    if (literal.magnitude > std::uint64_t{1} << 53U) return;
    const auto size = static_cast<double>(literal.magnitude);
    side->operand = constant_operand(literal.negative ? -size : size);
  }

  ConditionPointer between(const Expression& expression) {
    const std::vector<Expression>& operands = expression.operands;
    std::vector<ConditionPointer> parts;
    parts.push_back(compare(Comparison::greater_equal, side(operands[0]), side(operands[1])));
    parts.push_back(compare(Comparison::less_equal, side(operands[0]), side(operands[2])));
    return std::make_unique<Chain>(std::move(parts), /*conjunction=*/true);
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
    return std::make_unique<Chain>(std::move(parts), /*conjunction=*/false);
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
    return std::make_unique<InSet<Value>>(std::move(value.operand), std::move(values));
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

const Mask* all_active() {
  static const MaskColumn active = [] {
    MaskColumn column;
    column.fill(1);
    return column;
  }();
  return active.data();
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
