// Entries are dealt out to 256 piles by the lowest byte of their numbers, then by the next one, up
// to the highest. Dealing takes the same few instructions for each entry, while comparing makes the
// processor guess, wrong every other time.
#include "query/radix_sort.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kelvo {
namespace {

constexpr unsigned digits = 8;  // of a number, a byte each
constexpr std::size_t piles = 256;

// For fewer entries, counting all piles takes longer than comparing.
constexpr std::size_t few_entries = 256;

using Counts = std::array<std::array<std::size_t, piles>, digits>;

std::size_t digit_of(std::uint64_t number, unsigned digit) {
  return static_cast<std::size_t>(number >> (8 * digit)) % piles;
}

Counts count_all(const std::vector<SortEntry>& entries) {
  Counts counts{};
  for (const SortEntry& entry : entries) {
    for (unsigned digit = 0; digit < digits; ++digit)
      ++counts[digit][digit_of(entry.number, digit)];
  }
  return counts;
}

void deal(const std::vector<SortEntry>& from, unsigned digit, std::array<std::size_t, piles> counts,
          std::vector<SortEntry>* to) {
  std::size_t begin = 0;
  for (std::size_t& count : counts) {
    const std::size_t next = begin + count;
    count = begin;
    begin = next;
  }
  SortEntry* const entries = to->data();
  for (const SortEntry& entry : from) entries[counts[digit_of(entry.number, digit)]++] = entry;
}

}  // namespace

void sort_by_number(std::vector<SortEntry>* entries, std::vector<SortEntry>* scratch) {
  if (entries->size() < few_entries) {
    return std::stable_sort(
        entries->begin(), entries->end(),
        [](const SortEntry& one, const SortEntry& other) { return one.number < other.number; });
  }
  const Counts counts = count_all(*entries);
  scratch->resize(entries->size());
  for (unsigned digit = 0; digit < digits; ++digit) {
    // A byte that is the same in all of them settles nothing.
    if (counts[digit][digit_of(entries->front().number, digit)] == entries->size()) continue;
    deal(*entries, digit, counts[digit], scratch);
    entries->swap(*scratch);
  }
}

}  // namespace kelvo
