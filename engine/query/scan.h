// Reads the elements of a selection and asks a condition about them, a batch at a time.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "query/condition.h"
#include "query/element_source.h"
#include "storage/element_io.h"

namespace kelvo {

class Scan {
 public:
  /// `file` keeps open what `place` is in, where nothing else does; it may be empty.
  Scan(FileHandle file, ElementPlace place, Selection selection);

  [[nodiscard]] const ElementPlace& place() const noexcept { return place_; }
  [[nodiscard]] const Selection& selection() const noexcept { return selection_; }

  /// From now on only elements that fulfil it are selected.
  void choose_by(ConditionPointer condition) { condition_ = std::move(condition); }
  [[nodiscard]] bool is_choosy() const noexcept { return condition_ != nullptr; }

  /// Reads the next block; false when there are none left.
  bool next_block();

  /// The next batch of the block and, for each of its elements, whether it is selected; false at
  /// the block's end.
  bool next_batch(Batch* batch, const Mask** selected);

  /// The whole block, without asking the condition.
  Elements whole_block();

  /// Reads another selection of the same place.
  void select(Selection selection);

  /// Begins again at the first element.
  void restart();

 private:
  FileHandle file_;
  ElementPlace place_;
  Selection selection_;
  ConditionPointer condition_;
  std::optional<ElementReader> reader_;  // behind what it refers to
  ElementBlock block_;                   // behind the reader that it belongs to
  std::vector<std::byte> movable_;       // the block's bytes while others may take them
  std::size_t next_ = 0;                 // in the block, of the next batch
  Extent before_ = 0;                    // elements of the blocks before it
  Extent block_count_ = 0;
  std::array<Mask, batch_size> mask_;
};

}  // namespace kelvo
