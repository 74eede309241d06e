// Reading and writing the elements of datasets and attributes, in C order, a block at a time.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "storage/handle.h"
#include "values/arena.h"
#include "values/block_walk.h"
#include "values/selection.h"
#include "values/space.h"
#include "values/type.h"

namespace kelvo {

/// Where elements are: an open dataset or attribute with what is known about it.
struct ElementPlace {
  std::vector<FileHandle> sources;  // files that the dataset takes data from
  DatasetHandle dataset;            // one of these two is open
  AttributeHandle attribute;
  std::string name;  // as messages show it: `Dataset "/x"`
  DatatypeHandle file_type;
  DatatypeHandle memory_type;
  std::string unreadable;  // why its values are neither read nor written; "" where they are
  Type type;
  Space space;
  int threads =
      0;  // that may decode its chunks, the caller's included; 0: the HDF5 library does it
};

ElementPlace place_of(DatasetHandle dataset, std::string name);
ElementPlace place_of(AttributeHandle attribute, std::string name);

/// From now on only these members of the place's compound are read; `type` is its type without the
/// others.
void read_only_members(ElementPlace& place, Type type);

/// Reads elements of a dataset between two spaces, or all of an attribute, into memory laid out as
/// place.type says.
void read_elements(const ElementPlace& place, hid_t memory_space, hid_t file_space,
                   std::byte* bytes);

/// Elements in memory as their Type lays them out. Owns what varying parts point to.
class ElementBlock {
 public:
  ElementBlock() = default;
  ElementBlock(const ElementBlock&) = delete;
  ElementBlock& operator=(const ElementBlock&) = delete;
  ~ElementBlock() { release(); }

  [[nodiscard]] const std::byte* data() const noexcept { return bytes_.data(); }
  [[nodiscard]] std::size_t count() const noexcept { return count_; }

  /// Exchanges the bytes for others, to be filled next time; only for types without varying parts.
  void swap_bytes(std::vector<std::byte>& bytes) noexcept { bytes_.swap(bytes); }

 private:
  friend class ElementReader;
  void release() noexcept;

  std::vector<std::byte> bytes_;
  std::size_t count_ = 0;
  Arena values_;  // of varying parts
  // Where the HDF5 library made varying parts, which are to be given back: the reader's memory
  // type; and what the library filled, where only a part of it was asked for.
  hid_t varying_type_ = H5I_INVALID_HID;
  std::vector<std::byte> whole_;
  std::size_t whole_count_ = 0;
};

class ChunkReader;
class VaryingValues;

/// Walks a selection in C order. `place` must outlive it, and it the blocks it fills where the type
/// has varying parts.
class ElementReader {
 public:
  ElementReader(const ElementPlace& place, Selection selection);
  ElementReader(const ElementReader&) = delete;
  ElementReader& operator=(const ElementReader&) = delete;
  ~ElementReader();

  /// Replaces the block's content by the next elements; false when there are none left.
  bool next(ElementBlock& block);

 private:
  void begin();
  [[nodiscard]] const ElementPlace& stored_place() const;
  void read(std::vector<std::byte>* bytes, std::vector<std::byte>* whole);
  bool read_chunks(std::byte* bytes);
  void read_hyperslab(std::byte* bytes);
  bool next_varying(ElementBlock& block);

  const ElementPlace& place_;
  Selection selection_;
  BlockWalk walk_;  // behind the selection that it refers to
  bool is_begun_ = false;
  std::unique_ptr<VaryingValues> varying_;  // none where the type has no such parts, or the HDF5
                                            // library takes care of them
  std::unique_ptr<ChunkReader> chunks_;     // none where the HDF5 library reads the rest

  // With varying_: elements as they are stored, and how many of them have been handed out.
  std::vector<std::byte> stored_;
  std::size_t stored_count_ = 0;
  std::size_t resolved_ = 0;
};

/// Writes all elements of the selection; `bytes` holds them as place.type lays them out.
void write_elements(const ElementPlace& place, const Selection& selection, const std::byte* bytes);

/// Throws where the place's values can only be described and copied.
void expect_values(const ElementPlace& place);

}  // namespace kelvo
