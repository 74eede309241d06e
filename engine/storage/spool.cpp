// Memory first, then a file.
#include "storage/spool.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "error.h"

namespace kelvo {
namespace {

constexpr std::size_t window_bytes = std::size_t{64} * 1024;

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

// Large pages where the host has them: most of the time that keeping bytes takes is spent on giving
// small ones to the process, one by one.
void use_large_pages(std::byte* memory, std::size_t count) {
  constexpr std::size_t page = std::size_t{2} * 1024 * 1024;
  const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(memory) % page) % page;
  if (count > before) ::madvise(memory + before, (count - before) / page * page, MADV_HUGEPAGE);
}

}  // namespace

Spool::~Spool() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void Spool::append(const void* bytes, std::size_t count) {
  const auto* from = static_cast<const std::byte*>(bytes);
  return fits_memory(count) ? append_to_memory(from, count) : append_to_file(from, count);
}

// Nothing does once the file has been begun: it holds what comes after memory_.
bool Spool::fits_memory(std::size_t count) const noexcept {
  return descriptor_ < 0 && count <= budget_ - memory_.size();
}

void Spool::append_to_memory(const std::byte* bytes, std::size_t count) {
  // At once from there on: growing in steps would hold old and new memory side by side.
  if (memory_.size() + count > memory_.capacity() && memory_.size() > budget_ / 8) {
    memory_.reserve(budget_);
    use_large_pages(memory_.data() + memory_.size(), budget_ - memory_.size());
  }
  memory_.insert(memory_.end(), bytes, bytes + count);
}

void Spool::append_to_file(const std::byte* bytes, std::size_t count) {
  if (descriptor_ < 0) descriptor_ = open_unnamed();
  while (count > 0) {
    const ssize_t written = ::pwrite(descriptor_, bytes, count, static_cast<off_t>(file_size_));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail("written");
    bytes += written;
    count -= static_cast<std::size_t>(written);
    file_size_ += static_cast<std::uint64_t>(written);
  }
}

void Spool::read(std::uint64_t offset, void* bytes, std::size_t count) const {
  auto* to = static_cast<std::byte*>(bytes);
  const auto begin = static_cast<std::size_t>(std::min<std::uint64_t>(offset, memory_.size()));
  const std::size_t held = std::min(count, memory_.size() - begin);
  std::copy_n(memory_.data() + begin, held, to);
  if (held < count) read_file(offset + held - memory_.size(), to + held, count - held);
}

void Spool::read_file(std::uint64_t offset, std::byte* bytes, std::size_t count) const {
  while (count > 0) {
    const ssize_t got = ::pread(descriptor_, bytes, count, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) fail("read");
    bytes += got;
    count -= static_cast<std::size_t>(got);
    offset += static_cast<std::uint64_t>(got);
  }
}

void SpoolReader::read(std::byte* bytes, std::size_t count) {
  while (count > 0) {
    if (used_ == window_.size()) fill_window();
    const std::size_t taken = std::min(count, window_.size() - used_);
    std::copy_n(window_.data() + used_, taken, bytes);
    used_ += taken;
    bytes += taken;
    count -= taken;
  }
}

void SpoolReader::fill_window() {
  const std::uint64_t left = spool_.size() - next_;
  window_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(left, window_bytes)));
  spool_.read(next_, window_.data(), window_.size());
  next_ += window_.size();
  used_ = 0;
}

}  // namespace kelvo
