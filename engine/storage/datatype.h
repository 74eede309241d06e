// Between HDF5 data types and the engine's own description of them.
#pragma once

#include "storage/handle.h"
#include "values/type.h"

namespace kelvo {

/// The description of a type found in a file. Throws StatementError where it cannot be read into
/// memory.
Type describe_datatype(hid_t file_type);

/// The type that elements have in memory, laid out as `type` (the description of `file_type`) says.
/// Throws StatementError with the mere reason where no memory can hold them.
DatatypeHandle memory_datatype(const Type& type, hid_t file_type);

/// The type that CREATE stores for a description.
DatatypeHandle file_datatype(const Type& type);

}  // namespace kelvo
