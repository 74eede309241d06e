// LZF packs bytes as a row of steps, each begun by a control byte c:
//   c < 32    c + 1 bytes follow that stand for themselves
//   else      a copy of earlier bytes: c >> 5 is its length less 2, where 7 means that the next
//   byte adds to it; the
//             5 low bits of c and the byte behind it are the distance to it less 1
#include "storage/lzf_filter.h"

#include <hdf5.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace kelvo {
namespace {

constexpr H5Z_filter_t lzf_filter = 32000;

constexpr std::size_t longest_run = 32;
constexpr std::size_t longest_copy = 7 + 255 + 2;
constexpr std::size_t farthest = 1 << 13;
constexpr std::size_t shortest_copy = 3;

using Bytes = std::vector<std::uint8_t>;

// False where the packed bytes are no row of steps.
bool unpack_step(const std::uint8_t*& at, const std::uint8_t* end, Bytes* out) {
  const std::size_t control = *at++;
  if (control < longest_run) {
    const std::size_t length = control + 1;
    if (static_cast<std::size_t>(end - at) < length) return false;
    out->insert(out->end(), at, at + length);
    at += length;
    return true;
  }
  std::size_t length = control >> 5U;
  if (length == 7) {
    if (at == end) return false;
    length += *at++;
  }
  length += 2;
  if (at == end) return false;
  const std::size_t distance = ((control & 0x1fU) << 8U) + *at++ + 1;
  if (distance > out->size()) return false;
  // Byte by byte: a copy may reach into what it makes.
  for (std::size_t i = 0; i < length; ++i) out->push_back((*out)[out->size() - distance]);
  return true;
}

bool unpack(const std::uint8_t* packed, std::size_t size, Bytes* out) {
  const std::uint8_t* at = packed;
  while (at != packed + size) {
    if (!unpack_step(at, packed + size, out)) return false;
  }
  return true;
}

void pack_run(const std::uint8_t* bytes, std::size_t count, Bytes* out) {
  while (count > 0) {
    const std::size_t length = std::min(count, longest_run);
    out->push_back(static_cast<std::uint8_t>(length - 1));
    out->insert(out->end(), bytes, bytes + length);
    bytes += length;
    count -= length;
  }
}

void pack_copy(std::size_t distance, std::size_t length, Bytes* out) {
  const std::size_t written = length - 2;
  const std::size_t low = distance - 1;
  out->push_back(static_cast<std::uint8_t>(std::min<std::size_t>(written, 7) << 5U | low >> 8U));
  if (written >= 7) out->push_back(static_cast<std::uint8_t>(written - 7));
  out->push_back(static_cast<std::uint8_t>(low));
}

std::size_t hash_of(const std::uint8_t* bytes) {
  const std::uint32_t three =
      bytes[0] | std::uint32_t{bytes[1]} << 8U | std::uint32_t{bytes[2]} << 16U;
  return three * 2654435761U >> 18U;
}

// Where the same three bytes stood last is where a copy is looked for.
void pack(const std::uint8_t* bytes, std::size_t size, Bytes* out) {
  std::vector<std::size_t> last(std::size_t{1} << 14U, size);
  std::size_t run = 0;  // where the bytes begin that stand for themselves
  std::size_t at = 0;
  while (at + shortest_copy <= size) {
    std::size_t& seen = last[hash_of(bytes + at)];
    const std::size_t from = seen;
    seen = at;
    std::size_t length = 0;
    if (from < at && at - from <= farthest) {
      const std::size_t most = std::min(longest_copy, size - at);
      while (length < most && bytes[from + length] == bytes[at + length]) ++length;
    }
    if (length < shortest_copy) {
      ++at;
      continue;
    }
    pack_run(bytes + run, at - run, out);
    pack_copy(at - from, length, out);
    at += length;
    run = at;
  }
  pack_run(bytes + run, size - run, out);
}

// The HDF5 library's own form of a filter: the result in a buffer of its allocator, 0 for a
// failure.
std::size_t run_filter(unsigned flags, std::size_t count, const unsigned values[], std::size_t size,
                       std::size_t* buffer_size, void** buffer) noexcept {
  try {
    const auto* bytes = static_cast<const std::uint8_t*>(*buffer);
    Bytes out;
    if ((flags & H5Z_FLAG_REVERSE) != 0) {
      out.reserve(count > 2 ? values[2] : size);  // the chunk's size, where its writer noted it
      if (!unpack(bytes, size, &out)) return 0;
    } else {
      pack(bytes, size, &out);
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
  if (H5Pget_filter_by_id2(creation, lzf_filter, &flags, &count, values.data(), 0, nullptr,
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
  return H5Pmodify_filter(creation, lzf_filter, flags, noted.size(), noted.data());
}

}  // namespace

void register_lzf_filter() {
  static const H5Z_class2_t filter = {H5Z_CLASS_T_VERS, lzf_filter, 1,         1, "lzf",
                                      nullptr,          set_local,  run_filter};
  H5Zregister(&filter);
}

}  // namespace kelvo
