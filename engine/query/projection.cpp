// Gathers columns.
#include "query/projection.h"

#include <cstring>
#include <utility>

namespace kelvo {
namespace {

template <std::size_t size>
void gather_fixed(const std::byte* from, std::size_t stride,
                  const std::vector<std::uint32_t>& chosen, std::byte* to, std::size_t step) {
  for (std::size_t i = 0; i < chosen.size(); ++i)
    std::memcpy(to + i * step, from + chosen[i] * stride, size);
}

// Copies one value of each chosen element. The common sizes are told to the compiler, which then
// calls nothing to copy them.
void gather(const std::byte* from, std::size_t stride, const std::vector<std::uint32_t>& chosen,
            std::size_t size, std::byte* to, std::size_t step) {
  switch (size) {
    case 1:
      return gather_fixed<1>(from, stride, chosen, to, step);
    case 2:
      return gather_fixed<2>(from, stride, chosen, to, step);
    case 4:
      return gather_fixed<4>(from, stride, chosen, to, step);
    case 8:
      return gather_fixed<8>(from, stride, chosen, to, step);
    default:
      for (std::size_t i = 0; i < chosen.size(); ++i)
        std::memcpy(to + i * step, from + chosen[i] * stride, size);
  }
}

Type text_type() {
  Type type;
  type.kind = Kind::varying_text;
  type.size = type.file_size = sizeof(char*);
  type.padding = Padding::null_terminated;
  return type;
}

}  // namespace

Projection::Projection(const std::vector<QueryItem>& items, const Scan& scan, const Scope& scope)
    : scan_(scan) {
  type_.kind = Kind::compound;
  type_.size = 0;
  for (const QueryItem& item : items) add_item(item, scope);
  type_.file_size = type_.size;
  is_identity_ = columns_.size() == 1 && columns_[0].operand == nullptr &&
                 !columns_[0].is_position && columns_[0].size == scan.place().type.size;
  if (items.size() == 1) type_ = Type(type_.members[0].type);
}

void Projection::add_item(const QueryItem& item, const Scope& scope) {
  Column column;
  if (item.all) return add_member(item.label, scan_.place().type, std::move(column));
  const bool is_name = item.value.operation == Operation::name;
  const std::optional<Field> field = is_name ? scope.find(item.value) : std::nullopt;
  if (field && field->type != nullptr) {
    column.from = field->offset;
    return add_member(item.label, *field->type, std::move(column));
  }
  if (field && scan_.place().space.extents.size() > 1) {
    column.is_position = true;
    return add_member(item.label, text_type(), std::move(column));
  }
  column.operand = compile_value(item.value, scope);
  const Type type = type_of_domain(column.operand->domain());
  add_member(item.label, type, std::move(column));
}

void Projection::add_member(std::string label, const Type& type, Column column) {
  column.to = type_.size;
  column.size = type.size;
  type_.members.push_back({std::move(label), type_.size, type_.size, type});
  type_.size += type.size;
  columns_.push_back(std::move(column));
}

std::size_t Projection::append(const Batch& batch, const Mask* selected,
                               std::vector<std::byte>* elements) {
  chosen_.resize(batch.count);
  std::size_t count = 0;
  for (std::size_t i = 0; i < batch.count; ++i) {
    chosen_[count] = static_cast<std::uint32_t>(i);
    count += selected[i];
  }
  chosen_.resize(count);
  if (count == 0) return 0;
  const std::size_t begin = elements->size();
  elements->resize(begin + count * type_.size);
  for (const Column& column : columns_) fill(column, batch, selected, elements->data() + begin);
  return count;
}

void Projection::fill(const Column& column, const Batch& batch, const Mask* selected,
                      std::byte* elements) {
  std::byte* to = elements + column.to;
  if (column.is_position) {
    for (std::size_t i = 0; i < chosen_.size(); ++i) {
      const char* text = position_text(batch.ordinal + chosen_[i]);
      std::memcpy(to + i * type_.size, &text, sizeof text);
    }
  } else if (column.operand != nullptr) {
    const void* values = column.operand->evaluate(batch, selected);
    gather(static_cast<const std::byte*>(values), column.size, chosen_, column.size, to,
           type_.size);
  } else {
    gather(batch.elements + column.from, batch.stride, chosen_, column.size, to, type_.size);
  }
}

// "3,17": where the element is in the dataset.
const char* Projection::position_text(std::uint64_t ordinal) {
  const Selection& selection = scan_.selection();
  std::string& text = positions_.emplace_back();
  for (std::size_t d = selection.count.size(); d-- > 0;) {
    const Extent step = ordinal % selection.count[d];
    ordinal /= selection.count[d];
    text.insert(
        0, (d > 0 ? "," : "") + std::to_string(selection.start[d] + step * selection.stride[d]));
  }
  return text.c_str();
}

}  // namespace kelvo
