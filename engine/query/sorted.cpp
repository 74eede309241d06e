// Feeds the sorter and takes elements out of it.
#include "query/sorted.h"

#include <algorithm>
#include <utility>

#include "query/sort_key.h"

namespace kelvo {
namespace {

constexpr std::size_t block_bytes = std::size_t{512} * 1024;

}  // namespace

Sorted::Sorted(QueryRunPointer run, std::uint64_t wanted)
    : run_(std::move(run)),
      sorter_(wanted),
      is_varying_(run_->projection->type().has_varying_parts()) {
  for (const OrderKey& key : run_->query.order)
    keys_.push_back(compile_value(key.value, run_->scope));
}

bool Sorted::next(Elements& elements) {
  if (!is_read_) read();
  bytes_.clear();
  parts_.clear();
  std::size_t count = 0;
  SortRecord record;
  while (bytes_.size() < block_bytes && sorter_.next(&record)) {
    unpack_one(record.payload);
    ++count;
  }
  elements = {bytes_.data(), count, is_varying_ ? nullptr : &bytes_};
  return count > 0;
}

void Sorted::read() {
  is_read_ = true;
  Batch batch;
  const Mask* selected = nullptr;
  while (run_->scan->next_block()) {
    run_->projection->forget_texts();
    while (run_->scan->next_batch(&batch, &selected)) add_batch(batch, selected);
  }
  sorter_.finish();
}

void Sorted::add_batch(const Batch& batch, const Mask* selected) {
  bytes_.clear();
  if (run_->projection->append(batch, selected, &bytes_) == 0) return;
  columns_.clear();
  for (const OperandPointer& key : keys_) columns_.push_back(key->evaluate(batch, selected));
  const std::byte* element = bytes_.data();
  for (std::size_t i = 0; i < batch.count; ++i) {
    if (selected[i] == 0) continue;
    key_.clear();
    for (std::size_t k = 0; k < keys_.size(); ++k)
      append_key(keys_[k]->domain(), columns_[k], i, run_->query.order[k].descending, &key_);
    std::string_view payload(reinterpret_cast<const char*>(element), type().size);
    if (is_varying_) {
      payload_.clear();
      append_packed(type(), element, &payload_);
      payload = payload_;
    }
    sorter_.add(key_, payload);
    element += type().size;
  }
}

void Sorted::unpack_one(std::string_view payload) {
  const std::size_t begin = bytes_.size();
  bytes_.resize(begin + type().size);
  if (is_varying_) {
    unpack(type(), payload.data(), bytes_.data() + begin, &parts_);
  } else {
    std::copy_n(reinterpret_cast<const std::byte*>(payload.data()), payload.size(),
                bytes_.data() + begin);
  }
}

}  // namespace kelvo
