// Keeping bytes, and putting them back.
#include "storage/undo.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

namespace kelvo {
namespace {

// Small enough to stay in the second-level cache.
constexpr std::size_t block_bytes = std::size_t{256} * 1024;

StatementError cannot(const std::string& path, const char* what, int cause) {
  return StatementError(Status::host_refused, "File " + quoted(path) + " cannot be " + what + ": " +
                                                  std::strerror(cause));
}

int write_bytes(int descriptor, const std::byte* bytes, std::size_t count, std::uint64_t address) {
  while (count > 0) {
    const ssize_t done = ::pwrite(descriptor, bytes, count, static_cast<off_t>(address));
    if (done < 0 && errno == EINTR) continue;
    if (done < 0) return errno;
    bytes += done;
    count -= static_cast<std::size_t>(done);
    address += static_cast<std::uint64_t>(done);
  }
  return 0;
}

}  // namespace

ChangedFile::ChangedFile(int descriptor, std::string path, bool is_new)
    : descriptor_(descriptor), path_(std::move(path)), is_new_(is_new) {
  struct stat status {};
  if (::fstat(descriptor_, &status) != 0) return;
  device_ = status.st_dev;
  inode_ = status.st_ino;
  old_length_ = static_cast<std::uint64_t>(status.st_size);
}

ChangedFile::~ChangedFile() { ::close(descriptor_); }

void ChangedFile::keep(std::uint64_t begin, std::uint64_t end, KeptBytes& kept) {
  if (length_ && end > *length_) length_ = end;
  end = std::min(end, old_length_);
  for (std::uint64_t at = begin; at < end;) {
    const auto next = ranges_.upper_bound(at);
    if (next != ranges_.begin() && std::prev(next)->second > at) {
      at = std::prev(next)->second;
      continue;
    }
    const std::uint64_t gap_end = next == ranges_.end() ? end : std::min(end, next->first);
    keep_gap(at, gap_end, kept);
    mark_kept(at, gap_end);
    at = gap_end;
  }
}

void ChangedFile::keep_gap(std::uint64_t begin, std::uint64_t end, KeptBytes& kept) {
  kept.block.reserve(block_bytes);
  while (begin < end) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(end - begin, block_bytes));
    const ssize_t got = ::pread(descriptor_, kept.block.data(), wanted, static_cast<off_t>(begin));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw cannot(path_, "read", errno);
    if (got == 0) return;  // another program cut it
    const auto count = static_cast<std::size_t>(got);
    const std::uint64_t offset = kept.bytes.size();
    kept.bytes.append(kept.block.data(), count);
    parts_.push_back({begin, count, offset});
    begin += count;
  }
}

void ChangedFile::mark_kept(std::uint64_t begin, std::uint64_t end) {
  const auto next = ranges_.find(end);
  if (next != ranges_.end()) {
    end = next->second;
    ranges_.erase(next);
  }
  const auto after = ranges_.upper_bound(begin);
  if (after != ranges_.begin() && std::prev(after)->second == begin) {
    std::prev(after)->second = end;
  } else {
    ranges_.emplace_hint(after, begin, end);
  }
}

int ChangedFile::finish() const noexcept {
  if (!length_ || *length_ >= old_length_) return 0;
  return ::ftruncate(descriptor_, static_cast<off_t>(*length_)) == 0 ? 0 : errno;
}

int ChangedFile::put_back(KeptBytes& kept) const noexcept {
  if (is_new_) return remove_new();
  int cause = 0;
  try {
    for (const Part& part : parts_) {
      kept.bytes.read(part.offset, kept.block.data(), part.count);
      const int failure = write_bytes(descriptor_, kept.block.data(), part.count, part.address);
      if (failure != 0) cause = failure;
    }
  } catch (const std::exception&) {
    cause = errno != 0 ? errno : EIO;
  }
  return ::ftruncate(descriptor_, static_cast<off_t>(old_length_)) == 0 ? cause : errno;
}

int ChangedFile::remove_new() const noexcept {
  struct stat status {};
  const bool is_there = ::stat(path_.c_str(), &status) == 0 && is(status.st_dev, status.st_ino);
  return !is_there || ::unlink(path_.c_str()) == 0 ? 0 : errno;
}

ChangedFile* Undo::find(dev_t device, ino_t inode) const noexcept {
  for (const auto& file : files_) {
    if (file->is(device, inode)) return file.get();
  }
  return nullptr;
}

ChangedFile* Undo::add(int descriptor, const std::string& path, bool is_new) {
  files_.push_back(std::make_unique<ChangedFile>(descriptor, path, is_new));
  return files_.back().get();
}

void Undo::finish() {
  for (const auto& file : files_) {
    const int cause = file->finish();
    if (cause != 0) throw cannot(file->path(), "written", cause);
  }
}

std::optional<StatementError> Undo::put_back() noexcept {
  std::optional<StatementError> failure;
  for (const auto& file : files_) {
    const int cause = file->put_back(kept_);
    if (cause != 0) failure = cannot(file->path(), "made what it was", cause);
  }
  return failure;
}

}  // namespace kelvo
