// Bytes put aside and read again: in memory as far as a budget goes, beyond it in a temporary file
// of the host. That file bears no name: whatever ends the process ends it too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "values/flatten.h"

namespace kelvo {

class Spool {
 public:
  /// With a budget of 0 bytes, all goes into the file.
  explicit Spool(std::size_t memory_budget) : budget_(memory_budget) {}
  Spool(const Spool&) = delete;
  Spool& operator=(const Spool&) = delete;
  ~Spool();

  /// Each call beyond the budget is a write to the file, so callers gather bytes into blocks. The
  /// file is made by the first of them, in $TMPDIR or else /tmp. Throws host_refused where it
  /// cannot be made or written: no room, as a rule.
  void append(const void* bytes, std::size_t count);

  [[nodiscard]] std::uint64_t size() const noexcept { return memory_.size() + file_size_; }

  /// Reads bytes that were appended, from any place among them.
  void read(std::uint64_t offset, void* bytes, std::size_t count) const;

 private:
  [[nodiscard]] bool fits_memory(std::size_t count) const noexcept;
  void append_to_memory(const std::byte* bytes, std::size_t count);
  void append_to_file(const std::byte* bytes, std::size_t count);
  void read_file(std::uint64_t offset, std::byte* bytes, std::size_t count) const;

  std::size_t budget_;
  std::vector<std::byte> memory_;
  int descriptor_ = -1;  // of the file, which begins where memory_ ends
  std::uint64_t file_size_ = 0;
};

/// Reads a spool from its first byte on, a window at a time. The spool must outlive it.
class SpoolReader : public FlatInput {
 public:
  explicit SpoolReader(const Spool& spool) : spool_(spool) {}

  void read(std::byte* bytes, std::size_t count) override;

 private:
  void fill_window();

  const Spool& spool_;
  std::uint64_t next_ = 0;  // byte of the spool behind the window
  std::vector<std::byte> window_;
  std::size_t used_ = 0;  // bytes of the window that have been read
};

}  // namespace kelvo
