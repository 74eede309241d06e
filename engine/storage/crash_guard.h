// Calls of the HDF5 library that a damaged file makes read where there is no memory.
//
// The library finds strings and sequences by an index from the file, and takes from there how many
// numbers a selection of a virtual dataset has, neither of which it checks. No check of ours can
// stand in front of that, as nobody else sees them: so the access that the machine refuses ends the
// call.
#pragma once

#include <hdf5.h>

namespace kelvo {

/// Calls `call(arguments)`, which may go through C code only, as its frames may be left without
/// being unwound. False where it made an access that the machine refused; what the library had
/// locked of the file stays locked then.
bool call_guarded(void (*call)(void* arguments), void* arguments);

/// H5Oopen or H5Dopen2, guarded so: negative in that case too, with an error left for what checks
/// it.
hid_t open_guarded(hid_t (*open)(hid_t place, const char* name, hid_t access), hid_t place,
                   const char* name, hid_t access);

/// Makes the HDF5 library do nothing when the process ends, as what such a call left behind would
/// make it fail again; files are closed by their owners. To be called before anything else of it.
void skip_work_at_exit();

}  // namespace kelvo
