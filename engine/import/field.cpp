// Fields to values; plain numbers, of which files have most, without a detour.
#include "import/field.h"

#include <charconv>
#include <cstring>
#include <limits>

#include "error.h"
#include "language/literal.h"
#include "language/parser.h"

namespace kelvo {
namespace {

template <typename Number>
bool put_exact(EncodedElements& elements, const Type& type, std::size_t offset,
               std::string_view text) {
  Number number{};
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return false;
  elements.put(type, offset, reinterpret_cast<const std::byte*>(&number));
  return true;
}

// False for whatever is not an ordinary number of just this type: then the literal decides, and
// says why not.
bool put_number(EncodedElements& elements, const Type& type, std::size_t offset,
                std::string_view text) {
  const bool whole = type.file_size == type.size;
  if (type.kind == Kind::real && whole) {
    return type.size == 4 ? put_exact<float>(elements, type, offset, text)
                          : put_exact<double>(elements, type, offset, text);
  }
  if (type.kind != Kind::integer || !whole) return false;
  switch (type.size) {
    case 1:
      return type.is_signed ? put_exact<std::int8_t>(elements, type, offset, text)
                            : put_exact<std::uint8_t>(elements, type, offset, text);
    case 2:
      return type.is_signed ? put_exact<std::int16_t>(elements, type, offset, text)
                            : put_exact<std::uint16_t>(elements, type, offset, text);
    case 4:
      return type.is_signed ? put_exact<std::int32_t>(elements, type, offset, text)
                            : put_exact<std::uint32_t>(elements, type, offset, text);
    default:
      return type.is_signed ? put_exact<std::int64_t>(elements, type, offset, text)
                            : put_exact<std::uint64_t>(elements, type, offset, text);
  }
}

Literal text_literal(std::string_view text) {
  Literal literal;
  literal.kind = LiteralKind::string;
  literal.text = text;
  return literal;
}

bool names_a_value(const Type& type, std::string_view text) {
  for (const EnumName& name : type.names) {
    if (name.name == text) return true;
  }
  return false;
}

}  // namespace

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
    throw StatementError(Status::wrong_kind, "Value " + quoted(std::string(text)) +
                                                 " is no value of " + type_name(type));
  }
}

void put_field(EncodedElements& elements, const Type& type, std::size_t offset,
               std::string_view field) {
  if (type.kind == Kind::text || type.kind == Kind::varying_text || names_a_value(type, field)) {
    return elements.put(type, offset, text_literal(field));
  }
  const std::string_view text = trimmed(field);
  if (put_number(elements, type, offset, text)) return;
  elements.put(type, offset, field_literal(type, text));
}

}  // namespace kelvo
