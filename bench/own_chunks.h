// The limit for compressed data: stored chunks read with H5Dread_chunk, decoded in two threads.
#pragma once

#include <hdf5.h>

#include <functional>

namespace bench {

/// Decodes a dataset of doubles of rank 1, stored with shuffle and deflate. Each of the two threads
/// passes what it decodes to its own one of the functions, a whole chunk or what there is of the
/// last. False where something is wrong with a chunk.
using UseChunk = std::function<void(const double* values, hsize_t count)>;
bool decode_in_two_threads(hid_t dataset, hsize_t length, const UseChunk& first,
                           const UseChunk& second);

}  // namespace bench
