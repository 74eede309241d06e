// Sorting in memory, and what goes to the file.
#include "query/sorter.h"

#include <algorithm>
#include <utility>

#include "query/radix_sort.h"

namespace kelvo {
namespace {

// So many that throwing some away is worth sorting them.
constexpr std::size_t few_entries = 4096;

// So many that how large records are can be told.
constexpr std::size_t entries_to_judge = 65536;

// An entry and its place in the scratch memory.
constexpr std::size_t entry_bytes = 2 * sizeof(SortEntry);

// How long before its use a record is asked for.
constexpr std::size_t entries_ahead = 32;

}  // namespace

void Sorter::add(const SortKey& key, std::string_view payload) {
  if (is_bounded_ && is_too_late(key)) return;
  entries_.push_back({key.number, static_cast<std::uint32_t>(records_.size())});
  layout_.append(key.rest, payload, &records_);
  if (entries_.size() == entries_to_judge) reserve();
  if (entries_.size() >= few_entries && entries_.size() / 2 >= wanted_) return keep_wanted();
  if (is_full()) spill();
}

bool Sorter::is_too_late(const SortKey& key) const {
  if (key.number != bound_number_) return key.number > bound_number_;
  return key.rest >= bound_rest_;
}

bool Sorter::is_full() const {
  return records_.size() + entries_.size() * entry_bytes >= memory_bytes;
}

// At once, for all that will fit: growing in steps would hold old and new memory side by side.
void Sorter::reserve() {
  const std::size_t record = records_.size() / entries_.size();
  const std::size_t most = memory_bytes / (record + entry_bytes) + 1;
  if (most <= entries_.size()) return;
  entries_.reserve(most);
  records_.reserve(most * record);
}

void Sorter::sort() {
  sort_by_number(&entries_, &scratch_);
  if (layout_.has_rests()) sort_ties();
}

// Where numbers are equal the rest of the key decides, then who came first.
void Sorter::sort_ties() {
  const auto is_before = [this](const SortEntry& one, const SortEntry& other) {
    const int order = key_of(one).rest.compare(key_of(other).rest);
    return order != 0 ? order < 0 : one.offset < other.offset;
  };
  for (auto begin = entries_.begin(); begin != entries_.end();) {
    const auto end = std::find_if(begin + 1, entries_.end(), [begin](const SortEntry& entry) {
      return entry.number != begin->number;
    });
    if (end - begin > 1) std::sort(begin, end, is_before);
    begin = end;
  }
}

void Sorter::keep_wanted() {
  sort();
  if (entries_.size() > wanted_) entries_.resize(static_cast<std::size_t>(wanted_));
  std::string kept;
  for (SortEntry& entry : entries_) {
    const char* record = record_of(entry);
    entry.offset = static_cast<std::uint32_t>(kept.size());
    kept.append(record, layout_.size_at(record));
  }
  records_ = std::move(kept);
  // A record that comes later must be before the last one kept.
  is_bounded_ = true;
  const SortKey bound = entries_.empty() ? SortKey() : key_of(entries_.back());
  bound_number_ = bound.number;
  bound_rest_ = bound.rest;
}

void Sorter::spill() {
  sort();
  const std::uint64_t begin = file_.size();
  PartWriter part(&file_);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    // Records lie in the order in which they came, so that each is far from the one before it.
    if (i + entries_ahead < entries_.size())
      __builtin_prefetch(record_of(entries_[i + entries_ahead]));
    const char* record = record_of(entries_[i]);
    part.add(entries_[i].number, record, layout_.size_at(record));
  }
  part.finish();
  merge_.add_part(begin, file_.size());
  records_.clear();
  entries_.clear();
}

void Sorter::finish() {
  if (merge_.is_empty()) {
    sort();
  } else {
    if (!entries_.empty()) spill();
    records_ = {};
    entries_ = {};
    merge_.start();
  }
  scratch_ = {};
}

bool Sorter::next(std::string_view* payload) {
  if (!merge_.is_empty()) return merge_.next(payload);
  if (next_ == entries_.size()) return false;
  *payload = layout_.payload_at(record_of(entries_[next_++]));
  return true;
}

}  // namespace kelvo
