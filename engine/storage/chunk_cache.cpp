// Sizes chunk caches.
#include "storage/chunk_cache.h"

#include <vector>

#include "storage/check.h"
#include "storage/object.h"
#include "storage/sources.h"

namespace kelvo {
namespace {

constexpr double most_bytes = 32.0 * 1024 * 1024;

// Bytes of the chunks that one row of chunks across the fastest dimensions holds; 0 where nothing
// is filtered, since unfiltered chunks are cheap to read again.
double band_bytes(hid_t dataset) {
  const auto what = [] { return std::string("The storage of a dataset cannot be read"); };
  const PropertyHandle creation(check_id(H5Dget_create_plist(dataset), what));
  if (H5Pget_layout(creation.get()) != H5D_CHUNKED || H5Pget_nfilters(creation.get()) <= 0)
    return 0;
  const DataspaceHandle dataspace(check_id(H5Dget_space(dataset), what));
  const DatatypeHandle type(check_id(H5Dget_type(dataset), what));
  const Space space = describe_space(dataspace.get());
  std::vector<hsize_t> chunk(space.extents.size());
  check_done(H5Pget_chunk(creation.get(), static_cast<int>(chunk.size()), chunk.data()), what);
  double bytes = static_cast<double>(H5Tget_size(type.get()));
  for (std::size_t d = 0; d < chunk.size(); ++d) {
    const Extent chunks = d == 0 ? 1 : (space.extents[d] + chunk[d] - 1) / chunk[d];
    bytes *= static_cast<double>(chunks) * static_cast<double>(chunk[d]);
  }
  return bytes;
}

PropertyHandle access_list(const ChunkCache& cache, std::size_t bytes) {
  const auto what = [] { return std::string("The chunk cache cannot be set"); };
  PropertyHandle list = dataset_access();
  check_done(H5Pset_chunk_cache(list.get(), cache.slots, bytes, cache.preemption), what);
  return list;
}

DatasetHandle open_with(hid_t file, const std::string& path, hid_t list) {
  return DatasetHandle(check_id(H5Dopen2(file, path.c_str(), list), [&path] {
    return "Dataset " + quoted(path) + " cannot be opened";
  }));
}

}  // namespace

DatasetHandle open_for_reading(hid_t file, const std::string& path, const ChunkCache& cache) {
  if (!cache.is_default) return open_with(file, path, access_list(cache, cache.bytes).get());
  DatasetHandle dataset = open_with(file, path, dataset_access().get());
  const double wanted = band_bytes(dataset.get());
  if (wanted <= static_cast<double>(cache.bytes) || wanted > most_bytes) return dataset;
  // The cache of an open dataset cannot be changed: it is closed and opened again.
  dataset.reset();
  return open_with(file, path, access_list(cache, static_cast<std::size_t>(wanted)).get());
}

}  // namespace kelvo
