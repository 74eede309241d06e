// The root group is copied as one object, so that objects with several names stay one, and then its
// members are moved up into the new root.
#include "storage/repack.h"

#include <vector>

#include "storage/check.h"
#include "storage/copy.h"
#include "storage/driver.h"
#include "storage/entries.h"
#include "storage/file_causes.h"
#include "storage/free_space.h"
#include "storage/host.h"
#include "storage/link.h"
#include "storage/object.h"
#include "storage/reference_copy.h"

namespace kelvo {
namespace {

// A name that no member of a root group is likely to have.
const char* const moving_group = "/\x01kelvo";

std::string cannot_repack() { return "The file cannot be copied"; }

FileHandle create_unfinished(const std::string& path, hid_t creation, const FileOptions& options) {
  const PropertyHandle access(check_id(H5Pcreate(H5P_FILE_ACCESS), cannot_repack));
  check_done(H5Pset_fclose_degree(access.get(), H5F_CLOSE_STRONG), cannot_repack);
  check_done(H5Pset_libver_bounds(access.get(), options.low.version, options.high.version),
             cannot_repack);
  if (remembers_free_space(creation)) allocate_singly(access.get());
  set_driver(access.get());
  return FileHandle(check_id(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, creation, access.get()),
                             [&path] { return "File " + quoted(path) + " cannot be created"; }));
}

// As the file was made, and its root group with it.
PropertyHandle creation_of(hid_t file) {
  PropertyHandle list(check_id(H5Fget_create_plist(file), cannot_repack));
  const GroupHandle root(check_id(H5Gopen2(file, "/", H5P_DEFAULT), cannot_repack));
  const PropertyHandle group(check_id(H5Gget_create_plist(root.get()), cannot_repack));
  unsigned order = 0;
  check_done(H5Pget_link_creation_order(group.get(), &order), cannot_repack);
  check_done(H5Pset_link_creation_order(list.get(), order), cannot_repack);
  check_done(H5Pget_attr_creation_order(group.get(), &order), cannot_repack);
  check_done(H5Pset_attr_creation_order(list.get(), order), cannot_repack);
  return list;
}

// Names in the root group, in the order in which they were made, where that is known.
std::vector<std::string> members_as_made(hid_t file) {
  std::vector<Entry> entries;
  const GroupHandle opened(check_id(H5Gopen2(file, "/", H5P_DEFAULT), cannot_repack));
  check_done(read_links(opened.get(), &entries), cannot_repack);
  sort_by_creation(&entries);
  return names_of(std::move(entries));
}

haddr_t address_of(hid_t file, const std::string& path) {
  H5O_info_t info;
  check_done(H5Oget_info_by_name2(file, path.c_str(), &info, H5O_INFO_BASIC, H5P_DEFAULT),
             cannot_repack);
  return info.addr;
}

struct LinksTo {
  haddr_t address;
  std::vector<std::string> paths;
};

herr_t keep_link(hid_t /*group*/, const char* name, const H5L_info_t* link, void* links) {
  auto* wanted = static_cast<LinksTo*>(links);
  if (link->type == H5L_TYPE_HARD && link->u.address == wanted->address)
    wanted->paths.push_back(path_below("/", name));
  return 0;
}

// A hard link to the root group leads, in the copy, to the group that was moved.
void link_to_new_root(hid_t file) {
  LinksTo links{address_of(file, moving_group), {}};
  check_done(H5Lvisit(file, H5_INDEX_NAME, H5_ITER_NATIVE, keep_link, &links), cannot_repack);
  for (const std::string& path : links.paths) {
    remove_name(file, path);
    if (path == moving_group) continue;
    check_done(H5Lcreate_hard(file, "/", file, path.c_str(), making_parents().get(), H5P_DEFAULT),
               cannot_repack);
  }
}

void copy_root(hid_t from, hid_t to) {
  copy_object({from, "/"}, {to, moving_group});
  for (const std::string& name : members_as_made(from))
    move_name(to, path_below(moving_group, name), "/" + name);
  link_to_new_root(to);
  const std::vector<FoundObject> objects = objects_below(from, "/");
  ReferenceMap references(from, to);
  references.add(objects, "/");
  copy_attributes({from, "/"}, {to, "/"}, references);
  copy_references(from, "/", to, "/", objects);
}

struct Counts {
  std::size_t objects = 0;
  std::size_t links = 0;
  std::size_t attributes = 0;

  bool operator==(const Counts&) const = default;
};

herr_t count_object(hid_t /*object*/, const char* /*name*/, const H5O_info_t* info, void* data) {
  auto* counts = static_cast<Counts*>(data);
  ++counts->objects;
  counts->attributes += static_cast<std::size_t>(info->num_attrs);
  return 0;
}

herr_t count_link(hid_t /*group*/, const char* /*name*/, const H5L_info_t* /*link*/, void* data) {
  ++static_cast<Counts*>(data)->links;
  return 0;
}

Counts count_all(hid_t file) {
  Counts counts;
  check_done(H5Ovisit2(file, H5_INDEX_NAME, H5_ITER_NATIVE, count_object, &counts,
                       H5O_INFO_BASIC | H5O_INFO_NUM_ATTRS),
             cannot_repack);
  check_done(H5Lvisit(file, H5_INDEX_NAME, H5_ITER_NATIVE, count_link, &counts), cannot_repack);
  return counts;
}

// The copy as it is on the disk must open and hold as much as its source.
void check_copy(hid_t source, const std::string& path, const FileOptions& options) {
  const FileHandle copy = open_file(path, Access::read, options);
  if (count_all(source) == count_all(copy.get())) return;
  throw StatementError(Status::hdf5_refused, "The copy does not hold all that its source does");
}

}  // namespace

void repack_file(hid_t source, const std::string& from, const std::string& to,
                 const FileOptions& options) {
  check_creatable(to);
  const PropertyHandle creation = creation_of(source);
  const UnfinishedFile unfinished(to);
  FileHandle copy = create_unfinished(unfinished.path(), creation.get(), options);
  copy_root(source, copy.get());
  check_done(copy.reset(), [&to] { return "File " + quoted(to) + " cannot be written"; });
  hsize_t block = 0;
  check_done(H5Pget_userblock(creation.get(), &block), cannot_repack);
  copy_bytes(from, unfinished.path(), block);
  check_copy(source, unfinished.path(), options);
  unfinished.finish();
}

}  // namespace kelvo
