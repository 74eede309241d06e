// Fits JSON values to types: what JSON can write goes the way of literals, once its words, numbers
// and strings are what the type takes.
#include "import/json_value.h"

#include <charconv>
#include <string>
#include <utility>

#include "error.h"
#include "import/field.h"
#include "values/encode.h"

namespace kelvo {
namespace {

bool from_hexadecimal(const std::string& digits, std::string* bytes) {
  bytes->clear();
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    unsigned value = 0;
    const auto result = std::from_chars(digits.data() + i, digits.data() + i + 2, value, 16);
    if (result.ptr != digits.data() + i + 2) return false;
    *bytes += static_cast<char>(value);
  }
  return digits.size() % 2 == 0;
}

// Numbers come as they are written.
bool is_number_text(const Literal& literal) {
  return literal.kind == LiteralKind::word &&
         (literal.text[0] == '-' || (literal.text[0] >= '0' && literal.text[0] <= '9'));
}

void fit(const Type& type, Literal& literal);

// A list within an array may be one of its lines, or an element that is a list itself.
void fit_items(const Type& type, Literal& literal) {
  if (type.kind != Kind::array && type.kind != Kind::sequence) return;
  const bool base_is_list = type.base[0].kind == Kind::array || type.base[0].kind == Kind::sequence;
  for (Literal& item : literal.items) {
    const bool is_line = item.kind == LiteralKind::list && !base_is_list;
    fit(is_line ? type : type.base[0], item);
  }
}

void fit_members(const Type& type, Literal& literal) {
  for (std::size_t i = 0; i < literal.names.size(); ++i) {
    for (const Member& member : type.members) {
      if (member.name == literal.names[i]) fit(member.type, literal.items[i]);
    }
  }
}

void fit_string(const Type& type, Literal& literal) {
  if (type.kind != Kind::opaque) return;
  std::string bytes;
  if (!from_hexadecimal(literal.text, &bytes)) {
    throw StatementError(Status::wrong_kind, "Value " + quoted(literal.text) + " is no value of " +
                                                 type_name(type) +
                                                 " (two hexadecimal digits a byte)");
  }
  literal.kind = LiteralKind::bytes;
  literal.text = std::move(bytes);
}

// JSON's words, numbers and strings become what the type takes.
void fit(const Type& type, Literal& literal) {
  if (literal.kind == LiteralKind::list) return fit_items(type, literal);
  if (literal.kind == LiteralKind::object) return fit_members(type, literal);
  if (literal.kind == LiteralKind::string) return fit_string(type, literal);
  if (literal.kind != LiteralKind::word) return;
  if (is_number_text(literal)) {
    literal = field_literal(type, literal.text);
  } else if (literal.text == "NULL") {
    if (type.kind == Kind::real) literal = field_literal(type, "NAN");
  } else if (type.kind == Kind::integer) {
    literal = field_literal(type, literal.text == "TRUE" ? "1" : "0");
  }
}

void put_members(EncodedElements& elements, const Type& type, std::size_t offset,
                 Literal& literal) {
  for (const Member& member : type.members) {
    put_json(elements, member.type, offset + member.offset,
             literal.items[item_of_member(literal, member.name)]);
  }
  check_member_names(literal, type);
}

}  // namespace

void put_json(EncodedElements& elements, const Type& type, std::size_t offset, Literal& literal) {
  if (type.kind == Kind::compound && literal.kind == LiteralKind::object) {
    return put_members(elements, type, offset, literal);
  }
  // Most of all values are plain numbers: they take the short way of a field.
  if (is_number_text(literal) && type.is_numeric())
    return put_field(elements, type, offset, literal.text);
  fit(type, literal);
  elements.put(type, offset, literal);
}

}  // namespace kelvo
