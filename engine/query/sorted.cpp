// Feeds the sorter and takes elements out of it.
#include "query/sorted.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "query/sort_key.h"
#include "values/flatten.h"

namespace kelvo {
namespace {

constexpr std::size_t block_bytes = std::size_t{512} * 1024;

std::vector<OperandPointer> compile_keys(const QueryRun& run) {
  std::vector<OperandPointer> keys;
  for (const OrderKey& key : run.query.order) keys.push_back(compile_value(key.value, run.scope));
  return keys;
}

// Numbers make keys of one size, and elements without varying parts payloads of one.
RecordLayout layout_of(const std::vector<OperandPointer>& keys, const Type& type) {
  const bool has_texts = std::any_of(keys.begin(), keys.end(), [](const OperandPointer& key) {
    return key->domain() == Domain::text;
  });
  const bool is_small = type.size <= std::numeric_limits<std::uint32_t>::max();
  if (has_texts || type.has_varying_parts() || !is_small) return RecordLayout(std::nullopt);
  const std::size_t rest = (keys.size() - 1) * sizeof(std::uint64_t);
  return RecordLayout(
      RecordSizes{static_cast<std::uint32_t>(rest), static_cast<std::uint32_t>(type.size)});
}

}  // namespace

Sorted::Sorted(QueryRunPointer run, std::uint64_t wanted)
    : run_(std::move(run)),
      keys_(compile_keys(*run_)),
      is_varying_(run_->projection->type().has_varying_parts()),
      sorter_(wanted, layout_of(keys_, run_->projection->type())),
      wanted_(wanted) {}

bool Sorted::next(Elements& elements) {
  read_all();
  parts_.restart();
  const std::size_t size = type().size;
  const std::size_t most = std::max<std::size_t>(1, block_bytes / size);
  bytes_.resize(most * size);
  std::size_t count = 0;
  std::string_view payload;
  while (count < most && sorter_.next(&payload)) restore(payload, bytes_.data() + count++ * size);
  bytes_.resize(count * size);
  elements = {bytes_.data(), count, is_varying_ ? nullptr : &bytes_};
  return count > 0;
}

std::optional<std::uint64_t> Sorted::read_all() {
  if (std::exchange(is_read_, true)) return std::min(count_, wanted_);
  Batch batch;
  const Mask* selected = nullptr;
  while (run_->scan->next_block()) {
    run_->projection->forget_texts();
    while (run_->scan->next_batch(&batch, &selected)) add_batch(batch, selected);
  }
  sorter_.finish();
  return std::min(count_, wanted_);
}

void Sorted::add_batch(const Batch& batch, const Mask* selected) {
  bytes_.clear();
  if (run_->projection->append(batch, selected, &bytes_) == 0) return;
  columns_.clear();
  for (const OperandPointer& key : keys_) columns_.push_back(key->evaluate(batch, selected));
  if (keys_[0]->domain() != Domain::text) {
    number_keys(keys_[0]->domain(), columns_[0], batch.count, run_->query.order[0].descending,
                numbers_.data());
  }
  const std::byte* element = bytes_.data();
  for (std::size_t i = 0; i < batch.count; ++i) {
    if (selected[i] == 0) continue;
    sorter_.add(key_of(i), payload_of(element));
    ++count_;
    element += type().size;
  }
}

// Of element i of the batch.
SortKey Sorted::key_of(std::size_t i) {
  const bool begins_with_text = keys_[0]->domain() == Domain::text;
  key_.clear();
  for (std::size_t k = begins_with_text ? 0 : 1; k < keys_.size(); ++k)
    append_key(keys_[k]->domain(), columns_[k], i, run_->query.order[k].descending, &key_);
  if (!begins_with_text) return {numbers_[i], key_};
  const std::string_view whole = key_;
  return {number_of(whole), whole.substr(std::min(whole.size(), sizeof(std::uint64_t)))};
}

std::string_view Sorted::payload_of(const std::byte* element) {
  if (!is_varying_) return {reinterpret_cast<const char*>(element), type().size};
  payload_.clear();
  flatten(type(), element, &payload_);
  return {reinterpret_cast<const char*>(payload_.data()), payload_.size()};
}

void Sorted::restore(std::string_view payload, std::byte* element) {
  if (is_varying_) {
    FlatBytes bytes(reinterpret_cast<const std::byte*>(payload.data()));
    unflatten(type(), bytes, element, &parts_);
  } else {
    copy_record(reinterpret_cast<char*>(element), payload.data(), payload.size());
  }
}

}  // namespace kelvo
