// The result of a statement, which the default cursor walks. What fits the budget is read while the
// statement runs, so that its errors come out as its status; the rest is read as the cursor walks.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

#include "answers/block.h"
#include "answers/cursor.h"
#include "answers/row_source.h"
#include "error.h"

namespace kelvo {

class Result {
 public:
  /// Type code of the row that stands for the rest of a result that could not be read. No type
  /// bears it, so that no front end can take a cut result for a whole one.
  static constexpr std::int32_t broken_code = 8388608;
  static constexpr std::size_t budget_bytes = std::size_t{64} * 1024 * 1024;

  /// `cursor` walks the result, and must outlive it.
  explicit Result(Cursor& cursor) : cursor_(cursor) {}

  /// Forgets what was there and reads ahead within the budget; throws what the source throws. Null:
  /// an empty result.
  void start(std::unique_ptr<RowSource> source);

  /// Empties the result and lets go of everything in the file. The count stays.
  void clear();

  /// The same without letting go of anything in the file, where that could do harm.
  void give_up();

  /// Forgets the count too.
  void reset();

  // To be called where the cursor could not step by itself; false at the end. Values and elements
  // are good until the next call of a function that moves.
  bool next_row();
  bool next_element();

  /// Elements returned so far, which is all of them once the rows have been walked.
  [[nodiscard]] std::uint64_t elements() const { return std::max(elements_, seen_ahead_); }

  /// The failure behind a row of broken_code.
  [[nodiscard]] const std::optional<StatementError>& failure() const { return failure_; }

 private:
  bool next_block();
  bool pull(Block& block);
  void enter_block();
  void skip_line();
  bool enter_row();
  bool enter_line();
  bool enter_list();
  bool enter_next_part();
  void enter_part();

  Cursor& cursor_;
  std::unique_ptr<RowSource> source_;
  std::deque<Block> ahead_;
  Block block_;                   // the one being walked
  std::size_t row_ = 0;           // in block_, of the next list; line: of the next line's element
  std::size_t left_ = 0;          // line: elements of the current row that are in later blocks
  std::uint64_t elements_ = 0;    // of the blocks so far
  std::uint64_t seen_ahead_ = 0;  // of those looked through before the walk
  std::optional<StatementError> failure_;
};

}  // namespace kelvo
