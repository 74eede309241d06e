// Why a file cannot be opened: each cause told apart, each with the way out.
#pragma once

#include <string>

#include "error.h"
#include "storage/file.h"

namespace kelvo {

/// Throws unless the host lets the file be opened: it must be there, a regular file, permitted and
/// not empty.
void check_host_file(const std::string& path, Access access);

/// Throws for the cause that the HDF5 library's error stack and the file's first bytes tell, after
/// an open that failed. `path` as messages show it, `first` a host file whose first bytes tell
/// more, or "".
[[noreturn]] void fail_open(const std::string& path, const std::string& first);

/// Whether the error is fail_open's for a whole HDF5 file that only its mark keeps from opening.
bool is_marked_open(const StatementError& error);

/// Throws that another program holds a lock on the file.
[[noreturn]] void fail_locked(const std::string& path);

/// Throws with the host's reason why a file cannot be made.
[[noreturn]] void fail_creation(const std::string& path, int error);

/// Throws unless the directory lets a file be made at the path.
void check_creatable(const std::string& path);

}  // namespace kelvo
