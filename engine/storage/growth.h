// Appending to a dataset: its first dimension grows, and shrinks again where what follows fails.
#pragma once

#include <optional>

#include "storage/element_io.h"
#include "storage/room.h"
#include "values/selection.h"

namespace kelvo {

/// Throws unless the place is a dataset with a first dimension that may grow. `with_slice`: a slice
/// was written, which says nothing about new rows.
void expect_growing(const ElementPlace& place, bool with_slice);

/// Elements of one step of the first dimension.
Extent elements_of_row(const ElementPlace& place);

class RowGrowth {
 public:
  /// `place` must outlive it.
  explicit RowGrowth(const ElementPlace& place) : place_(place) {}
  RowGrowth(const RowGrowth&) = delete;
  RowGrowth& operator=(const RowGrowth&) = delete;
  /// Takes the growth back, unless it was kept.
  ~RowGrowth();

  /// Adds rows at the end of the first dimension and selects them, once there is room for them and
  /// for `varying_bytes` of what they point to. Throws out_of_range beyond the maximum,
  /// host_refused where the disk is too full.
  Selection grow(Extent rows, Extent varying_bytes);

  void keep() { grown_ = false; }

 private:
  const ElementPlace& place_;
  std::optional<ReservedRoom> room_;  // given back after the growth has been
  bool grown_ = false;
};

}  // namespace kelvo
