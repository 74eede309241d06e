// A walk over the parts of the type, a column of elements at a time, so that the values of many
// elements are taken out of the heaps, and converted, at once.
#include "storage/varying_values.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include "storage/check.h"
#include "storage/datatype.h"
#include "storage/describe_datatype.h"
#include "storage/reference_copy.h"
#include "storage/stored_type.h"
#include "storage/varying_part.h"
#include "values/bits.h"

namespace kelvo {
namespace {

// Bytes of values; one element alone may have more.
constexpr std::uint64_t most_together = std::uint64_t{4} * 1024 * 1024;

std::string cannot_read() { return "The data type cannot be read"; }

// --- references ---

struct Reference {
  std::uint64_t count = 0;
  HeapPlace place;
};

Reference reference_at(const std::byte* bytes, std::size_t address_bytes) {
  const std::byte* address = bytes + 4;
  Reference reference;
  reference.count = load_little<std::uint32_t>(bytes);
  reference.place.address = address_bytes == 8
                                ? load_little<std::uint64_t>(address)
                                : load_integer(address, address_bytes, ByteOrder::little, false);
  reference.place.index = load_little<std::uint32_t>(address + address_bytes);
  return reference;
}

// What the values of an element take in memory, as its references tell.
std::uint64_t claimed(const VaryingPart& part, const std::byte* stored) {
  if (!part.varies) return 0;
  if (part.kind == Kind::varying_text) return load_little<std::uint32_t>(stored);
  if (part.kind == Kind::sequence) {
    return std::uint64_t{load_little<std::uint32_t>(stored)} *
           std::max(part.items->conversion.room(), part.items->part.size);
  }
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < part.length; ++i) {
    for (const VaryingPart& inner : part.parts) {
      const std::size_t at = i * inner.stored_size + inner.stored_offset;
      bytes += claimed(inner, stored + at);
    }
    if (bytes > most_together) break;
  }
  return bytes;
}

// --- values ---

// Elements that are made of stored ones; both lie some way apart.
struct Column {
  const std::byte* stored = nullptr;
  std::size_t stored_stride = 0;
  std::byte* elements = nullptr;
  std::size_t stride = 0;
  std::size_t count = 0;
};

struct SequenceInMemory {
  std::size_t count = 0;
  const std::byte* items = nullptr;
};

template <std::size_t size>
void copy_each(const Column& column) {
  for (std::size_t i = 0; i < column.count; ++i) {
    std::memcpy(column.elements + i * column.stride, column.stored + i * column.stored_stride,
                size);
  }
}

void copy_column(const Column& column, std::size_t size) {
  if (column.stride == size && column.stored_stride == size) {
    if (column.count > 0) std::memcpy(column.elements, column.stored, column.count * size);
    return;
  }
  switch (size) {
    case 1:
      return copy_each<1>(column);
    case 2:
      return copy_each<2>(column);
    case 4:
      return copy_each<4>(column);
    case 8:
      return copy_each<8>(column);
    default:
      for (std::size_t i = 0; i < column.count; ++i) {
        std::memcpy(column.elements + i * column.stride, column.stored + i * column.stored_stride,
                    size);
      }
  }
}

class Resolution {
 public:
  Resolution(GlobalHeap& heap, Arena& values)
      : heap_(heap),
        values_(values),
        address_bytes_(heap.file().address_bytes()),
        undefined_(address_bytes_ < 8 ? (std::uint64_t{1} << 8 * address_bytes_) - 1
                                      : std::numeric_limits<std::uint64_t>::max()) {}

  void fill(VaryingPart& part, const Column& column);

 private:
  std::optional<GlobalHeap::Found> value_of(const Reference& reference, std::size_t item_size);
  void fill_array(VaryingPart& part, const Column& column);
  void fill_texts(const Column& column);
  void fill_plain_sequences(std::size_t item_size, const Column& column);
  void fill_sequences(VaryingItems& items, const Column& column);
  std::size_t gather(VaryingItems& items, const Column& column);
  [[nodiscard]] Reference reference_of(const Column& column, std::size_t element) const {
    return reference_at(column.stored + element * column.stored_stride, address_bytes_);
  }

  GlobalHeap& heap_;
  Arena& values_;
  std::size_t address_bytes_;
  std::uint64_t undefined_;  // address
};

void Resolution::fill(VaryingPart& part, const Column& column) {
  if (!part.varies) return copy_column(column, part.size);
  if (part.kind == Kind::varying_text) return fill_texts(column);
  if (part.kind == Kind::sequence) return fill_sequences(*part.items, column);
  if (part.kind == Kind::array) return fill_array(part, column);
  for (VaryingPart& member : part.parts) {
    Column inner = column;
    inner.stored += member.stored_offset;
    inner.elements += member.offset;
    fill(member, inner);
  }
}

// Along the longer side.
void Resolution::fill_array(VaryingPart& part, const Column& column) {
  VaryingPart& base = part.parts[0];
  const bool by_elements = column.count < part.length;
  for (std::size_t i = 0; i < std::min(column.count, part.length); ++i) {
    Column inner = column;
    inner.stored += i * (by_elements ? column.stored_stride : base.stored_size);
    inner.elements += i * (by_elements ? column.stride : base.size);
    if (by_elements) {
      inner.stored_stride = base.stored_size;
      inner.stride = base.size;
      inner.count = part.length;
    }
    fill(base, inner);
  }
}

// Nothing for null, which elements are that were never written.
std::optional<GlobalHeap::Found> Resolution::value_of(const Reference& reference,
                                                      std::size_t item_size) {
  const auto [address, index] = reference.place;
  const std::uint64_t size = reference.count * item_size;
  if (address == 0) {
    if (size != 0) heap_.fail_nowhere(size);
    return std::nullopt;
  }
  if (size == 0 && (index == 0 || address == undefined_)) return GlobalHeap::Found();
  return heap_.find(reference.place, size);
}

void Resolution::fill_texts(const Column& column) {
  for (std::size_t i = 0; i < column.count; ++i) {
    const auto found = value_of(reference_of(column, i), 1);
    std::byte* text = nullptr;
    if (found) {
      text = values_.take(found->size + 1);
      heap_.copy(*found, text);
      text[found->size] = std::byte{0};
    }
    std::memcpy(column.elements + i * column.stride, &text, sizeof text);
  }
}

void Resolution::fill_plain_sequences(std::size_t item_size, const Column& column) {
  for (std::size_t i = 0; i < column.count; ++i) {
    const auto found = value_of(reference_of(column, i), item_size);
    SequenceInMemory sequence;
    if (found && found->size > 0) {
      std::byte* items = values_.take_aligned(found->size);
      heap_.copy(*found, items);
      sequence = {found->size / item_size, items};
    }
    std::memcpy(column.elements + i * column.stride, &sequence, sizeof sequence);
  }
}

void Resolution::fill_sequences(VaryingItems& items, const Column& column) {
  VaryingPart& part = items.part;
  if (items.is_plain()) return fill_plain_sequences(part.size, column);
  const std::size_t count = gather(items, column);
  if (!items.conversion.run(items.gathered.data(), count))
    fail_hdf5(heap_.shown() + " cannot be read");
  std::byte* next = values_.take_aligned(count * part.size);
  fill(part, {items.gathered.data(), part.stored_size, next, part.size, count});
  for (std::size_t i = 0; i < column.count; ++i) {
    SequenceInMemory sequence;
    sequence.count = static_cast<std::size_t>(reference_of(column, i).count);
    if (sequence.count > 0) sequence.items = next;
    next += sequence.count * part.size;
    std::memcpy(column.elements + i * column.stride, &sequence, sizeof sequence);
  }
}

// The items of all sequences side by side, with room for converting them; how many there are.
std::size_t Resolution::gather(VaryingItems& items, const Column& column) {
  const std::size_t item_size = items.conversion.size_before();
  items.gathered.clear();
  for (std::size_t i = 0; i < column.count; ++i) {
    const auto found = value_of(reference_of(column, i), item_size);
    if (!found || found->size == 0) continue;
    const std::size_t at = items.gathered.size();
    items.gathered.resize(at + found->size);
    heap_.copy(*found, items.gathered.data() + at);
  }
  const std::size_t count = items.gathered.size() / item_size;
  items.gathered.resize(count * items.conversion.room());
  return count;
}

// --- the stored elements ---

template <typename Owner>
Owner shared(const Owner& owner) {
  if (!owner) return Owner();
  H5Iinc_ref(owner.get());
  return Owner(owner.get());
}

bool is_as_in_file(const ElementPlace& place) {
  return H5Tequal(place.memory_type.get(), place.file_type.get()) > 0;
}

// The engine's own reading of chunks would take the values of a fill value, which are in memory,
// for references.
bool has_own_fill(const ElementPlace& place) {
  if (!place.dataset) return false;
  const PropertyHandle creation(H5Dget_create_plist(place.dataset.get()));
  H5D_fill_value_t state = H5D_FILL_VALUE_ERROR;
  return !creation || H5Pfill_value_defined(creation.get(), &state) < 0 ||
         state == H5D_FILL_VALUE_USER_DEFINED;
}

bool is_virtual(const ElementPlace& place) {
  if (!place.dataset) return false;
  const PropertyHandle creation(H5Dget_create_plist(place.dataset.get()));
  return !creation || H5Pget_layout(creation.get()) == H5D_VIRTUAL;
}

ElementPlace stored_place(const ElementPlace& place, std::size_t address_bytes) {
  ElementPlace stored;
  stored.dataset = shared(place.dataset);
  stored.attribute = shared(place.attribute);
  stored.name = place.name;
  stored.space = place.space;
  stored.threads = has_own_fill(place) ? 0 : place.threads;
  stored.file_type = stored_datatype(place.file_type.get(), address_bytes);
  const Type all = describe_datatype(stored.file_type.get());
  stored.type = with_members_of(place.type, all);
  if (is_as_in_file(place)) {
    stored.type = as_in_file(std::move(stored.type));
    stored.memory_type = DatatypeHandle(check_id(H5Tcopy(stored.file_type.get()), cannot_read));
  } else {
    stored.memory_type = memory_datatype(stored.type, stored.file_type.get());
  }
  return stored;
}

}  // namespace

std::unique_ptr<VaryingValues> VaryingValues::of(const ElementPlace& place) {
  if (!place.type.has_varying_parts() || is_virtual(place)) return nullptr;
  const hid_t object = place.dataset ? place.dataset.get() : place.attribute.get();
  std::optional<FileBytes> bytes = FileBytes::of(object);
  if (!bytes) return nullptr;
  if (has_references(place.type) && bytes->address_bytes() != sizeof(hobj_ref_t)) return nullptr;
  return std::make_unique<VaryingValues>(place, std::move(*bytes));
}

VaryingValues::VaryingValues(const ElementPlace& place, FileBytes bytes)
    : stored_(stored_place(place, bytes.address_bytes())), heap_(std::move(bytes), place.name) {
  const bool as_stored = is_as_in_file(place);
  const PartBuilder builder(as_stored, heap_.file().address_bytes());
  whole_ = std::make_unique<VaryingPart>(builder.part(
      as_stored ? as_in_file(place.type) : place.type, stored_.type, place.file_type.get()));
}

VaryingValues::~VaryingValues() = default;

std::size_t VaryingValues::count_together(const std::byte* stored, std::size_t count) const {
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < count; ++i) {
    bytes += claimed(*whole_, stored + i * stored_.type.size);
    if (bytes > most_together) return std::max<std::size_t>(i, 1);
  }
  return count;
}

void VaryingValues::resolve(const std::byte* stored, std::size_t count, std::byte* elements,
                            Arena* values) {
  Resolution(heap_, *values)
      .fill(*whole_, {stored, whole_->stored_size, elements, whole_->size, count});
}

}  // namespace kelvo
