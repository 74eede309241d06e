// Elements made from written values, before they are written to a file.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "values/literal.h"
#include "values/type.h"

namespace kelvo {

/// Elements made from literals, with the memory that their varying parts point to.
class EncodedElements {
 public:
  explicit EncodedElements(const Type& type) : type_(&type) {}

  /// Appends one element. Throws StatementError: out_of_range for a value that does not fit,
  /// wrong_kind for one of another kind. Nothing is ever cut or rounded to another integer.
  void append(const Literal& literal);

  /// The bytes of all elements so far, `type.size` each; good until the next append.
  [[nodiscard]] const std::byte* data() const noexcept { return bytes_.data(); }
  [[nodiscard]] std::size_t count() const noexcept { return count_; }

  /// Fills the part of the last element that is at `offset` and of the type.
  void put(const Type& type, std::size_t offset, const Literal& literal);
  /// The last element's byte at `offset`.
  [[nodiscard]] std::byte* place(std::size_t offset) {
    return bytes_.data() + (count_ - 1) * type_->size + offset;
  }

  /// Appends elements that lie in memory as the type says; what varying parts point to must outlive
  /// these.
  void append_bytes(const std::byte* elements, std::size_t count);

  /// Appends elements of zeros and returns where they are, to be filled before the next append.
  std::byte* append_room(std::size_t count);

  /// Forgets all elements and what their varying parts point to; memory for the elements is kept.
  void clear();

  [[nodiscard]] const Type& type() const noexcept { return *type_; }

 private:
  void encode(const Type& type, const Literal& literal, std::byte* element);
  void encode_compound(const Type& type, const Literal& literal, std::byte* element);
  void encode_object(const Type& type, const Literal& literal, std::byte* element);
  void encode_array(const Type& type, const Literal& literal, std::byte* element);
  void encode_sequence(const Type& type, const Literal& literal, std::byte* element);
  void encode_varying_text(const Type& type, const Literal& literal, std::byte* element);

  const Type* type_;
  std::vector<std::byte> bytes_;
  std::size_t count_ = 0;
  // What varying parts point to; a deque never moves what it holds.
  std::deque<std::string> texts_;
  std::deque<std::vector<std::byte>> sequences_;
};

}  // namespace kelvo
