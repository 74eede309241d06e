// Blocks of elements between files and memory.
#include "storage/element_io.h"

#include <algorithm>
#include <limits>
#include <new>

#include "storage/check.h"
#include "storage/chunk_reader.h"
#include "storage/datatype.h"
#include "storage/describe_datatype.h"
#include "storage/hyperslab.h"
#include "storage/object.h"
#include "storage/sources.h"
#include "storage/stored_type.h"
#include "storage/traffic.h"
#include "storage/varying_values.h"

namespace kelvo {
namespace {

// Large enough to make a call's cost small, small enough to stay in the second-level cache.
constexpr std::size_t block_bytes = std::size_t{512} * 1024;

std::string cannot_read(const ElementPlace& place) { return place.name + " cannot be read"; }

// A missing filter is the one failure whose cause the HDF5 library words differently for each
// filter.
[[noreturn]] void fail_read(const ElementPlace& place) {
  throw_left_error();
  const std::string reason = hdf5_reason();  // now: the questions that follow clear it
  const PropertyHandle creation(place.dataset ? H5Dget_create_plist(place.dataset.get())
                                              : H5I_INVALID_HID);
  const int filters = creation ? H5Pget_nfilters(creation.get()) : 0;
  for (unsigned i = 0; filters > 0 && i < static_cast<unsigned>(filters); ++i) {
    unsigned flags = 0;
    std::size_t values = 0;
    const H5Z_filter_t filter =
        H5Pget_filter2(creation.get(), i, &flags, &values, nullptr, 0, nullptr, nullptr);
    if (H5Zfilter_avail(filter) > 0) continue;
    throw StatementError(Status::hdf5_refused, cannot_read(place) + ": filter " +
                                                   std::to_string(filter) + " is not available");
  }
  throw StatementError(Status::hdf5_refused,
                       cannot_read(place) + (reason.empty() ? "" : ": " + reason));
}

// What a damaged file says of itself need not fit together.

std::string damaged(const ElementPlace& place) { return place.name + " is damaged: "; }

void check_countable(const ElementPlace& place) {
  if (place.space.is_countable()) return;
  throw StatementError(Status::hdf5_refused,
                       damaged(place) + "its extents make more elements than can be counted");
}

void check_maximum(const ElementPlace& place) {
  for (std::size_t d = 0; d < place.space.extents.size(); ++d) {
    if (place.space.extents[d] <= place.space.maximum[d]) continue;
    throw StatementError(Status::hdf5_refused, damaged(place) + "an extent of it is " +
                                                   std::to_string(place.space.extents[d]) +
                                                   ", more than its maximum of " +
                                                   std::to_string(place.space.maximum[d]));
  }
}

void check_size(const ElementPlace& place) {
  if (H5Tget_size(place.memory_type.get()) == std::max<std::size_t>(1, place.type.size)) return;
  throw StatementError(Status::hdf5_refused,
                       damaged(place) + "the sizes in its type do not fit together");
}

// The size of an element as it lies in the file.
std::size_t stored_size(const ElementPlace& place) {
  if (place.type.is_self_contained()) return std::max<std::size_t>(1, place.type.file_size);
  const std::size_t address_bytes = address_bytes_of(place.dataset.get());
  return H5Tget_size(stored_datatype(place.file_type.get(), address_bytes).get());
}

[[noreturn]] void fail_stored(const ElementPlace& place, hsize_t stored, std::size_t element) {
  throw StatementError(Status::hdf5_refused, damaged(place) + "it stores " +
                                                 std::to_string(stored) + " bytes of " +
                                                 std::to_string(place.space.elements()) +
                                                 " elements of " + std::to_string(element));
}

// Contiguous data must end before the file does; the HDF5 library would give zeros for the rest.
void check_inside_file(const ElementPlace& place, haddr_t begin, hsize_t size) {
  const auto what = [&place] { return cannot_read(place); };
  const FileHandle file(check_id(H5Iget_file_id(place.dataset.get()), what));
  hsize_t end = 0;
  check_done(H5Fget_filesize(file.get(), &end), what);
  if (begin <= end && size <= end - begin) return;
  throw StatementError(Status::hdf5_refused, damaged(place) + "its " + std::to_string(size) +
                                                 " bytes from byte " + std::to_string(begin) +
                                                 " on go beyond the end of the file");
}

// Not where it was never written, or is in other files. Its offset does not tell: with a user block
// the library gives a number for those, too.
bool lies_in_file(hid_t dataset, hid_t creation) {
  H5D_space_status_t status = H5D_SPACE_STATUS_ERROR;
  return H5Dget_space_status(dataset, &status) >= 0 && status != H5D_SPACE_STATUS_NOT_ALLOCATED &&
         H5Pget_external_count(creation) <= 0;
}

// The HDF5 library counts the dimensions of chunks and of the dataset apart, and reads beyond
// either.
void check_chunks(const ElementPlace& place, hid_t creation) {
  const int rank = H5Pget_chunk(creation, 0, nullptr);
  if (rank >= 0 && static_cast<std::size_t>(rank) == place.space.extents.size()) return;
  throw StatementError(Status::hdf5_refused, damaged(place) + "its chunks have " +
                                                 std::to_string(rank) + " dimensions in place of " +
                                                 std::to_string(place.space.extents.size()));
}

void check_stored(const ElementPlace& place) {
  const hid_t dataset = place.dataset.get();
  const PropertyHandle creation(
      check_id(H5Dget_create_plist(dataset), [&place] { return cannot_read(place); }));
  const H5D_layout_t layout = H5Pget_layout(creation.get());
  if (layout == H5D_CHUNKED) return check_chunks(place, creation.get());
  if (layout != H5D_COMPACT && layout != H5D_CONTIGUOUS) return;
  if (layout == H5D_CONTIGUOUS && !lies_in_file(dataset, creation.get())) return;
  const haddr_t begin = layout == H5D_CONTIGUOUS ? H5Dget_offset(dataset) : 0;
  const hsize_t size = H5Dget_storage_size(dataset);
  const std::size_t element = stored_size(place);
  if (size / element < place.space.elements()) fail_stored(place, size, element);
  if (layout == H5D_CONTIGUOUS) check_inside_file(place, begin, size);
}

std::size_t byte_count(Extent elements, std::size_t size) {
  if (size != 0 && elements > std::numeric_limits<std::size_t>::max() / size)
    throw std::bad_alloc();
  return static_cast<std::size_t>(elements) * size;
}

// Values that no memory of ours can hold can still be described, and copied as they are.
void find_memory_type(ElementPlace& place) {
  try {
    place.memory_type = memory_datatype(place.type, place.file_type.get());
  } catch (const StatementError& error) {
    const std::string reason = cannot_read(place) + ": " + error.what();
    if (error.status() != Status::not_available) throw StatementError(error.status(), reason);
    place.unreadable = reason;
  }
}

ElementPlace described(ElementPlace place, hid_t space, hid_t file_type) {
  const DataspaceHandle owned_space(space);
  place.file_type = DatatypeHandle(file_type);
  const auto what = [&place] { return cannot_read(place); };
  check_id(space, what);
  check_id(file_type, what);
  place.space = describe_space(space);
  place.type = describe_datatype(file_type);
  find_memory_type(place);
  check_maximum(place);
  check_countable(place);
  if (place.unreadable.empty()) check_size(place);
  if (place.dataset) check_stored(place);
  return place;
}

// The selected ones of all elements.
void choose(const ElementPlace& place, const Selection& selection,
            const std::vector<std::byte>& all, std::vector<std::byte>* bytes) {
  const auto what = [&place] { return cannot_read(place); };
  const DataspaceHandle space = make_space(place.space);
  check_done(H5Sselect_hyperslab(space.get(), H5S_SELECT_SET, selection.start.data(),
                                 selection.stride.data(), selection.count.data(), nullptr),
             what);
  check_done(H5Dgather(space.get(), all.data(), place.memory_type.get(), bytes->size(),
                       bytes->data(), nullptr, nullptr),
             what);
}

}  // namespace

void read_elements(const ElementPlace& place, hid_t memory_space, hid_t file_space,
                   std::byte* bytes) {
  expect_values(place);
  const hid_t type = place.memory_type.get();
  const herr_t result = place.dataset ? H5Dread(place.dataset.get(), type, memory_space, file_space,
                                                H5P_DEFAULT, bytes)
                                      : H5Aread(place.attribute.get(), type, bytes);
  if (result < 0) fail_read(place);
}

ElementPlace place_of(DatasetHandle dataset, std::string name) {
  SourcedDataset found = within_reach(std::move(dataset), name);
  ElementPlace place;
  place.sources = std::move(found.sources);
  place.dataset = std::move(found.dataset);
  place.name = std::move(name);
  const hid_t id = place.dataset.get();
  return described(std::move(place), H5Dget_space(id), H5Dget_type(id));
}

ElementPlace place_of(AttributeHandle attribute, std::string name) {
  ElementPlace place;
  place.attribute = std::move(attribute);
  place.name = std::move(name);
  const hid_t id = place.attribute.get();
  return described(std::move(place), H5Aget_space(id), H5Aget_type(id));
}

void read_only_members(ElementPlace& place, Type type) {
  place.type = std::move(type);
  place.unreadable.clear();
  find_memory_type(place);
}

void expect_values(const ElementPlace& place) {
  if (!place.unreadable.empty()) throw StatementError(Status::not_available, place.unreadable);
}

void ElementBlock::release() noexcept {
  const bool chosen = whole_count_ > 0;
  const hsize_t count = chosen ? whole_count_ : count_;
  if (varying_type_ >= 0 && count > 0) {
    const DataspaceHandle space(H5Screate_simple(1, &count, nullptr));
    H5Dvlen_reclaim(varying_type_, space.get(), H5P_DEFAULT, (chosen ? whole_ : bytes_).data());
  }
  varying_type_ = H5I_INVALID_HID;
  count_ = whole_count_ = 0;
  whole_.clear();
  values_.restart();
}

ElementReader::ElementReader(const ElementPlace& place, Selection selection)
    : place_(place),
      selection_(std::move(selection)),
      walk_(selection_, elements_at_once(place, selection_, block_bytes)) {
  expect_values(place);
}

ElementReader::~ElementReader() = default;

void ElementReader::begin() {
  if (is_begun_) return;
  is_begun_ = true;
  varying_ = VaryingValues::of(place_);
  chunks_ = ChunkReader::begin(stored_place(), selection_,
                               elements_at_once(place_, selection_, block_bytes));
}

// What is read: where varying parts are taken care of here, their references.
const ElementPlace& ElementReader::stored_place() const {
  return varying_ ? varying_->stored() : place_;
}

bool ElementReader::next(ElementBlock& block) {
  block.release();
  begin();
  if (varying_) return next_varying(block);
  if (!walk_.next()) return false;
  read(&block.bytes_, &block.whole_);
  block.count_ = static_cast<std::size_t>(walk_.elements());
  if (!place_.type.has_varying_parts()) return true;
  block.varying_type_ = place_.memory_type.get();
  block.whole_count_ = block.whole_.size() / place_.type.size;
  return true;
}

bool ElementReader::next_varying(ElementBlock& block) {
  if (resolved_ == stored_count_) {
    if (!walk_.next()) return false;
    std::vector<std::byte> whole;
    read(&stored_, &whole);
    stored_count_ = static_cast<std::size_t>(walk_.elements());
    resolved_ = 0;
  }
  const std::byte* stored = stored_.data() + resolved_ * stored_place().type.size;
  const std::size_t count = varying_->count_together(stored, stored_count_ - resolved_);
  block.bytes_.resize(byte_count(count, place_.type.size));
  varying_->resolve(stored, count, block.bytes_.data(), &block.values_);
  block.count_ = count;
  resolved_ += count;
  return true;
}

// The block that the walk stands at. Of an attribute it is chosen from all elements, which `whole`
// holds then.
void ElementReader::read(std::vector<std::byte>* bytes, std::vector<std::byte>* whole) {
  const ElementPlace& place = stored_place();
  const Extent elements = walk_.elements();
  bytes->resize(byte_count(elements, place.type.size));
  if (place.dataset) {
    if (!read_chunks(bytes->data())) read_hyperslab(bytes->data());
    traffic_read().add(elements, place_.type.size);
    return;
  }
  const Extent all = place.space.elements();
  traffic_read().add(all, place_.type.size);
  if (selects_all(selection_, place.space))
    return read_elements(place, H5S_ALL, H5S_ALL, bytes->data());
  whole->resize(byte_count(all, place.type.size));
  read_elements(place, H5S_ALL, H5S_ALL, whole->data());
  choose(place, selection_, *whole, bytes);
}

// False where the HDF5 library has to read the block. Where chunks are damaged, it knows the
// reason.
bool ElementReader::read_chunks(std::byte* bytes) {
  if (chunks_ == nullptr) return false;
  if (chunks_->read(walk_, bytes)) return true;
  chunks_.reset();
  return false;
}

void ElementReader::read_hyperslab(std::byte* bytes) {
  const ElementPlace& place = stored_place();
  const HyperslabSpaces spaces =
      hyperslab_spaces(place, walk_.start(), selection_.stride, walk_.count(), cannot_read(place));
  read_elements(place, spaces.memory.get(), spaces.file.get(), bytes);
}

namespace {

// What H5Dscatter asks for its elements: all of them at once.
struct ScatterSource {
  const std::byte* elements;
  std::size_t size;
};

herr_t give_all(const void** bytes, std::size_t* size, void* source) {
  const auto* all = static_cast<const ScatterSource*>(source);
  *bytes = all->elements;
  *size = all->size;
  return 0;
}

// HDF5 writes attributes whole: what is not selected is read first and written again.
void write_attribute(const ElementPlace& place, const Selection& selection,
                     const std::byte* bytes) {
  const auto what = [&place] { return place.name + " cannot be written"; };
  if (selects_all(selection, place.space)) {
    check_done(H5Awrite(place.attribute.get(), place.memory_type.get(), bytes), what);
    traffic_written().add(place.space.elements(), place.type.size);
    return;
  }
  ElementReader reader(place, resolve_slice({}, place.space, place.name));
  ElementBlock block;
  reader.next(block);
  // The block keeps what it owns, also where other elements take the place of varying parts.
  std::vector<std::byte> whole(block.data(), block.data() + block.count() * place.type.size);
  const DataspaceHandle space = make_space(place.space);
  check_done(H5Sselect_hyperslab(space.get(), H5S_SELECT_SET, selection.start.data(),
                                 selection.stride.data(), selection.count.data(), nullptr),
             what);
  ScatterSource source{bytes, static_cast<std::size_t>(selection.elements()) * place.type.size};
  check_done(H5Dscatter(give_all, &source, place.memory_type.get(), space.get(), whole.data()),
             what);
  check_done(H5Awrite(place.attribute.get(), place.memory_type.get(), whole.data()), what);
}

}  // namespace

void write_elements(const ElementPlace& place, const Selection& selection, const std::byte* bytes) {
  const Extent elements = selection.elements();
  if (elements == 0) return;
  if (place.attribute) return write_attribute(place, selection, bytes);
  const std::string what = place.name + " cannot be written";
  BlockWalk walk(selection, std::min(elements, most_elements_together(place, selection)));
  while (walk.next()) {
    const HyperslabSpaces spaces =
        hyperslab_spaces(place, walk.start(), selection.stride, walk.count(), what);
    check_done(H5Dwrite(place.dataset.get(), place.memory_type.get(), spaces.memory.get(),
                        spaces.file.get(), H5P_DEFAULT, bytes),
               [&what]() -> const std::string& { return what; });
    bytes += static_cast<std::size_t>(walk.elements()) * place.type.size;
  }
  traffic_written().add(elements, place.type.size);
}

}  // namespace kelvo
