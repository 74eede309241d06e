// The shape of a dataset or attribute.
#pragma once

#include <cstddef>
#include <vector>

namespace kelvo {

/// An extent, count or offset in elements: the HDF5 library's own type for them, named here without
/// its header.
using Extent = unsigned long long;

constexpr Extent unlimited = static_cast<Extent>(-1);

struct Space {
  bool is_null = false;         // without any element, by its kind
  std::vector<Extent> extents;  // none for a scalar
  // One for each extent, or none where they are the extents themselves.
  std::vector<Extent> maximum;

  [[nodiscard]] Extent elements() const {
    Extent count = is_null ? 0 : 1;
    for (const Extent extent : extents) count *= extent;
    return count;
  }
  /// Whether an Extent holds the number of elements.
  [[nodiscard]] bool is_countable() const {
    Extent count = 1;
    for (const Extent extent : extents) {
      if (extent != 0 && count > unlimited / extent) return false;
      count *= extent;
    }
    return true;
  }
};

/// Bytes of elements with these extents; `unlimited` where there are more than an Extent holds.
inline Extent bytes_of(const std::vector<Extent>& extents, std::size_t element_size) {
  Extent bytes = element_size;
  for (const Extent extent : extents) {
    if (extent != 0 && bytes > unlimited / extent) return unlimited;
    bytes *= extent;
  }
  return bytes;
}

}  // namespace kelvo
