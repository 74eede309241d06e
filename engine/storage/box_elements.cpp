// Reads a box at once.
#include "storage/box_elements.h"

#include "storage/hyperslab.h"
#include "storage/traffic.h"
#include "storage/varying_values.h"

namespace kelvo {

BoxElements::BoxElements(const ElementPlace& place, const Selection& box)
    : place_(place), count_(box.elements()) {
  const std::unique_ptr<VaryingValues> varying = VaryingValues::of(place);
  traffic_read().add(count_, place.type.size);
  if (varying == nullptr) {
    is_ours_ = !place.type.has_varying_parts();
    read(place, box, &bytes_);
    return;
  }
  std::vector<std::byte> stored;
  read(varying->stored(), box, &stored);
  bytes_.resize(count() * place.type.size);
  varying->resolve(stored.data(), count(), bytes_.data(), &values_);
}

BoxElements::~BoxElements() {
  if (is_ours_) return;
  const DataspaceHandle space(H5Screate_simple(1, &count_, nullptr));
  H5Dvlen_reclaim(place_.memory_type.get(), space.get(), H5P_DEFAULT, bytes_.data());
}

void BoxElements::read(const ElementPlace& place, const Selection& box,
                       std::vector<std::byte>* bytes) const {
  bytes->resize(count() * place.type.size);
  if (place.attribute) return read_elements(place, H5S_ALL, H5S_ALL, bytes->data());
  const HyperslabSpaces spaces =
      hyperslab_spaces(place, box.start, box.stride, box.count, place.name + " cannot be read");
  read_elements(place, spaces.memory.get(), spaces.file.get(), bytes->data());
}

}  // namespace kelvo
