// Shows literals.
#include "values/literal.h"

#include "values/text.h"

namespace kelvo {

std::string describe(const Literal& literal) {
  switch (literal.kind) {
    case LiteralKind::string:
      return string_literal(literal.text);
    case LiteralKind::bytes:
      return "X'...'";
    case LiteralKind::tuple:
      return "(...)";
    case LiteralKind::object:
      return "{...}";
    case LiteralKind::list:
      return "[...]";
    default:
      return literal.text;
  }
}

}  // namespace kelvo
