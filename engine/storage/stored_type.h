// Types as they lie in a file: in the place of each string or sequence of varying length, a
// reference to where the file keeps it.
#pragma once

#include <cstddef>

#include "storage/handle.h"

namespace kelvo {

/// The file type with opaque bytes in the place of its varying parts, and of references to objects
/// where these have another size in memory. The HDF5 library converts varying parts to such bytes
/// by handing out the references as they are. `address_bytes`: of an address in the file.
DatatypeHandle stored_datatype(hid_t file_type, std::size_t address_bytes);

/// Bytes of an address in the file that the object is in.
std::size_t address_bytes_of(hid_t object);

/// Bytes of a reference: how many elements, in 4 bytes; the address of a heap; in 4 bytes the index
/// in it.
constexpr std::size_t reference_bytes(std::size_t address_bytes) { return 4 + address_bytes + 4; }

}  // namespace kelvo
