// The file driver for host files: as the HDF5 library's own for POSIX files, but it looks at what
// is damaged in ways that the library does not survive.
#pragma once

#include <hdf5.h>

#include <string>

namespace kelvo {

/// Makes `access` open files through this driver.
void set_driver(hid_t access);

/// Whether `access` opens files through it.
bool uses_driver(hid_t access);

/// Gives up every file that is open through this driver, after the HDF5 library was left in the
/// middle of a call: the host's files are closed, what the library still writes goes nowhere, and
/// who opens one of them again gets it afresh. Returns the path of the one that was read last, ""
/// for none.
std::string give_up_files();

}  // namespace kelvo
