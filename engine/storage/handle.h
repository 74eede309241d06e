// Move-only owners of HDF5 identifiers: whatever opens one puts it into a handle at once.
#pragma once

#include <hdf5.h>

#include <type_traits>
#include <utility>

namespace kelvo {

template <herr_t (*close)(hid_t)>
class Handle {
 public:
  Handle() noexcept = default;
  explicit Handle(hid_t id) noexcept : id_(id) {}
  Handle(Handle&& other) noexcept : id_(std::exchange(other.id_, H5I_INVALID_HID)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(id_, other.id_);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { reset(); }

  [[nodiscard]] hid_t get() const noexcept { return id_; }
  /// Leaves it open for whoever asks.
  hid_t release() noexcept { return std::exchange(id_, H5I_INVALID_HID); }
  explicit operator bool() const noexcept { return id_ >= 0; }

  /// Closes now. Negative where the HDF5 library failed, which for a file means that its last
  /// writes may not be on disk.
  herr_t reset() noexcept {
    const hid_t id = release();
    return id >= 0 ? close(id) : 0;
  }

 private:
  hid_t id_ = H5I_INVALID_HID;
};

using FileHandle = Handle<H5Fclose>;
using ObjectHandle = Handle<H5Oclose>;
using GroupHandle = Handle<H5Gclose>;
using DatasetHandle = Handle<H5Dclose>;
using AttributeHandle = Handle<H5Aclose>;
using DatatypeHandle = Handle<H5Tclose>;
using DataspaceHandle = Handle<H5Sclose>;
using PropertyHandle = Handle<H5Pclose>;

static_assert(std::is_nothrow_move_constructible_v<FileHandle> &&
              std::is_nothrow_move_assignable_v<FileHandle>);
static_assert(!std::is_copy_constructible_v<FileHandle>);

/// Gives back a text that the HDF5 library allocated.
struct Hdf5Free {
  void operator()(char* text) const noexcept { H5free_memory(text); }
};

}  // namespace kelvo
