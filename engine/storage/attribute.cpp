// Each attribute opened, made, renamed or removed by itself.
#include "storage/attribute.h"

#include "storage/check.h"
#include "storage/datatype.h"
#include "storage/object.h"

namespace kelvo {
namespace {

// Of values for certain, beside name and type: what an object's header takes.
constexpr Extent most_header_bytes = 60000;

}  // namespace

bool has_attribute(hid_t object, const std::string& name) {
  return check_answer(H5Aexists(object, name.c_str()),
                      [&name] { return "Attribute " + quoted(name) + " cannot be read"; });
}

AttributeHandle open_attribute(hid_t object, const std::string& path, const std::string& name) {
  const std::string shown = path + "@" + name;
  if (!has_attribute(object, name)) {
    throw StatementError(Status::does_not_exist, "Attribute " + quoted(shown) + " does not exist");
  }
  return AttributeHandle(check_id(H5Aopen(object, name.c_str(), H5P_DEFAULT), [&shown] {
    return "Attribute " + quoted(shown) + " cannot be opened";
  }));
}

std::optional<AttributeHandle> find_attribute(hid_t group, const std::string& object,
                                              const std::string& name) {
  const auto what = [&] { return "Attribute " + quoted(object + "@" + name) + " cannot be read"; };
  // A link that leads nowhere has no attributes either.
  if (H5Oexists_by_name(group, object.c_str(), H5P_DEFAULT) <= 0) return std::nullopt;
  if (!check_answer(H5Aexists_by_name(group, object.c_str(), name.c_str(), H5P_DEFAULT), what))
    return std::nullopt;
  return AttributeHandle(check_id(
      H5Aopen_by_name(group, object.c_str(), name.c_str(), H5P_DEFAULT, H5P_DEFAULT), what));
}

AttributeHandle create_attribute(hid_t object, const std::string& name, const std::string& shown,
                                 const Type& type, const Space& space) {
  const auto what = [&shown] { return "Attribute " + quoted(shown) + " cannot be created"; };
  const PropertyHandle list(check_id(H5Pcreate(H5P_ATTRIBUTE_CREATE), what));
  check_done(H5Pset_char_encoding(list.get(), H5T_CSET_UTF8), what);
  const DatatypeHandle file_type = file_datatype(type);
  const DataspaceHandle dataspace = make_space(space);
  AttributeHandle attribute(
      H5Acreate2(object, name.c_str(), file_type.get(), dataspace.get(), list.get(), H5P_DEFAULT));
  const Extent bytes = bytes_of(space.extents, type.file_size);
  if (!attribute && bytes > most_header_bytes) {
    throw StatementError(Status::out_of_range,
                         "Attribute " + quoted(shown) + " has " + std::to_string(bytes) +
                             " bytes, more than its object takes (64 KiB; an object made "
                             "after SET LIBRARY BOUNDS V18 LATEST takes more)");
  }
  check_id(attribute.get(), what);
  return attribute;
}

void expect_free_attribute(hid_t object, const std::string& name, const std::string& shown) {
  if (has_attribute(object, name)) {
    throw StatementError(Status::exists_already, "Attribute " + quoted(shown) + " already exists");
  }
}

void rename_attribute(hid_t object, const std::string& from, const std::string& to,
                      const std::string& shown) {
  check_done(H5Arename(object, from.c_str(), to.c_str()),
             [&shown] { return "Attribute " + quoted(shown) + " cannot be renamed"; });
}

void remove_attribute(hid_t object, const std::string& name, const std::string& shown) {
  check_done(H5Adelete(object, name.c_str()),
             [&shown] { return "Attribute " + quoted(shown) + " cannot be dropped"; });
}

}  // namespace kelvo
