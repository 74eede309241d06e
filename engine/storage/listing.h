// What a group or object holds, by name.
#pragma once

#include <string>
#include <vector>

#include "storage/object.h"

namespace kelvo {

/// Names of the members of a group whose links lead to objects of this kind, in name order.
std::vector<std::string> member_names(hid_t file, const std::string& group, ObjectKind kind);

/// Names of the attributes of an object, in name order.
std::vector<std::string> attribute_names(hid_t object, const std::string& path);

}  // namespace kelvo
