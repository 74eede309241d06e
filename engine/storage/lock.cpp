// flock of files.
#include "storage/lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "storage/driver.h"

namespace kelvo {
namespace {

constexpr const char* variable = "HDF5_USE_FILE_LOCKING";

bool locks_wanted = true;

bool lock_descriptor(int descriptor) {
  return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

}  // namespace

void take_over_locking() {
  // NOLINTBEGIN(concurrency-mt-unsafe): the engine runs on one thread
  const char* value = std::getenv(variable);
  const std::string_view wish = value == nullptr ? "" : value;
  locks_wanted = wish != "FALSE" && wish != "0";
  ::setenv(variable, "FALSE", 1);
  // NOLINTEND(concurrency-mt-unsafe)
}

bool is_locked(const std::string& path) {
  if (!locks_wanted || is_changed(path)) return false;
  const int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return false;
  const bool free = lock_descriptor(descriptor);
  ::close(descriptor);
  return !free;
}

bool lock_open_file(hid_t file) {
  if (!locks_wanted) return true;
  void* descriptor = nullptr;
  if (H5Fget_vfd_handle(file, H5P_DEFAULT, &descriptor) < 0) return true;
  return lock_descriptor(*static_cast<const int*>(descriptor));
}

}  // namespace kelvo
