// Fits written values to types.
#include "values/encode.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "error.h"
#include "values/bits.h"
#include "values/text.h"

namespace kelvo {
namespace {

[[noreturn]] void refuse_fit(const Literal& literal, const Type& type) {
  throw StatementError(Status::out_of_range,
                       "Value " + describe(literal) + " does not fit " + type_name(type));
}

[[noreturn]] void refuse_name(const Literal& literal, const Type& type) {
  constexpr std::size_t most_listed = 8;
  std::string hint = "SHOW MEMBER lists its names";
  if (type.names.size() <= most_listed) {
    hint.clear();
    for (const EnumName& one : type.names)
      hint += (hint.empty() ? "its names: " : ", ") + string_literal(one.name);
  }
  throw StatementError(Status::out_of_range, type_name(type) + " has no value " +
                                                 describe(literal) +
                                                 (hint.empty() ? "" : " (" + hint + ")"));
}

// A real number counts as an integer where it is exactly one: 1e3, 2.0.
bool as_integer(const Literal& literal, bool* negative, std::uint64_t* magnitude) {
  if (literal.kind == LiteralKind::integer) {
    *negative = literal.negative && literal.magnitude != 0;
    *magnitude = literal.magnitude;
    return true;
  }
  const double size = std::fabs(literal.real);
  if (literal.kind != LiteralKind::real || !(size < 18446744073709551616.0) ||
      size != std::floor(size))
    return false;
  *magnitude = static_cast<std::uint64_t>(size);
  *negative = literal.real < 0;
  return true;
}

std::uint64_t integer_bits(const Literal& literal, const Type& type, bool is_signed) {
  if (!literal.is_number()) refuse_kind(literal, type);
  bool negative = false;
  std::uint64_t magnitude = 0;
  // The file's width counts: a file may hold integers narrower than the machine's.
  const std::uint64_t most = std::numeric_limits<std::uint64_t>::max() >> (64 - type.value_bits());
  const std::uint64_t limit = is_signed ? most >> 1U : most;
  if (!as_integer(literal, &negative, &magnitude)) refuse_fit(literal, type);
  if (negative ? !is_signed || magnitude > limit + 1 : magnitude > limit) refuse_fit(literal, type);
  return negative ? ~magnitude + 1 : magnitude;
}

void encode_integer(const Type& type, const Literal& literal, std::byte* element) {
  const bool is_signed = type.is_signed && type.kind != Kind::bit_field;
  const ByteOrder order = type.kind == Kind::time ? type.order : machine_order();
  store_integer(integer_bits(literal, type, is_signed), type.size, order, element);
}

bool has_digit(const std::string& text) {
  return text.find_first_of("0123456789") != std::string::npos;
}

void encode_real(const Type& type, const Literal& literal, std::byte* element) {
  if (!literal.is_number()) refuse_kind(literal, type);
  double value = literal.real;
  if (literal.kind == LiteralKind::integer) {
    value = static_cast<double>(literal.magnitude);
    if (literal.negative) value = -value;
  }
  // A number of digits that became an infinity when it was read was too large even for that.
  const bool infinite = std::isinf(value) && !has_digit(literal.text);
  if (!infinite && std::fabs(value) >= least_too_large(type.real_format()))
    refuse_fit(literal, type);
  const auto single = static_cast<float>(value);
  if (type.size == sizeof single) {
    std::memcpy(element, &single, sizeof single);
  } else {
    std::memcpy(element, &value, sizeof value);
  }
}

void encode_text(const Type& type, const Literal& literal, std::byte* element) {
  if (!literal.is_text()) refuse_kind(literal, type);
  // A null-terminated string keeps its last byte for the null.
  const std::size_t room = type.size - (type.padding == Padding::null_terminated ? 1 : 0);
  if (literal.text.size() > room) refuse_fit(literal, type);
  std::memset(element, type.padding == Padding::space_padded ? ' ' : 0, type.size);
  std::memcpy(element, literal.text.data(), literal.text.size());
}

void encode_opaque(const Type& type, const Literal& literal, std::byte* element) {
  if (!literal.is_text()) refuse_kind(literal, type);
  if (literal.text.size() > type.size) refuse_fit(literal, type);
  std::memset(element, 0, type.size);
  std::memcpy(element, literal.text.data(), literal.text.size());
}

void encode_enumeration(const Type& type, const Literal& literal, std::byte* element) {
  const bool is_name = literal.kind == LiteralKind::string || literal.kind == LiteralKind::word;
  std::uint64_t bits = 0;
  if (is_name) {
    const EnumName* name = find_name(type, literal.text);
    if (name == nullptr) refuse_name(literal, type);
    bits = name->bits;
  } else {
    bits = integer_bits(literal, type, type.is_signed);
  }
  store_integer(bits, type.size, type.order, element);
}

// The empty text is the null reference, as it shows.
void encode_reference(const Type& type, const Literal& literal, std::byte* element) {
  const bool is_null = literal.kind == LiteralKind::word && literal.text == "NULL";
  if (!type.make_reference || (!is_null && !literal.is_text())) refuse_kind(literal, type);
  std::memset(element, 0, type.size);
  if (!is_null && !literal.text.empty()) type.make_reference(literal.text, element);
}

}  // namespace

void encode(const Type& type, const Literal& literal, std::byte* element) {
  switch (type.kind) {
    case Kind::integer:
    case Kind::bit_field:
    case Kind::time:
      return encode_integer(type, literal, element);
    case Kind::real:
      return encode_real(type, literal, element);
    case Kind::text:
      return encode_text(type, literal, element);
    case Kind::opaque:
      return encode_opaque(type, literal, element);
    case Kind::enumeration:
      return encode_enumeration(type, literal, element);
    case Kind::object_reference:
      return encode_reference(type, literal, element);
    case Kind::varying_text:
    case Kind::compound:
    case Kind::array:
    case Kind::sequence:
    case Kind::region_reference:
      refuse_kind(literal, type);
  }
}

void refuse_kind(const Literal& literal, const Type& type) {
  const std::string hint =
      type.kind == Kind::compound ? " (one is written (1, 'a') or {id: 1, name: 'a'})" : "";
  throw StatementError(Status::wrong_kind,
                       "Value " + describe(literal) + " is no value of " + type_name(type) + hint);
}

std::size_t item_of_member(const Literal& object, const std::string& member) {
  const auto name = std::find(object.names.begin(), object.names.end(), member);
  if (name == object.names.end()) {
    throw StatementError(Status::out_of_range,
                         "A value for the member " + quoted(member) + " is missing");
  }
  return static_cast<std::size_t>(name - object.names.begin());
}

void check_member_names(const Literal& object, const Type& compound) {
  for (const std::string& name : object.names) {
    const bool known = std::any_of(compound.members.begin(), compound.members.end(),
                                   [&name](const Member& member) { return member.name == name; });
    if (!known)
      throw StatementError(Status::does_not_exist, "The compound has no member " + quoted(name));
  }
}

}  // namespace kelvo
