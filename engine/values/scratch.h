// Memory for bytes that somebody is about to write: it is not filled with zeros first, as a
// vector's would be.
#pragma once

#include <cstddef>
#include <memory>

namespace kelvo {

class Scratch {
 public:
  Scratch() = default;
  explicit Scratch(std::size_t size) { reserve(size); }

  [[nodiscard]] std::byte* data() noexcept { return bytes_.get(); }
  [[nodiscard]] const std::byte* data() const noexcept { return bytes_.get(); }

  /// Makes room for that many bytes at least. What was in it is lost where it has to grow.
  void reserve(std::size_t size) {
    if (size <= size_) return;
    size_ = 0;
    bytes_.reset();  // before the new one, so that there are never both
    bytes_ = std::make_unique_for_overwrite<std::byte[]>(size);
    size_ = size;
  }

 private:
  std::unique_ptr<std::byte[]> bytes_;
  std::size_t size_ = 0;
};

}  // namespace kelvo
