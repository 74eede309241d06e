// Puts elements together, part by part.
#include "values/encoded_elements.h"

#include <algorithm>
#include <cstring>

#include "error.h"
#include "values/encode.h"

namespace kelvo {
namespace {

void store(const void* value, std::size_t size, std::byte* element) {
  std::memcpy(element, value, size);
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

void EncodedElements::append(const Literal& literal) {
  bytes_.resize(bytes_.size() + type_->size);
  encode(*type_, literal, bytes_.data() + count_ * type_->size);
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
    case Kind::varying_text:
      return encode_varying_text(type, literal, element);
    case Kind::compound:
      return encode_compound(type, literal, element);
    case Kind::array:
      return encode_array(type, literal, element);
    case Kind::sequence:
      return encode_sequence(type, literal, element);
    default:
      kelvo::encode(type, literal, element);
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
  check_member_names(literal, type);
  for (const Member& member : type.members) {
    encode(member.type, literal.items[item_of_member(literal, member.name)],
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
