// Attributes of open objects, by their names. In messages an attribute is shown as path@name.
#pragma once

#include <optional>
#include <string>

#include "storage/handle.h"
#include "values/space.h"
#include "values/type.h"

namespace kelvo {

/// Throws only where the HDF5 library cannot read the object.
bool has_attribute(hid_t object, const std::string& name);

/// Throws where the object, which is at `path`, has no such attribute.
AttributeHandle open_attribute(hid_t object, const std::string& path, const std::string& name);

/// An attribute of an object that is found by its name relative to an open group; none where the
/// object has no such attribute, or is not there itself.
std::optional<AttributeHandle> find_attribute(hid_t group, const std::string& object,
                                              const std::string& name);

/// Makes an attribute that is not there yet. `shown` is its name in messages: path@name.
AttributeHandle create_attribute(hid_t object, const std::string& name, const std::string& shown,
                                 const Type& type, const Space& space);

/// Throws unless the object has no attribute of this name; `shown` as messages show it.
void expect_free_attribute(hid_t object, const std::string& name, const std::string& shown);

/// The new name must be free.
void rename_attribute(hid_t object, const std::string& from, const std::string& to,
                      const std::string& shown);

void remove_attribute(hid_t object, const std::string& name, const std::string& shown);

}  // namespace kelvo
