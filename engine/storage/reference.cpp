// Dereferencing object and region references.
#include "storage/reference.h"

#include <algorithm>
#include <string>
#include <vector>

#include "storage/check.h"

namespace kelvo {
namespace {

std::string cannot_follow() { return "A reference cannot be followed"; }

std::string name_of(hid_t file, H5R_type_t kind, const void* reference) {
  const ssize_t length = H5Rget_name(file, kind, reference, nullptr, 0);
  if (length < 0) fail_hdf5(cannot_follow());
  std::string name(static_cast<std::size_t>(length), '\0');
  H5Rget_name(file, kind, reference, name.data(), name.size() + 1);
  return name;
}

// The box around the selected elements, as a slice: [0:3, 2:5].
std::string bounds(hid_t space) {
  const int rank = H5Sget_simple_extent_ndims(space);
  if (rank <= 0) return "";
  std::vector<hsize_t> first(static_cast<std::size_t>(rank));
  std::vector<hsize_t> last(first.size());
  check_done(H5Sget_select_bounds(space, first.data(), last.data()), cannot_follow);
  std::string text = "[";
  for (std::size_t d = 0; d < first.size(); ++d) {
    if (d > 0) text += ", ";
    text += std::to_string(first[d]) + ":" + std::to_string(last[d] + 1);
  }
  return text + "]";
}

}  // namespace

ReferenceNamer reference_namer(hid_t file) {
  return [file](const Type& type, const std::byte* element) -> std::string {
    const bool is_null = std::all_of(element, element + type.size,
                                     [](std::byte byte) { return byte == std::byte{0}; });
    if (is_null) return "";
    if (type.kind == Kind::object_reference) return name_of(file, H5R_OBJECT, element);
    const DataspaceHandle space(
        check_id(H5Rget_region(file, H5R_DATASET_REGION, element), cannot_follow));
    return name_of(file, H5R_DATASET_REGION, element) + bounds(space.get());
  };
}

}  // namespace kelvo
