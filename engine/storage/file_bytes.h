// A file's bytes by the addresses that its own structures hold, past the HDF5 library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "storage/handle.h"
#include "values/scratch.h"

namespace kelvo {

class FileBytes {
 public:
  /// Of the file that the object is in; nothing where that is read through no driver of ours: it is
  /// remote, or in memory. What the library has not written yet is written first.
  static std::optional<FileBytes> of(hid_t object);

  /// Bytes of an address and of a length in the file.
  [[nodiscard]] std::size_t address_bytes() const noexcept { return address_bytes_; }
  [[nodiscard]] std::size_t length_bytes() const noexcept { return length_bytes_; }

  /// Every address in the file is less.
  [[nodiscard]] std::uint64_t end() const noexcept { return end_; }

  /// The byte of the host's file, or of its family, that an address stands for: what a user block
  /// takes lies before address 0.
  [[nodiscard]] std::uint64_t host_byte(std::uint64_t address) const noexcept {
    return base_ + address;
  }

  /// False where they are not all there, or the host cannot read them.
  bool read(std::uint64_t address, std::size_t size, std::byte* bytes);

 private:
  FileBytes() = default;

  void find_descriptors(hid_t access);
  bool fill_window(std::uint64_t address, std::size_t size);
  [[nodiscard]] std::size_t read_host(std::uint64_t at, std::size_t size, std::byte* bytes) const;

  FileHandle file_;  // what the descriptors belong to
  std::vector<int> descriptors_;
  std::uint64_t member_size_ = 1;  // bytes of the file; of a family, of each file but the last
  std::uint64_t base_ = 0;
  std::uint64_t end_ = 0;
  std::size_t address_bytes_ = 8;
  std::size_t length_bytes_ = 8;

  // The bytes read last: what is read next mostly lies near.
  Scratch window_;
  std::uint64_t window_begin_ = 0;  // an address
  std::size_t window_size_ = 0;
};

}  // namespace kelvo
