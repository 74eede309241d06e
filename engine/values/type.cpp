// Type codes and the written notation of types.
#include "values/type.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <numeric>
#include <string_view>

#include "kelvo.h"
#include "values/text.h"

namespace kelvo {
namespace {

// One row for each numeric element in memory: how it is named, and shown alone or in a list.
struct NumericRow {
  bool is_real;
  std::size_t size;
  bool is_signed;
  std::string_view name;
  std::int32_t code;
  std::int32_t list_code;
};

constexpr std::array<NumericRow, 10> numeric_rows = {{
    {false, 1, true, "TINYINT", KELVO_TINYINT, KELVO_VARTINYINT},
    {false, 1, false, "UNSIGNED TINYINT", KELVO_UNSIGNED_TINYINT, KELVO_UNSIGNED_VARTINYINT},
    {false, 2, true, "SMALLINT", KELVO_SMALLINT, KELVO_VARSMALLINT},
    {false, 2, false, "UNSIGNED SMALLINT", KELVO_UNSIGNED_SMALLINT, KELVO_UNSIGNED_VARSMALLINT},
    {false, 4, true, "INT", KELVO_INT, KELVO_VARINT},
    {false, 4, false, "UNSIGNED INT", KELVO_UNSIGNED_INT, KELVO_UNSIGNED_VARINT},
    {false, 8, true, "BIGINT", KELVO_BIGINT, KELVO_VARBIGINT},
    {false, 8, false, "UNSIGNED BIGINT", KELVO_UNSIGNED_BIGINT, KELVO_UNSIGNED_VARBIGINT},
    {true, 4, true, "FLOAT", KELVO_FLOAT, KELVO_VARFLOAT},
    {true, 8, true, "DOUBLE", KELVO_DOUBLE, KELVO_VARDOUBLE},
}};

const NumericRow& numeric_row(const Type& type) {
  const bool is_real = type.kind == Kind::real;
  const bool is_signed = is_real || (type.is_signed && type.kind != Kind::bit_field);
  const auto* row =
      std::find_if(numeric_rows.begin(), numeric_rows.end(), [&](const NumericRow& r) {
        return r.is_real == is_real && r.size == type.size && r.is_signed == is_signed;
      });
  return row == numeric_rows.end() ? numeric_rows.back() : *row;
}

bool is_plain_name(const std::string& name) {
  const auto is_letter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
  };
  return !name.empty() && is_letter(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
    return is_letter(c) || (c >= '0' && c <= '9');
  });
}

std::string extents_text(const std::vector<std::uint64_t>& extents) {
  std::string text = "[";
  for (const std::uint64_t extent : extents) {
    if (text.size() > 1) text += ", ";
    text += std::to_string(extent);
  }
  return text + "]";
}

std::string order_text(const Type& type) {
  if (type.file_size == 1 || type.order == machine_order()) return "";
  return type.order == ByteOrder::little ? " LITTLE ENDIAN" : " BIG ENDIAN";
}

// The padding that CREATE chooses where none is written is not written.
std::string string_suffix(const Type& type, Padding usual) {
  static constexpr std::array<std::string_view, 3> words = {" NULLTERM", " NULLPAD", " SPACEPAD"};
  std::string text;
  if (type.padding != usual) text += words[static_cast<std::size_t>(type.padding)];
  return text + (type.charset == Charset::ascii ? " CHARSET ASCII" : "");
}

std::string number_clause(std::string_view word, std::size_t number) {
  return " " + std::string(word) + " " + std::to_string(number);
}

// What sets a number apart from one that fills its bytes.
std::string bits_text(const Type& type) {
  std::string text;
  if (type.precision != 0) text += number_clause("PRECISION", type.precision);
  if (type.bit_offset != 0) text += number_clause("OFFSET", type.bit_offset);
  return text;
}

std::string real_notation(const Type& type) {
  const RealFormat format = type.real_format();
  if (type.file_size == 16 && format == extended_format()) return "LONG DOUBLE";
  if (format == standard_format(type.file_size))
    return type.file_size == 2 ? "HALF" : std::string(numeric_row(type).name);
  return "REAL(" + std::to_string(type.file_size) + ")" +
         number_clause("PRECISION", format.precision) + number_clause("OFFSET", format.offset) +
         number_clause("SIGN", format.sign_at) + number_clause("EXPONENT", format.exponent_at) +
         number_clause("SIZE", format.exponent_size) + number_clause("BIAS", format.bias) +
         number_clause("MANTISSA", format.mantissa_at) +
         number_clause("SIZE", format.mantissa_size) + " NORMALIZATION " +
         std::string(normalization_word(format.normalization));
}

// The numbers of HDF5 that CREATE has its own words for: the row's type is not always the file's.
std::string numeric_notation(const Type& type) {
  const std::string bits = "(" + std::to_string(type.file_size * 8) + ")";
  switch (type.kind) {
    case Kind::bit_field:
      return "BITFIELD" + bits + bits_text(type) + order_text(type);
    case Kind::time:
      return "TIME" + bits + order_text(type);
    case Kind::real:
      return real_notation(type) + order_text(type);
    default:
      return std::string(numeric_row(type).name) +
             (type.file_size == type.size ? "" : number_clause("SIZE", type.file_size)) +
             bits_text(type) + order_text(type);
  }
}

std::string enumeration_notation(const Type& type) {
  std::string text = "ENUMERATION (";
  for (const EnumName& name : type.names) {
    if (&name != type.names.data()) text += ", ";
    text += written_name(name.name) + " = ";
    text += type.is_signed ? std::to_string(static_cast<std::int64_t>(name.bits))
                           : std::to_string(name.bits);
  }
  return text + ") OF " + notation(type.base[0]);
}

std::string compound_notation(const Type& type) {
  std::string text = "COMPOUND (";
  for (const Member& member : type.members) {
    if (&member != type.members.data()) text += ", ";
    text += written_name(member.name) + " ";
    const bool array = member.type.kind == Kind::array;
    text += notation(array ? member.type.base[0] : member.type);
    if (array) text += " " + extents_text(member.type.extents);
  }
  return text + ")";
}

std::string sequence_notation(const Type& base) {
  const bool plain = (base.kind == Kind::integer || base.kind == Kind::real) &&
                     base.file_size == base.size && base.precision == 0 && !base.format;
  if (!plain) return "SEQUENCE OF " + notation(base);
  std::string name(numeric_row(base).name);
  const std::string_view prefix = "UNSIGNED ";
  name.insert(name.starts_with(prefix) ? prefix.size() : 0, "VAR");
  return name + order_text(base);
}

}  // namespace

ByteOrder machine_order() noexcept {
  return std::endian::native == std::endian::little ? ByteOrder::little : ByteOrder::big;
}

bool Type::has_varying_parts() const {
  if (kind == Kind::varying_text || kind == Kind::sequence) return true;
  if (kind == Kind::array) return base[0].has_varying_parts();
  return std::any_of(members.begin(), members.end(),
                     [](const Member& member) { return member.type.has_varying_parts(); });
}

bool Type::is_self_contained() const {
  switch (kind) {
    case Kind::varying_text:
    case Kind::sequence:
    case Kind::object_reference:
    case Kind::region_reference:
      return false;
    default:
      return std::all_of(base.begin(), base.end(),
                         [](const Type& part) { return part.is_self_contained(); }) &&
             std::all_of(members.begin(), members.end(),
                         [](const Member& member) { return member.type.is_self_contained(); });
  }
}

std::size_t Type::value_bits() const {
  if (kind == Kind::enumeration) return base[0].value_bits();
  return precision != 0 ? precision : std::min<std::size_t>(8 * file_size, 64);
}

bool Type::is_full_width() const {
  if (kind == Kind::real) return !format && file_size >= size;
  return value_bits() == 8 * size;
}

RealFormat Type::real_format() const {
  return format ? *format : standard_format(file_size).value_or(extended_format());
}

std::uint64_t Type::array_length() const {
  std::uint64_t length = 1;
  for (const std::uint64_t extent : extents) length *= extent;
  return length;
}

void index_names(Type* enumeration) {
  constexpr std::size_t few = 16;  // as fast to look through
  const std::vector<EnumName>& names = enumeration->names;
  if (names.size() <= few) return;
  std::vector<std::uint32_t> indices(names.size());
  std::iota(indices.begin(), indices.end(), 0U);
  enumeration->by_value = enumeration->by_text = indices;
  // Stable: of names of one value the first is shown.
  std::stable_sort(
      enumeration->by_value.begin(), enumeration->by_value.end(),
      [&names](std::uint32_t a, std::uint32_t b) { return names[a].bits < names[b].bits; });
  std::stable_sort(
      enumeration->by_text.begin(), enumeration->by_text.end(),
      [&names](std::uint32_t a, std::uint32_t b) { return names[a].name < names[b].name; });
}

namespace {

// The first name of which `key_of` is `key`, by the sorted indices where there are some.
template <typename Key, typename KeyOf>
const EnumName* find_first(const std::vector<EnumName>& names,
                           const std::vector<std::uint32_t>& sorted, const Key& key,
                           const KeyOf& key_of) {
  if (sorted.empty()) {
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const EnumName& one) { return key_of(one) == key; });
    return found == names.end() ? nullptr : &*found;
  }
  const auto found = std::lower_bound(
      sorted.begin(), sorted.end(), key,
      [&](std::uint32_t i, const Key& wanted) { return key_of(names[i]) < wanted; });
  return found == sorted.end() || key_of(names[*found]) != key ? nullptr : &names[*found];
}

}  // namespace

const EnumName* find_name(const Type& enumeration, std::string_view text) {
  return find_first(enumeration.names, enumeration.by_text, text,
                    [](const EnumName& one) { return std::string_view(one.name); });
}

const EnumName* name_of(const Type& enumeration, std::uint64_t bits) {
  const std::vector<EnumName>& names = enumeration.names;
  if (names.empty()) return nullptr;
  // Most are numbered one after the other.
  const std::uint64_t guess = bits - names[0].bits;
  if (guess < names.size() && names[static_cast<std::size_t>(guess)].bits == bits)
    return &names[static_cast<std::size_t>(guess)];
  return find_first(names, enumeration.by_value, bits,
                    [](const EnumName& one) { return one.bits; });
}

std::size_t integer_size_in_memory(std::size_t file_size) {
  std::size_t size = 1;
  while (size < file_size && size < 8) size *= 2;
  return size;
}

std::int32_t row_code(const Type& type) {
  if (type.is_numeric()) return numeric_row(type).code;
  if (type.kind == Kind::text) return KELVO_CHAR;
  if (type.kind == Kind::opaque) return KELVO_OPAQUE;
  const bool list = type.kind == Kind::array || type.kind == Kind::sequence;
  if (list && type.base[0].is_numeric()) return list_code(type.base[0]);
  return KELVO_VARCHAR;
}

std::int32_t list_code(const Type& element) {
  return element.is_numeric() ? numeric_row(element).list_code : 0;
}

std::string written_name(const std::string& name) {
  return is_plain_name(name) ? name : quoted_name(name);
}

std::string notation(const Type& type) {
  switch (type.kind) {
    case Kind::integer:
    case Kind::real:
    case Kind::bit_field:
    case Kind::time:
      return numeric_notation(type);
    case Kind::text:
      return "CHAR(" + std::to_string(type.size) + ")" + string_suffix(type, Padding::null_padded);
    case Kind::varying_text:
      return "VARCHAR" + string_suffix(type, Padding::null_terminated);
    case Kind::opaque:
      return "OPAQUE(" + std::to_string(type.size) + ")" +
             (type.tag.empty() ? "" : " TAG " + string_literal(type.tag));
    case Kind::enumeration:
      return enumeration_notation(type);
    case Kind::object_reference:
      return "REFERENCE";
    case Kind::region_reference:
      return "REGION REFERENCE";
    case Kind::compound:
      return compound_notation(type);
    case Kind::array:
      return "ARRAY " + extents_text(type.extents) + " OF " + notation(type.base[0]);
    case Kind::sequence:
      return sequence_notation(type.base[0]);
  }
  return "";
}

std::string type_name(const Type& type) {
  if (type.kind == Kind::enumeration) return "ENUMERATION";
  if (type.kind == Kind::compound) return "COMPOUND";
  if (type.is_numeric() && type.order != machine_order()) {
    Type plain = type;
    plain.order = machine_order();
    return notation(plain);
  }
  return notation(type);
}

}  // namespace kelvo
