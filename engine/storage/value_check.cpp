// Reads the values, and leaves them.
#include "storage/value_check.h"

#include <utility>

#include "error.h"
#include "storage/attribute.h"
#include "storage/chunk_cache.h"
#include "storage/describe_datatype.h"
#include "storage/element_io.h"
#include "storage/link.h"
#include "storage/listing.h"
#include "storage/object.h"
#include "storage/varying_values.h"

namespace kelvo {
namespace {

void read_all(const ElementPlace& place) {
  if (VaryingValues::of(place) == nullptr) return;
  ElementReader reader(place, resolve_slice({}, place.space, place.name));
  ElementBlock block;
  while (reader.next(block)) {
  }
}

// `file_type` is the owner's.
template <typename Owner>
void check(Owner owner, const DatatypeHandle& file_type, const std::string& shown) {
  try {
    if (!file_type || !describe_datatype(file_type.get()).has_varying_parts()) return;
    ElementPlace place = place_of(std::move(owner), shown);
    place.threads = 1;
    read_all(place);
  } catch (const StatementError& error) {
    if (error.status() != Status::not_available) throw;
  }
}

bool is_in_its_file(hid_t dataset) {
  const PropertyHandle creation(H5Dget_create_plist(dataset));
  return creation && H5Pget_layout(creation.get()) != H5D_VIRTUAL &&
         H5Pget_external_count(creation.get()) <= 0;
}

void check_dataset(hid_t file, const std::string& path) {
  DatasetHandle dataset = open_for_reading(file, path, ChunkCache());
  if (!is_in_its_file(dataset.get())) return;
  const DatatypeHandle type(H5Dget_type(dataset.get()));
  check(std::move(dataset), type, "Dataset " + quoted(path));
}

// None where they cannot be listed: the library then says why.
std::vector<std::string> names_of_attributes(hid_t object, const std::string& path) {
  try {
    return attribute_names(object, path);
  } catch (const StatementError&) {
    return {};
  }
}

void check_attributes(hid_t file, const std::string& path) {
  const ObjectHandle object = open_object(file, path);
  for (const std::string& name : names_of_attributes(object.get(), path)) {
    AttributeHandle attribute = open_attribute(object.get(), path, name);
    const DatatypeHandle type(H5Aget_type(attribute.get()));
    check(std::move(attribute), type, "Attribute " + quoted(std::string(path) + "@" + name));
  }
}

}  // namespace

void check_values(hid_t file, const std::string& path, const std::vector<FoundObject>& objects) {
  for (const FoundObject& object : objects) {
    const std::string found = object.name.empty() ? path : path_below(path, object.name);
    if (object.type == H5O_TYPE_DATASET) check_dataset(file, found);
    check_attributes(file, found);
  }
}

}  // namespace kelvo
