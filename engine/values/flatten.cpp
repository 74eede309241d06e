// One walk over a type for each direction.
#include "values/flatten.h"

#include <cstring>

namespace kelvo {
namespace {

// What follows a varying text: its length with the terminating NUL, or 0 for a null string.
std::size_t text_size(const std::byte* element) {
  const char* text = nullptr;
  std::memcpy(&text, element, sizeof text);
  return text == nullptr ? 0 : std::strlen(text) + 1;
}

struct SequenceInMemory {
  std::size_t count;
  const std::byte* items;
};

void append(const void* data, std::size_t size, std::vector<std::byte>* bytes) {
  const auto* begin = static_cast<const std::byte*>(data);
  bytes->insert(bytes->end(), begin, begin + size);
}

void append_parts(const Type& type, const std::byte* element, std::vector<std::byte>* bytes) {
  if (!type.has_varying_parts()) return;
  if (type.kind == Kind::varying_text) {
    const std::size_t size = text_size(element);
    append(&size, sizeof size, bytes);
    const char* text = nullptr;
    std::memcpy(&text, element, sizeof text);
    if (size > 0) append(text, size, bytes);
  } else if (type.kind == Kind::sequence) {
    SequenceInMemory sequence{};
    std::memcpy(&sequence, element, sizeof sequence);
    for (std::size_t i = 0; i < sequence.count; ++i) {
      flatten(type.base[0], sequence.items + i * type.base[0].size, bytes);
    }
  } else if (type.kind == Kind::array) {
    for (std::size_t i = 0; i < type.array_length(); ++i) {
      append_parts(type.base[0], element + i * type.base[0].size, bytes);
    }
  }
  for (const Member& member : type.members)
    append_parts(member.type, element + member.offset, bytes);
}

void read_parts(const Type& type, FlatInput& input, std::byte* element, Arena* parts);

void read_text(FlatInput& input, std::byte* element, Arena* parts) {
  std::size_t size = 0;
  input.read(reinterpret_cast<std::byte*>(&size), sizeof size);
  const void* text = nullptr;
  if (size > 0) {
    std::byte* part = parts->take(size);
    input.read(part, size);
    text = part;
  }
  std::memcpy(element, &text, sizeof text);
}

void read_sequence(const Type& base, FlatInput& input, std::byte* element, Arena* parts) {
  SequenceInMemory sequence{};
  std::memcpy(&sequence, element, sizeof sequence);
  std::byte* items = parts->take_aligned(sequence.count * base.size);
  for (std::size_t i = 0; i < sequence.count; ++i)
    unflatten(base, input, items + i * base.size, parts);
  sequence.items = items;
  std::memcpy(element, &sequence, sizeof sequence);
}

void read_parts(const Type& type, FlatInput& input, std::byte* element, Arena* parts) {
  if (!type.has_varying_parts()) return;
  if (type.kind == Kind::varying_text) read_text(input, element, parts);
  if (type.kind == Kind::sequence) read_sequence(type.base[0], input, element, parts);
  if (type.kind == Kind::array) {
    for (std::size_t i = 0; i < type.array_length(); ++i) {
      read_parts(type.base[0], input, element + i * type.base[0].size, parts);
    }
  }
  for (const Member& member : type.members)
    read_parts(member.type, input, element + member.offset, parts);
}

}  // namespace

void flatten(const Type& type, const std::byte* element, std::vector<std::byte>* bytes) {
  append(element, type.size, bytes);
  append_parts(type, element, bytes);
}

void FlatBytes::read(std::byte* bytes, std::size_t size) {
  std::memcpy(bytes, next_, size);
  next_ += size;
}

void unflatten(const Type& type, FlatInput& input, std::byte* element, Arena* parts) {
  input.read(element, type.size);
  read_parts(type, input, element, parts);
}

}  // namespace kelvo
