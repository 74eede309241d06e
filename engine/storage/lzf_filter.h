// The LZF filter (32000), with which h5py compresses: files made with it are many, but no HDF5
// library brings it along.
#pragma once

namespace kelvo {

constexpr int lzf_filter_id = 32000;

/// Makes the filter known to the HDF5 library, for reading and writing.
void register_lzf_filter();

}  // namespace kelvo
