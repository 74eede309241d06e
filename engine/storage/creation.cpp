// Datasets and attributes made new.
#include "storage/creation.h"

#include <algorithm>
#include <cmath>

#include "storage/check.h"
#include "storage/datatype.h"
#include "storage/object.h"
#include "values/encoded_elements.h"

namespace kelvo {
namespace {

constexpr std::size_t chosen_chunk_bytes = std::size_t{256} * 1024;
constexpr Extent most_chunk_bytes = 0xffffffff;      // the file format's limit
constexpr Extent most_contiguous_bytes = INT64_MAX;  // what a file may have
constexpr Extent most_compact_bytes = 65520;  // what an object's header takes, in 8-byte steps
constexpr unsigned szip_block = 8;            // pixels; SZIP takes even numbers up to 32

std::string cannot_set() { return "The storage of a dataset cannot be set"; }

bool can_grow(const Space& space) {
  return !space.maximum.empty() && space.maximum != space.extents;
}

std::string dataset(const std::string& path) { return "Dataset " + quoted(path); }

std::string counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

void check_chunk(const std::string& path, const Type& type, const Space& space,
                 const std::vector<Extent>& chunk) {
  if (chunk.size() != space.extents.size()) {
    throw StatementError(Status::out_of_range, "CHUNK has " + counted(chunk.size(), "extent") +
                                                   ", dataset " + quoted(path) + " has " +
                                                   counted(space.extents.size(), "dimension"));
  }
  for (std::size_t d = 0; d < chunk.size(); ++d) {
    if (chunk[d] <= std::max<Extent>(1, space.maximum[d])) continue;
    throw StatementError(Status::out_of_range, "Chunk extent " + std::to_string(chunk[d]) +
                                                   " is larger than the maximum " +
                                                   std::to_string(space.maximum[d]) +
                                                   " of dimension " + std::to_string(d));
  }
  if (bytes_of(chunk, type.file_size) > most_chunk_bytes) {
    throw StatementError(Status::out_of_range,
                         "A chunk has at most " + std::to_string(most_chunk_bytes) + " bytes");
  }
}

void check_unchunked(const std::string& path, const Type& type, const Space& space,
                     const StorageOptions& options) {
  const bool compact = options.layout == Layout::compact;
  if (can_grow(space)) {
    throw StatementError(Status::wrong_kind, dataset(path) + " can grow, so it cannot be " +
                                                 (compact ? "COMPACT" : "CONTIGUOUS") +
                                                 " (CHUNK lets it grow)");
  }
  if (compact && bytes_of(space.extents, type.file_size) > most_compact_bytes) {
    throw StatementError(Status::out_of_range, dataset(path) +
                                                   " is too large for COMPACT (at most " +
                                                   std::to_string(most_compact_bytes) + " bytes)");
  }
}

// The library makes larger ones too, which nobody can read.
void check_size(const std::string& path, const Type& type, const Space& space, bool chunked) {
  if (!space.is_countable()) {
    throw StatementError(Status::out_of_range,
                         dataset(path) + " would have more elements than can be counted");
  }
  if (!chunked && bytes_of(space.extents, type.file_size) > most_contiguous_bytes) {
    throw StatementError(Status::out_of_range,
                         dataset(path) + " is too large to be stored in one piece (at most " +
                             std::to_string(most_contiguous_bytes) + " bytes)");
  }
}

void set_layout(hid_t list, const std::string& path, const Type& type, const Space& space,
                const StorageOptions& options) {
  const bool unchunked = options.layout == Layout::contiguous || options.layout == Layout::compact;
  const bool chunked = !unchunked && (options.layout == Layout::chunked ||
                                      !options.filters.empty() || can_grow(space));
  check_size(path, type, space, chunked);
  if (unchunked) {
    check_unchunked(path, type, space, options);
    const H5D_layout_t layout = options.layout == Layout::compact ? H5D_COMPACT : H5D_CONTIGUOUS;
    return check_done(H5Pset_layout(list, layout), cannot_set);
  }
  if (!chunked) return;
  if (space.extents.empty()) {
    throw StatementError(Status::wrong_kind,
                         dataset(path) + " is scalar, so it has neither chunks nor filters");
  }
  const std::vector<Extent> chunk =
      options.chunk.empty() ? choose_chunk(space, type.file_size) : options.chunk;
  check_chunk(path, type, space, chunk);
  check_done(H5Pset_chunk(list, static_cast<int>(chunk.size()), chunk.data()), cannot_set);
}

void check_filter(const Filter& filter) {
  const std::string name = "Filter " + std::to_string(filter.id);
  unsigned abilities = 0;
  if (H5Zfilter_avail(static_cast<H5Z_filter_t>(filter.id)) <= 0) {
    throw StatementError(Status::not_available,
                         name + " is not available (SET PLUGIN PATH names where plug-ins are)");
  }
  const bool known = H5Zget_filter_info(static_cast<H5Z_filter_t>(filter.id), &abilities) >= 0;
  if (known && (abilities & H5Z_FILTER_CONFIG_ENCODE_ENABLED) == 0)
    throw StatementError(Status::not_available, name + " can only read in this HDF5 library");
}

// Integers keep the given number of bits (0: as many as needed), floats of digits.
std::vector<unsigned> scaleoffset_values(const Type& type, unsigned factor) {
  if (type.kind == Kind::real) return {H5Z_SO_FLOAT_DSCALE, factor};
  if (type.kind != Kind::integer) {
    throw StatementError(Status::wrong_kind,
                         "SCALEOFFSET takes integers and floats, not " + type_name(type));
  }
  if (factor > 8 * type.file_size) {
    throw StatementError(
        Status::out_of_range,
        "SCALEOFFSET " + std::to_string(factor) + " is more bits than " + type_name(type) + " has");
  }
  return {H5Z_SO_INT, factor};
}

void add_filter(hid_t list, const Filter& filter, const Type& type) {
  check_filter(filter);
  if (filter.id == szip_id && filter.values.empty())
    return check_done(H5Pset_szip(list, H5_SZIP_NN_OPTION_MASK, szip_block), cannot_set);
  std::vector<unsigned> values = filter.values;
  if (filter.id == scaleoffset_id && values.size() == 1)
    values = scaleoffset_values(type, values[0]);
  const unsigned flags = filter.required ? H5Z_FLAG_MANDATORY : H5Z_FLAG_OPTIONAL;
  check_done(H5Pset_filter(list, static_cast<H5Z_filter_t>(filter.id), flags, values.size(),
                           values.data()),
             cannot_set);
}

void set_fill(hid_t list, const Type& type, const Literal& fill) {
  EncodedElements element(type);
  element.append(fill);
  const DatatypeHandle memory_type = memory_datatype(type, file_datatype(type).get());
  check_done(H5Pset_fill_value(list, memory_type.get(), element.data()), cannot_set);
}

H5D_alloc_time_t allocation_time(Allocation allocation) {
  switch (allocation) {
    case Allocation::early:
      return H5D_ALLOC_TIME_EARLY;
    case Allocation::late:
      return H5D_ALLOC_TIME_LATE;
    case Allocation::incremental:
      break;
  }
  return H5D_ALLOC_TIME_INCR;
}

}  // namespace

std::vector<Extent> choose_chunk(const Space& space, std::size_t element_size) {
  std::vector<Extent> chunk(space.extents.size(), 1);
  Extent left = std::max<Extent>(1, chosen_chunk_bytes / std::max<std::size_t>(1, element_size));
  Extent* slowest_endless = nullptr;
  for (std::size_t d = chunk.size(); d-- > 0;) {
    const bool endless = space.maximum[d] == unlimited;
    if (endless) slowest_endless = &chunk[d];
    // A dimension without end leaves as much to each slower one.
    const double share = std::pow(static_cast<double>(left), 1.0 / static_cast<double>(d + 1));
    const Extent wanted = endless ? static_cast<Extent>(std::lround(share)) : space.maximum[d];
    chunk[d] = std::clamp<Extent>(wanted, 1, left);
    left /= chunk[d];
  }
  if (slowest_endless != nullptr) *slowest_endless *= std::max<Extent>(1, left);
  return chunk;
}

std::vector<Extent> chunk_of(hid_t dataset) {
  const auto what = [] { return std::string("The storage of a dataset cannot be read"); };
  const PropertyHandle list(check_id(H5Dget_create_plist(dataset), what));
  std::vector<Extent> chunk;
  if (H5Pget_layout(list.get()) != H5D_CHUNKED) return chunk;
  chunk.resize(H5S_MAX_RANK);
  const int rank = H5Pget_chunk(list.get(), H5S_MAX_RANK, chunk.data());
  check_done(rank, what);
  chunk.resize(static_cast<std::size_t>(rank));
  return chunk;
}

PropertyHandle storage_list(const std::string& path, const Type& type, const Space& space,
                            const StorageOptions& options) {
  PropertyHandle list(check_id(H5Pcreate(H5P_DATASET_CREATE), cannot_set));
  set_layout(list.get(), path, type, space, options);
  for (const Filter& filter : options.filters) add_filter(list.get(), filter, type);
  if (options.fill) set_fill(list.get(), type, *options.fill);
  if (options.allocation)
    check_done(H5Pset_alloc_time(list.get(), allocation_time(*options.allocation)), cannot_set);
  const unsigned order = H5P_CRT_ORDER_TRACKED | H5P_CRT_ORDER_INDEXED;
  if (options.track_order) check_done(H5Pset_attr_creation_order(list.get(), order), cannot_set);
  return list;
}

DatasetHandle create_dataset(hid_t file, const std::string& path, const Type& type,
                             const Space& space, const StorageOptions& options) {
  return create_dataset(file, path, file_datatype(type).get(), space,
                        storage_list(path, type, space, options).get());
}

DatasetHandle create_dataset(hid_t file, const std::string& path, hid_t file_type,
                             const Space& space, hid_t storage) {
  const DataspaceHandle dataspace = make_space(space);
  return DatasetHandle(check_id(H5Dcreate2(file, path.c_str(), file_type, dataspace.get(),
                                           making_parents().get(), storage, H5P_DEFAULT),
                                [&path] { return dataset(path) + " cannot be created"; }));
}

}  // namespace kelvo
