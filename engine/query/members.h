// Members of compounds by their names: "pos.x" is member x of member pos, unless a member has just
// that name.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "values/type.h"

namespace kelvo {

/// The indexes of the members on the way to the one named, outermost first.
using MemberPath = std::vector<std::size_t>;

std::optional<MemberPath> find_member(const Type& type, std::string_view name);

/// Where a member is in an element, and what it is.
struct MemberPlace {
  const Type* type;
  std::size_t offset;
};

MemberPlace place_of_member(const Type& type, const MemberPath& path);

/// The compound with only the members that the paths lead to, side by side.
Type only_members(const Type& type, const std::vector<MemberPath>& paths);

}  // namespace kelvo
