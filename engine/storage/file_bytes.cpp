// Asks the library for the host's files, and reads them.
#include "storage/file_bytes.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "storage/check.h"
#include "storage/driver.h"

namespace kelvo {
namespace {

constexpr std::size_t window_bytes = std::size_t{16} * 1024;

std::string cannot_read() { return "The file cannot be read"; }

// Of the host's file that holds the byte at `offset`; nothing where none does.
std::optional<int> descriptor_at(hid_t file, hsize_t offset) {
  const PropertyHandle place(check_id(H5Pcreate(H5P_FILE_ACCESS), cannot_read));
  check_done(H5Pset_family_offset(place.get(), offset), cannot_read);
  void* descriptor = nullptr;
  if (H5Fget_vfd_handle(file, place.get(), &descriptor) < 0) return std::nullopt;
  return *static_cast<int*>(descriptor);
}

void write_what_is_not_yet(hid_t file) {
  unsigned intent = 0;
  check_done(H5Fget_intent(file, &intent), cannot_read);
  if ((intent & H5F_ACC_RDWR) != 0) check_done(H5Fflush(file, H5F_SCOPE_LOCAL), cannot_read);
}

std::size_t read_file(int descriptor, std::uint64_t at, std::size_t size, std::byte* bytes) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count =
        ::pread(descriptor, bytes + done, size - done, static_cast<off_t>(at + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

}  // namespace

std::optional<FileBytes> FileBytes::of(hid_t object) {
  FileBytes bytes;
  bytes.file_ = FileHandle(check_id(H5Iget_file_id(object), cannot_read));
  const hid_t file = bytes.file_.get();
  const PropertyHandle access(check_id(H5Fget_access_plist(file), cannot_read));
  const PropertyHandle creation(check_id(H5Fget_create_plist(file), cannot_read));
  if (!uses_driver(access.get()) && !uses_family_driver(access.get())) return std::nullopt;
  write_what_is_not_yet(file);
  hsize_t size = 0;
  hsize_t base = 0;
  check_done(H5Fget_filesize(file, &size), cannot_read);
  check_done(H5Pget_userblock(creation.get(), &base), cannot_read);
  check_done(H5Pget_sizes(creation.get(), &bytes.address_bytes_, &bytes.length_bytes_),
             cannot_read);
  bytes.base_ = base;
  bytes.end_ = size - std::min<hsize_t>(base, size);
  bytes.find_descriptors(access.get());
  return bytes;
}

void FileBytes::find_descriptors(hid_t access) {
  const std::uint64_t size = base_ + end_;
  member_size_ = std::max<std::uint64_t>(1, size);
  if (uses_family_driver(access)) {
    hsize_t member_size = 0;
    check_done(H5Pget_fapl_family(access, &member_size, nullptr), cannot_read);
    member_size_ = std::clamp<std::uint64_t>(member_size, 1, member_size_);
  }
  for (std::uint64_t at = 0; at < size; at += member_size_) {
    const std::optional<int> descriptor = descriptor_at(file_.get(), at);
    if (!descriptor) break;
    descriptors_.push_back(*descriptor);
  }
}

bool FileBytes::read(std::uint64_t address, std::size_t size, std::byte* bytes) {
  if (address > end_ || size > end_ - address) return false;
  if (size > window_bytes) return read_host(base_ + address, size, bytes) == size;
  const bool is_held = address >= window_begin_ && address - window_begin_ <= window_size_ &&
                       size <= window_size_ - (address - window_begin_);
  if (!is_held && !fill_window(address, size)) return false;
  std::memcpy(bytes, window_.data() + (address - window_begin_), size);
  return true;
}

// Around the bytes, as what lies before them is wanted next as often as what lies behind them.
bool FileBytes::fill_window(std::uint64_t address, std::size_t size) {
  const std::uint64_t before = address % window_bytes;
  window_begin_ = before + size <= window_bytes ? address - before : address;
  window_.reserve(window_bytes);
  window_size_ = read_host(base_ + window_begin_, window_bytes, window_.data());
  return window_size_ >= address - window_begin_ + size;
}

// How many of the bytes there are.
std::size_t FileBytes::read_host(std::uint64_t at, std::size_t size, std::byte* bytes) const {
  std::size_t done = 0;
  while (done < size) {
    const std::uint64_t number = (at + done) / member_size_;
    const std::uint64_t within = (at + done) % member_size_;
    if (number >= descriptors_.size()) break;
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(size - done, member_size_ - within));
    const std::size_t count =
        read_file(descriptors_[static_cast<std::size_t>(number)], within, wanted, bytes + done);
    done += count;
    if (count < wanted) break;
  }
  return done;
}

}  // namespace kelvo
