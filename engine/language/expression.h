// Expressions as they are written: the conditions of WHERE and the values compared in them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "values/literal.h"
#include "values/pattern.h"

namespace kelvo {

class Parser;

enum class Operation {
  name,         // `text`: a member, VALUE or INDEX; or an attribute
  literal,      // `literal`
  negate,       // - operand
  arithmetic,   // two operands
  comparison,   // two operands
  between,      // three operands: the value and the two bounds
  in,           // two operands or more: the value, then the list
  like,         // one operand, and `pattern`
  is_nan,       // one operand
  conjunction,  // AND of two operands or more
  disjunction,  // OR of two operands or more
  negation,     // NOT operand
};

enum class Arithmetic { add, subtract, multiply, divide, remainder };
enum class Comparison { equal, not_equal, less, less_equal, greater, greater_equal };

struct Expression {
  Operation operation = Operation::literal;
  std::size_t position = 1;  // of its first byte in the statement, from 1
  std::string text;
  bool quoted = false;  // name: written between double quotes, so that it is no keyword
  Literal literal;
  Arithmetic arithmetic = Arithmetic::add;
  Comparison comparison = Comparison::equal;
  bool negated = false;  // between, in, like, is_nan: with NOT
  LikePattern pattern;   // like
  std::vector<Expression> operands;

  /// Whether it is a condition; otherwise it is a value.
  [[nodiscard]] bool is_condition() const noexcept { return operation >= Operation::comparison; }
};

/// How names are written: plain ("pos.x", "\"a b\"") for what SELECT reads, or with an "@" before
/// them where only attributes can be named.
enum class NameForm { plain, attribute };

/// A condition; a name alone is one too, true where its value is not zero. Throws StatementError
/// with its position where the text is none, or is nested deeper than 200 levels.
Expression parse_condition(Parser& parser, NameForm form);

/// A value: a name, a literal, or arithmetic with them.
Expression parse_value(Parser& parser, NameForm form);

/// The operator as it is written.
const char* symbol_of(Arithmetic arithmetic);

}  // namespace kelvo
