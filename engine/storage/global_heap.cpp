// The layout of a heap: a signature, its size, and one object after the other, each with a header.
// An object of index 0 is unused space.
#include "storage/global_heap.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "error.h"
#include "values/bits.h"

namespace kelvo {
namespace {

constexpr std::array<char, 8> signature = {'G', 'C', 'O', 'L', 1, 0, 0, 0};
constexpr std::size_t header_bytes = 16;  // of a heap and of an object, padded
constexpr std::size_t length_at = 8;      // in both

// Heaps are 4 KiB as a rule and grow to 64. A larger one has a large object; it is not held.
constexpr std::uint64_t most_held_of_one = std::uint64_t{256} * 1024;
constexpr std::size_t usual_object = 2 * header_bytes;
constexpr std::size_t most_held = std::size_t{4} * 1024 * 1024;

std::uint64_t length_in(const std::byte* header, std::size_t length_bytes) {
  const std::byte* length = header + length_at;
  return length_bytes == 8 ? load_little<std::uint64_t>(length)
                           : load_integer(length, length_bytes, ByteOrder::little, false);
}

std::string in_heap(const GlobalHeap& heap, std::uint64_t address) {
  return "the heap at byte " + std::to_string(heap.file().host_byte(address));
}

}  // namespace

GlobalHeap::GlobalHeap(FileBytes bytes, std::string shown)
    : bytes_(std::move(bytes)), shown_(std::move(shown)) {}

std::string GlobalHeap::damaged() const { return shown_ + " is damaged: "; }

void GlobalHeap::fail_nowhere(std::uint64_t size) const {
  throw StatementError(Status::hdf5_refused,
                       damaged() + "a value of " + std::to_string(size) + " bytes is in no heap");
}

void GlobalHeap::fail_none(std::uint64_t address) const {
  throw StatementError(Status::hdf5_refused,
                       damaged() + "a value is in " + in_heap(*this, address) + ", where none is");
}

void GlobalHeap::fail_unsound(std::uint64_t address) const {
  throw StatementError(Status::hdf5_refused, damaged() + "a value is in " +
                                                 in_heap(*this, address) +
                                                 ", whose objects do not fit together");
}

void GlobalHeap::fail_index(const HeapPlace& place) const {
  throw StatementError(Status::hdf5_refused,
                       damaged() + "a value is object " + std::to_string(place.index) + " of " +
                           in_heap(*this, place.address) + ", which has none of that number");
}

void GlobalHeap::fail_size(const HeapPlace& place, std::uint64_t wanted, std::uint64_t size) const {
  throw StatementError(Status::hdf5_refused, damaged() + "a value has " + std::to_string(wanted) +
                                                 " bytes, object " + std::to_string(place.index) +
                                                 " of " + in_heap(*this, place.address) + " has " +
                                                 std::to_string(size));
}

// Indexes mostly follow one another.
const GlobalHeap::Object* GlobalHeap::object_of(const Heap& heap, std::uint32_t index) {
  const std::vector<Object>& objects = heap.objects;
  if (objects.empty()) return nullptr;
  const std::uint32_t guess = index - objects[0].index;
  if (guess < objects.size() && objects[guess].index == index) return &objects[guess];
  const auto found =
      std::lower_bound(objects.begin(), objects.end(), index,
                       [](const Object& object, std::uint32_t one) { return object.index < one; });
  return found == objects.end() || found->index != index ? nullptr : &*found;
}

GlobalHeap::Found GlobalHeap::find(const HeapPlace& place, std::uint64_t size) {
  const Found found = find(place);
  if (found.size != size) fail_size(place, size, found.size);
  return found;
}

GlobalHeap::Found GlobalHeap::find(const HeapPlace& place) {
  const Heap& heap =
      last_ != nullptr && last_->address == place.address ? *last_ : heap_at(place.address);
  const Object* object = object_of(heap, place.index);
  if (object == nullptr) fail_index(place);
  if (object->size > std::numeric_limits<std::size_t>::max() / 2) throw std::bad_alloc();
  return {heap.bytes ? heap.bytes.get() + object->begin : nullptr, heap.address + object->begin,
          static_cast<std::size_t>(object->size)};
}

void GlobalHeap::copy(const Found& found, std::byte* to) {
  if (found.size == 0) return;
  if (found.bytes != nullptr) {
    std::memcpy(to, found.bytes, found.size);
  } else if (!bytes_.read(found.address, found.size, to)) {
    fail_none(found.address);
  }
}

const GlobalHeap::Heap& GlobalHeap::heap_at(std::uint64_t address) {
  const auto known = heaps_.find(address);
  if (known != heaps_.end()) {
    last_ = known->second.get();
  } else {
    keep(load(address));
  }
  return *last_;
}

std::unique_ptr<GlobalHeap::Heap> GlobalHeap::load(std::uint64_t address) {
  std::array<std::byte, header_bytes> header{};
  if (!bytes_.read(address, header.size(), header.data()) ||
      std::memcmp(header.data(), signature.data(), signature.size()) != 0)
    fail_none(address);
  auto heap = std::make_unique<Heap>();
  heap->address = address;
  heap->size = length_in(header.data(), bytes_.length_bytes());
  if (heap->size < header_bytes || heap->size > bytes_.end() - address) fail_unsound(address);
  if (heap->size <= most_held_of_one) {
    const auto size = static_cast<std::size_t>(heap->size);
    heap->bytes = std::make_unique_for_overwrite<std::byte[]>(size);
    if (!bytes_.read(address, size, heap->bytes.get())) fail_none(address);
  }
  read_objects(heap.get());
  return heap;
}

void GlobalHeap::read_objects(Heap* heap) {
  std::array<std::byte, header_bytes> read{};
  std::vector<Object>& objects = heap->objects;
  if (heap->bytes) objects.reserve(static_cast<std::size_t>(heap->size) / usual_object);
  bool in_order = true;
  std::uint64_t at = header_bytes;
  // What is too short for a header is unused as well.
  while (heap->size - at >= header_bytes) {
    const std::byte* header = heap->bytes.get() + at;
    if (!heap->bytes) {
      if (!bytes_.read(heap->address + at, read.size(), read.data())) fail_none(heap->address);
      header = read.data();
    }
    const auto index = load_little<std::uint16_t>(header);
    const std::uint64_t size = length_in(header, bytes_.length_bytes());
    const std::uint64_t left = heap->size - at;
    if (size > left) fail_unsound(heap->address);
    const std::uint64_t step = index == 0 ? size : header_bytes + (size + 7) / 8 * 8;
    if (step < header_bytes || step > left) fail_unsound(heap->address);
    if (index != 0) {
      in_order = in_order && (objects.empty() || objects.back().index < index);
      objects.push_back({index, at + header_bytes, size});
    }
    at += step;
  }
  if (!in_order && !sort_by_index(&objects)) fail_unsound(heap->address);
}

// False where an index is there twice.
bool GlobalHeap::sort_by_index(std::vector<Object>* objects) {
  std::sort(objects->begin(), objects->end(),
            [](const Object& one, const Object& other) { return one.index < other.index; });
  return std::adjacent_find(objects->begin(), objects->end(),
                            [](const Object& one, const Object& other) {
                              return one.index == other.index;
                            }) == objects->end();
}

// A few are enough: values that lie together were written together.
void GlobalHeap::keep(std::unique_ptr<Heap> heap) {
  const std::size_t size = (heap->bytes ? static_cast<std::size_t>(heap->size) : 0) +
                           heap->objects.capacity() * sizeof(Object);
  if (held_ + size > most_held) {
    last_ = nullptr;
    heaps_.clear();
    held_ = 0;
  }
  held_ += size;
  const std::uint64_t address = heap->address;
  last_ = heaps_.emplace(address, std::move(heap)).first->second.get();
}

}  // namespace kelvo
