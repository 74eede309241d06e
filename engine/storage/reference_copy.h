// References on their way from one file to another: each is made anew, to the copy of what it led
// to.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "storage/handle.h"
#include "values/type.h"

namespace kelvo {

/// Whether elements of the type are references, or hold some.
bool has_references(const Type& type);

class ReferenceMap {
 public:
  ReferenceMap(hid_t from_file, hid_t to_file);

  /// The object at `from` and all below it are, or will be, at and below `to`. Nothing is looked up
  /// within one file, where references stay as they are.
  void add(const std::string& from, const std::string& to);

  /// Makes the references in `count` elements, laid out in memory as the type says, those of the
  /// other file.
  void translate(const Type& type, std::byte* elements, std::size_t count) const;

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

/// Writes the values of all references at and below `from` to their copies at and below `to`, in
/// another file; copying objects leaves them null or meaningless.
void copy_references(hid_t from_file, const std::string& from, hid_t to_file,
                     const std::string& to);

}  // namespace kelvo
