// Packing: the element's own bytes, then its varying parts in the order in which they are in it.
#include "values/pack.h"

#include <cstring>
#include <limits>

namespace kelvo {
namespace {

constexpr std::size_t null_length = std::numeric_limits<std::size_t>::max();

template <typename Value>
Value load(const void* bytes) {
  Value value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

void append_bytes(const void* bytes, std::size_t count, std::string* packed) {
  packed->append(static_cast<const char*>(bytes), count);
}

void append_size(std::size_t size, std::string* packed) {
  append_bytes(&size, sizeof size, packed);
}

struct Sequence {
  std::size_t count;
  const std::byte* items;
};

void append_parts(const Type& type, const std::byte* element, std::string* packed) {
  if (type.kind == Kind::varying_text) {
    const char* text = load<const char*>(element);
    const std::size_t length = text == nullptr ? null_length : std::strlen(text);
    append_size(length, packed);
    if (text != nullptr) append_bytes(text, length, packed);
  } else if (type.kind == Kind::sequence) {
    const auto sequence = load<Sequence>(element);
    append_size(sequence.count, packed);
    for (std::size_t i = 0; i < sequence.count; ++i)
      append_packed(type.base[0], sequence.items + i * type.base[0].size, packed);
  } else if (type.kind == Kind::array && type.base[0].has_varying_parts()) {
    for (std::size_t i = 0; i < type.array_length(); ++i)
      append_parts(type.base[0], element + i * type.base[0].size, packed);
  } else {
    for (const Member& member : type.members)
      append_parts(member.type, element + member.offset, packed);
  }
}

std::size_t take_size(const char** packed) {
  const auto size = load<std::size_t>(*packed);
  *packed += sizeof size;
  return size;
}

const char* unpack_parts(const Type& type, const char* packed, std::byte* element,
                         PartMemory* parts) {
  if (type.kind == Kind::varying_text) {
    const std::size_t length = take_size(&packed);
    if (length == null_length) return packed;
    std::vector<std::byte>& text = parts->emplace_back(length + 1);
    std::memcpy(text.data(), packed, length);
    const void* address = text.data();
    std::memcpy(element, &address, sizeof address);
    return packed + length;
  }
  if (type.kind == Kind::sequence) {
    const std::size_t count = take_size(&packed);
    std::byte* items = parts->emplace_back(count * type.base[0].size).data();
    for (std::size_t i = 0; i < count; ++i)
      packed = unpack(type.base[0], packed, items + i * type.base[0].size, parts);
    const Sequence sequence{count, items};
    std::memcpy(element, &sequence, sizeof sequence);
    return packed;
  }
  if (type.kind == Kind::array && type.base[0].has_varying_parts()) {
    for (std::size_t i = 0; i < type.array_length(); ++i)
      packed = unpack_parts(type.base[0], packed, element + i * type.base[0].size, parts);
  }
  for (const Member& member : type.members)
    packed = unpack_parts(member.type, packed, element + member.offset, parts);
  return packed;
}

}  // namespace

void append_packed(const Type& type, const std::byte* element, std::string* packed) {
  append_bytes(element, type.size, packed);
  append_parts(type, element, packed);
}

const char* unpack(const Type& type, const char* packed, std::byte* element, PartMemory* parts) {
  std::memcpy(element, packed, type.size);
  return unpack_parts(type, packed + type.size, element, parts);
}

}  // namespace kelvo
