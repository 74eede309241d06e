// The items of a query made into elements of its own type: members copied together, positions and
// calculated numbers added.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "language/query.h"
#include "query/compile.h"
#include "query/scan.h"

namespace kelvo {

class Projection {
 public:
  /// All must outlive it.
  Projection(const std::vector<QueryItem>& items, const Scan& scan, const Scope& scope);

  /// What it makes. One item: an element of its type; several: a compound of them.
  [[nodiscard]] const Type& type() const noexcept { return type_; }

  /// Whether an element that is read is just what is made of it.
  [[nodiscard]] bool is_identity() const noexcept { return is_identity_; }

  /// Appends what is made of the batch's selected elements; returns how many they are. `active`
  /// must be the mask of the batch.
  std::size_t append(const Batch& batch, const Mask* selected, std::vector<std::byte>* elements);

  /// Forgets the texts that the elements appended so far point to.
  void forget_texts() { positions_.clear(); }

 private:
  struct Column {
    std::size_t to = 0;        // offset in the element made
    std::size_t from = 0;      // in the one read
    std::size_t size = 0;      // bytes
    OperandPointer operand;    // where it is calculated
    bool is_position = false;  // in several dimensions: text
  };

  void add_item(const QueryItem& item, const Scope& scope);
  void add_member(std::string label, const Type& type, Column column);
  void fill(const Column& column, const Batch& batch, const Mask* selected, std::byte* elements);
  const char* position_text(std::uint64_t ordinal);

  const Scan& scan_;
  Type type_;
  std::vector<Column> columns_;
  bool is_identity_ = false;
  std::vector<std::uint32_t> chosen_;  // of the batch: indexes of the selected elements
  std::deque<std::string> positions_;
};

}  // namespace kelvo
