// Finds members and leaves others out.
#include "query/members.h"

#include <algorithm>
#include <utility>

namespace kelvo {

std::optional<MemberPath> find_member(const Type& type, std::string_view name) {
  if (type.kind != Kind::compound) return std::nullopt;
  for (std::size_t i = 0; i < type.members.size(); ++i) {
    const Member& member = type.members[i];
    if (member.name == name) return MemberPath{i};
    const std::size_t length = member.name.size();
    if (!name.starts_with(member.name) || name.substr(length, 1) != ".") continue;
    std::optional<MemberPath> rest = find_member(member.type, name.substr(length + 1));
    if (!rest) continue;
    rest->insert(rest->begin(), i);
    return rest;
  }
  return std::nullopt;
}

MemberPlace place_of_member(const Type& type, const MemberPath& path) {
  MemberPlace place{&type, 0};
  for (const std::size_t index : path) {
    const Member& member = place.type->members[index];
    place.offset += member.offset;
    place.type = &member.type;
  }
  return place;
}

Type only_members(const Type& type, const std::vector<MemberPath>& paths) {
  // A path that ends here asks for the whole.
  if (std::any_of(paths.begin(), paths.end(), [](const MemberPath& path) { return path.empty(); }))
    return type;
  Type narrow = type;
  narrow.members.clear();
  narrow.size = 0;
  for (std::size_t i = 0; i < type.members.size(); ++i) {
    std::vector<MemberPath> below;
    for (const MemberPath& path : paths) {
      if (path[0] == i) below.emplace_back(path.begin() + 1, path.end());
    }
    if (below.empty()) continue;
    Member member = type.members[i];
    member.type = only_members(member.type, below);
    member.offset = narrow.size;
    narrow.size += member.type.size;
    narrow.members.push_back(std::move(member));
  }
  return narrow;
}

}  // namespace kelvo
