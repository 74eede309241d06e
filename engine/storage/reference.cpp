// Dereferencing object and region references.
#include "storage/reference.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "storage/check.h"
#include "storage/global_heap.h"
#include "storage/object.h"
#include "values/bits.h"

namespace kelvo {
namespace {

using Names = std::unordered_map<haddr_t, std::string>;

constexpr std::size_t most_names = 100'000;

std::string cannot_follow() { return "A reference cannot be followed"; }

herr_t keep_name(hid_t /*root*/, const char* name, const H5O_info_t* info, void* names) {
  auto& kept = *static_cast<Names*>(names);
  if (kept.size() == most_names) return 1;
  const std::string path = std::string(name) == "." ? "/" : std::string("/") + name;
  kept.emplace(info->addr, path);
  return 0;
}

// Whether the error stack tells of damage to the place where the file keeps regions.
herr_t find_heap(unsigned /*depth*/, const H5E_error2_t* error, void* found) {
  if (error->maj_num == H5E_HEAP) *static_cast<bool*>(found) = true;
  return 0;
}

bool heap_is_damaged() {
  bool damaged = false;
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_DOWNWARD, find_heap, &damaged);
  return damaged;
}

// The box around the selected elements, as a slice: [0:3, 2:5].
std::string bounds(hid_t space) {
  const int rank = H5Sget_simple_extent_ndims(space);
  if (rank <= 0) return "";
  std::vector<hsize_t> first(static_cast<std::size_t>(rank));
  std::vector<hsize_t> last(first.size());
  const bool nothing = H5Sget_select_type(space) == H5S_SEL_NONE;
  if (!nothing) check_done(H5Sget_select_bounds(space, first.data(), last.data()), cannot_follow);
  std::string text = "[";
  for (std::size_t d = 0; d < first.size(); ++d) {
    if (d > 0) text += ", ";
    text += std::to_string(first[d]) + ":" + std::to_string(nothing ? 0 : last[d] + 1);
  }
  return text + "]";
}

// Names of the objects that references of one file point to. The HDF5 library finds a name by
// walking the file, so one walk is made for all references; only in a file with very many objects
// is the library asked for each.
class ReferenceNames {
 public:
  explicit ReferenceNames(hid_t file) : file_(file) {}

  /// "" for an object that is not there any more, or that no link leads to.
  std::string name_of(H5R_type_t kind, const std::byte* reference) {
    const haddr_t address =
        kind == H5R_OBJECT ? object_address(reference) : address_in_heap(reference);
    if (address == HADDR_UNDEF) return "";
    if (!walked_) walk();
    const auto found = names_.find(address);
    if (found != names_.end()) return found->second;
    return names_.size() < most_names ? "" : ask(kind, reference);
  }

 private:
  static haddr_t object_address(const std::byte* reference) {
    hobj_ref_t address = HADDR_UNDEF;
    std::memcpy(&address, reference, sizeof address);
    return address;
  }

  [[nodiscard]] haddr_t address_in_heap(const std::byte* reference) {
    check_heap(reference);
    const ObjectHandle object = object_of_region(file_, reference);
    H5O_info_t info;
    return object && H5Oget_info2(object.get(), &info, H5O_INFO_BASIC) >= 0 ? info.addr
                                                                            : HADDR_UNDEF;
  }

  // The library takes the region out of the heap without looking at its size.
  void check_heap(const std::byte* reference) {
    if (!heap_) {
      std::optional<FileBytes> bytes = FileBytes::of(file_);
      if (!bytes) return;
      heap_.emplace(std::move(*bytes), "A region reference");
    }
    const std::size_t address_bytes = heap_->file().address_bytes();
    const HeapPlace place{load_integer(reference, address_bytes, ByteOrder::little, false),
                          static_cast<std::uint32_t>(load_integer(reference + address_bytes, 4,
                                                                  ByteOrder::little, false))};
    const std::size_t least = address_bytes + 4;  // the object's address, and the kind of selection
    if (heap_->find(place).size < least) heap_->find(place, least);
  }

  void walk() {
    walked_ = true;
    check_done(H5Ovisit2(file_, H5_INDEX_NAME, H5_ITER_NATIVE, keep_name, &names_, H5O_INFO_BASIC),
               cannot_follow);
  }

  [[nodiscard]] std::string ask(H5R_type_t kind, const std::byte* reference) const {
    const ssize_t length = H5Rget_name(file_, kind, reference, nullptr, 0);
    if (length <= 0) return "";
    std::string name(static_cast<std::size_t>(length), '\0');
    H5Rget_name(file_, kind, reference, name.data(), name.size() + 1);
    return name;
  }

  hid_t file_;
  Names names_;
  bool walked_ = false;
  std::optional<GlobalHeap> heap_;
};

}  // namespace

void make_references_in(hid_t file, Type* type) {
  if (type->kind == Kind::object_reference) {
    type->make_reference = [file](const std::string& written, std::byte* element) {
      const std::string path = absolute_path("/", written);
      const ObjectKind kind = kind_at(file, path);
      // Opened only to say why it cannot be: the dataset that is written may be open otherwise.
      if (kind == ObjectKind::none || kind == ObjectKind::dangling_link) open_object(file, path);
      check_done(H5Rcreate(element, file, path.c_str(), H5R_OBJECT, -1),
                 [&path] { return "A reference to " + quoted(path) + " cannot be made"; });
    };
  }
  for (Type& base : type->base) make_references_in(file, &base);
  for (Member& member : type->members) make_references_in(file, &member.type);
}

ObjectHandle object_of_region(hid_t file, const std::byte* reference) {
  ObjectHandle object(H5Rdereference2(file, H5P_DEFAULT, H5R_DATASET_REGION, reference));
  if (!object && heap_is_damaged()) fail_hdf5(cannot_follow());
  return object;
}

DataspaceHandle region_of(hid_t file, const std::byte* reference) {
  return DataspaceHandle(
      check_id(H5Rget_region(file, H5R_DATASET_REGION, reference), cannot_follow));
}

ReferenceNamer reference_namer(hid_t file) {
  const auto names = std::make_shared<ReferenceNames>(file);
  return [file, names](const Type& type, const std::byte* element) -> std::string {
    const bool is_null = std::all_of(element, element + type.size,
                                     [](std::byte byte) { return byte == std::byte{0}; });
    if (is_null) return "";
    if (type.kind == Kind::object_reference) return names->name_of(H5R_OBJECT, element);
    const std::string name = names->name_of(H5R_DATASET_REGION, element);
    if (name.empty()) return "";
    return name + bounds(region_of(file, element).get());
  };
}

}  // namespace kelvo
