// A temporary file of the host for what does not fit in memory. It has no name: whatever ends the
// process ends it too.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvo {

class SpillFile {
 public:
  SpillFile() = default;
  SpillFile(const SpillFile&) = delete;
  SpillFile& operator=(const SpillFile&) = delete;
  ~SpillFile();

  /// Appends bytes; the file is made by the first call, in $TMPDIR or else /tmp. Throws
  /// StatementError where the host refuses: no room, as a rule.
  void append(const char* bytes, std::size_t count);

  [[nodiscard]] std::uint64_t size() const noexcept { return size_; }

  /// Reads bytes that were written.
  void read(std::uint64_t offset, char* bytes, std::size_t count) const;

 private:
  int descriptor_ = -1;
  std::uint64_t size_ = 0;
};

}  // namespace kelvo
