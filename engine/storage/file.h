// HDF5 files on the host: opening, creating, and saying why one cannot be opened.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "storage/handle.h"

namespace kelvo {

enum class Access { read, write };

/// A version of the HDF5 library as a bound of the file formats that are used, and how users write
/// it. Two words may mean the same version.
struct LibraryBound {
  std::string_view word;
  H5F_libver_t version;
};

constexpr std::array<LibraryBound, 4> library_bounds = {{
    {"EARLIEST", H5F_LIBVER_EARLIEST},
    {"V18", H5F_LIBVER_V18},
    {"V110", H5F_LIBVER_V110},
    {"LATEST", H5F_LIBVER_LATEST},
}};

/// What files are opened and created with; settings of the session.
struct FileOptions {
  LibraryBound low = library_bounds.front();
  LibraryBound high = library_bounds.back();
};

/// The host path that a user's file word means: a leading "~/" is the home directory, and the
/// result is absolute. An address (http, https, s3) stays as it is.
std::string host_path(const std::string& file);

/// Opens an existing file: a host file, a family by its pattern ("run%d.h5"), or an address.
/// Readers take no lock, so that they never stand in a writer's way; writers take HDF5's. Throws
/// StatementError that tells the causes apart, each with the way out.
FileHandle open_file(const std::string& path, Access access, const FileOptions& options);

/// Makes a new, empty file. With `replace` an existing one is replaced in one step, only once the
/// new one is whole.
void create_file(const std::string& path, bool replace, const FileOptions& options);

/// Whether open_file can open it for reading, or only the mark of a writer keeps it from that.
bool is_hdf5_file(const std::string& path);

enum class FlushScope {
  local,   // the one file
  global,  // the files mounted or linked together with it, too
};

/// Hands what is written to an open file over to the operating system.
void flush_file(hid_t file, FlushScope scope);

/// Of the file that an object (or the file itself) is in: its real path or address, and what it is
/// open for.
std::string file_name(hid_t object);
Access access_of(hid_t object);

}  // namespace kelvo
