// From elements in memory to rows.
#include "query/element_rows.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "values/bits.h"

namespace kelvo {
namespace {

bool is_list(const Type& type) {
  return (type.kind == Kind::array || type.kind == Kind::sequence) && type.base[0].is_numeric();
}

// Times are read as the file's bytes, since the HDF5 library does not convert them.
void times_to_machine_order(const Type& type, std::byte* items, std::size_t count) {
  if (type.kind != Kind::time || type.order == machine_order()) return;
  for (std::size_t i = 0; i < count; ++i)
    std::reverse(items + i * type.size, items + (i + 1) * type.size);
}

struct Items {
  const std::byte* data;
  std::size_t count;
};

// The numbers of an element that is a list of them.
Items items_of(const Type& type, const std::byte* element) {
  if (type.kind == Kind::array) return {element, static_cast<std::size_t>(type.array_length())};
  std::size_t count = 0;
  const std::byte* data = nullptr;
  std::memcpy(&count, element, sizeof count);
  std::memcpy(&data, element + sizeof count, sizeof data);
  return {data, count};
}

void append_numbers(const Type& type, const std::byte* element, Block& block) {
  const Items items = items_of(type, element);
  const std::size_t begin = block.values.size();
  block.append_list(items.data, items.count);
  times_to_machine_order(type.base[0], block.values.data() + begin, items.count);
}

// Of all that is no number.
RowShape shape_of(const Type& type) {
  const bool bytes = type.kind == Kind::text || type.kind == Kind::opaque;
  return bytes || is_list(type) ? RowShape::list : RowShape::text;
}

void start_block(const Type& type, Block& block) {
  block.restart(row_code(type), shape_of(type), is_list(type) ? type.base[0].size : 1);
}

}  // namespace

// Of rank 2 and more, numbers are shown a line of the last dimension at a time, so that a matrix
// looks like a matrix.
std::size_t line_length(const Selected& selected) {
  const bool lines =
      selected.source->type().is_numeric() && selected.shape && selected.shape->size() >= 2;
  return lines ? static_cast<std::size_t>(selected.shape->back()) : 0;
}

ElementRows::ElementRows(Selected selected)
    : selected_(std::move(selected)),
      line_length_(line_length(selected_)),
      form_(selected_.source->type(), selected_.several_items) {}

bool ElementRows::next(Block& block) {
  Elements elements;
  if (!selected_.source->next(elements)) return false;
  const Type& type = selected_.source->type();
  if (type.is_numeric()) {
    fill_numbers(elements, block);
  } else if (shape_of(type) == RowShape::text && form_.room()) {
    fill_texts(elements, block);
  } else {
    start_block(type, block);
    for (std::size_t i = 0; i < elements.count; ++i) fill_row(block, elements.data + i * type.size);
  }
  block.elements = elements.count;
  return true;
}

void ElementRows::fill_numbers(const Elements& elements, Block& block) const {
  const Type& type = selected_.source->type();
  const bool lines = line_length_ > 0;
  const RowShape shape = lines ? RowShape::line : RowShape::scalar;
  const std::int32_t code = lines ? list_code(type) : row_code(type);
  if (elements.movable != nullptr) {
    block.exchange(code, shape, type.size, elements.movable);
  } else {
    block.restart(code, shape, type.size);
    block.values.assign(elements.data, elements.data + elements.count * type.size);
  }
  if (lines) block.line_length = line_length_;
  times_to_machine_order(type, block.values.data(), elements.count);
}

void ElementRows::fill_texts(const Elements& elements, Block& block) const {
  const std::size_t size = selected_.source->type().size;
  start_block(selected_.source->type(), block);
  block.append_texts(elements.count, *form_.room(), [&](std::size_t i, char* place) {
    return form_.write(elements.data + i * size, place);
  });
}

void ElementRows::fill_row(Block& block, const std::byte* element) {
  const Type& type = selected_.source->type();
  if (type.kind == Kind::text) {
    const std::string_view text = without_padding(type, element);
    block.append_list(reinterpret_cast<const std::byte*>(text.data()), text.size());
  } else if (type.kind == Kind::opaque) {
    block.append_list(element, type.size);
  } else if (is_list(type)) {
    append_numbers(type, element, block);
  } else if (type.kind == Kind::varying_text) {
    const std::string_view text = varying_text(element);
    text.data() == nullptr ? block.append_null_text() : block.append_text(text);
  } else {
    text_.clear();
    form_.append(element, selected_.namer, &text_);
    block.append_text(text_);
  }
}

}  // namespace kelvo
