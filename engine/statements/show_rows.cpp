// Short answers.
#include "statements/show.h"

namespace kelvo {

Answer text_row(std::string_view text) {
  auto rows = std::make_unique<ReadyRows>();
  rows->add_text(text);
  return rows;
}

Answer text_rows(std::span<const std::string> texts) {
  auto rows = std::make_unique<ReadyRows>();
  for (const std::string& text : texts) rows->add_text(text);
  return rows;
}

Answer text_rows_of(std::string_view texts) {
  auto rows = std::make_unique<ReadyRows>();
  for (std::size_t begin = 0; begin < texts.size();) {
    const std::size_t end = texts.find('\0', begin);
    rows->add_text(texts.substr(begin, end - begin));
    begin = end + 1;
  }
  return rows;
}

Answer bigint_row(std::int64_t value) {
  auto rows = std::make_unique<ReadyRows>();
  rows->add_bigint(value);
  return rows;
}

}  // namespace kelvo
