// Memory first, then a file.
#include "storage/spool.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "error.h"

namespace kelvo {
namespace {

[[noreturn]] void refuse(int cause) {
  throw StatementError(
      Status::host_refused,
      std::string("The temporary file for values cannot be used: ") + std::strerror(cause));
}

}  // namespace

void Spool::add(const std::byte* bytes, std::size_t size) {
  if (file_ == nullptr && memory_.size() + size <= budget_) {
    // At once from there on: growing in steps would hold old and new memory side by side.
    if (memory_.size() + size > memory_.capacity() && memory_.size() > budget_ / 8)
      memory_.reserve(budget_);
    memory_.insert(memory_.end(), bytes, bytes + size);
    return;
  }
  if (file_ == nullptr) file_.reset(std::tmpfile());
  if (file_ == nullptr || std::fwrite(bytes, 1, size, file_.get()) != size) refuse(errno);
}

void Spool::rewind() {
  next_ = 0;
  if (file_ == nullptr) return;
  if (std::fflush(file_.get()) != 0 || std::fseek(file_.get(), 0, SEEK_SET) != 0) refuse(errno);
}

void Spool::read(std::byte* bytes, std::size_t size) {
  const std::size_t held = std::min(size, memory_.size() - next_);
  std::copy_n(memory_.begin() + static_cast<std::ptrdiff_t>(next_), held, bytes);
  next_ += held;
  if (held == size) return;
  if (file_ == nullptr || std::fread(bytes + held, 1, size - held, file_.get()) != size - held)
    refuse(errno);
}

}  // namespace kelvo
