// What a file may reach. Files name other files: in external links, as external raw data and as
// sources of virtual datasets. They are followed only to files in or below the directory of the
// file that names them, or of the external link prefix, symbolic links resolved: a file from a
// stranger cannot make the engine read anything else.
#pragma once

#include <string>

#include "storage/file.h"
#include "storage/handle.h"

namespace kelvo {

/// Makes the rule hold in the whole process; to be called before anything else of the HDF5 library.
/// Both settings are looked at whenever a file is followed, and must outlive that.
void guard_reach(const FileOptions& options, const std::string& external_link_prefix);

/// The options with which files are opened that others name.
const FileOptions& reach_options() noexcept;

/// The external link prefix; "" for none.
const std::string& reach_prefix() noexcept;

/// What names another file: `Dataset "/x"` or the like, and the directory of the file that it is
/// in.
struct Namer {
  std::string shown;
  std::string folder;
};

/// The namer that an object (or its file) is. `shown` as above.
Namer namer_of(hid_t object, std::string shown);

/// Where else a name is looked for: the HDF5 library looks for virtual sources in the working
/// directory too, which is in reach only where it is also one of the allowed directories.
enum class Fallback { none, working_directory };

/// The file that a name means, as it really is; "" where there is none. Throws StatementError where
/// it is out of reach, or would make its reader wait.
std::string find_named(const std::string& name, const Namer& namer, Fallback fallback);

/// The same for a name that stands for `place` and nothing else; the file need not be there.
void check_named(const std::string& place, const Namer& namer);

}  // namespace kelvo
