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

[[noreturn]] void refuse_kind(const Literal& literal, const Type& type) {
  const std::string hint =
      type.kind == Kind::compound ? " (one is written (1, 'a') or {id: 1, name: 'a'})" : "";
  throw StatementError(Status::wrong_kind,
                       "Value " + describe(literal) + " is no value of " + type_name(type) + hint);
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

void store(const void* value, std::size_t size, std::byte* element) {
  std::memcpy(element, value, size);
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
  if (type.size == 8) return store(&value, sizeof value, element);
  const auto single = static_cast<float>(value);
  store(&single, sizeof single, element);
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
    const auto name =
        std::find_if(type.names.begin(), type.names.end(),
                     [&literal](const EnumName& one) { return one.name == literal.text; });
    if (name == type.names.end()) refuse_name(literal, type);
    bits = name->bits;
  } else {
    bits = integer_bits(literal, type, type.is_signed);
  }
  store_integer(bits, type.size, type.order, element);
}

void check_count(std::size_t written, std::size_t wanted, const std::string& of_what) {
  if (written == wanted) return;
  throw StatementError(Status::out_of_range,
                       std::to_string(wanted) + (wanted == 1 ? " value is" : " values are") +
                           " needed for " + of_what + ", " + std::to_string(written) +
                           (written == 1 ? " is" : " are") + " given");
}

// Whether the items of an array of several dimensions are lines, not elements. Where elements are
// lists themselves, and there are as many of them as lines, only what is in them can tell.
bool is_nested(const Type& type, const Literal& literal) {
  const auto is_list = [](const Literal& item) { return item.kind == LiteralKind::list; };
  if (literal.items.size() != type.extents[0] || literal.items.empty()) return false;
  const bool base_is_list = type.base[0].kind == Kind::sequence || type.base[0].kind == Kind::array;
  if (!base_is_list || literal.items.size() != type.array_length())
    return is_list(literal.items[0]);
  return std::all_of(literal.items.begin(), literal.items.end(), [&](const Literal& item) {
    return is_list(item) && item.items.size() == 1 && is_list(item.items[0]);
  });
}

}  // namespace

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

void EncodedElements::append(const Literal& literal) {
  bytes_.resize(bytes_.size() + type_->size);
  encode(*type_, literal, bytes_.data() + count_ * type_->size);
  ++count_;
}

void EncodedElements::append_zeros() {
  bytes_.resize(bytes_.size() + type_->size);
  ++count_;
}

void EncodedElements::put(const Type& type, std::size_t offset, const Literal& literal) {
  encode(type, literal, place(offset));
}

void EncodedElements::append_bytes(const std::byte* elements, std::size_t count) {
  bytes_.insert(bytes_.end(), elements, elements + count * type_->size);
  count_ += count;
}

std::byte* EncodedElements::append_room(std::size_t count) {
  const std::size_t begin = bytes_.size();
  bytes_.resize(begin + count * type_->size);
  count_ += count;
  return bytes_.data() + begin;
}

void EncodedElements::clear() {
  bytes_.clear();
  count_ = 0;
  texts_.clear();
  sequences_.clear();
}

void EncodedElements::encode(const Type& type, const Literal& literal, std::byte* element) {
  switch (type.kind) {
    case Kind::integer:
    case Kind::bit_field:
    case Kind::time:
      return encode_integer(type, literal, element);
    case Kind::real:
      return encode_real(type, literal, element);
    case Kind::text:
      return encode_text(type, literal, element);
    case Kind::varying_text:
      return encode_varying_text(type, literal, element);
    case Kind::opaque:
      return encode_opaque(type, literal, element);
    case Kind::enumeration:
      return encode_enumeration(type, literal, element);
    case Kind::compound:
      return encode_compound(type, literal, element);
    case Kind::array:
      return encode_array(type, literal, element);
    case Kind::sequence:
      return encode_sequence(type, literal, element);
    case Kind::object_reference:
    case Kind::region_reference:
      refuse_kind(literal, type);
  }
}

void EncodedElements::encode_compound(const Type& type, const Literal& literal,
                                      std::byte* element) {
  if (literal.kind == LiteralKind::object) return encode_object(type, literal, element);
  if (literal.kind != LiteralKind::tuple) refuse_kind(literal, type);
  check_count(literal.items.size(), type.members.size(),
              "a compound with " + std::to_string(type.members.size()) +
                  (type.members.size() == 1 ? " member" : " members"));
  for (std::size_t i = 0; i < type.members.size(); ++i) {
    encode(type.members[i].type, literal.items[i], element + type.members[i].offset);
  }
}

void EncodedElements::encode_object(const Type& type, const Literal& literal, std::byte* element) {
  for (const std::string& name : literal.names) {
    const bool known = std::any_of(type.members.begin(), type.members.end(),
                                   [&name](const Member& member) { return member.name == name; });
    if (!known)
      throw StatementError(Status::does_not_exist, "The compound has no member " + quoted(name));
  }
  for (const Member& member : type.members) {
    const auto name = std::find(literal.names.begin(), literal.names.end(), member.name);
    if (name == literal.names.end()) {
      throw StatementError(Status::out_of_range,
                           "A value for the member " + quoted(member.name) + " is missing");
    }
    encode(member.type, literal.items[static_cast<std::size_t>(name - literal.names.begin())],
           element + member.offset);
  }
}

// [1, 2, 3] in C order, or nested lists, one level for each dimension.
void EncodedElements::encode_array(const Type& type, const Literal& literal, std::byte* element) {
  if (literal.kind != LiteralKind::list) refuse_kind(literal, type);
  const Type& base = type.base[0];
  const bool nested = type.extents.size() > 1 && is_nested(type, literal);
  if (nested) {
    Type line = type;
    line.extents.erase(line.extents.begin());
    line.size = type.size / static_cast<std::size_t>(type.extents[0]);
    for (std::size_t i = 0; i < literal.items.size(); ++i)
      encode_array(line, literal.items[i], element + i * line.size);
    return;
  }
  check_count(literal.items.size(), static_cast<std::size_t>(type.array_length()),
              "an array of " + type_name(base));
  for (std::size_t i = 0; i < literal.items.size(); ++i)
    encode(base, literal.items[i], element + i * base.size);
}

void EncodedElements::encode_sequence(const Type& type, const Literal& literal,
                                      std::byte* element) {
  if (literal.kind != LiteralKind::list) refuse_kind(literal, type);
  const Type& base = type.base[0];
  std::vector<std::byte>& items = sequences_.emplace_back(literal.items.size() * base.size);
  for (std::size_t i = 0; i < literal.items.size(); ++i)
    encode(base, literal.items[i], items.data() + i * base.size);
  const std::size_t count = literal.items.size();
  const void* address = items.data();
  store(&count, sizeof count, element);
  store(&address, sizeof address, element + sizeof count);
}

void EncodedElements::encode_varying_text(const Type& type, const Literal& literal,
                                          std::byte* element) {
  const char* address = nullptr;
  if (literal.is_text()) {
    if (literal.text.find('\0') != std::string::npos) {
      throw StatementError(Status::out_of_range,
                           "A VARCHAR cannot hold a null byte (CHAR and OPAQUE can)");
    }
    address = texts_.emplace_back(literal.text).c_str();
  } else if (literal.kind != LiteralKind::word || literal.text != "NULL") {
    refuse_kind(literal, type);
  }
  store(&address, sizeof address, element);
}

}  // namespace kelvo
