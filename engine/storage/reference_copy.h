// References on their way from one file to another: each is made anew, to the copy of what it led
// to.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "storage/handle.h"
#include "values/type.h"

namespace kelvo {

struct ElementPlace;

/// Whether elements of the type are references, or hold some.
bool has_references(const Type& type);

struct FoundObject {
  std::string name;  // relative to where the search began; "" for that itself
  haddr_t address;
  H5O_type_t type;
  bool has_attributes;
};

class ReferenceMap {
 public:
  ReferenceMap(hid_t from_file, hid_t to_file);

  /// The objects, found at and below a path, are, or will be, at and below `to`.
  void add(const std::vector<FoundObject>& objects, const std::string& to);

  /// Makes the references in `count` elements, laid out in memory as the type says, those of the
  /// other file. Within one file they stay as they are.
  void translate(const Type& type, std::byte* elements, std::size_t count) const;

  /// The data type, in the other file, for the copy of something of that type: the copy of a
  /// committed one where that is among the objects, else one of its own.
  [[nodiscard]] DatatypeHandle translate_type(hid_t type) const;

  [[nodiscard]] bool is_needed() const noexcept { return from_ != to_; }

 private:
  void translate_one(const Type& type, std::byte* element) const;
  void make_object_reference(std::byte* element) const;
  void make_region_reference(std::byte* element) const;
  [[nodiscard]] const std::string* new_path(hid_t object) const;

  hid_t from_;
  hid_t to_;                                        // the same as from_ within one file
  std::unordered_map<haddr_t, std::string> paths_;  // by the address in the file copied from
};

/// The path of a found object; `path` is where the search began.
std::string joined(const std::string& path, const std::string& name);

/// The objects at and below `path`, each once.
std::vector<FoundObject> objects_below(hid_t file, const std::string& path);

/// Writes all elements of a dataset or attribute into another one of the same kind, type and
/// extents, a box at a time, the references in them translated.
void copy_elements(const ElementPlace& from, const ElementPlace& to,
                   const ReferenceMap& references);

/// Writes the values of all references in the objects to their copies; the HDF5 library's copying
/// leaves them null or meaningless. `objects`: those below `from` before it was copied to `to`.
void copy_references(hid_t from_file, const std::string& from, hid_t to_file, const std::string& to,
                     const std::vector<FoundObject>& objects);

}  // namespace kelvo
