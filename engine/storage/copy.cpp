// Copies objects and attributes.
#include "storage/copy.h"

#include <algorithm>
#include <vector>

#include "storage/check.h"
#include "storage/chunk_cache.h"
#include "storage/creation.h"
#include "storage/dense_attributes.h"
#include "storage/element_io.h"
#include "storage/file.h"
#include "storage/host.h"
#include "storage/link.h"
#include "storage/listing.h"
#include "storage/object.h"
#include "storage/reference_copy.h"
#include "storage/sources.h"
#include "storage/value_check.h"

namespace kelvo {
namespace {

std::string cannot_copy(const std::string& path) { return quoted(path) + " cannot be copied"; }

// The type as a new object of the other file can have it: a committed one belongs to its file.
DatatypeHandle transient(hid_t type, const std::string& path) {
  return DatatypeHandle(check_id(H5Tcopy(type), [&path] { return cannot_copy(path); }));
}

// Values of a type without references are copied as the file holds them, so that nothing is lost
// that memory types cannot hold.
void keep_file_type(ElementPlace* place, const std::string& path) {
  if (has_references(place->type)) return;
  place->memory_type = transient(place->file_type.get(), path);
  place->type.size = H5Tget_size(place->memory_type.get());
  place->unreadable.clear();
}

// --- how a dataset is stored ---

Filter stored_filter(hid_t list, unsigned index) {
  Filter filter;
  unsigned flags = 0;
  unsigned config = 0;
  std::size_t count = 0;
  const auto what = [] { return std::string("The storage of a dataset cannot be read"); };
  filter.id = static_cast<unsigned>(
      H5Pget_filter2(list, index, &flags, &count, nullptr, 0, nullptr, &config));
  filter.values.resize(count);
  check_done(H5Pget_filter2(list, index, &flags, &count, filter.values.data(), 0, nullptr, &config),
             what);
  filter.required = (flags & H5Z_FLAG_OPTIONAL) == 0;
  return filter;
}

std::optional<Allocation> stored_allocation(hid_t list) {
  H5D_alloc_time_t time = H5D_ALLOC_TIME_DEFAULT;
  if (H5Pget_alloc_time(list, &time) < 0) return std::nullopt;
  switch (time) {
    case H5D_ALLOC_TIME_EARLY:
      return Allocation::early;
    case H5D_ALLOC_TIME_LATE:
      return Allocation::late;
    case H5D_ALLOC_TIME_INCR:
      return Allocation::incremental;
    default:
      return std::nullopt;
  }
}

StorageOptions stored_options(hid_t dataset, hid_t list) {
  StorageOptions options;
  unsigned order = 0;
  switch (H5Pget_layout(list)) {
    case H5D_CHUNKED:
      options.layout = Layout::chunked;
      break;
    case H5D_COMPACT:
      options.layout = Layout::compact;
      break;
    default:  // external and virtual data come into the file
      options.layout = Layout::contiguous;
  }
  options.chunk = chunk_of(dataset);
  const int filters = H5Pget_nfilters(list);
  for (int i = 0; i < filters; ++i)
    options.filters.push_back(stored_filter(list, static_cast<unsigned>(i)));
  options.allocation = stored_allocation(list);
  if (H5Pget_attr_creation_order(list, &order) >= 0) options.track_order = order != 0;
  return options;
}

// What was said goes before what is stored.
StorageOptions merged(StorageOptions stored, const StorageOptions& said) {
  const bool new_layout = said.layout || (!said.filters.empty() && stored.chunk.empty());
  if (new_layout) {
    stored.layout = said.layout;
    stored.chunk = said.chunk;
    stored.allocation.reset();
    if (said.layout == Layout::contiguous || said.layout == Layout::compact) stored.filters.clear();
  }
  if (!said.filters.empty()) stored.filters = said.filters;
  if (said.allocation) stored.allocation = said.allocation;
  stored.fill = said.fill;
  stored.track_order = stored.track_order || said.track_order;
  return stored;
}

void copy_fill(hid_t from_list, hid_t to_list, hid_t type, const std::string& path) {
  const auto what = [&path] { return cannot_copy(path); };
  H5D_fill_value_t defined = H5D_FILL_VALUE_DEFAULT;
  H5D_fill_time_t time = H5D_FILL_TIME_IFSET;
  check_done(H5Pget_fill_time(from_list, &time), what);
  check_done(H5Pset_fill_time(to_list, time), what);
  check_done(H5Pfill_value_defined(from_list, &defined), what);
  if (defined == H5D_FILL_VALUE_UNDEFINED)
    return check_done(H5Pset_fill_value(to_list, type, nullptr), what);
  if (defined != H5D_FILL_VALUE_USER_DEFINED) return;
  std::vector<std::byte> value(H5Tget_size(type));
  check_done(H5Pget_fill_value(from_list, type, value.data()), what);
  check_done(H5Pset_fill_value(to_list, type, value.data()), what);
  const DataspaceHandle one(check_id(H5Screate(H5S_SCALAR), what));
  H5Dvlen_reclaim(type, one.get(), H5P_DEFAULT, value.data());
}

// --- values and attributes ---

void copy_values(const ElementPlace& from, const ElementPlace& to, const ReferenceMap& references) {
  H5D_space_status_t status = H5D_SPACE_STATUS_ALLOCATED;
  const bool known = H5Dget_space_status(from.dataset.get(), &status) >= 0;
  const bool written = !known || status != H5D_SPACE_STATUS_NOT_ALLOCATED;
  // Virtual and external data have no space of their own in the file.
  const PropertyHandle list(H5Dget_create_plist(from.dataset.get()));
  const bool elsewhere =
      H5Pget_layout(list.get()) == H5D_VIRTUAL || H5Pget_external_count(list.get()) > 0;
  if (!written && !elsewhere) return;
  copy_elements(from, to, references);
}

ElementPlace open_dataset(const ObjectPlace& place) {
  return place_of(open_for_reading(place.file, place.path, ChunkCache()),
                  "Dataset " + quoted(place.path));
}

}  // namespace

namespace {

// Bytes that the values of the objects take in their file, at least.
std::uintmax_t stored_bytes(const ObjectPlace& from, const std::vector<FoundObject>& objects) {
  std::uintmax_t bytes = 0;
  for (const FoundObject& object : objects) {
    if (object.type != H5O_TYPE_DATASET) continue;
    const std::string path = object.name.empty() ? from.path : path_below(from.path, object.name);
    const DatasetHandle dataset(H5Dopen2(from.file, path.c_str(), dataset_access().get()));
    if (dataset) bytes += H5Dget_storage_size(dataset.get());
  }
  return bytes;
}

// Where data types are copied too, they are those of the copied datasets: the HDF5 library would
// make one of all that are equal.
bool has_data_types(const std::vector<FoundObject>& objects) {
  return std::any_of(objects.begin(), objects.end(), [](const FoundObject& object) {
    return object.type == H5O_TYPE_NAMED_DATATYPE;
  });
}

PropertyHandle copy_options(const std::vector<FoundObject>& objects, bool without_attributes) {
  const auto what = [] { return std::string("Copying cannot be set up"); };
  PropertyHandle options(check_id(H5Pcreate(H5P_OBJECT_COPY), what));
  unsigned flags = 0;
  if (!has_data_types(objects)) flags |= H5O_COPY_MERGE_COMMITTED_DTYPE_FLAG;
  if (without_attributes) flags |= H5O_COPY_WITHOUT_ATTR_FLAG;
  check_done(H5Pset_copy_object(options.get(), flags), what);
  return options;
}

void copy_all_attributes(const ObjectPlace& from, const ObjectPlace& to,
                         const std::vector<FoundObject>& objects) {
  ReferenceMap references(from.file, to.file);
  references.add(objects, to.path);
  for (const FoundObject& object : objects) {
    if (!object.has_attributes) continue;
    copy_attributes({from.file, joined(from.path, object.name)},
                    {to.file, joined(to.path, object.name)}, references);
  }
}

}  // namespace

void copy_object(const ObjectPlace& from, const ObjectPlace& to) {
  const auto what = [&from] { return cannot_copy(from.path); };
  // Found before the copy, which may be put into the group that is copied.
  const std::vector<FoundObject> objects = objects_below(from.file, from.path);
  const bool apart = has_dense_varying_attributes(from.file, from.path, objects);
  const PropertyHandle options = copy_options(objects, apart);
  check_values(from.file, from.path, objects);
  // H5Ocopy itself may end the process when it cannot write.
  expect_room(file_name(to.file), stored_bytes(from, objects));
  check_done(H5Ocopy(from.file, from.path.c_str(), to.file, to.path.c_str(), options.get(),
                     making_parents().get()),
             what);
  if (apart) copy_all_attributes(from, to, objects);
  copy_references(from.file, from.path, to.file, to.path, objects);
}

namespace {

// The dataset without its attributes. It is closed again when this returns: it cannot be open twice
// with different access lists, and whoever copies its attributes opens it once more.
void store_values_anew(const ObjectPlace& from, const ObjectPlace& to,
                       const StorageOptions& options, const ReferenceMap& references) {
  const auto what = [&from] { return cannot_copy(from.path); };
  ElementPlace source = open_dataset(from);
  const PropertyHandle stored(check_id(H5Dget_create_plist(source.dataset.get()), what));
  const StorageOptions wanted = merged(stored_options(source.dataset.get(), stored.get()), options);
  const PropertyHandle storage = storage_list(to.path, source.type, source.space, wanted);
  const DatatypeHandle type = transient(source.file_type.get(), from.path);
  if (!options.fill) copy_fill(stored.get(), storage.get(), type.get(), from.path);
  const hid_t new_type = references.is_needed() ? type.get() : source.file_type.get();
  ElementPlace copy =
      place_of(create_dataset(to.file, to.path, new_type, source.space, storage.get()),
               "Dataset " + quoted(to.path));
  keep_file_type(&source, from.path);
  keep_file_type(&copy, to.path);
  copy_values(source, copy, references);
}

}  // namespace

void store_anew(const ObjectPlace& from, const ObjectPlace& to, const StorageOptions& options) {
  ReferenceMap references(from.file, to.file);
  if (references.is_needed()) references.add(objects_below(from.file, from.path), to.path);
  store_values_anew(from, to, options, references);
  copy_attributes(from, to, references);
}

void copy_attribute(const AttributePlace& from, const AttributePlace& to,
                    const ReferenceMap& references) {
  const auto what = [&from] { return "Attribute " + cannot_copy(from.shown); };
  AttributeHandle opened(check_id(H5Aopen(from.object, from.name.c_str(), H5P_DEFAULT), what));
  const DataspaceHandle space(check_id(H5Aget_space(opened.get()), what));
  const PropertyHandle list(check_id(H5Aget_create_plist(opened.get()), what));
  ElementPlace source = place_of(std::move(opened), "Attribute " + quoted(from.shown));
  const DatatypeHandle type = references.translate_type(source.file_type.get());
  ElementPlace copy =
      place_of(AttributeHandle(check_id(
                   H5Acreate2(to.object, to.name.c_str(),
                              references.is_needed() ? type.get() : source.file_type.get(),
                              space.get(), list.get(), H5P_DEFAULT),
                   [&to] { return "Attribute " + quoted(to.shown) + " cannot be created"; })),
               "Attribute " + quoted(to.shown));
  keep_file_type(&source, from.shown);
  keep_file_type(&copy, to.shown);
  copy_elements(source, copy, references);
}

void copy_attributes(const ObjectPlace& from, const ObjectPlace& to,
                     const ReferenceMap& references) {
  const ObjectHandle from_object = open_object(from.file, from.path);
  const ObjectHandle to_object = open_object(to.file, to.path);
  for (const std::string& name : attribute_names(from_object.get(), from.path, true)) {
    copy_attribute({from_object.get(), name, from.path + "@" + name},
                   {to_object.get(), name, to.path + "@" + name}, references);
  }
}

}  // namespace kelvo
