// Writing files beside their place.
#include "storage/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "error.h"

namespace kelvo {
namespace {

[[noreturn]] void refuse_existing(const std::string& path) {
  throw StatementError(Status::exists_already,
                       "File " + quoted(path) + " already exists (INTO OR REPLACE replaces it)");
}

// What a file made in the ordinary way would be given.
mode_t usual_mode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(std::string path, bool replace) : path_(std::move(path)), replace_(replace) {
  struct stat status {};
  const bool exists = ::lstat(path_.c_str(), &status) == 0;
  if (exists && S_ISDIR(status.st_mode))
    throw StatementError(Status::wrong_kind, "File " + quoted(path_) + " is a directory");
  if (exists && !replace_) refuse_existing(path_);
  std::string beside = path_ + ".kelvo-XXXXXX";
  descriptor_ = ::mkstemp(beside.data());
  if (descriptor_ < 0) fail("created");
  beside_.emplace(std::move(beside));
  ::fchmod(descriptor_, exists && S_ISREG(status.st_mode) ? status.st_mode & 07777 : usual_mode());
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void OutputFile::fail(const char* what) const {
  const int cause = errno;
  throw StatementError(Status::host_refused, "File " + quoted(path_) + " cannot be " + what + ": " +
                                                 std::strerror(cause));
}

void OutputFile::write(const void* bytes, std::size_t count, long long offset) {
  const auto* from = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t written = ::pwrite(descriptor_, from, count, static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail("written");
    from += written;
    offset += written;
    count -= static_cast<std::size_t>(written);
  }
}

void OutputFile::append(const void* bytes, std::size_t count) {
  write(bytes, count, size_);
  size_ += static_cast<long long>(count);
}

void OutputFile::write_first(const void* bytes, std::size_t count) { write(bytes, count, 0); }

void OutputFile::commit() {
  if (::fsync(descriptor_) != 0) fail("written");
  if (::close(std::exchange(descriptor_, -1)) != 0) fail("written");
  rename_beside();
  beside_.reset();
}

void OutputFile::rename_beside() {
  const unsigned flags = replace_ ? 0 : RENAME_NOREPLACE;
  if (::renameat2(AT_FDCWD, beside_->path().c_str(), AT_FDCWD, path_.c_str(), flags) == 0) return;
  if (errno == EEXIST) refuse_existing(path_);
  if (errno != EINVAL && errno != ENOSYS) fail("created");
  // Not every file system can refuse to replace: then a look before has to do.
  if (!replace_ && ::access(path_.c_str(), F_OK) == 0) refuse_existing(path_);
  if (std::rename(beside_->path().c_str(), path_.c_str()) != 0) fail("created");
}

}  // namespace kelvo
