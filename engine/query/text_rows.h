// The rows of a query with FORMAT: VARCHAR ones.
#pragma once

#include "answers/row_source.h"
#include "query/text_writer.h"

namespace kelvo {

class FormattedRows : public RowSource {
 public:
  FormattedRows(Selected selected, TextFormat format, bool header);

  bool next(Block& block) override;
  std::optional<std::uint64_t> look_through(std::size_t most_bytes) override {
    return kelvo::look_through(*selected_.source, most_bytes);
  }

 private:
  Selected selected_;
  TextWriter writer_;  // behind what it refers to
  TextRows rows_;
};

}  // namespace kelvo
