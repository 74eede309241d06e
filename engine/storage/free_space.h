// Files that remember their free space. The HDF5 library cannot close one that it has taken blocks
// of space from, to be dealt out to small things later, when free space comes behind such a block.
#pragma once

#include <hdf5.h>

namespace kelvo {

/// Whether files made with the creation list remember their free space.
bool remembers_free_space(hid_t creation);

/// Makes files that are opened with the access list get space for each thing alone.
void allocate_singly(hid_t access);

}  // namespace kelvo
