// One call of the library for many elements.
#include "storage/element_conversion.h"

#include <algorithm>

namespace kelvo {

ElementConversion::ElementConversion(hid_t from, hid_t to)
    : from_(from),
      to_(to),
      size_before_(H5Tget_size(from)),
      size_after_(H5Tget_size(to)),
      is_needed_(H5Tequal(from, to) <= 0) {}

std::size_t ElementConversion::room() const noexcept { return std::max(size_before_, size_after_); }

bool ElementConversion::run(std::byte* elements, std::size_t count) {
  if (!is_needed_) return true;
  const H5T_class_t kind = H5Tget_class(to_);
  const bool is_nested = kind == H5T_COMPOUND || kind == H5T_ARRAY;
  background_.resize(is_nested ? count * size_after_ : 0);
  return H5Tconvert(from_, to_, count, elements, background_.empty() ? nullptr : background_.data(),
                    H5P_DEFAULT) >= 0;
}

}  // namespace kelvo
