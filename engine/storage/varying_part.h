// What a type with strings or sequences of varying length is made of: where each part of an element
// lies, with references as it is stored, and with values in memory.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "storage/element_conversion.h"
#include "storage/handle.h"
#include "values/type.h"

namespace kelvo {

struct VaryingItems;

/// A part without varying values is a leaf, whatever it is made of.
struct VaryingPart {
  Kind kind = Kind::integer;
  bool varies = false;
  std::size_t offset = 0;  // in a compound
  std::size_t stored_offset = 0;
  std::size_t size = 0;
  std::size_t stored_size = 0;
  std::size_t length = 1;               // array
  std::vector<VaryingPart> parts;       // compound; array: one
  std::unique_ptr<VaryingItems> items;  // sequence
};

/// Of a sequence.
struct VaryingItems {
  DatatypeHandle stored_type;
  DatatypeHandle memory_type;
  ElementConversion conversion;
  VaryingPart part;
  std::vector<std::byte> gathered;

  VaryingItems(DatatypeHandle stored, DatatypeHandle memory)
      : stored_type(std::move(stored)),
        memory_type(std::move(memory)),
        conversion(stored_type.get(), memory_type.get()) {}

  // Whether an item lies in the heap as it does in memory.
  [[nodiscard]] bool is_plain() const { return !conversion.is_needed() && !part.varies; }
};

/// The description of elements that lie in memory as in the file.
Type as_in_file(Type type);

/// The stored type with only those members that `type` has, in its order.
Type with_members_of(const Type& type, Type stored);

/// Builds the parts, along a type of the file.
class PartBuilder {
 public:
  /// `is_as_in_file`: elements lie in memory as in the file. `address_bytes`: of an address in it.
  PartBuilder(bool is_as_in_file, std::size_t address_bytes)
      : is_as_in_file_(is_as_in_file), address_bytes_(address_bytes) {}

  /// `type` describes the elements in memory, `stored` the same with references in the place of
  /// values.
  [[nodiscard]] VaryingPart part(const Type& type, const Type& stored, hid_t file_type) const;

 private:
  void add_members(const Type& type, const Type& stored, hid_t file_type, VaryingPart* part) const;
  [[nodiscard]] std::unique_ptr<VaryingItems> items(const Type& item, hid_t file_type) const;

  bool is_as_in_file_;
  std::size_t address_bytes_;
};

}  // namespace kelvo
