// Writes JSON.
#include "query/json.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "values/bits.h"

namespace kelvo {
namespace {

void append_escape(unsigned code, std::string* json) {
  static constexpr std::string_view digits = "0123456789abcdef";
  *json += "\\u";
  for (unsigned shift = 16; shift > 0; shift -= 4) *json += digits[code >> (shift - 4) & 0xfU];
}

// Bytes of the UTF-8 character that the text begins with; 0 where it begins with none. Surrogates,
// overlong forms and what is beyond the last code point are none.
std::size_t character_length(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  const std::size_t length = lead < 0x80                   ? 1
                             : lead >= 0xc2 && lead < 0xe0 ? 2
                             : lead >= 0xe0 && lead < 0xf0 ? 3
                             : lead >= 0xf0 && lead < 0xf5 ? 4
                                                           : 0;
  if (length == 0 || length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0U) != 0x80U) return 0;
  }
  const bool bad =
      length > 2 && ((lead == 0xe0 && byte(1) < 0xa0) || (lead == 0xed && byte(1) > 0x9f) ||
                     (lead == 0xf0 && byte(1) < 0x90) || (lead == 0xf4 && byte(1) > 0x8f));
  return bad ? 0 : length;
}

void append_ascii(char byte, std::string* json) {
  static constexpr std::string_view named = "\"\\\b\f\n\r\t";
  static constexpr std::string_view letters = "\"\\bfnrt";
  const auto code = static_cast<unsigned char>(byte);
  if (const std::size_t at = named.find(byte); at != std::string_view::npos) {
    *json += '\\';
    *json += letters[at];
  } else if (code < 0x20 || code == 0x7f) {
    append_escape(code, json);
  } else {
    *json += byte;
  }
}

bool is_finite(const Type& type, const std::byte* element) {
  if (type.kind != Kind::real) return true;
  if (type.size == sizeof(float)) {
    float value = 0;
    std::memcpy(&value, element, sizeof value);
    return std::isfinite(value);
  }
  double value = 0;
  std::memcpy(&value, element, sizeof value);
  return std::isfinite(value);
}

void append_items(const Type& base, const std::byte* items, std::size_t count,
                  const ReferenceNamer& namer, std::string* json) {
  *json += '[';
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) *json += ", ";
    append_json(base, items + i * base.size, namer, json);
  }
  *json += ']';
}

// Each further dimension of an array is a list of its own.
void append_array(const Type& type, std::size_t dimension, const std::byte* items,
                  const ReferenceNamer& namer, std::string* json) {
  const auto extent = static_cast<std::size_t>(type.extents[dimension]);
  if (dimension + 1 == type.extents.size())
    return append_items(type.base[0], items, extent, namer, json);
  std::size_t step = type.base[0].size;
  for (std::size_t d = dimension + 1; d < type.extents.size(); ++d)
    step *= static_cast<std::size_t>(type.extents[d]);
  *json += '[';
  for (std::size_t i = 0; i < extent; ++i) {
    if (i > 0) *json += ", ";
    append_array(type, dimension + 1, items + i * step, namer, json);
  }
  *json += ']';
}

void append_object(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                   std::string* json) {
  *json += '{';
  for (const Member& member : type.members) {
    if (&member != type.members.data()) *json += ", ";
    append_json_string(member.name, json);
    *json += ": ";
    append_json(member.type, element + member.offset, namer, json);
  }
  *json += '}';
}

void append_sequence(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                     std::string* json) {
  std::size_t count = 0;
  const std::byte* items = nullptr;
  std::memcpy(&count, element, sizeof count);
  std::memcpy(&items, element + sizeof count, sizeof items);
  append_items(type.base[0], items, count, namer, json);
}

void append_opaque(const Type& type, const std::byte* element, std::string* json) {
  static constexpr std::string_view digits = "0123456789abcdef";
  *json += '"';
  for (std::size_t i = 0; i < type.size; ++i) {
    const auto byte = std::to_integer<unsigned>(element[i]);
    *json += digits[byte >> 4U];
    *json += digits[byte & 0xfU];
  }
  *json += '"';
}

void append_enumeration(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                        std::string* json) {
  std::string name;
  append_plain(type, element, namer, &name);
  const std::uint64_t bits = load_integer(element, type.size, type.order, type.is_signed);
  const bool named = std::any_of(type.names.begin(), type.names.end(),
                                 [bits](const EnumName& one) { return one.bits == bits; });
  if (is_truth(type) && named) {
    *json += bits == 0 ? "false" : "true";
  } else if (named) {
    append_json_string(name, json);
  } else {
    *json += name;
  }
}

}  // namespace

bool is_truth(const Type& type) {
  if (type.kind != Kind::enumeration || type.names.size() != 2) return false;
  const EnumName& first = type.names[type.names[0].bits == 0 ? 0 : 1];
  const EnumName& second = type.names[type.names[0].bits == 0 ? 1 : 0];
  return first.name == "FALSE" && first.bits == 0 && second.name == "TRUE" && second.bits == 1;
}

void append_json_string(std::string_view text, std::string* json) {
  *json += '"';
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    if (length == 0) {
      append_escape(0xdc00U + static_cast<unsigned char>(text[0]), json);
    } else if (length == 1) {
      append_ascii(text[0], json);
    } else {
      *json += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  *json += '"';
}

void append_json(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                 std::string* json) {
  switch (type.kind) {
    case Kind::integer:
    case Kind::real:
    case Kind::bit_field:
    case Kind::time:
      if (is_finite(type, element)) return append_number(type, element, json);
      *json += "null";
      return;
    case Kind::text:
      return append_json_string(without_padding(type, element), json);
    case Kind::varying_text: {
      const std::string_view text = varying_text(element);
      if (text.data() != nullptr) return append_json_string(text, json);
      *json += "null";
      return;
    }
    case Kind::opaque:
      return append_opaque(type, element, json);
    case Kind::enumeration:
      return append_enumeration(type, element, namer, json);
    case Kind::object_reference:
    case Kind::region_reference: {
      std::string path;
      append_plain(type, element, namer, &path);
      if (!path.empty()) return append_json_string(path, json);
      *json += "null";
      return;
    }
    case Kind::compound:
      return append_object(type, element, namer, json);
    case Kind::array:
      return append_array(type, 0, element, namer, json);
    case Kind::sequence:
      return append_sequence(type, element, namer, json);
  }
}

}  // namespace kelvo
