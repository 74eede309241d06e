// HDF5 files on the host: opening, creating, and saying why one cannot be opened.
#pragma once

#include <string>

#include "storage/handle.h"

namespace kelvo {

enum class Access { read, write };

/// What files are opened and created with; settings of the session.
struct FileOptions {
  H5F_libver_t low = H5F_LIBVER_EARLIEST;
  H5F_libver_t high = H5F_LIBVER_LATEST;
};

/// The host path that a user's file word means: a leading "~/" is the home directory, and the
/// result is absolute.
std::string host_path(const std::string& file);

/// Opens an existing file. Readers take no lock, so that they never stand in a writer's way;
/// writers take HDF5's. Throws StatementError that tells the causes apart, each with the way out.
FileHandle open_file(const std::string& path, Access access, const FileOptions& options);

/// Makes a new, empty file. With `replace` an existing one is replaced in one step, only once the
/// new one is whole.
void create_file(const std::string& path, bool replace, const FileOptions& options);

/// Whether the path names a file that HDF5 can open. Never throws for one that is not there or not
/// readable.
bool is_hdf5_file(const std::string& path);

}  // namespace kelvo
