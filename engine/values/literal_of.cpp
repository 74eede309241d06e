// Reads elements into literals.
#include "values/literal_of.h"

#include <cstring>
#include <string>

#include "values/bits.h"

namespace kelvo {
namespace {

Literal integer_literal(const Type& type, const std::byte* element) {
  Literal literal;
  const bool raw = type.kind == Kind::time || type.kind == Kind::enumeration;
  const bool is_signed = type.is_signed && type.kind != Kind::bit_field;
  const std::uint64_t bits =
      load_integer(element, type.size, raw ? type.order : machine_order(), is_signed);
  literal.negative = is_signed && static_cast<std::int64_t>(bits) < 0;
  literal.magnitude = literal.negative ? 0 - bits : bits;
  literal.text = (literal.negative ? "-" : "") + std::to_string(literal.magnitude);
  return literal;
}

Literal real_literal(const Type& type, const std::byte* element) {
  Literal literal;
  literal.kind = LiteralKind::real;
  if (type.size == 4) {
    float value = 0;
    std::memcpy(&value, element, sizeof value);
    literal.real = value;
  } else {
    std::memcpy(&literal.real, element, sizeof literal.real);
  }
  append_number(type, element, &literal.text);
  return literal;
}

Literal text_literal(LiteralKind kind, std::string text) {
  Literal literal;
  literal.kind = kind;
  literal.text = std::move(text);
  return literal;
}

// An enumeration goes by its names, so that it fits another one with other numbers; a value without
// a name by its number.
Literal enumeration_literal(const Type& type, const std::byte* element) {
  const std::uint64_t bits = load_integer(element, type.size, type.order, type.is_signed);
  const EnumName* name = name_of(type, bits);
  return name != nullptr ? text_literal(LiteralKind::string, name->name)
                         : integer_literal(type, element);
}

Literal list_literal(const Type& base, const std::byte* items, std::size_t count,
                     const ReferenceNamer& namer) {
  Literal literal;
  literal.kind = LiteralKind::list;
  for (std::size_t i = 0; i < count; ++i)
    literal.items.push_back(literal_of(base, items + i * base.size, namer));
  return literal;
}

Literal compound_literal(const Type& type, const std::byte* element, const ReferenceNamer& namer) {
  Literal literal;
  literal.kind = LiteralKind::tuple;
  for (const Member& member : type.members) {
    literal.items.push_back(literal_of(member.type, element + member.offset, namer));
  }
  return literal;
}

Literal sequence_literal(const Type& type, const std::byte* element, const ReferenceNamer& namer) {
  std::size_t count = 0;
  const std::byte* items = nullptr;
  std::memcpy(&count, element, sizeof count);
  std::memcpy(&items, element + sizeof count, sizeof items);
  return list_literal(type.base[0], items, count, namer);
}

}  // namespace

Literal literal_of(const Type& type, const std::byte* element, const ReferenceNamer& namer) {
  switch (type.kind) {
    case Kind::integer:
    case Kind::bit_field:
    case Kind::time:
      return integer_literal(type, element);
    case Kind::real:
      return real_literal(type, element);
    case Kind::text:
      return text_literal(LiteralKind::string, std::string(without_padding(type, element)));
    case Kind::varying_text: {
      const std::string_view text = varying_text(element);
      if (text.data() == nullptr) return text_literal(LiteralKind::word, "NULL");
      return text_literal(LiteralKind::string, std::string(text));
    }
    case Kind::opaque:
      return text_literal(LiteralKind::bytes,
                          std::string(reinterpret_cast<const char*>(element), type.size));
    case Kind::enumeration:
      return enumeration_literal(type, element);
    case Kind::compound:
      return compound_literal(type, element, namer);
    case Kind::array:
      return list_literal(type.base[0], element, static_cast<std::size_t>(type.array_length()),
                          namer);
    case Kind::sequence:
      return sequence_literal(type, element, namer);
    case Kind::object_reference:
    case Kind::region_reference:
      return text_literal(LiteralKind::string, namer ? namer(type, element) : "");
  }
  return {};
}

}  // namespace kelvo
