// The file driver for host files: as the HDF5 library's own for POSIX files, but it looks at what
// is damaged in ways that the library does not survive.
#pragma once

#include <hdf5.h>

#include <optional>
#include <string>

#include "error.h"

namespace kelvo {

/// Makes `access` open files through this driver.
void set_driver(hid_t access);

/// The same for the members of a family of files.
void set_family_driver(hid_t access);

/// Whether `access` opens files through it.
bool uses_driver(hid_t access);

/// Whether `access` opens families of files, whose members are opened through it.
bool uses_family_driver(hid_t access);

/// Gives up every file that is open through this driver, after the HDF5 library was left in the
/// middle of a call: the host's files are closed, what the library still writes goes nowhere, and
/// who opens one of them again gets it afresh. Returns the path of the one that was read last, ""
/// for none.
std::string give_up_files();

// What a statement writes, through however many openings of a file, can be taken back until it has
// come to its end.

/// Whether the running statement opened the host file for writing; it has the lock on it then.
bool is_changed(const std::string& path);

/// Why the running statement could not write what it wanted to, if it could not.
std::optional<StatementError> write_failure();

/// Ends a statement that has closed all that it wrote. Throws where something could not be written.
void keep_changes();

/// Ends one that failed, in two steps, between which the statement closes what it can: what is
/// written from then on goes nowhere; then the files are what they were before, or the reason is
/// returned.
void drop_changes();
std::optional<StatementError> undo_changes();

}  // namespace kelvo
