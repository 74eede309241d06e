// Bytes put aside and read back in the same order: in memory as far as the budget goes, beyond it
// in a temporary file that bears no name.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <vector>

#include "values/flatten.h"

namespace kelvo {

class Spool : public FlatInput {
 public:
  explicit Spool(std::size_t memory_budget) : budget_(memory_budget) {}

  /// Throws host_refused where the temporary file cannot be written.
  void add(const std::byte* bytes, std::size_t size);

  /// Ends the adding; reading begins at the first byte.
  void rewind();

  void read(std::byte* bytes, std::size_t size) override;

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
  };

  std::size_t budget_;
  std::vector<std::byte> memory_;
  std::size_t next_ = 0;
  std::unique_ptr<std::FILE, CloseFile> file_;  // what came after memory_ was full
};

}  // namespace kelvo
