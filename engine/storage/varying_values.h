// Strings and sequences of varying length, wherever they are in a type: elements are read with the
// file's references in their place, and the values are then taken from the file's heaps.
#pragma once

#include <cstddef>
#include <memory>

#include "storage/element_io.h"
#include "storage/global_heap.h"
#include "values/arena.h"

namespace kelvo {

struct VaryingPart;

class VaryingValues {
 public:
  /// Null where elements have no varying parts, or where the HDF5 library has to follow the
  /// references: they lead to other files (a virtual dataset's sources), the file is not on this
  /// machine, or references to objects have another size in it than in memory. `place` must
  /// outlive it.
  static std::unique_ptr<VaryingValues> of(const ElementPlace& place);

  VaryingValues(const ElementPlace& place, FileBytes bytes);
  VaryingValues(const VaryingValues&) = delete;
  VaryingValues& operator=(const VaryingValues&) = delete;
  ~VaryingValues();

  /// The same elements as they are stored: what is to be read.
  [[nodiscard]] const ElementPlace& stored() const noexcept { return stored_; }

  /// How many of the stored elements, at least one, have values of no more than a few MiB in all,
  /// as far as their references tell.
  [[nodiscard]] std::size_t count_together(const std::byte* stored, std::size_t count) const;

  /// Makes `count` elements of stored ones, as the place's type lays them out, and their values in
  /// `values`. Throws StatementError where a value is not where its reference says.
  void resolve(const std::byte* stored, std::size_t count, std::byte* elements, Arena* values);

 private:
  ElementPlace stored_;
  GlobalHeap heap_;
  std::unique_ptr<VaryingPart> whole_;
};

}  // namespace kelvo
