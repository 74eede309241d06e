// Short answers.
#include "answers/row_source.h"

#include <utility>

#include "kelvo.h"

namespace kelvo {

Block& ReadyRows::block_for(std::int32_t code, RowShape shape, std::size_t size) {
  if (blocks_.empty() || blocks_.back().code != code)
    blocks_.emplace_back().restart(code, shape, size);
  ++blocks_.back().elements;
  return blocks_.back();
}

void ReadyRows::add_value(std::int32_t code, const void* value, std::size_t size) {
  Block& block = block_for(code, RowShape::scalar, size);
  const auto* bytes = static_cast<const std::byte*>(value);
  block.values.insert(block.values.end(), bytes, bytes + size);
}

void ReadyRows::add_text(std::string_view text) {
  block_for(KELVO_VARCHAR, RowShape::text, 1).append_text(text);
}
void ReadyRows::add_int(std::int32_t value) { add_value(KELVO_INT, &value, sizeof value); }
void ReadyRows::add_unsigned_int(std::uint32_t value) {
  add_value(KELVO_UNSIGNED_INT, &value, sizeof value);
}
void ReadyRows::add_bigint(std::int64_t value) { add_value(KELVO_BIGINT, &value, sizeof value); }
void ReadyRows::add_double(double value) { add_value(KELVO_DOUBLE, &value, sizeof value); }

bool ReadyRows::next(Block& block) {
  if (given_ == blocks_.size()) return false;
  block = std::move(blocks_[given_++]);
  return true;
}

}  // namespace kelvo
