// From HDF5 data types to the engine's own description of them.
#pragma once

#include "storage/handle.h"
#include "values/type.h"

namespace kelvo {

/// The description of a type found in a file. Throws StatementError where it cannot be read into
/// memory.
Type describe_datatype(hid_t file_type);

}  // namespace kelvo
