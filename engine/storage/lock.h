// Locks of files that are written, the same that the HDF5 library takes (flock), so that its other
// users respect them and they are respected.
//
// They are taken here because the library opens the source of a virtual dataset with its default
// locking, and takes a source that we have open with any other for one that is not there.
#pragma once

#include <string>

#include "storage/handle.h"

namespace kelvo {

/// Switches the HDF5 library's own locking off; to be called before anything else of it. Where
/// HDF5_USE_FILE_LOCKING is FALSE in the environment, no locks are taken here either.
void take_over_locking();

/// Whether another program holds a lock on the host file; a lock of the running statement is none.
/// Where the file system has no locks, none does.
bool is_locked(const std::string& path);

/// Locks an open file until it is closed; false where another program was faster.
bool lock_open_file(hid_t file);

}  // namespace kelvo
