// Paths and objects.
#include "storage/object.h"

#include <algorithm>
#include <iterator>

#include "storage/check.h"

namespace kelvo {
namespace {

std::vector<std::string> names_of(const std::string& path) {
  std::vector<std::string> names;
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    if (end > begin) names.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  return names;
}

std::string cannot_read(const std::string& path) {
  return "Object " + quoted(path) + " cannot be read";
}

// Whether every link on the way is there and leads to an object; the HDF5 library asks for this,
// step by step.
bool way_exists(hid_t file, const std::string& path) {
  const auto what = [&path] { return cannot_read(path); };
  std::string way;
  const std::vector<std::string> names = names_of(path);
  for (const std::string& name : names) {
    if (!way.empty() && H5Oexists_by_name(file, way.c_str(), H5P_DEFAULT) <= 0) return false;
    way += "/" + name;
    // A dataset on the way makes the question itself fail: what is below it does not exist.
    const htri_t there = H5Lexists(file, way.c_str(), H5P_DEFAULT);
    if (there < 0 && kind_at(file, split_path(way).parent) != ObjectKind::group) return false;
    if (!check_answer(there, what)) return false;
  }
  return true;
}

[[noreturn]] void fail_missing(ObjectKind wanted, ObjectKind found, const std::string& path) {
  static constexpr std::string_view names[] = {"Object", "Group", "Dataset", "Data type", "Link"};
  const std::string name(names[static_cast<std::size_t>(wanted)]);
  if (found == ObjectKind::none) {
    throw StatementError(Status::does_not_exist, name + " " + quoted(path) + " does not exist");
  }
  if (found == ObjectKind::dangling_link) {
    throw StatementError(Status::does_not_exist,
                         quoted(path) + " is a link to an object that does not exist");
  }
  throw StatementError(Status::wrong_kind, quoted(path) + " is " + with_article(found) + ", not " +
                                               with_article(wanted));
}

// Throws what kept a link from being followed, where that is more than that its object is missing.
void explain_dangling(hid_t file, const std::string& path) {
  H5O_info_t info;
  if (H5Oget_info_by_name2(file, path.c_str(), &info, H5O_INFO_BASIC, H5P_DEFAULT) < 0)
    throw_left_error();
}

bool leads_nowhere(ObjectKind kind) {
  return kind == ObjectKind::none || kind == ObjectKind::dangling_link;
}

void expect_kind(hid_t file, const std::string& path, ObjectKind wanted) {
  const ObjectKind found = kind_at(file, path);
  if (leads_nowhere(found)) explain_dangling(file, path);
  if (found != wanted) fail_missing(wanted, found, path);
}

}  // namespace

std::string with_article(ObjectKind kind) {
  switch (kind) {
    case ObjectKind::group:
      return "a group";
    case ObjectKind::dataset:
      return "a dataset";
    case ObjectKind::data_type:
      return "a data type";
    case ObjectKind::dangling_link:
      return "a link";
    case ObjectKind::none:
      break;
  }
  return "an object";
}

std::string absolute_path(const std::string& from, const std::string& path) {
  std::vector<std::string> names;
  const std::string whole = path.starts_with('/') ? path : from + "/" + path;
  for (const std::string& name : names_of(whole)) {
    if (name == "..") {
      if (!names.empty()) names.pop_back();
    } else if (name != ".") {
      names.push_back(name);
    }
  }
  std::string result;
  for (const std::string& name : names) result += "/" + name;
  return result.empty() ? "/" : result;
}

SplitPath split_path(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {"/", path};
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

ObjectKind kind_at(hid_t file, const std::string& path) {
  if (path == "/") return ObjectKind::group;
  if (!way_exists(file, path)) return ObjectKind::none;
  const htri_t leads = H5Oexists_by_name(file, path.c_str(), H5P_DEFAULT);
  if (leads <= 0) return ObjectKind::dangling_link;
  H5O_info_t info;
  check_done(H5Oget_info_by_name2(file, path.c_str(), &info, H5O_INFO_BASIC, H5P_DEFAULT),
             [&path] { return cannot_read(path); });
  switch (info.type) {
    case H5O_TYPE_GROUP:
      return ObjectKind::group;
    case H5O_TYPE_DATASET:
      return ObjectKind::dataset;
    case H5O_TYPE_NAMED_DATATYPE:
      return ObjectKind::data_type;
    default:
      throw StatementError(
          Status::wrong_kind,
          "Object " + quoted(path) + " is of a kind that this HDF5 library does not know");
  }
}

GroupHandle open_group(hid_t file, const std::string& path) {
  expect_kind(file, path, ObjectKind::group);
  return GroupHandle(check_id(H5Gopen2(file, path.c_str(), H5P_DEFAULT),
                              [&path] { return "Group " + quoted(path) + " cannot be opened"; }));
}

void expect_dataset(hid_t file, const std::string& path) {
  expect_kind(file, path, ObjectKind::dataset);
}

void create_group(hid_t file, const std::string& path, bool tracked) {
  const auto what = [&path] { return "Group " + quoted(path) + " cannot be created"; };
  const PropertyHandle creation(check_id(H5Pcreate(H5P_GROUP_CREATE), what));
  if (tracked) {
    const unsigned order = H5P_CRT_ORDER_TRACKED | H5P_CRT_ORDER_INDEXED;
    check_done(H5Pset_link_creation_order(creation.get(), order), what);
    check_done(H5Pset_attr_creation_order(creation.get(), order), what);
  }
  const PropertyHandle links = making_parents();
  const GroupHandle made(
      check_id(H5Gcreate2(file, path.c_str(), links.get(), creation.get(), H5P_DEFAULT), what));
}

ObjectHandle open_object(hid_t file, const std::string& path) {
  const ObjectKind found = kind_at(file, path);
  if (leads_nowhere(found)) {
    explain_dangling(file, path);
    fail_missing(ObjectKind::none, found, path);
  }
  return ObjectHandle(check_id(H5Oopen(file, path.c_str(), H5P_DEFAULT),
                               [&path] { return "Object " + quoted(path) + " cannot be opened"; }));
}

std::string object_path(hid_t object) {
  const ssize_t length = H5Iget_name(object, nullptr, 0);
  std::string path(static_cast<std::size_t>(std::max<ssize_t>(0, length)), '\0');
  H5Iget_name(object, path.data(), path.size() + 1);
  return path;
}

PropertyHandle making_parents() {
  const auto what = [] { return std::string("Links cannot be made"); };
  PropertyHandle list(check_id(H5Pcreate(H5P_LINK_CREATE), what));
  check_done(H5Pset_create_intermediate_group(list.get(), 1), what);
  check_done(H5Pset_char_encoding(list.get(), H5T_CSET_UTF8), what);
  return list;
}

static_assert(std::is_same_v<Extent, hsize_t> && unlimited == H5S_UNLIMITED);

Space describe_space(hid_t dataspace) {
  const auto what = [] { return std::string("The dataspace cannot be read"); };
  Space space;
  space.is_null = H5Sget_simple_extent_type(dataspace) == H5S_NULL;
  const int rank = H5Sget_simple_extent_ndims(dataspace);
  check_done(rank, what);
  space.extents.resize(static_cast<std::size_t>(rank));
  space.maximum.resize(static_cast<std::size_t>(rank));
  check_done(H5Sget_simple_extent_dims(dataspace, space.extents.data(), space.maximum.data()),
             what);
  return space;
}

DataspaceHandle make_space(const Space& space) {
  const auto what = [] { return std::string("The dataspace cannot be made"); };
  if (space.is_null) return DataspaceHandle(check_id(H5Screate(H5S_NULL), what));
  if (space.extents.empty()) return DataspaceHandle(check_id(H5Screate(H5S_SCALAR), what));
  const hsize_t* maximum = space.maximum.empty() ? nullptr : space.maximum.data();
  return DataspaceHandle(check_id(
      H5Screate_simple(static_cast<int>(space.extents.size()), space.extents.data(), maximum),
      what));
}

}  // namespace kelvo
