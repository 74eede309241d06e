// Filling blocks.
#include "answers/block.h"

namespace kelvo {

std::size_t Block::row_count() const {
  if (shape == RowShape::scalar) return value_count();
  if (shape == RowShape::list) return offsets.empty() ? 0 : offsets.size() - 1;
  return offsets.size();
}

void Block::describe(std::int32_t row_code, RowShape row_shape, std::size_t size) {
  code = row_code;
  shape = row_shape;
  value_size = size;
  line_length = 1;
  elements = 0;
  offsets.clear();
}

void Block::exchange(std::int32_t row_code, RowShape row_shape, std::size_t size,
                     std::vector<std::byte>* bytes) {
  describe(row_code, row_shape, size);
  values.swap(*bytes);
}

void Block::restart(std::int32_t row_code, RowShape row_shape, std::size_t size) {
  describe(row_code, row_shape, size);
  values.clear();
  if (shape == RowShape::list) offsets.push_back(0);
}

void Block::append_text(std::string_view text) {
  offsets.push_back(values.size());
  const auto* bytes = reinterpret_cast<const std::byte*>(text.data());
  values.insert(values.end(), bytes, bytes + text.size());
  values.push_back(std::byte{0});
}

void Block::append_null_text() { offsets.push_back(null_text); }

void Block::append_list(const std::byte* items, std::size_t count) {
  if (count > 0) values.insert(values.end(), items, items + count * value_size);
  offsets.push_back(values.size() / value_size);
}

}  // namespace kelvo
