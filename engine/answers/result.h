// The result of a statement and the default cursor over it. What fits the budget is read while the
// statement runs, so that its errors come out as its status; the rest is read as the cursor walks.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

#include "answers/block.h"
#include "answers/row_source.h"
#include "error.h"

namespace kelvo {

class Result {
 public:
  /// Type code of the row that stands for the rest of a result that could not be read. No type
  /// bears it, so that no front end can take a cut result for a whole one.
  static constexpr std::int32_t broken_code = 8388608;
  static constexpr std::size_t budget_bytes = std::size_t{64} * 1024 * 1024;

  /// Forgets what was there and reads ahead within the budget; throws what the source throws. Null:
  /// an empty result.
  void start(std::unique_ptr<RowSource> source);

  /// Empties the result and lets go of everything in the file. The count stays.
  void clear();

  /// Forgets the count too.
  void reset();

  // The cursor. Values and elements are good until the next call of a function that moves.
  bool next_row();
  [[nodiscard]] std::int32_t code() const { return block_.code; }
  [[nodiscard]] const void* value() const { return value_; }
  [[nodiscard]] const char* text() const;

  // The subcursor of the current row.
  [[nodiscard]] std::size_t element_count() const { return row_length_; }
  bool next_element();
  [[nodiscard]] const void* element() const { return value_; }

  /// Elements returned so far, which is all of them once the rows have been walked.
  [[nodiscard]] std::uint64_t elements() const { return elements_; }

  /// The failure behind a row of broken_code.
  [[nodiscard]] const std::optional<StatementError>& failure() const { return failure_; }

 private:
  bool next_block();
  bool pull(Block& block);
  bool enter_row();
  bool skip_line();

  std::unique_ptr<RowSource> source_;
  std::deque<Block> ahead_;
  Block block_;                       // the one being walked
  std::size_t row_ = 0;               // in block_, of the next row; line: of the next element
  std::size_t row_length_ = 0;        // elements of the current row
  std::size_t left_ = 0;              // of them, not visited yet
  const std::byte* value_ = nullptr;  // the current value or element
  const std::byte* next_value_ = nullptr;
  std::uint64_t elements_ = 0;
  std::optional<StatementError> failure_;
};

}  // namespace kelvo
