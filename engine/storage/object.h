// Objects in a file, named by absolute paths: what a path leads to, opening and making them.
#pragma once

#include <string>

#include "storage/handle.h"
#include "values/space.h"

namespace kelvo {

enum class ObjectKind {
  none,  // the path leads nowhere
  group,
  dataset,
  data_type,      // a committed data type
  dangling_link,  // a link is there, but what it names is not
};

/// "group", "dataset", ...: with its article for messages: "a group".
std::string with_article(ObjectKind kind);

/// `path` as seen from the group `from`, absolute and without ".", ".." and doubled slashes. ".."
/// above the root is the root.
std::string absolute_path(const std::string& from, const std::string& path);

/// The path of what holds `path`, and its last name: {"/a", "b"} for "/a/b". The root holds itself.
struct SplitPath {
  std::string parent;
  std::string name;
};
SplitPath split_path(const std::string& path);

/// What the path leads to. Throws only where the HDF5 library cannot read the file.
ObjectKind kind_at(hid_t file, const std::string& path);

/// Opens it, or throws that it does not exist, or is of another kind ("/a" is a dataset, not a
/// group).
GroupHandle open_group(hid_t file, const std::string& path);

/// Throws unless the path leads to a dataset: it does not exist, or is of another kind.
void expect_dataset(hid_t file, const std::string& path);

/// Makes a group at a free path, the missing ones on the way with it. `tracked`: its members keep
/// their creation order.
void create_group(hid_t file, const std::string& path, bool tracked);

/// Opens a group, dataset or committed data type.
ObjectHandle open_object(hid_t file, const std::string& path);

/// The path by which an object was opened, in the file that it is in; "" where it was not by a
/// path.
std::string object_path(hid_t object);

/// Link creation that makes the missing groups on the way.
PropertyHandle making_parents();

Space describe_space(hid_t dataspace);
DataspaceHandle make_space(const Space& space);

}  // namespace kelvo
