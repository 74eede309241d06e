// Family files: one HDF5 file cut into several host files, named by a pattern as "run%d.h5" or
// "run%03d.h5".
#pragma once

#include <string>

namespace kelvo {

/// Whether the last name of the path is such a pattern: one conversion, a decimal number, and no
/// other.
bool is_family(const std::string& path);

/// The host file with that number.
std::string family_member(const std::string& path, int number);

/// The path as the HDF5 library takes it: a format for printf, in which no other byte is special.
std::string family_format(const std::string& path);

}  // namespace kelvo
