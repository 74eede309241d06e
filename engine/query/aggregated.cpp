// Runs the elements of a query through its accumulators.
#include "query/aggregated.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "error.h"

namespace kelvo {
namespace {

// All numbers have 8 bytes in a column, whatever they are. Returns how many were selected.
std::size_t choose(const void* values, const Mask* selected, std::size_t count,
                   std::vector<std::uint64_t>* chosen) {
  chosen->resize(count);
  const auto* from = static_cast<const std::byte*>(values);
  std::size_t found = 0;
  for (std::size_t i = 0; i < count; ++i) {
    std::memcpy(chosen->data() + found, from + i * sizeof(std::uint64_t), sizeof(std::uint64_t));
    found += selected[i];
  }
  return found;
}

}  // namespace

Aggregated::Aggregated(QueryRunPointer run) : run_(std::move(run)) {
  type_.kind = Kind::compound;
  type_.size = 0;
  for (const QueryItem& item : run_->query.items) add_item(item);
  type_.file_size = type_.size;
  if (columns_.size() == 1) type_ = Type(type_.members[0].type);
}

void Aggregated::add_item(const QueryItem& item) {
  Column column;
  Type argument;
  if (item.aggregate != Aggregate::count) {
    const bool is_name = item.value.operation == Operation::name;
    const std::optional<Field> field = is_name ? run_->scope.find(item.value) : std::nullopt;
    if (field && field->type != nullptr && !field->type->is_numeric()) {
      throw StatementError(Status::wrong_kind, item.label + " needs numbers, " +
                                                   quoted(item.value.text) + " is " +
                                                   type_name(*field->type));
    }
    column.operand = compile_value(item.value, run_->scope);
    argument =
        field && field->type != nullptr ? *field->type : type_of_domain(column.operand->domain());
  }
  const Domain domain = column.operand == nullptr ? Domain::text : column.operand->domain();
  column.accumulator = make_accumulator(item.aggregate, domain, argument, item.label);
  const Type& type = column.accumulator->type();
  type_.members.push_back({item.label, type_.size, type_.size, type});
  type_.size += type.size;
  columns_.push_back(std::move(column));
}

bool Aggregated::next(Elements& elements) {
  if (done_) return false;
  done_ = true;
  read();
  for (const Column& column : columns_) {
    const std::size_t begin = result_.size();
    result_.resize(begin + column.accumulator->type().size);
    column.accumulator->store(result_.data() + begin);
  }
  elements = {result_.data(), 1, nullptr};
  return true;
}

bool Aggregated::only_counts() const {
  return std::all_of(columns_.begin(), columns_.end(),
                     [](const Column& column) { return column.operand == nullptr; });
}

// There may be more elements than memory could hold.
void Aggregated::count_all(Extent elements) {
  constexpr Extent most = std::numeric_limits<std::size_t>::max();
  for (Extent left = elements; left > 0;) {
    const Extent some = std::min(left, most);
    for (const Column& column : columns_)
      column.accumulator->add(nullptr, static_cast<std::size_t>(some));
    left -= some;
  }
}

void Aggregated::read() {
  if (only_counts() && !run_->scan->is_choosy()) {
    count_all(run_->scan->selection().elements());
    return;
  }
  for (;;) {
    read_once();
    // Who needs no more values takes no part in the next pass.
    std::vector<Column*> again;
    for (Column& column : columns_) {
      if (column.active && column.accumulator->end_pass()) again.push_back(&column);
      column.active = false;
    }
    if (again.empty()) return;
    for (Column* column : again) column->active = true;
    run_->scan->restart();
  }
}

void Aggregated::read_once() {
  Batch batch;
  const Mask* selected = nullptr;
  while (run_->scan->next_block()) {
    while (run_->scan->next_batch(&batch, &selected)) add_batch(batch, selected);
  }
}

void Aggregated::add_batch(const Batch& batch, const Mask* selected) {
  const bool choosy = run_->scan->is_choosy();
  for (const Column& column : columns_) {
    if (!column.active) continue;
    if (column.operand == nullptr) {
      column.accumulator->add(nullptr, choosy ? count_true(selected, batch.count) : batch.count);
      continue;
    }
    const void* values = column.operand->evaluate(batch, selected);
    if (choosy) {
      const std::size_t count = choose(values, selected, batch.count, &chosen_);
      column.accumulator->add(chosen_.data(), count);
    } else {
      column.accumulator->add(values, batch.count);
    }
  }
}

}  // namespace kelvo
