// The HDF5 library's table of plugin directories.
#include "storage/plugin_path.h"

#include "storage/check.h"

namespace kelvo {
namespace {

std::string cannot_read() { return "The plugin path cannot be read"; }
std::string cannot_set() { return "The plugin path cannot be set"; }

unsigned directory_count() {
  unsigned count = 0;
  check_done(H5PLsize(&count), cannot_read);
  return count;
}

std::string directory_at(unsigned index) {
  const ssize_t length = H5PLget(index, nullptr, 0);
  if (length < 0) fail_hdf5(cannot_read());
  std::string directory(static_cast<std::size_t>(length), '\0');
  if (H5PLget(index, directory.data(), directory.size() + 1) < 0) fail_hdf5(cannot_read());
  return directory;
}

// What the environment and the library's build gave; to be asked for before the first change.
const std::vector<std::string>& initial_path() {
  static const std::vector<std::string> initial = plugin_path();
  return initial;
}

}  // namespace

std::vector<std::string> plugin_path() {
  std::vector<std::string> directories;
  const unsigned count = directory_count();
  for (unsigned i = 0; i < count; ++i) directories.push_back(directory_at(i));
  return directories;
}

void set_plugin_path(const std::vector<std::string>& directories) {
  initial_path();
  for (unsigned count = directory_count(); count > 0; --count)
    check_done(H5PLremove(count - 1), cannot_set);
  for (const std::string& directory : directories)
    check_done(H5PLappend(directory.c_str()), cannot_set);
}

void reset_plugin_path() { set_plugin_path(initial_path()); }

}  // namespace kelvo
