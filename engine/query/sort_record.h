// What the sorter sorts: an entry for each record, and the record's bytes elsewhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

/// A key is a number and bytes that decide where the numbers are equal.
struct SortKey {
  std::uint64_t number = 0;
  std::string_view rest;
};

struct SortEntry {
  std::uint64_t number;  // of the key
  std::uint32_t offset;  // of the record among the records in memory
};

struct RecordSizes {
  std::uint32_t rest;
  std::uint32_t payload;

  [[nodiscard]] std::size_t both() const noexcept { return std::size_t{rest} + payload; }
};

/// Copies what is mostly one number: to call memcpy takes longer than to copy that.
inline void copy_record(char* to, const char* from, std::size_t size) {
  if (size == sizeof(std::uint64_t)) {
    std::memcpy(to, from, sizeof(std::uint64_t));
  } else {
    std::memcpy(to, from, size);
  }
}

/// Records as bytes: the sizes, unless they are the same for all, the rest of the key, the payload.
class RecordLayout {
 public:
  explicit RecordLayout(std::optional<RecordSizes> of_all) : of_all_(of_all) {}

  [[nodiscard]] bool has_rests() const noexcept { return !of_all_ || of_all_->rest > 0; }
  /// Bytes that must be there for `size_at`.
  [[nodiscard]] std::size_t head_size() const noexcept { return of_all_ ? 0 : sizeof(RecordSizes); }

  [[nodiscard]] std::size_t size_at(const char* record) const {
    return head_size() + sizes_at(record).both();
  }
  [[nodiscard]] std::string_view rest_at(const char* record) const {
    return {record + head_size(), sizes_at(record).rest};
  }
  [[nodiscard]] std::string_view payload_at(const char* record) const {
    const RecordSizes sizes = sizes_at(record);
    return {record + head_size() + sizes.rest, sizes.payload};
  }

  /// Throws no_memory for what is too large.
  void append(std::string_view rest, std::string_view payload, std::string* records) const;

 private:
  [[nodiscard]] RecordSizes sizes_at(const char* record) const {
    if (of_all_) return *of_all_;
    RecordSizes sizes{};
    std::memcpy(&sizes, record, sizeof sizes);
    return sizes;
  }

  std::optional<RecordSizes> of_all_;
};

}  // namespace kelvo
