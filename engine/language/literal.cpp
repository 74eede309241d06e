// Reads written values; numbers keep their text for messages.
#include "language/literal.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "language/parser.h"

namespace kelvo {
namespace {

bool parse_magnitude(const std::string& text, std::uint64_t* magnitude) {
  const bool hexadecimal = text.size() > 2 && (text[1] == 'x' || text[1] == 'X');
  const char* begin = text.data() + (hexadecimal ? 2 : 0);
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(begin, end, *magnitude, hexadecimal ? 16 : 10);
  return result.ec == std::errc() && result.ptr == end;
}

double parse_real(const std::string& text) {
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  // from_chars leaves the value alone both above and below the range; the exponent's sign tells
  // which.
  const bool tiny = text.find("e-") != std::string::npos || text.find("E-") != std::string::npos;
  return tiny ? 0 : std::numeric_limits<double>::infinity();
}

Literal number(const Token& token, bool negative) {
  Literal literal;
  literal.negative = negative;
  literal.text = (negative ? "-" : "") + token.text;
  if (parse_magnitude(token.text, &literal.magnitude)) return literal;
  literal.kind = LiteralKind::real;
  literal.real = std::copysign(parse_real(token.text), negative ? -1.0 : 1.0);
  return literal;
}

Literal special_real(const std::string& text, double value) {
  Literal literal;
  literal.kind = LiteralKind::real;
  literal.text = text;
  literal.real = value;
  return literal;
}

Literal signed_number(Parser& parser) {
  const bool negative = parser.peek(Mode::expression).is_symbol("-");
  const bool has_sign = negative || parser.peek(Mode::expression).is_symbol("+");
  if (has_sign) parser.take(Mode::expression);
  if (parser.accept_keyword("INF", Mode::expression)) {
    return special_real(
        negative ? "-INF" : "INF",
        std::copysign(std::numeric_limits<double>::infinity(), negative ? -1.0 : 1.0));
  }
  if (parser.peek(Mode::expression).kind != TokenKind::number)
    parser.fail_expected("a number", Mode::expression);
  return number(parser.take(Mode::expression), negative);
}

Literal items(Parser& parser, LiteralKind kind, const char* close) {
  Literal literal;
  literal.kind = kind;
  parser.take(Mode::expression);
  // A sequence may be empty; a tuple never is.
  if (kind == LiteralKind::list && parser.accept_symbol(close, Mode::expression)) return literal;
  do {
    literal.items.push_back(parse_literal(parser));
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol(close, Mode::expression);
  return literal;
}

// Names are written as SELECT shows them: bare where they can be, else quoted.
Literal object(Parser& parser) {
  Literal literal;
  literal.kind = LiteralKind::object;
  parser.take(Mode::expression);
  do {
    const TokenKind kind = parser.peek(Mode::expression).kind;
    if (kind != TokenKind::word && kind != TokenKind::quoted_name) {
      parser.fail_expected("the name of a member", Mode::expression);
    }
    literal.names.push_back(parser.take(Mode::expression).text);
    parser.expect_symbol(":", Mode::expression);
    literal.items.push_back(parse_literal(parser));
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol("}", Mode::expression);
  return literal;
}

Literal word(Parser& parser) {
  if (parser.accept_keyword("NAN", Mode::expression)) {
    return special_real("NAN", std::numeric_limits<double>::quiet_NaN());
  }
  for (const char* keyword : {"TRUE", "FALSE", "NULL"}) {
    if (!parser.accept_keyword(keyword, Mode::expression)) continue;
    Literal literal;
    literal.kind = LiteralKind::word;
    literal.text = keyword;
    return literal;
  }
  return signed_number(parser);
}

Literal text(Parser& parser, LiteralKind kind) {
  Literal literal;
  literal.kind = kind;
  literal.text = parser.take(Mode::expression).text;
  return literal;
}

Literal any_literal(Parser& parser) {
  const Token& token = parser.peek(Mode::expression);
  switch (token.kind) {
    case TokenKind::string:
      return text(parser, LiteralKind::string);
    case TokenKind::bytes:
      return text(parser, LiteralKind::bytes);
    case TokenKind::word:
      if (token.is_keyword("NAN") || token.is_keyword("INF") || token.is_keyword("TRUE") ||
          token.is_keyword("FALSE") || token.is_keyword("NULL")) {
        return word(parser);
      }
      break;
    case TokenKind::number:
      return signed_number(parser);
    case TokenKind::symbol:
      if (token.is_symbol("(")) return items(parser, LiteralKind::tuple, ")");
      if (token.is_symbol("[")) return items(parser, LiteralKind::list, "]");
      if (token.is_symbol("{")) return object(parser);
      if (token.is_symbol("-") || token.is_symbol("+")) return signed_number(parser);
      break;
    default:
      break;
  }
  parser.fail_expected_value("a value");
}

}  // namespace

Literal parse_literal(Parser& parser) {
  const Parser::Nesting nesting(parser);
  const std::size_t position = parser.peek(Mode::expression).position;
  Literal literal = any_literal(parser);
  literal.position = position;
  return literal;
}

std::vector<Literal> parse_value_list(Parser& parser) {
  parser.expect_symbol("(", Mode::expression);
  std::vector<Literal> values;
  do {
    values.push_back(parse_literal(parser));
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol(")", Mode::expression);
  return values;
}

}  // namespace kelvo
