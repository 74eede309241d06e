// Finding such attributes, by what could be true of them: how they are stored cannot be asked for.
#include "storage/dense_attributes.h"

#include <algorithm>

#include "storage/attribute.h"
#include "storage/check.h"
#include "storage/describe_datatype.h"
#include "storage/listing.h"
#include "storage/object.h"

namespace kelvo {
namespace {

std::string cannot_read() { return "Attributes cannot be read"; }

PropertyHandle creation_of(hid_t object) {
  switch (H5Iget_type(object)) {
    case H5I_GROUP:
      return PropertyHandle(check_id(H5Gget_create_plist(object), cannot_read));
    case H5I_DATASET:
      return PropertyHandle(check_id(H5Dget_create_plist(object), cannot_read));
    default:
      return PropertyHandle(check_id(H5Tget_create_plist(object), cannot_read));
  }
}

// Fewer than the least number for an index never have one.
bool may_be_dense(hid_t object) {
  H5O_info_t info;
  check_done(H5Oget_info2(object, &info, H5O_INFO_NUM_ATTRS), cannot_read);
  unsigned most_compact = 0;
  unsigned least_dense = 0;
  check_done(H5Pget_attr_phase_change(creation_of(object).get(), &most_compact, &least_dense),
             cannot_read);
  return info.num_attrs >= least_dense;
}

bool is_varying(hid_t object, const std::string& path, const std::string& name) {
  const AttributeHandle attribute = open_attribute(object, path, name);
  const DatatypeHandle type(check_id(H5Aget_type(attribute.get()), cannot_read));
  return describe_datatype(type.get()).has_varying_parts();
}

bool has_them(hid_t object, const std::string& path) {
  if (!may_be_dense(object)) return false;
  const std::vector<std::string> names = attribute_names(object, path);
  return std::any_of(names.begin(), names.end(), [object, &path](const std::string& name) {
    return is_varying(object, path, name);
  });
}

}  // namespace

bool has_dense_varying_attributes(hid_t file, const std::string& path,
                                  const std::vector<FoundObject>& objects) {
  return std::any_of(objects.begin(), objects.end(), [file, &path](const FoundObject& object) {
    if (!object.has_attributes) return false;
    const std::string place = joined(path, object.name);
    return has_them(open_object(file, place).get(), place);
  });
}

}  // namespace kelvo
