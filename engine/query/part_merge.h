// Sorted parts in a spool: in a part, each record stands behind the number of its key. They are
// merged with a window of each in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "query/sort_record.h"
#include "storage/spool.h"

namespace kelvo {

/// Writes a part, to the end of the spool.
class PartWriter {
 public:
  explicit PartWriter(Spool* spool) : spool_(*spool) {}

  void add(std::uint64_t number, const char* record, std::size_t size);
  /// Writes what is left.
  void finish();

 private:
  Spool& spool_;
  std::string buffer_;
  std::size_t used_ = 0;  // bytes of the buffer
};

class PartMerge {
 public:
  /// Both must outlive it.
  PartMerge(const Spool& spool, const RecordLayout& layout) : spool_(spool), layout_(layout) {}

  /// Of equal records, those of a part that was added earlier come first.
  void add_part(std::uint64_t begin, std::uint64_t end) { parts_.emplace_back(begin, end); }
  [[nodiscard]] bool is_empty() const noexcept { return parts_.empty(); }

  /// All parts have been added.
  void start();

  /// The payload of the next record in order; false when there are none left. It is good until the
  /// next call.
  bool next(std::string_view* payload);

 private:
  struct Part {
    Part(std::uint64_t begin, std::uint64_t end_) : at(begin), end(end_) {}

    std::uint64_t at;  // of what is not in the window yet
    std::uint64_t end;
    std::string window;
    std::size_t used = 0;  // bytes of the window that have been passed
    bool is_done = false;
    SortKey key;
    std::string_view payload;
  };

  void advance(Part* part);
  void fill_window(Part* part, std::size_t needed);
  [[nodiscard]] bool is_behind(std::size_t one, std::size_t other) const;
  void enter(std::size_t part);

  const Spool& spool_;
  const RecordLayout& layout_;
  std::vector<Part> parts_;
  std::size_t window_bytes_ = 0;
  // A tournament: each inner node holds the part that lost there, against the winner of the other
  // half. When the winner goes on, only those it has met are asked again.
  std::vector<std::size_t> losers_;
  std::size_t winner_ = 0;
  bool is_passed_ = false;  // the winner's record has been given
};

}  // namespace kelvo
