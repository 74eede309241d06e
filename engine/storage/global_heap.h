// The heaps in which a file keeps strings and sequences of varying length, read without the HDF5
// library, which trusts the sizes and the indexes in them. Nothing here does: what does not fit
// together is an error of the dataset whose value it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "storage/file_bytes.h"

namespace kelvo {

/// Where a file keeps a value: the address of a heap, and the value's number in it.
struct HeapPlace {
  std::uint64_t address = 0;
  std::uint32_t index = 0;
};

class GlobalHeap {
 public:
  /// `shown`: what the values belong to, as messages show it: `Dataset "/x"`.
  GlobalHeap(FileBytes bytes, std::string shown);

  [[nodiscard]] const FileBytes& file() const noexcept { return bytes_; }
  [[nodiscard]] const std::string& shown() const noexcept { return shown_; }

  /// A value that was found; good until another is looked for.
  struct Found {
    const std::byte* bytes = nullptr;  // none where it is read only when it is copied
    std::uint64_t address = 0;
    std::size_t size = 0;
  };

  /// The value, which must have that many bytes. Throws StatementError where it has not, or where
  /// there is none.
  Found find(const HeapPlace& place, std::uint64_t size);

  /// The value, whatever its size.
  Found find(const HeapPlace& place);

  void copy(const Found& found, std::byte* to);

  /// Throws that a value of that many bytes, but more than none, is in no heap.
  [[noreturn]] void fail_nowhere(std::uint64_t size) const;

 private:
  struct Object {
    std::uint32_t index = 0;
    std::uint64_t begin = 0;  // in the heap
    std::uint64_t size = 0;
  };
  struct Heap {
    std::uint64_t address = 0;
    std::uint64_t size = 0;
    std::vector<Object> objects;         // by their index
    std::unique_ptr<std::byte[]> bytes;  // all of it, where it is small
  };

  const Heap& heap_at(std::uint64_t address);
  std::unique_ptr<Heap> load(std::uint64_t address);
  void read_objects(Heap* heap);
  static bool sort_by_index(std::vector<Object>* objects);
  void keep(std::unique_ptr<Heap> heap);
  static const Object* object_of(const Heap& heap, std::uint32_t index);
  [[nodiscard]] std::string damaged() const;
  [[noreturn]] void fail_none(std::uint64_t address) const;
  [[noreturn]] void fail_unsound(std::uint64_t address) const;
  [[noreturn]] void fail_index(const HeapPlace& place) const;
  [[noreturn]] void fail_size(const HeapPlace& place, std::uint64_t wanted,
                              std::uint64_t size) const;

  FileBytes bytes_;
  std::string shown_;
  std::unordered_map<std::uint64_t, std::unique_ptr<Heap>> heaps_;
  std::size_t held_ = 0;        // bytes of them, about
  const Heap* last_ = nullptr;  // among them
};

}  // namespace kelvo
