// The file driver for host files: as the HDF5 library's own for POSIX files, but it looks at what
// is damaged in ways that the library does not survive.
#pragma once

#include <hdf5.h>

namespace kelvo {

/// Makes `access` open files through this driver.
void set_driver(hid_t access);

/// Whether `access` opens files through it.
bool uses_driver(hid_t access);

}  // namespace kelvo
