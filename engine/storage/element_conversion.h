// Elements from the file's layout to that in memory, where they are not read by the HDF5 library.
#pragma once

#include <cstddef>
#include <vector>

#include "storage/handle.h"

namespace kelvo {

class ElementConversion {
 public:
  /// Both types must stay open.
  ElementConversion(hid_t from, hid_t to);

  /// Whether the bytes differ at all.
  [[nodiscard]] bool is_needed() const noexcept { return is_needed_; }
  /// Bytes of an element before, after, and as many as each must have room for.
  [[nodiscard]] std::size_t size_before() const noexcept { return size_before_; }
  [[nodiscard]] std::size_t size_after() const noexcept { return size_after_; }
  [[nodiscard]] std::size_t room() const noexcept;

  /// Converts elements that lie side by side, before and after. False where the library fails.
  bool run(std::byte* elements, std::size_t count);

 private:
  hid_t from_;
  hid_t to_;
  std::size_t size_before_;
  std::size_t size_after_;
  bool is_needed_;
  std::vector<std::byte> background_;  // the library's work space
};

}  // namespace kelvo
