// Where the rows of a result come from, a block at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "answers/block.h"

namespace kelvo {

class RowSource {
 public:
  RowSource() = default;
  RowSource(const RowSource&) = delete;
  RowSource& operator=(const RowSource&) = delete;
  virtual ~RowSource() = default;

  /// Replaces the block's content by the next rows; false when there are none left. Throws
  /// StatementError when reading fails; it is not called again then.
  virtual bool next(Block& block) = 0;

  /// Reads what the first rows are made of, up to that many bytes, and comes back to the beginning,
  /// so that failures come before the first row is given: for a source that costs less to read
  /// twice than to keep. Gives the number of elements seen, or nothing where the source is no such
  /// one; nothing has been read then. Throws as next does.
  virtual std::optional<std::uint64_t> look_through(std::size_t /*most_bytes*/) {
    return std::nullopt;
  }
};

/// A short answer made of rows that are ready: what SHOW gives.
class ReadyRows : public RowSource {
 public:
  void add_text(std::string_view text);
  void add_int(std::int32_t value);
  void add_unsigned_int(std::uint32_t value);
  void add_bigint(std::int64_t value);
  void add_double(double value);

  bool next(Block& block) override;

 private:
  Block& block_for(std::int32_t code, RowShape shape, std::size_t size);
  void add_value(std::int32_t code, const void* value, std::size_t size);

  std::vector<Block> blocks_;  // a new one wherever the type changes
  std::size_t given_ = 0;
};

}  // namespace kelvo
