// Reads a box at once.
#include "storage/element_batch.h"

#include "storage/check.h"
#include "storage/traffic.h"

namespace kelvo {

ElementBatch::ElementBatch(const ElementPlace& place, const Selection& box)
    : place_(place), count_(box.elements()) {
  const auto what = [&place] { return place.name + " cannot be read"; };
  bytes_.resize(count() * place.type.size);
  traffic_read().add(count_, place.type.size);
  if (place.attribute) {
    read_elements(place, H5S_ALL, H5S_ALL, bytes_.data());
    return;
  }
  const DataspaceHandle file_space(check_id(H5Dget_space(place.dataset.get()), what));
  const DataspaceHandle memory_space(check_id(H5Screate_simple(1, &count_, nullptr), what));
  if (!box.count.empty()) {
    check_done(H5Sselect_hyperslab(file_space.get(), H5S_SELECT_SET, box.start.data(),
                                   box.stride.data(), box.count.data(), nullptr),
               what);
  }
  read_elements(place, memory_space.get(), file_space.get(), bytes_.data());
}

ElementBatch::~ElementBatch() {
  if (!place_.type.has_varying_parts()) return;
  const DataspaceHandle space(H5Screate_simple(1, &count_, nullptr));
  H5Dvlen_reclaim(place_.memory_type.get(), space.get(), H5P_DEFAULT, bytes_.data());
}

}  // namespace kelvo
