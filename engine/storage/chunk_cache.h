// Opening datasets with a chunk cache that suits reading them in C order.
#pragma once

#include <string>

#include "storage/handle.h"

namespace kelvo {

/// The chunk cache of datasets opened; the HDF5 library's default where nothing was set.
struct ChunkCache {
  bool is_default = true;  // then the engine may widen it for a dataset that needs more
  std::size_t slots = 521;
  std::size_t bytes = std::size_t{1024} * 1024;
  double preemption = 0.75;
};

/// Opens the dataset so that a chunk that two consecutive blocks of rows share is decoded only
/// once, where at most 32 MiB do for that. The path must name a dataset.
DatasetHandle open_for_reading(hid_t file, const std::string& path, const ChunkCache& cache);

}  // namespace kelvo
