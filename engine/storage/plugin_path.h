// Where the HDF5 library looks for filter plugins.
#pragma once

#include <string>
#include <vector>

namespace kelvo {

/// The directories, the one looked into first at the front.
std::vector<std::string> plugin_path();

void set_plugin_path(const std::vector<std::string>& directories);

/// Makes it what it was before it was set first.
void reset_plugin_path();

}  // namespace kelvo
