// Sorts records by the bytes of their keys. What does not fit in memory is sorted in parts, which
// wait in a temporary file and are merged.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "storage/spool.h"

namespace kelvo {

struct SortRecord {
  std::string_view key;
  std::string_view payload;
};

class Sorter {
 public:
  /// Bytes of records that are held in memory at most.
  static constexpr std::size_t memory_bytes = std::size_t{32} * 1024 * 1024;

  /// Only the first `wanted` records of the order are needed.
  explicit Sorter(std::uint64_t wanted) : wanted_(wanted) {}

  void add(std::string_view key, std::string_view payload);

  /// All records have been added.
  void finish();

  /// The next record in order, those with equal keys as they were added; false when there are none
  /// left. Its bytes are good until the next call.
  bool next(SortRecord* record);

 private:
  struct Entry {
    std::uint64_t prefix;  // the key's first 8 bytes as a number, which settles most comparisons
    std::size_t offset;    // of the record in memory_
    std::uint32_t key_size;
    std::uint32_t payload_size;
  };
  // A sorted part in the file, of which a window is in memory.
  struct Part {
    std::uint64_t at;  // of what is not in the window yet
    std::uint64_t end;
    std::string window;
    std::size_t used = 0;  // bytes of the window that have been passed
    SortRecord record;
  };

  [[nodiscard]] std::string_view key_of(const Entry& entry) const;
  [[nodiscard]] bool is_before(const Entry& one, const Entry& other) const;
  void sort();
  void keep_wanted();
  void spill();
  bool next_of(Part* part);
  void fill_window(Part* part, std::size_t needed);
  [[nodiscard]] bool part_is_behind(std::size_t one, std::size_t other) const;
  bool next_merged(SortRecord* record);

  std::uint64_t wanted_;
  bool is_bounded_ = false;
  std::string bound_;  // keys from this one on are not wanted
  std::string memory_;
  std::vector<Entry> entries_;
  std::size_t next_ = 0;
  Spool file_{0};  // all parts, one behind the other
  std::vector<Part> parts_;
  std::vector<std::size_t> heap_;  // indexes of parts, the one with the first record on top
  std::size_t window_bytes_ = 0;
  bool started_ = false;
};

}  // namespace kelvo
