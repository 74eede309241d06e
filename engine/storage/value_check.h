// Strings and sequences of varying length, looked at before the HDF5 library follows their
// references by itself.
#pragma once

#include <string>
#include <vector>

#include "storage/handle.h"
#include "storage/reference_copy.h"

namespace kelvo {

/// Throws where a value of one of the objects, found below `path`, is not where its reference says,
/// in a dataset or an attribute. What the engine cannot follow itself passes: values in other files
/// or of types that it does not read.
void check_values(hid_t file, const std::string& path, const std::vector<FoundObject>& objects);

}  // namespace kelvo
