// Sorts records by their keys. What does not fit in memory is sorted in parts, which wait in a
// temporary file and are merged.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "query/part_merge.h"
#include "query/sort_record.h"
#include "storage/spool.h"

namespace kelvo {

class Sorter {
 public:
  /// Bytes of records that are held in memory at most, and of what sorting them takes.
  static constexpr std::size_t memory_bytes = std::size_t{32} * 1024 * 1024;

  /// Only the first `wanted` records of the order are needed.
  Sorter(std::uint64_t wanted, RecordLayout layout) : wanted_(wanted), layout_(layout) {}
  Sorter(const Sorter&) = delete;
  Sorter& operator=(const Sorter&) = delete;

  void add(const SortKey& key, std::string_view payload);

  /// All records have been added.
  void finish();

  /// The payload of the next record in order, those with equal keys as they were added; false when
  /// there are none left. It is good until the next call.
  bool next(std::string_view* payload);

 private:
  [[nodiscard]] const char* record_of(const SortEntry& entry) const {
    return records_.data() + entry.offset;
  }
  [[nodiscard]] SortKey key_of(const SortEntry& entry) const {
    return {entry.number, layout_.rest_at(record_of(entry))};
  }
  [[nodiscard]] bool is_too_late(const SortKey& key) const;
  [[nodiscard]] bool is_full() const;
  void reserve();
  void sort();
  void sort_ties();
  void keep_wanted();
  void spill();

  std::uint64_t wanted_;
  RecordLayout layout_;
  bool is_bounded_ = false;
  std::uint64_t bound_number_ = 0;  // a key from this one on is not wanted
  std::string bound_rest_;
  std::string records_;
  std::vector<SortEntry> entries_;
  std::vector<SortEntry> scratch_;
  std::size_t next_ = 0;
  Spool file_{0};  // all parts, one behind the other
  PartMerge merge_{file_, layout_};
};

}  // namespace kelvo
