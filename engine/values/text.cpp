// Writes elements as text.
#include "values/text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>

#include "digits.h"
#include "values/bits.h"
#include "values/shortest.h"
#include "values/text_walk.h"

namespace kelvo {
namespace {

template <typename T>
T load(const std::byte* element) {
  T value;
  std::memcpy(&value, element, sizeof value);
  return value;
}

// The smaller integers are written as those of 32 bits.
static_assert(number_room >= integer_text_room);

template <typename T>
char* write_integer(T value, char* text) {
  using Word = std::conditional_t<std::is_signed_v<T>, std::int32_t, std::uint32_t>;
  using Written = std::conditional_t<sizeof(T) < sizeof(Word), Word, T>;
  return write_number(text, Written{value});
}

template <typename T>
void append_integer(T value, std::string* text) {
  std::array<char, number_room> digits;
  text->append(digits.data(), write_integer(value, digits.data()));
}

template <typename T>
char* write_element(const std::byte* element, char* text) {
  if constexpr (std::is_integral_v<T>) {
    return write_integer(load<T>(element), text);
  } else {
    return write_shortest(load<T>(element), text);
  }
}

template <typename Small, typename Short, typename Word, typename Long>
NumberWriter integer_writer(std::size_t size) {
  if (size == sizeof(Small)) return write_element<Small>;
  if (size == sizeof(Short)) return write_element<Short>;
  return size == sizeof(Word) ? write_element<Word> : write_element<Long>;
}

void append_hex(unsigned char byte, std::string* text) {
  static constexpr std::string_view digits = "0123456789abcdef";
  *text += digits[byte >> 4U];
  *text += digits[byte & 0xfU];
}

void append_enumeration(const Type& type, const std::byte* element, bool nested,
                        std::string* text) {
  const std::uint64_t bits = load_integer(element, type.size, type.order, type.is_signed);
  const EnumName* name = name_of(type, bits);
  if (name != nullptr) {
    *text += nested ? string_literal(name->name) : name->name;
  } else if (type.is_signed) {
    append_integer(static_cast<std::int64_t>(bits), text);
  } else {
    append_integer(bits, text);
  }
}

void append_opaque(const Type& type, const std::byte* element, std::string* text) {
  *text += "X'";
  for (std::size_t i = 0; i < type.size; ++i)
    append_hex(std::to_integer<unsigned char>(element[i]), text);
  *text += '\'';
}

void append_items(const Type& base, const std::byte* items, std::size_t count,
                  const ReferenceNamer& namer, std::string* text) {
  *text += '[';
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) *text += ", ";
    append_nested(base, items + i * base.size, namer, text);
  }
  *text += ']';
}

struct SequenceInMemory {
  std::size_t count;
  const std::byte* items;
};

// Appends the parts of an element as they come.
struct DirectText {
  const std::byte* element;
  const ReferenceNamer& namer;
  std::string* text;

  static bool is_value(const Type& /*type*/) { return false; }
  void add_constant(std::string_view constant) const { *text += constant; }
  void add_value(const Type& type, std::size_t offset) {
    append_nested(type, element + offset, namer, text);
  }
};

void append_reference(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                      bool nested, std::string* text) {
  const std::string name = namer ? namer(type, element) : "";
  *text += nested ? (name.empty() ? "NULL" : string_literal(name)) : name;
}

// With E in front and escapes where there are control bytes, so that it stays on one line.
std::string between_quotes(std::string_view text, char quote) {
  const bool escape = std::any_of(text.begin(), text.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
  });
  std::string written = escape ? "E" : "";
  written += quote;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (c == quote || (escape && c == '\\')) {
      written.append(2, c);
    } else if (code < 0x20 || code == 0x7f) {
      written += "\\x";
      append_hex(code, &written);
    } else {
      written += c;
    }
  }
  return written + quote;
}

}  // namespace

std::string_view without_padding(const Type& type, const std::byte* element) {
  const std::string_view whole(reinterpret_cast<const char*>(element), type.size);
  std::size_t length = whole.size();
  switch (type.padding) {
    case Padding::null_terminated:
      length = std::min(whole.find('\0'), whole.size());
      break;
    case Padding::null_padded:
      length = whole.find_last_not_of('\0') + 1;
      break;
    case Padding::space_padded:
      // Behind the blanks there are nulls where a program left the string, or its end, unwritten.
      length = whole.find_last_not_of(' ') + 1;
      length = whole.substr(0, length).find_last_not_of('\0') + 1;
      break;
  }
  return whole.substr(0, length);
}

std::string_view varying_text(const std::byte* element) {
  const char* text = load<const char*>(element);
  return text == nullptr ? std::string_view() : std::string_view(text);
}

NumberWriter number_writer(const Type& type) {
  if (!type.is_numeric() || type.kind == Kind::time) return nullptr;
  if (type.kind == Kind::real)
    return type.size == sizeof(float) ? write_element<float> : write_element<double>;
  const bool is_signed = type.is_signed && type.kind != Kind::bit_field;
  return is_signed
             ? integer_writer<std::int8_t, std::int16_t, std::int32_t, std::int64_t>(type.size)
             : integer_writer<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>(type.size);
}

void append_number(const Type& type, const std::byte* element, std::string* text) {
  if (type.kind == Kind::time) {
    const std::uint64_t bits = load_integer(element, type.size, type.order, type.is_signed);
    return type.is_signed ? append_integer(static_cast<std::int64_t>(bits), text)
                          : append_integer(bits, text);
  }
  std::array<char, number_room> digits;
  text->append(digits.data(), number_writer(type)(element, digits.data()));
}

std::string string_literal(std::string_view text) { return between_quotes(text, '\''); }

std::string quoted_name(std::string_view name) { return between_quotes(name, '"'); }

void append_plain(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                  std::string* text) {
  switch (type.kind) {
    case Kind::text:
      *text += without_padding(type, element);
      return;
    case Kind::varying_text:
      *text += varying_text(element);
      return;
    case Kind::enumeration:
      return append_enumeration(type, element, false, text);
    case Kind::object_reference:
    case Kind::region_reference:
      return append_reference(type, element, namer, false, text);
    default:
      return append_nested(type, element, namer, text);
  }
}

void append_nested(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                   std::string* text) {
  switch (type.kind) {
    case Kind::integer:
    case Kind::real:
    case Kind::bit_field:
    case Kind::time:
      return append_number(type, element, text);
    case Kind::text:
      *text += string_literal(without_padding(type, element));
      return;
    case Kind::varying_text:
      *text +=
          load<const char*>(element) == nullptr ? "NULL" : string_literal(varying_text(element));
      return;
    case Kind::opaque:
      return append_opaque(type, element, text);
    case Kind::enumeration:
      return append_enumeration(type, element, true, text);
    case Kind::object_reference:
    case Kind::region_reference:
      return append_reference(type, element, namer, true, text);
    case Kind::compound:
    case Kind::array: {
      DirectText visitor{element, namer, text};
      return walk_text(type, 0, visitor);
    }
    case Kind::sequence: {
      const auto sequence = load<SequenceInMemory>(element);
      return append_items(type.base[0], sequence.items, sequence.count, namer, text);
    }
  }
}

}  // namespace kelvo
