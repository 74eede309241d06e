// What the file says of the layout and of the type.
#include "storage/plain_data.h"

#include "storage/driver.h"

namespace kelvo {
namespace {

bool in_one_piece(const ElementPlace& place) {
  if (!place.dataset || !place.sources.empty()) return false;
  const PropertyHandle creation(H5Dget_create_plist(place.dataset.get()));
  if (!creation || H5Pget_external_count(creation.get()) != 0) return false;
  const H5D_layout_t layout = H5Pget_layout(creation.get());
  return layout == H5D_CONTIGUOUS || layout == H5D_COMPACT;
}

bool in_host_file(const ElementPlace& place) {
  const FileHandle file(H5Iget_file_id(place.dataset.get()));
  const PropertyHandle access(file ? H5Fget_access_plist(file.get()) : H5I_INVALID_HID);
  return access && uses_driver(access.get());
}

bool as_in_memory(const ElementPlace& place) {
  return !place.type.has_varying_parts() &&
         H5Tdetect_class(place.file_type.get(), H5T_REFERENCE) == 0 &&
         H5Tequal(place.file_type.get(), place.memory_type.get()) > 0;
}

}  // namespace

bool lies_plain(const ElementPlace& place) {
  return in_one_piece(place) && in_host_file(place) && as_in_memory(place);
}

}  // namespace kelvo
