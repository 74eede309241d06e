// Asking the creation properties.
#include "storage/chunk_layout.h"

#include <algorithm>
#include <array>

#include "storage/lzf_filter.h"

namespace kelvo {
namespace {

// Larger ones are left to the HDF5 library: a size that a damaged file makes up is not allocated.
constexpr double most_chunk_bytes = 256.0 * 1024 * 1024;

struct KnownFilter {
  H5Z_filter_t id;
  ChunkFilter filter;
};

constexpr std::array<KnownFilter, 4> known_filters = {{
    {H5Z_FILTER_DEFLATE, ChunkFilter::deflate},
    {lzf_filter_id, ChunkFilter::lzf},
    {H5Z_FILTER_SHUFFLE, ChunkFilter::shuffle},
    {H5Z_FILTER_FLETCHER32, ChunkFilter::fletcher32},
}};

// False where a filter is unknown or there twice, or is a second one that compresses.
bool add_filter(hid_t creation, unsigned index, ChunkCoding* coding) {
  unsigned flags = 0;
  std::array<unsigned, 1> values{};
  std::size_t count = values.size();
  const H5Z_filter_t id =
      H5Pget_filter2(creation, index, &flags, &count, values.data(), 0, nullptr, nullptr);
  const KnownFilter* known = std::find_if(known_filters.begin(), known_filters.end(),
                                          [id](const KnownFilter& one) { return one.id == id; });
  if (known == known_filters.end()) return false;
  const bool is_shuffle = known->filter == ChunkFilter::shuffle;
  if (is_shuffle && (count < 1 || values[0] != coding->element_size)) return false;
  std::vector<ChunkFilter>& filters = coding->filters;
  const bool is_refused = std::any_of(filters.begin(), filters.end(), [known](ChunkFilter other) {
    return other == known->filter || (compresses(other) && compresses(known->filter));
  });
  if (is_refused) return false;
  filters.push_back(known->filter);
  return true;
}

bool describe_coding(hid_t creation, const std::vector<Extent>& chunk, ChunkCoding* coding) {
  // Some of the chunks are not filtered then, without a word in their masks.
  unsigned options = 0;
  if (H5Pget_chunk_opts(creation, &options) < 0 || options != 0) return false;
  auto bytes = static_cast<double>(coding->element_size);
  for (const Extent extent : chunk) bytes *= static_cast<double>(extent);
  if (!(bytes >= 1 && bytes <= most_chunk_bytes)) return false;
  coding->chunk_size = static_cast<std::size_t>(bytes);
  const int filters = H5Pget_nfilters(creation);
  for (unsigned i = 0; filters > 0 && i < static_cast<unsigned>(filters); ++i) {
    if (!add_filter(creation, i, coding)) return false;
  }
  return filters > 0;
}

// The fill value, unless chunks that were never written are passed over when they are read.
std::vector<std::byte> fill_element(hid_t creation, hid_t file_type) {
  H5D_fill_value_t state = H5D_FILL_VALUE_UNDEFINED;
  H5D_fill_time_t time = H5D_FILL_TIME_NEVER;
  if (H5Pfill_value_defined(creation, &state) < 0 || H5Pget_fill_time(creation, &time) < 0 ||
      state == H5D_FILL_VALUE_UNDEFINED || time == H5D_FILL_TIME_NEVER)
    return {};
  std::vector<std::byte> element(H5Tget_size(file_type));
  if (H5Pget_fill_value(creation, file_type, element.data()) < 0) return {};
  return element;
}

}  // namespace

bool has_addressable_chunks(const ElementPlace& place) {
  return place.space.extents.size() < H5S_MAX_RANK;
}

std::optional<ChunkLayout> decodable_layout(const ElementPlace& place) {
  const std::size_t rank = place.space.extents.size();
  // References change on their way to memory.
  if (!place.dataset || rank == 0 || !has_addressable_chunks(place) ||
      !place.type.is_self_contained())
    return std::nullopt;
  const PropertyHandle creation(H5Dget_create_plist(place.dataset.get()));
  if (!creation || H5Pget_layout(creation.get()) != H5D_CHUNKED) return std::nullopt;
  ChunkLayout layout;
  layout.extents.resize(rank);
  if (H5Pget_chunk(creation.get(), static_cast<int>(rank), layout.extents.data()) !=
      static_cast<int>(rank))
    return std::nullopt;
  layout.coding.element_size = H5Tget_size(place.file_type.get());
  if (!describe_coding(creation.get(), layout.extents, &layout.coding)) return std::nullopt;
  layout.fill = fill_element(creation.get(), place.file_type.get());
  return layout;
}

}  // namespace kelvo
