// From the engine's own description of types to HDF5 data types.
#pragma once

#include "storage/handle.h"
#include "values/type.h"

namespace kelvo {

/// The type that elements have in memory, laid out as `type` (the description of `file_type`) says.
/// Throws StatementError with the mere reason where no memory can hold them.
DatatypeHandle memory_datatype(const Type& type, hid_t file_type);

/// The type that CREATE stores for a description.
DatatypeHandle file_datatype(const Type& type);

}  // namespace kelvo
