// How conditions are read: what binds tighter, and what a wrong one is told.
#include "language/expression.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "error.h"
#include "language/parser.h"

namespace kelvo {
namespace {

std::string written(const Expression& expression);

std::string joined(const Expression& expression, const std::string& symbol) {
  std::string text = "(";
  for (const Expression& operand : expression.operands)
    text += (text.size() > 1 ? " " + symbol + " " : "") + written(operand);
  return text + ")";
}

// By the numbers of the comparisons.
constexpr std::array symbols = {"=", "<>", "<", "<=", ">", ">="};

// The expression with all its parentheses.
std::string written(const Expression& expression) {
  const std::string no = expression.negated ? "not " : "";
  switch (expression.operation) {
    case Operation::name:
      return expression.quoted ? '"' + expression.text + '"' : expression.text;
    case Operation::literal:
      return expression.literal.text;
    case Operation::negate:
      return "-" + written(expression.operands[0]);
    case Operation::arithmetic:
      return joined(expression, symbol_of(expression.arithmetic));
    case Operation::comparison:
      return joined(expression, symbols[static_cast<std::size_t>(expression.comparison)]);
    case Operation::between:
      return no + "between" + joined(expression, ",");
    case Operation::in:
      return no + "in" + joined(expression, ",");
    case Operation::like:
      return no + "like(" + written(expression.operands[0]) + ", " + expression.pattern.text + ")";
    case Operation::is_nan:
      return no + "nan" + joined(expression, ",");
    case Operation::conjunction:
      return joined(expression, "and");
    case Operation::disjunction:
      return joined(expression, "or");
    case Operation::negation:
      return "not " + written(expression.operands[0]);
  }
  return "";
}

std::string read(const std::string& text, NameForm form = NameForm::plain) {
  Parser parser(text);
  const Expression expression = parse_condition(parser, form);
  parser.expect_end(Mode::expression);
  return written(expression);
}

std::string error_of(const std::string& text, NameForm form = NameForm::plain) {
  try {
    read(text, form);
  } catch (const StatementError& error) {
    return std::to_string(error.position()) + " " + error.what();
  }
  return "";
}

TEST(Expression, AndBindsTighterThanOr) {
  EXPECT_EQ("((a = 1) or ((b = 2) and (c = 3)))", read("a = 1 OR b = 2 AND c = 3"));
}

TEST(Expression, NotBindsTighterThanAnd) {
  EXPECT_EQ("(not (a = 1) and (b = 2))", read("NOT a = 1 and b = 2"));
}

TEST(Expression, ChainsAreFlat) {
  EXPECT_EQ("((a = 1) and (b = 2) and (c = 3))", read("a = 1 AND b = 2 AND c = 3"));
}

TEST(Expression, ArithmeticGoesFromTheLeftAndProductsFirst) {
  EXPECT_EQ("(((a - b) - (c * d)) < 1)", read("a - b - c * d < 1"));
}

TEST(Expression, ParenthesesHoldValuesAndConditions) {
  EXPECT_EQ("(((a + 1) * 2) = 4)", read("(a + 1) * 2 = 4"));
  EXPECT_EQ("((a = 1) and ((b = 2) or (c = 3)))", read("a = 1 AND (b = 2 OR c = 3)"));
}

TEST(Expression, SignsBelongToNumbers) {
  EXPECT_EQ("(a > -9223372036854775808)", read("a > -9223372036854775808"));
  EXPECT_EQ("((a - 1) > -b)", read("a -1 > -b"));
}

TEST(Expression, BothSpellingsOfUnequalAreOne) {
  EXPECT_EQ("(a <> 1)", read("a <> 1"));
  EXPECT_EQ("(a <> 1)", read("a != 1"));
}

TEST(Expression, WordedComparisons) {
  EXPECT_EQ("between(a , 1 , (2 + 3))", read("a between 1 and 2 + 3"));
  EXPECT_EQ("(not between(a , 1 , 2) and in(b , 1 , 2))",
            read("a NOT BETWEEN 1 AND 2 AND b IN (1, 2)"));
  EXPECT_EQ("not like(pos.x, a%)", read("pos.x NOT LIKE 'a%'"));
  EXPECT_EQ("not nan(a)", read("a IS NOT NAN"));
}

TEST(Expression, NamesAloneAreConditions) {
  EXPECT_EQ("(flag and not \"AND\")", read("flag AND NOT \"AND\""));
}

TEST(Expression, QuotesMayStandAroundTheNamesOfAMember) {
  EXPECT_EQ("(\"my pos.x\" = a.b)", read("\"my pos\".x = a.\"b\""));
  EXPECT_EQ("(\"a.b.c\" = \"d.\")", read("\"a\".\"b\".c = \"d.\""));
}

TEST(Expression, AttributesAreMarked) {
  EXPECT_EQ("(units = K)", read("@units = 'K'", NameForm::attribute));
}

TEST(Expression, ErrorsSayWhatWasExpected) {
  EXPECT_EQ("3 Expected a comparison, found the end of the statement", error_of("5 "));
  EXPECT_EQ("6 Expected a comparison, found \"AND\"", error_of("a+1  AND b"));
  EXPECT_EQ("5 Expected a name or a value, found the end of the statement", error_of("a = "));
  EXPECT_EQ("5 Expected a name or a value, found \"FROM\"", error_of("a = FROM"));
  EXPECT_EQ("7 Expected BETWEEN, IN or LIKE, found \"=\"", error_of("a NOT = 1"));
  EXPECT_EQ("6 Expected NAN, found \"NULL\"", error_of("a IS NULL"));
  EXPECT_EQ("9 Expected \")\", found the end of the statement", error_of("(a = 1  "));
  EXPECT_EQ("6 Expected a value, found a condition", error_of("a = (b = c)"));
  EXPECT_EQ("8 Expected a pattern (strings stand between single quotes), found \"b\"",
            error_of("a LIKE b"));
  EXPECT_EQ("19 Expected one escape character", error_of("a LIKE 'b' ESCAPE 'xy'"));
  EXPECT_EQ("3 Expected the name of a member, found \"*\"", error_of("a.*"));
  EXPECT_EQ("6 Expected the name of a member, found \"b\"", error_of("\"a\". b"));
  EXPECT_EQ("1 Expected an attribute (@name) or a value, found \"units\"",
            error_of("units = 'K'", NameForm::attribute));
}

TEST(Expression, DepthIsLimited) {
  const std::string deepest = std::string(200, '(') + "a = 1" + std::string(200, ')');
  EXPECT_EQ("(a = 1)", read(deepest));
  EXPECT_EQ("202 Expected an expression of at most 200 levels", error_of("(" + deepest + ")"));
  std::string sum = "a";
  for (int i = 0; i < 201; ++i) sum += "+1";
  EXPECT_EQ("403 Expected an expression of at most 200 levels", error_of(sum + " = 1"));
}

}  // namespace
}  // namespace kelvo
