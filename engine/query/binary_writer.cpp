// Headers of .npy files, and the byte order and padding of what follows them.
#include "query/binary_writer.h"

#include <algorithm>
#include <cstring>
#include <set>

#include "error.h"
#include "query/json.h"
#include "values/text.h"

namespace kelvo {
namespace {

// Room for the digits of 32 extents: a header is written before the number of elements is known.
constexpr std::size_t header_unit = 64;

// Enumerations and times are the file's bytes in memory.
ByteOrder order_in_memory(const Type& type) {
  const bool as_in_file = type.kind == Kind::enumeration || type.kind == Kind::time;
  return as_in_file ? type.order : machine_order();
}

std::string python_string(const std::string& text) {
  std::string literal = "'";
  for (const char byte : text) {
    if (byte == '\'' || byte == '\\') literal += '\\';
    literal += byte;
  }
  return literal + "'";
}

std::string python_tuple(const std::vector<Extent>& extents) {
  std::string text = "(";
  for (const Extent extent : extents) text += std::to_string(extent) + ",";
  if (extents.size() > 1) text.pop_back();
  return text + ")";
}

std::string number_description(char letter, std::size_t size) {
  return std::string("'") + (size == 1 ? '|' : '<') + letter + std::to_string(size) + "'";
}

// Two reals called r and i, as complex numbers are kept in HDF5 files.
bool is_complex(const Type& type) {
  if (type.members.size() != 2) return false;
  const Member& real = type.members[0];
  const Member& imaginary = type.members[1];
  return real.name == "r" && imaginary.name == "i" && real.type.kind == Kind::real &&
         imaginary.type.kind == Kind::real && real.type.size == imaginary.type.size;
}

std::string compound_description(const Type& type);

// NumPy's name of the type; of an array, that of its base.
std::string description(const Type& type) {
  switch (type.kind) {
    case Kind::real:
      return number_description('f', type.size);
    case Kind::bit_field:
      return number_description('u', type.size);
    case Kind::enumeration:
      if (is_truth(type) && type.size == 1) return "'|b1'";
      return number_description(type.is_signed ? 'i' : 'u', type.size);
    case Kind::text:
      return "'|S" + std::to_string(type.size) + "'";
    case Kind::opaque:
      return "'|V" + std::to_string(type.size) + "'";
    case Kind::compound:
      return is_complex(type) ? number_description('c', type.size) : compound_description(type);
    case Kind::array:
      return description(type.base[0]);
    default:
      return number_description(type.is_signed ? 'i' : 'u', type.size);
  }
}

// The extents of an array, and of arrays in it.
std::vector<Extent> array_extents(const Type& type) {
  if (type.kind != Kind::array) return {};
  std::vector<Extent> extents(type.extents.begin(), type.extents.end());
  const std::vector<Extent> inner = array_extents(type.base[0]);
  extents.insert(extents.end(), inner.begin(), inner.end());
  return extents;
}

std::string compound_description(const Type& type) {
  std::set<std::string> names;
  std::string text = "[";
  for (const Member& member : type.members) {
    if (!names.insert(member.name).second) {
      throw StatementError(Status::wrong_kind, "Two items are called " + quoted(member.name) +
                                                   ", a .npy file needs different names");
    }
    text += "(" + python_string(member.name) + ", " + description(member.type);
    if (member.type.kind == Kind::array) text += ", " + python_tuple(array_extents(member.type));
    text += "), ";
  }
  text.resize(text.size() - 2);
  return text + "]";
}

void clean_text(const Type& type, std::byte* element) {
  const std::size_t length = without_padding(type, element).size();
  std::memset(element + length, 0, type.size - length);
}

}  // namespace

void expect_plain(const Type& type, const std::string& format) {
  if (type.is_self_contained()) return;
  throw StatementError(Status::wrong_kind,
                       "A " + format + " file cannot hold " + type_name(type) +
                           ", whose values have no fixed size (.csv and .json can)");
}

bool needs_cleaning(const Type& type) {
  if (type.kind == Kind::text) return type.padding != Padding::null_padded;
  if (type.is_numeric() || type.kind == Kind::enumeration)
    return type.size > 1 && order_in_memory(type) != ByteOrder::little;
  return std::any_of(type.base.begin(), type.base.end(), needs_cleaning) ||
         std::any_of(type.members.begin(), type.members.end(),
                     [](const Member& member) { return needs_cleaning(member.type); });
}

void clean(const Type& type, std::byte* element) {
  if (!needs_cleaning(type)) return;
  if (type.kind == Kind::text) {
    clean_text(type, element);
  } else if (type.kind == Kind::array) {
    for (std::size_t i = 0; i < type.array_length(); ++i)
      clean(type.base[0], element + i * type.base[0].size);
  } else if (type.kind == Kind::compound) {
    for (const Member& member : type.members) clean(member.type, element + member.offset);
  } else {
    std::reverse(element, element + type.size);
  }
}

std::string npy_header(const Selected& selected, Extent count) {
  const Type& type = selected.source->type();
  std::vector<Extent> shape = selected.shape.value_or(std::vector<Extent>{count});
  const std::vector<Extent> inner = array_extents(type);
  shape.insert(shape.end(), inner.begin(), inner.end());
  const std::string before =
      "{'descr': " + description(type) + ", 'fortran_order': False, 'shape': ";
  // As long as the largest count would make it.
  const std::size_t longest = before.size() + 21 * (shape.size() + 1) + 4;
  const bool utf8 = std::any_of(before.begin(), before.end(),
                                [](char byte) { return static_cast<unsigned char>(byte) > 0x7f; });
  constexpr std::size_t prelude = 12;  // magic, version and length
  const std::size_t size = (prelude + longest + header_unit) / header_unit * header_unit;
  std::string header("\x93NUMPY", 6);
  header += utf8 ? '\x03' : '\x02';
  header += '\0';
  for (unsigned shift = 0; shift < 32; shift += 8)
    header += static_cast<char>((size - prelude) >> shift & 0xffU);
  header += before + python_tuple(shape) + ", }";
  header.resize(size - 1, ' ');
  return header + '\n';
}

}  // namespace kelvo
