// Writing parts; their tournament, and their windows.
#include "query/part_merge.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kelvo {
namespace {

// Reads of this size cost little more than copying.
constexpr std::size_t all_windows_bytes = std::size_t{8} * 1024 * 1024;
constexpr std::size_t least_window_bytes = std::size_t{16} * 1024;

constexpr std::size_t write_bytes = std::size_t{512} * 1024;

constexpr std::size_t nobody = std::numeric_limits<std::size_t>::max();

}  // namespace

void PartWriter::add(std::uint64_t number, const char* record, std::size_t size) {
  const std::size_t both = sizeof number + size;
  if (buffer_.size() - used_ < both) {
    finish();
    buffer_.resize(std::max(write_bytes, both));
  }
  char* to = buffer_.data() + used_;
  std::memcpy(to, &number, sizeof number);
  copy_record(to + sizeof number, record, size);
  used_ += both;
}

void PartWriter::finish() {
  spool_.append(buffer_.data(), used_);
  used_ = 0;
}

void PartMerge::start() {
  window_bytes_ = std::max(all_windows_bytes / parts_.size(), least_window_bytes);
  losers_.assign(parts_.size(), nobody);
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    advance(&parts_[i]);
    enter(i);
  }
}

bool PartMerge::next(std::string_view* payload) {
  // The record given last stood in its part's window until now.
  if (is_passed_) {
    advance(&parts_[winner_]);
    enter(winner_);
  }
  is_passed_ = true;
  *payload = parts_[winner_].payload;
  return !parts_[winner_].is_done;
}

// Goes from the part's leaf towards the root. At the beginning the first to come to a node waits
// there for the other.
void PartMerge::enter(std::size_t part) {
  for (std::size_t node = (part + parts_.size()) / 2; node > 0; node /= 2) {
    if (losers_[node] == nobody) {
      losers_[node] = part;
      return;
    }
    if (is_behind(part, losers_[node])) std::swap(part, losers_[node]);
  }
  winner_ = part;
}

bool PartMerge::is_behind(std::size_t one, std::size_t other) const {
  const Part& left = parts_[one];
  const Part& right = parts_[other];
  if (left.key.number != right.key.number) return left.key.number > right.key.number;
  if (left.is_done != right.is_done) return left.is_done;
  const int order = left.key.rest.compare(right.key.rest);
  return order != 0 ? order > 0 : one > other;
}

void PartMerge::advance(Part* part) {
  if (part->used == part->window.size() && part->at == part->end) {
    part->is_done = true;
    part->key = {std::numeric_limits<std::uint64_t>::max(), {}};
    return;
  }
  const std::size_t before = sizeof part->key.number;
  fill_window(part, before + layout_.head_size());
  const std::size_t size = layout_.size_at(part->window.data() + part->used + before);
  fill_window(part, before + size);
  const char* at = part->window.data() + part->used;
  std::memcpy(&part->key.number, at, before);
  part->key.rest = layout_.rest_at(at + before);
  part->payload = layout_.payload_at(at + before);
  part->used += before + size;
}

// Makes the next `needed` bytes stand in the window.
void PartMerge::fill_window(Part* part, std::size_t needed) {
  const std::size_t left = part->window.size() - part->used;
  if (left >= needed) return;
  part->window.erase(0, part->used);
  part->used = 0;
  const auto more = static_cast<std::size_t>(
      std::min<std::uint64_t>(std::max(window_bytes_, needed) - left, part->end - part->at));
  part->window.resize(left + more);
  spool_.read(part->at, part->window.data() + left, more);
  part->at += more;
}

}  // namespace kelvo
