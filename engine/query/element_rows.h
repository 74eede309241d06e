// The rows of a query: its elements in the row type of their data type.
#pragma once

#include <optional>
#include <string>

#include "answers/row_source.h"
#include "query/element_source.h"
#include "values/text_form.h"

namespace kelvo {

class ElementRows : public RowSource {
 public:
  explicit ElementRows(Selected selected);

  bool next(Block& block) override;
  std::optional<std::uint64_t> look_through(std::size_t most_bytes) override {
    return kelvo::look_through(*selected_.source, most_bytes);
  }

 private:
  void fill_numbers(const Elements& elements, Block& block) const;
  void fill_texts(const Elements& elements, Block& block) const;
  void fill_row(Block& block, const std::byte* element);

  Selected selected_;
  // Elements of a row, where rows are lines of the last dimension; else 0.
  std::size_t line_length_;
  TextForm form_;  // several items are one row of text, with a tab between them
  std::string text_;
};

/// How many elements a row of numbers has, where rows are lines of the last dimension; else 0.
std::size_t line_length(const Selected& selected);

}  // namespace kelvo
