// Fields to values; plain numbers, of which files have most, without a detour.
#include "import/field.h"

#include <cstdint>

#include "error.h"
#include "import/plain_number.h"
#include "language/literal.h"
#include "language/parser.h"

namespace kelvo {
namespace {

Literal text_literal(std::string_view text) {
  Literal literal;
  literal.kind = LiteralKind::string;
  literal.text = text;
  return literal;
}

// A field may be longer than anyone wants to read.
std::string shown(std::string_view text) {
  constexpr std::size_t longest = 60;
  return text.size() <= longest ? quoted(std::string(text))
                                : quoted(std::string(text.substr(0, longest))) + "...";
}

}  // namespace

bool is_text(Kind kind) {
  return kind == Kind::text || kind == Kind::varying_text || kind == Kind::object_reference;
}

NumberReader number_reader(const Type& type) {
  if (!type.is_numeric() || type.kind == Kind::time || !type.is_full_width()) return nullptr;
  if (type.kind == Kind::real) return type.size == 4 ? read_number<float> : read_number<double>;
  const bool is_signed = type.is_signed && type.kind == Kind::integer;
  switch (type.size) {
    case 1:
      return is_signed ? read_number<std::int8_t> : read_number<std::uint8_t>;
    case 2:
      return is_signed ? read_number<std::int16_t> : read_number<std::uint16_t>;
    case 4:
      return is_signed ? read_number<std::int32_t> : read_number<std::uint32_t>;
    default:
      return is_signed ? read_number<std::int64_t> : read_number<std::uint64_t>;
  }
}

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

Literal field_literal(const Type& type, std::string_view text) {
  try {
    Parser parser(text);
    Literal literal = parse_literal(parser);
    parser.expect_end(Mode::expression);
    return literal;
  } catch (const StatementError&) {
    throw StatementError(Status::wrong_kind,
                         "Value " + shown(text) + " is no value of " + type_name(type));
  }
}

void put_field(EncodedElements& elements, const Type& type, std::size_t offset,
               std::string_view field) {
  if (is_text(type.kind) || find_name(type, field) != nullptr)
    return elements.put(type, offset, text_literal(field));
  const std::string_view text = trimmed(field);
  const char* end = text.data() + text.size();
  const NumberReader read = number_reader(type);
  if (read != nullptr && read(text.data(), end, elements.place(offset)) == end) return;
  elements.put(type, offset, field_literal(type, text));
}

}  // namespace kelvo
