// The elements of one box of a dataset, or of a whole attribute, in memory: what copying reads,
// changes and writes.
#pragma once

#include <cstddef>
#include <vector>

#include "storage/element_io.h"

namespace kelvo {

class BoxElements {
 public:
  /// Reads the elements; an attribute's whole. `place` must outlive it.
  BoxElements(const ElementPlace& place, const Selection& box);
  BoxElements(const BoxElements&) = delete;
  BoxElements& operator=(const BoxElements&) = delete;
  ~BoxElements();

  [[nodiscard]] std::byte* data() noexcept { return bytes_.data(); }
  [[nodiscard]] std::size_t count() const noexcept { return static_cast<std::size_t>(count_); }

 private:
  void read(const ElementPlace& place, const Selection& box, std::vector<std::byte>* bytes) const;

  const ElementPlace& place_;
  hsize_t count_;
  std::vector<std::byte> bytes_;
  Arena values_;         // of varying parts
  bool is_ours_ = true;  // else the HDF5 library made them, and they are to be given back
};

}  // namespace kelvo
