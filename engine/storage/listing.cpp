// Walking the links of groups and the attributes of objects.
#include "storage/listing.h"

#include "storage/check.h"

namespace kelvo {
namespace {

herr_t add_link_name(hid_t /*group*/, const char* name, const H5L_info_t* /*info*/, void* names) {
  static_cast<std::vector<std::string>*>(names)->emplace_back(name);
  return 0;
}

herr_t add_attribute_name(hid_t /*object*/, const char* name, const H5A_info_t* /*info*/,
                          void* names) {
  static_cast<std::vector<std::string>*>(names)->emplace_back(name);
  return 0;
}

}  // namespace

std::vector<std::string> member_names(hid_t file, const std::string& group, ObjectKind kind) {
  const GroupHandle opened = open_group(file, group);
  std::vector<std::string> names;
  check_done(H5Literate(opened.get(), H5_INDEX_NAME, H5_ITER_INC, nullptr, add_link_name, &names),
             [&group] { return "Group " + quoted(group) + " cannot be read"; });
  std::erase_if(names, [&](const std::string& name) {
    return kind_at(file, (group == "/" ? "/" : group + "/") + name) != kind;
  });
  return names;
}

std::vector<std::string> attribute_names(hid_t object, const std::string& path) {
  std::vector<std::string> names;
  check_done(H5Aiterate2(object, H5_INDEX_NAME, H5_ITER_INC, nullptr, add_attribute_name, &names),
             [&path] { return "Attributes of " + quoted(path) + " cannot be read"; });
  return names;
}

}  // namespace kelvo
