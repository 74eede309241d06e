// The LZF filter (32000), with which h5py compresses: files made with it are many, but no HDF5
// library brings it along.
#pragma once

namespace kelvo {

/// Makes the filter known to the HDF5 library, for reading and writing.
void register_lzf_filter();

}  // namespace kelvo
