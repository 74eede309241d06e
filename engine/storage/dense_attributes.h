// Attributes in an index of their own, as objects have that bear many: the HDF5 library crashes
// when it copies texts or sequences among them.
#pragma once

#include <string>
#include <vector>

#include "storage/reference_copy.h"

namespace kelvo {

/// Whether one of the objects, found at and below `path`, has such attributes.
bool has_dense_varying_attributes(hid_t file, const std::string& path,
                                  const std::vector<FoundObject>& objects);

}  // namespace kelvo
