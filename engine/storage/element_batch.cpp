// Reads a box at once.
#include "storage/element_batch.h"

#include "storage/hyperslab.h"
#include "storage/traffic.h"

namespace kelvo {

ElementBatch::ElementBatch(const ElementPlace& place, const Selection& box)
    : place_(place), count_(box.elements()) {
  bytes_.resize(count() * place.type.size);
  traffic_read().add(count_, place.type.size);
  if (place.attribute) {
    read_elements(place, H5S_ALL, H5S_ALL, bytes_.data());
    return;
  }
  const HyperslabSpaces spaces =
      hyperslab_spaces(place, box.start, box.stride, box.count, place.name + " cannot be read");
  read_elements(place, spaces.memory.get(), spaces.file.get(), bytes_.data());
}

ElementBatch::~ElementBatch() {
  if (!place_.type.has_varying_parts()) return;
  const DataspaceHandle space(H5Screate_simple(1, &count_, nullptr));
  H5Dvlen_reclaim(place_.memory_type.get(), space.get(), H5P_DEFAULT, bytes_.data());
}

}  // namespace kelvo
