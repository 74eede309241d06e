// Rows of text as blocks.
#include "query/text_rows.h"

#include <string_view>
#include <utility>

#include "kelvo.h"

namespace kelvo {

FormattedRows::FormattedRows(Selected selected, TextFormat format, bool header)
    : selected_(std::move(selected)), writer_(format, selected_, /*line_ends=*/false) {
  if (header) writer_.append_header(&rows_);
}

bool FormattedRows::next(Block& block) {
  block.restart(KELVO_VARCHAR, RowShape::text, 1);
  Elements elements;
  bool more = true;
  // A row that goes on in the next block is not given before it is whole.
  while (more && rows_.ends.empty()) {
    more = selected_.source->next(elements);
    if (!more) break;
    block.elements += elements.count;
    writer_.append(elements, &rows_);
  }
  std::size_t begin = 0;
  for (const std::size_t end : rows_.ends) {
    block.append_text(std::string_view(rows_.text).substr(begin, end - begin));
    begin = end;
  }
  rows_.text.erase(0, begin);
  rows_.ends.clear();
  return begin > 0 || block.row_count() > 0;
}

}  // namespace kelvo
