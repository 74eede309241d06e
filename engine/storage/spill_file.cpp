// Temporary files.
#include "storage/spill_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "error.h"

namespace kelvo {
namespace {

std::string directory() {
  const char* chosen =
      std::getenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe): the engine runs on one thread
  return chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
}

[[noreturn]] void fail(const char* what) {
  const int cause = errno;
  throw StatementError(Status::host_refused, "A temporary file in " + quoted(directory()) +
                                                 " cannot be " + what + ": " +
                                                 std::strerror(cause));
}

int open_unnamed() {
  std::string path = directory() + "/kelvo-XXXXXX";
  const int descriptor = ::mkstemp(path.data());
  if (descriptor < 0) fail("made");
  ::unlink(path.c_str());
  return descriptor;
}

}  // namespace

SpillFile::~SpillFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void SpillFile::append(const char* bytes, std::size_t count) {
  if (descriptor_ < 0) descriptor_ = open_unnamed();
  while (count > 0) {
    const ssize_t written = ::pwrite(descriptor_, bytes, count, static_cast<off_t>(size_));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail("written");
    bytes += written;
    count -= static_cast<std::size_t>(written);
    size_ += static_cast<std::uint64_t>(written);
  }
}

void SpillFile::read(std::uint64_t offset, char* bytes, std::size_t count) const {
  while (count > 0) {
    const ssize_t got = ::pread(descriptor_, bytes, count, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) fail("read");
    bytes += got;
    count -= static_cast<std::size_t>(got);
    offset += static_cast<std::uint64_t>(got);
  }
}

}  // namespace kelvo
