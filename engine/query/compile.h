// Expressions made ready to run: the names found, the types checked, each operation bound to the
// loop that suits its operands.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "language/expression.h"
#include "query/condition.h"
#include "query/field_operand.h"

namespace kelvo {

/// What the names of an expression mean.
struct Scope {
  /// Finds a name's value. Without one, every comparison that asks for it is false, negated ones
  /// too. Throws StatementError where the name means nothing at all.
  std::function<std::optional<Field>(const Expression& name)> find;
  ReferenceNamer namer;
  /// A comparison of text with a number is false instead of an error.
  bool lenient = false;
  /// INDEX is one number; in several dimensions it is text, which can only be shown.
  bool position_is_number = true;
};

/// Throws StatementError: wrong_kind where types do not go together, out_of_range for a name that
/// an enumeration does not have. `expression` and `scope` must outlive the result.
ConditionPointer compile_condition(const Expression& expression, const Scope& scope);

/// A value of the expression for each element: `expression` must be a name or arithmetic.
OperandPointer compile_value(const Expression& expression, const Scope& scope);

/// A value that stands by itself in memory, laid out as its type says; both must outlive its use.
struct NamedValue {
  const Type* type = nullptr;
  const std::byte* element = nullptr;
};

/// Whether a condition over single named values is true: the attributes of an object. `find` gives
/// none for one that is absent; comparisons with it are false, as are those of text with a number.
/// It is asked for a name each time that the name is looked at.
bool is_fulfilled(const Expression& condition,
                  const std::function<std::optional<NamedValue>(const std::string& name)>& find);

}  // namespace kelvo
