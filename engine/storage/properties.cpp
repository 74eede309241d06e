// Reading creation properties and the index of chunks.
#include "storage/properties.h"

#include <array>
#include <map>
#include <utility>

#include "storage/check.h"
#include "storage/chunk_layout.h"

namespace kelvo {
namespace {

std::string cannot_read_storage(const ElementPlace& place) {
  return "The storage of " + place.name + " cannot be read";
}

PropertyHandle creation_list(const ElementPlace& place) {
  return PropertyHandle(check_id(H5Dget_create_plist(place.dataset.get()),
                                 [&place] { return cannot_read_storage(place); }));
}

template <typename Code, std::size_t n>
std::string_view word_for(const std::array<std::pair<Code, std::string_view>, n>& words, Code code,
                          const ElementPlace& place) {
  for (const auto& [word_code, word] : words) {
    if (word_code == code) return word;
  }
  fail_hdf5(cannot_read_storage(place));
}

constexpr std::array<std::pair<H5D_layout_t, std::string_view>, 4> layout_words = {{
    {H5D_COMPACT, "COMPACT"},
    {H5D_CONTIGUOUS, "CONTIGUOUS"},
    {H5D_CHUNKED, "CHUNKED"},
    {H5D_VIRTUAL, "VIRTUAL"},
}};

constexpr std::array<std::pair<H5D_alloc_time_t, std::string_view>, 3> allocation_words = {{
    {H5D_ALLOC_TIME_EARLY, "EARLY"},
    {H5D_ALLOC_TIME_LATE, "LATE"},
    {H5D_ALLOC_TIME_INCR, "INCREMENTAL"},
}};

constexpr std::array<std::pair<H5D_fill_value_t, std::string_view>, 3> fill_words = {{
    {H5D_FILL_VALUE_UNDEFINED, "UNDEFINED"},
    {H5D_FILL_VALUE_DEFAULT, "DEFAULT"},
    {H5D_FILL_VALUE_USER_DEFINED, "USER"},
}};

H5D_fill_value_t fill_state(const PropertyHandle& creation, const ElementPlace& place) {
  H5D_fill_value_t state = H5D_FILL_VALUE_ERROR;
  check_done(H5Pfill_value_defined(creation.get(), &state),
             [&place] { return cannot_read_storage(place); });
  return state;
}

std::vector<Extent> chunk_extents(const PropertyHandle& creation, const ElementPlace& place) {
  std::vector<Extent> chunk(place.space.extents.size());
  check_done(H5Pget_chunk(creation.get(), static_cast<int>(chunk.size()), chunk.data()),
             [&place] { return cannot_read_storage(place); });
  return chunk;
}

unsigned order_flags(hid_t object, const std::string& name) {
  const auto what = [&name] { return "The properties of " + name + " cannot be read"; };
  unsigned flags = 0;
  if (H5Iget_type(object) == H5I_GROUP) {
    const PropertyHandle list(check_id(H5Gget_create_plist(object), what));
    check_done(H5Pget_link_creation_order(list.get(), &flags), what);
  } else {
    const bool is_dataset = H5Iget_type(object) == H5I_DATASET;
    const PropertyHandle list(
        check_id(is_dataset ? H5Dget_create_plist(object) : H5Tget_create_plist(object), what));
    check_done(H5Pget_attr_creation_order(list.get(), &flags), what);
  }
  return flags;
}

// The places where a dataset's chunks may be, in C order.
class ChunkGrid {
 public:
  ChunkGrid(const Space& space, std::vector<Extent> chunk)
      : extents_(space.extents), chunk_(std::move(chunk)), at_(extents_.size(), 0) {}

  [[nodiscard]] double size() const {
    double count = 1;
    for (std::size_t d = 0; d < chunk_.size(); ++d) {
      const Extent across = (extents_[d] + chunk_[d] - 1) / chunk_[d];
      count *= static_cast<double>(across);
    }
    return count;
  }

  [[nodiscard]] const hsize_t* at() const { return at_.data(); }

  /// False at the end, which is the beginning again.
  bool next() {
    for (std::size_t d = at_.size(); d-- > 0;) {
      at_[d] += chunk_[d];
      if (at_[d] < extents_[d]) return true;
      at_[d] = 0;
    }
    return false;
  }

 private:
  std::vector<Extent> extents_;
  std::vector<Extent> chunk_;
  std::vector<hsize_t> at_;
};

// The HDF5 library finds the chunk of a number by counting from the first one on. Its numbers
// follow the index, which is not in C order where a dimension behind the first can grow.
std::vector<std::uint32_t> masks_asked(const ElementPlace& place, const DataspaceHandle& space,
                                       hsize_t count) {
  std::map<std::vector<hsize_t>, std::uint32_t> masks_by_place;
  std::vector<hsize_t> at(place.space.extents.size());
  for (hsize_t i = 0; i < count; ++i) {
    unsigned mask = 0;
    check_done(
        H5Dget_chunk_info(place.dataset.get(), space.get(), i, at.data(), &mask, nullptr, nullptr),
        [&place] { return cannot_read_storage(place); });
    masks_by_place[at] = mask;
  }
  std::vector<std::uint32_t> masks;
  masks.reserve(masks_by_place.size());
  for (const auto& [chunk, mask] : masks_by_place) masks.push_back(mask);
  return masks;
}

// Finds each chunk by its place, which is fast, but has to read it, filters not undone.
std::vector<std::uint32_t> masks_read(const ElementPlace& place, ChunkGrid grid) {
  const auto what = [&place] { return cannot_read_storage(place); };
  const hid_t dataset = place.dataset.get();
  std::vector<std::uint32_t> masks;
  std::vector<std::byte> chunk;
  do {
    hsize_t bytes = 0;
    // Some kinds of index fail for a place without a chunk, others give no bytes.
    if (H5Dget_chunk_storage_size(dataset, grid.at(), &bytes) < 0 || bytes == 0) continue;
    chunk.resize(static_cast<std::size_t>(bytes));
    masks.emplace_back();
    check_done(H5Dread_chunk(dataset, H5P_DEFAULT, grid.at(), &masks.back(), chunk.data()), what);
  } while (grid.next());
  return masks;
}

// Whether asking for masks costs more than reading them; both in nanoseconds, as measured.
bool is_asking_dearer(hsize_t chunks, double places, std::uint64_t stored) {
  const auto count = static_cast<double>(chunks);
  const double asking = count * count * 20;
  const double reading = places * 3000 + static_cast<double>(stored);
  return asking > reading;
}

// A file that is never written anywhere.
FileHandle memory_file() {
  const auto what = [] { return std::string("A file in memory cannot be made"); };
  const PropertyHandle access(check_id(H5Pcreate(H5P_FILE_ACCESS), what));
  check_done(H5Pset_fapl_core(access.get(), std::size_t{64} * 1024, false), what);
  check_done(H5Pset_fclose_degree(access.get(), H5F_CLOSE_STRONG), what);
  return FileHandle(
      check_id(H5Fcreate("kelvo-memory", H5F_ACC_TRUNC, H5P_DEFAULT, access.get()), what));
}

// What the fill value owns, given back when it goes.
class FillBytes {
 public:
  FillBytes(const ElementPlace& place, const PropertyHandle& creation)
      : type_(place.memory_type.get()), bytes_(place.type.size) {
    check_done(H5Pget_fill_value(creation.get(), type_, bytes_.data()),
               [&place] { return "The fill value of " + place.name + " cannot be read"; });
  }
  FillBytes(const FillBytes&) = delete;
  FillBytes& operator=(const FillBytes&) = delete;
  ~FillBytes() {
    const DataspaceHandle one(H5Screate(H5S_SCALAR));
    H5Dvlen_reclaim(type_, one.get(), H5P_DEFAULT, bytes_.data());
  }

  [[nodiscard]] const void* data() const { return bytes_.data(); }

 private:
  hid_t type_;
  std::vector<std::byte> bytes_;
};

}  // namespace

StorageDescription describe_storage(const ElementPlace& place) {
  const auto what = [&place] { return cannot_read_storage(place); };
  const PropertyHandle creation = creation_list(place);
  H5D_alloc_time_t allocation = H5D_ALLOC_TIME_ERROR;
  check_done(H5Pget_alloc_time(creation.get(), &allocation), what);
  const H5D_layout_t layout = H5Pget_layout(creation.get());
  StorageDescription storage;
  storage.type = word_for(layout_words, layout, place);
  storage.allocation = word_for(allocation_words, allocation, place);
  storage.fill_type = word_for(fill_words, fill_state(creation, place), place);
  if (layout == H5D_CHUNKED) storage.chunk = chunk_extents(creation, place);
  return storage;
}

std::string_view creation_order(hid_t object, const std::string& name) {
  const unsigned flags = order_flags(object, name);
  if ((flags & H5P_CRT_ORDER_INDEXED) != 0) return "INDEXED";
  return (flags & H5P_CRT_ORDER_TRACKED) != 0 ? "TRACKED" : "NONE";
}

std::vector<std::uint32_t> chunk_masks(const ElementPlace& place) {
  const PropertyHandle creation = creation_list(place);
  if (H5Pget_layout(creation.get()) != H5D_CHUNKED) return {};
  const DataspaceHandle space(
      check_id(H5Dget_space(place.dataset.get()), [&place] { return cannot_read_storage(place); }));
  hsize_t count = 0;
  check_done(H5Dget_num_chunks(place.dataset.get(), space.get(), &count),
             [&place] { return cannot_read_storage(place); });
  const ChunkGrid grid(place.space, chunk_extents(creation, place));
  return has_addressable_chunks(place) && is_asking_dearer(count, grid.size(), stored_bytes(place))
             ? masks_read(place, grid)
             : masks_asked(place, space, count);
}

std::uint64_t stored_bytes(const ElementPlace& place) {
  return place.attribute ? H5Aget_storage_size(place.attribute.get())
                         : H5Dget_storage_size(place.dataset.get());
}

std::uint64_t file_bytes(hid_t file) {
  hsize_t bytes = 0;
  check_done(H5Fget_filesize(file, &bytes),
             [] { return std::string("The size of the file cannot be read"); });
  return bytes;
}

std::optional<FillValue> fill_value(const ElementPlace& place) {
  const auto what = [&place] { return "The fill value of " + place.name + " cannot be read"; };
  const PropertyHandle creation = creation_list(place);
  const H5D_fill_value_t state = fill_state(creation, place);
  if (state == H5D_FILL_VALUE_UNDEFINED) return std::nullopt;
  FillValue fill;
  fill.memory = memory_file();
  const PropertyHandle list(check_id(H5Pcreate(H5P_DATASET_CREATE), what));
  if (state == H5D_FILL_VALUE_USER_DEFINED) {
    const FillBytes bytes(place, creation);
    check_done(H5Pset_fill_value(list.get(), place.memory_type.get(), bytes.data()), what);
  }
  const DatatypeHandle type(check_id(H5Tcopy(place.file_type.get()), what));
  const DataspaceHandle one(check_id(H5Screate(H5S_SCALAR), what));
  DatasetHandle dataset(check_id(H5Dcreate2(fill.memory.get(), "fill", type.get(), one.get(),
                                            H5P_DEFAULT, list.get(), H5P_DEFAULT),
                                 what));
  fill.place = place_of(std::move(dataset), "The fill value of " + place.name);
  return fill;
}

}  // namespace kelvo
