// Datasets and attributes made new.
#include "storage/creation.h"

#include <algorithm>

#include "storage/check.h"
#include "storage/datatype.h"
#include "storage/object.h"

namespace kelvo {
namespace {

constexpr std::size_t chunk_bytes = std::size_t{256} * 1024;

bool can_grow(const Space& space) { return space.maximum != space.extents; }

PropertyHandle creation_list(const Type& type, const Space& space) {
  const auto what = [] { return std::string("The storage of a dataset cannot be set"); };
  PropertyHandle list(check_id(H5Pcreate(H5P_DATASET_CREATE), what));
  if (can_grow(space)) {
    const std::vector<Extent> chunk = choose_chunk(space, type.file_size);
    check_done(H5Pset_chunk(list.get(), static_cast<int>(chunk.size()), chunk.data()), what);
  }
  return list;
}

}  // namespace

std::vector<Extent> choose_chunk(const Space& space, std::size_t element_size) {
  std::vector<Extent> chunk(space.extents.size(), 1);
  Extent left = std::max<Extent>(1, chunk_bytes / std::max<std::size_t>(1, element_size));
  for (std::size_t d = chunk.size(); d-- > 0 && left > 1;) {
    // An extent that can grow without limit is taken for as long as it takes; a fixed one is never
    // exceeded.
    const Extent most =
        space.maximum[d] == unlimited ? left : std::max<Extent>(1, space.maximum[d]);
    chunk[d] = std::min(left, most);
    left /= chunk[d];
  }
  return chunk;
}

DatasetHandle create_dataset(hid_t file, const std::string& path, const Type& type,
                             const Space& space) {
  const auto what = [&path] { return "Dataset " + quoted(path) + " cannot be created"; };
  const DatatypeHandle file_type = file_datatype(type);
  const DataspaceHandle dataspace = make_space(space);
  const PropertyHandle creation = creation_list(type, space);
  const PropertyHandle links = making_parents();
  return DatasetHandle(check_id(H5Dcreate2(file, path.c_str(), file_type.get(), dataspace.get(),
                                           links.get(), creation.get(), H5P_DEFAULT),
                                what));
}

AttributeHandle create_attribute(hid_t object, const std::string& name, const std::string& shown,
                                 const Type& type, const Space& space) {
  const auto what = [&shown] { return "Attribute " + quoted(shown) + " cannot be created"; };
  const PropertyHandle list(check_id(H5Pcreate(H5P_ATTRIBUTE_CREATE), what));
  check_done(H5Pset_char_encoding(list.get(), H5T_CSET_UTF8), what);
  const DatatypeHandle file_type = file_datatype(type);
  const DataspaceHandle dataspace = make_space(space);
  return AttributeHandle(check_id(
      H5Acreate2(object, name.c_str(), file_type.get(), dataspace.get(), list.get(), H5P_DEFAULT),
      what));
}

}  // namespace kelvo
