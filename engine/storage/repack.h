// Writing a file anew, without the space that was freed in it.
#pragma once

#include <string>

#include "storage/file.h"

namespace kelvo {

/// Makes `to`, a free host path, hold all that the open file `source`, whose path is `from`, does:
/// objects, attributes, links, the user block. It has its name only once it is whole and checked.
void repack_file(hid_t source, const std::string& from, const std::string& to,
                 const FileOptions& options);

}  // namespace kelvo
