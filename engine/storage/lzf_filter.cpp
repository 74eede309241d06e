// The filter's face to the HDF5 library.
#include "storage/lzf_filter.h"

#include <hdf5.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "storage/lzf.h"

namespace kelvo {
namespace {

using Bytes = std::vector<std::uint8_t>;

// `size` is what the packed bytes should become; where that is too little, more is tried.
bool unpack(std::span<const std::uint8_t> packed, std::size_t size, Bytes* out) {
  const std::size_t most = most_unpacked_lzf(packed.size());
  for (std::size_t room = std::clamp<std::size_t>(size, 1, most);;
       room = std::min(2 * room, most)) {
    out->resize(room);
    const std::optional<std::size_t> made = unpack_lzf(packed, *out);
    if (made) out->resize(*made);
    if (made || room == most) return made.has_value();
  }
}

// The HDF5 library's own form of a filter: the result in a buffer of its allocator, 0 for a
// failure.
std::size_t run_filter(unsigned flags, std::size_t count, const unsigned values[], std::size_t size,
                       std::size_t* buffer_size, void** buffer) noexcept {
  try {
    const auto* bytes = static_cast<const std::uint8_t*>(*buffer);
    Bytes out;
    if ((flags & H5Z_FLAG_REVERSE) != 0) {
      // The chunk's size, where its writer noted it.
      if (!unpack({bytes, size}, count > 2 ? values[2] : 2 * size, &out)) return 0;
    } else {
      pack_lzf(bytes, size, &out);
      if (out.size() >= size) return 0;  // the chunk is stored as it is
    }
    void* made = H5allocate_memory(std::max<std::size_t>(out.size(), 1), false);
    if (made == nullptr) return 0;
    std::memcpy(made, out.data(), out.size());
    H5free_memory(*buffer);
    *buffer = made;
    *buffer_size = out.size();
    return out.size();
  } catch (...) {
    return 0;
  }
}

constexpr std::size_t most_values = 8;

// Notes the chunk's size in the dataset, where its readers look for it.
herr_t set_local(hid_t creation, hid_t type, hid_t space) noexcept {
  unsigned flags = 0;
  std::size_t count = most_values;
  std::array<unsigned, most_values> values{};
  if (H5Pget_filter_by_id2(creation, lzf_filter_id, &flags, &count, values.data(), 0, nullptr,
                           nullptr) < 0)
    return -1;
  std::array<hsize_t, H5S_MAX_RANK> chunk{};
  const int rank = H5Sget_simple_extent_ndims(space);
  if (H5Pget_chunk(creation, rank, chunk.data()) < 0) return -1;
  std::size_t bytes = H5Tget_size(type);
  for (int d = 0; d < rank; ++d)
    bytes *= static_cast<std::size_t>(chunk[static_cast<std::size_t>(d)]);
  constexpr unsigned filter_revision = 4;
  constexpr unsigned format_version = 0x0105;
  const std::array<unsigned, 3> noted = {filter_revision, format_version,
                                         static_cast<unsigned>(bytes)};
  return H5Pmodify_filter(creation, lzf_filter_id, flags, noted.size(), noted.data());
}

}  // namespace

void register_lzf_filter() {
  static const H5Z_class2_t filter = {H5Z_CLASS_T_VERS, lzf_filter_id, 1,         1, "lzf",
                                      nullptr,          set_local,     run_filter};
  H5Zregister(&filter);
}

}  // namespace kelvo
