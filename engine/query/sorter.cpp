// Sorting in memory and merging from the file.
#include "query/sorter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "error.h"

namespace kelvo {
namespace {

// So many that throwing some away is worth sorting them.
constexpr std::size_t few_entries = 4096;

struct RecordSizes {
  std::uint32_t key;
  std::uint32_t payload;
};

std::uint64_t prefix_of(std::string_view key) {
  std::uint64_t prefix = 0;
  for (std::size_t i = 0; i < 8; ++i)
    prefix = prefix << 8U | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
  return prefix;
}

std::uint32_t checked_size(std::size_t size) {
  if (size > std::numeric_limits<std::uint32_t>::max())
    throw StatementError(Status::no_memory, "ORDER BY cannot hold a value of more than 4 GiB");
  return static_cast<std::uint32_t>(size);
}

}  // namespace

void Sorter::add(std::string_view key, std::string_view payload) {
  if (is_bounded_ && key >= bound_) return;
  entries_.push_back(
      {prefix_of(key), memory_.size(), checked_size(key.size()), checked_size(payload.size())});
  memory_.append(key);
  memory_.append(payload);
  if (entries_.size() >= few_entries && entries_.size() / 2 >= wanted_) return keep_wanted();
  if (memory_.size() + entries_.size() * sizeof(Entry) >= memory_bytes) spill();
}

std::string_view Sorter::key_of(const Entry& entry) const {
  return std::string_view(memory_).substr(entry.offset, entry.key_size);
}

bool Sorter::is_before(const Entry& one, const Entry& other) const {
  if (one.prefix != other.prefix) return one.prefix < other.prefix;
  if (one.key_size > 8 || other.key_size > 8) {
    const int order = key_of(one).compare(key_of(other));
    if (order != 0) return order < 0;
  }
  return one.offset < other.offset;  // as they were added
}

void Sorter::sort() {
  std::sort(entries_.begin(), entries_.end(),
            [this](const Entry& one, const Entry& other) { return is_before(one, other); });
}

void Sorter::keep_wanted() {
  sort();
  if (entries_.size() > wanted_) entries_.resize(static_cast<std::size_t>(wanted_));
  std::string kept;
  for (Entry& entry : entries_) {
    const std::size_t offset = kept.size();
    kept.append(memory_, entry.offset, std::size_t{entry.key_size} + entry.payload_size);
    entry.offset = offset;
  }
  memory_ = std::move(kept);
  // A record that comes later must be before the last one kept.
  is_bounded_ = true;
  bound_ = entries_.empty() ? std::string() : std::string(key_of(entries_.back()));
}

void Sorter::spill() {
  sort();
  Part part{};
  part.at = file_.size();
  std::string buffer;
  for (const Entry& entry : entries_) {
    const RecordSizes sizes{entry.key_size, entry.payload_size};
    buffer.append(reinterpret_cast<const char*>(&sizes), sizeof sizes);
    buffer.append(memory_, entry.offset, std::size_t{entry.key_size} + entry.payload_size);
    if (buffer.size() < (std::size_t{1} << 20U)) continue;
    file_.append(buffer.data(), buffer.size());
    buffer.clear();
  }
  file_.append(buffer.data(), buffer.size());
  part.end = file_.size();
  parts_.push_back(std::move(part));
  memory_.clear();
  entries_.clear();
}

void Sorter::finish() {
  if (parts_.empty()) return sort();
  if (!entries_.empty()) spill();
  memory_ = {};
  entries_ = {};
  window_bytes_ = std::max<std::size_t>(memory_bytes / parts_.size(), std::size_t{16} * 1024);
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    if (next_of(&parts_[i])) heap_.push_back(i);
  }
  std::make_heap(heap_.begin(), heap_.end(),
                 [this](std::size_t one, std::size_t other) { return part_is_behind(one, other); });
}

bool Sorter::next(SortRecord* record) {
  if (!parts_.empty()) return next_merged(record);
  if (next_ == entries_.size()) return false;
  const Entry& entry = entries_[next_++];
  const std::string_view memory(memory_);
  record->key = key_of(entry);
  record->payload = memory.substr(entry.offset + entry.key_size, entry.payload_size);
  return true;
}

// Parts were spilled in the order in which records were added, so that of equal keys the earlier
// part's comes first.
bool Sorter::part_is_behind(std::size_t one, std::size_t other) const {
  const int order = parts_[one].record.key.compare(parts_[other].record.key);
  return order != 0 ? order > 0 : one > other;
}

bool Sorter::next_merged(SortRecord* record) {
  const auto behind = [this](std::size_t one, std::size_t other) {
    return part_is_behind(one, other);
  };
  // The record given last stands in its part's window until now.
  if (started_ && next_of(&parts_[heap_.back()])) {
    std::push_heap(heap_.begin(), heap_.end(), behind);
  } else if (started_) {
    heap_.pop_back();
  }
  started_ = !heap_.empty();
  if (!started_) return false;
  std::pop_heap(heap_.begin(), heap_.end(), behind);
  *record = parts_[heap_.back()].record;
  return true;
}

bool Sorter::next_of(Part* part) {
  RecordSizes sizes{};
  if (part->used == part->window.size() && part->at == part->end) return false;
  fill_window(part, sizeof sizes);
  std::memcpy(&sizes, part->window.data() + part->used, sizeof sizes);
  const std::size_t size = sizeof sizes + std::size_t{sizes.key} + sizes.payload;
  fill_window(part, size);
  const std::string_view record =
      std::string_view(part->window).substr(part->used + sizeof sizes, size - sizeof sizes);
  part->record = {record.substr(0, sizes.key), record.substr(sizes.key)};
  part->used += size;
  return true;
}

// Makes the next `needed` bytes stand in the window.
void Sorter::fill_window(Part* part, std::size_t needed) {
  const std::size_t left = part->window.size() - part->used;
  if (left >= needed) return;
  part->window.erase(0, part->used);
  part->used = 0;
  const auto more = static_cast<std::size_t>(
      std::min<std::uint64_t>(std::max(window_bytes_, needed) - left, part->end - part->at));
  part->window.resize(left + more);
  file_.read(part->at, part->window.data() + left, more);
  part->at += more;
}

}  // namespace kelvo
