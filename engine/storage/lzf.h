// The packing of bytes that h5py's LZF filter does. No HDF5 is called: threads of ours may.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

/// Appends the packed bytes.
void pack_lzf(const std::uint8_t* bytes, std::size_t size, std::vector<std::uint8_t>* out);

/// Unpacks into `to`; how many bytes there were. Nothing where they are more than it holds, or
/// where the packed bytes are damaged.
std::optional<std::size_t> unpack_lzf(std::span<const std::uint8_t> packed,
                                      std::span<std::uint8_t> to);

/// More than that many packed bytes can never become.
std::size_t most_unpacked_lzf(std::size_t size);

}  // namespace kelvo
