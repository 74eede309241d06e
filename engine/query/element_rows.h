// The rows of "SELECT * FROM object [slice]": elements of a selection in the row type of their data
// type.
#pragma once

#include <optional>

#include "answers/row_source.h"
#include "storage/element_io.h"
#include "values/text.h"

namespace kelvo {

class ElementRows : public RowSource {
 public:
  /// `file` keeps open what `place` is in, where nothing else does; it may be empty.
  ElementRows(FileHandle file, ElementPlace place, Selection selection, ReferenceNamer namer);

  bool next(Block& block) override;

 private:
  void fill_numbers(Block& block);
  void fill_row(Block& block, const std::byte* element) const;

  FileHandle file_;
  ElementPlace place_;
  ReferenceNamer namer_;
  std::size_t
      line_length_;        // elements of a row, where rows are lines of the last dimension; else 0
  ElementReader reader_;   // behind what it refers to
  ElementBlock elements_;  // behind the reader that it belongs to
};

}  // namespace kelvo
