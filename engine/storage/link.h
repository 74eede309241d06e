// Names in groups: what kind of thing a name itself is (links are not followed), making, moving and
// removing it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "storage/handle.h"

namespace kelvo {

enum class NameKind {
  none,  // nothing has the name
  group,
  dataset,
  data_type,
  link,           // soft
  external_link,  // or any other link that leads out of the file
};

/// "Group", "External link", ...: as messages begin; in small letters; and with its article.
std::string title(NameKind kind);
std::string lower_title(NameKind kind);
std::string with_article(NameKind kind);

NameKind name_kind_at(hid_t file, const std::string& path);

/// Whether the name is there. Throws where it is, but of another kind.
bool is_there(hid_t file, const std::string& path, NameKind kind);

/// Throws unless the name is there, of this kind.
void expect_there(hid_t file, const std::string& path, NameKind kind);

/// Throws unless something of this kind can be made at the path: the name is free, and all before
/// it are groups or free.
void expect_creatable(hid_t file, const std::string& path, NameKind kind);

/// Names in a group that are of this kind themselves, in name order.
std::vector<std::string> names_of_kind(hid_t file, const std::string& group, NameKind kind);

/// `name` in the group `path`.
std::string path_below(const std::string& path, const std::string& name);

// Each makes the missing groups on the way. The path must be creatable.
void create_soft_link(hid_t file, const std::string& path, const std::string& target);
void create_hard_link(hid_t file, const std::string& path, const std::string& target);
void create_external_link(hid_t file, const std::string& path, const std::string& target_file,
                          const std::string& target);

/// Where a link leads, as it is stored: the path of an object and, for an external link, the file.
struct LinkTarget {
  std::optional<std::string> file;
  std::string object;
};

/// `path` must be that of a link of kind link or external_link.
LinkTarget link_target(hid_t file, const std::string& path);

/// Makes a link like the one at `from`, whose kind is link or external_link, and the missing groups
/// on the way. The path must be creatable.
void copy_link(hid_t from_file, const std::string& from, hid_t to_file, const std::string& to);

/// Gives what has a name another one; the missing groups on the way are made. The new path must be
/// creatable.
void move_name(hid_t file, const std::string& from, const std::string& to);

/// The object goes with the last of its names.
void remove_name(hid_t file, const std::string& path);

/// Whether the object at `path` is the group at `group`, or anywhere below it.
bool is_within(hid_t file, const std::string& path, const std::string& group);

}  // namespace kelvo
