// What a group or object holds, by name.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "storage/handle.h"

namespace kelvo {

enum class MemberKind { group, dataset, soft_link, external_link };

struct ListingRequest {
  MemberKind kind = MemberKind::dataset;
  bool recursive = false;
  bool by_order = false;  // of creation, in the groups that track it; else by name
  /// Whether the member may be listed; `path` is relative to where the listing began and ends in
  /// `name`. Empty: all may.
  std::function<bool(const std::string& name, const std::string& path)> is_named;
  /// Whether the object, found by its name relative to an open group, is to be listed. Empty: all
  /// are.
  std::function<bool(hid_t group, const std::string& name)> is_chosen;
};

/// Paths, relative to the group, of its members of a kind, one behind the other and each ended by a
/// NUL: there may be very many. Groups and datasets are those that its
/// links lead to, soft and external ones too; a link that leads nowhere is passed over.
///
/// Recursive, each group comes before what is in it, and each object comes once: where hard links
/// lead to it from the group, under the first of these whose name is admitted; else under the first
/// link whose name is. So neither links nor cycles repeat anything, and nothing that can be reached
/// is missing.
std::string list_members(hid_t file, const std::string& group, const ListingRequest& request);

/// Names of the attributes of an object, in name order or, where it is tracked, in that of
/// creation.
std::vector<std::string> attribute_names(hid_t object, const std::string& path,
                                         bool by_order = false);

}  // namespace kelvo
