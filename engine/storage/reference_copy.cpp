// Finds references in copied objects and makes them anew.
#include "storage/reference_copy.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "storage/attribute.h"
#include "storage/box_elements.h"
#include "storage/box_walk.h"
#include "storage/check.h"
#include "storage/chunk_cache.h"
#include "storage/creation.h"
#include "storage/link.h"
#include "storage/listing.h"
#include "storage/object.h"
#include "storage/reference.h"

namespace kelvo {
namespace {

std::string cannot_copy() { return "References cannot be copied"; }

unsigned long file_number(hid_t file) {
  H5O_info_t root;
  check_done(H5Oget_info_by_name2(file, "/", &root, H5O_INFO_BASIC, H5P_DEFAULT), cannot_copy);
  return root.fileno;
}

herr_t keep_object(hid_t /*object*/, const char* name, const H5O_info_t* info, void* objects) {
  static_cast<std::vector<FoundObject>*>(objects)->push_back(
      {std::strcmp(name, ".") == 0 ? "" : name, info->addr, info->type, info->num_attrs > 0});
  return 0;
}

void copy_dataset_references(hid_t from_file, const std::string& from, hid_t to_file,
                             const std::string& to, const ReferenceMap& references) {
  const auto open = [](hid_t file, const std::string& path) {
    return place_of(open_for_reading(file, path, ChunkCache()), "Dataset " + quoted(path));
  };
  const ElementPlace source = open(from_file, from);
  if (!has_references(source.type)) return;
  const ElementPlace copy = open(to_file, to);
  copy_elements(source, copy, references);
}

void copy_attribute_references(const ObjectHandle& source, const ObjectHandle& copy,
                               const std::string& path, const ReferenceMap& references) {
  for (const std::string& name : attribute_names(source.get(), path)) {
    std::string shown = path;
    shown.append("@").append(name);
    shown = "Attribute " + quoted(shown);
    const ElementPlace from = place_of(open_attribute(source.get(), path, name), shown);
    if (!has_references(from.type)) continue;
    const ElementPlace to = place_of(open_attribute(copy.get(), path, name), shown);
    copy_elements(from, to, references);
  }
}

void copy_box(const ElementPlace& from, const ElementPlace& to, const Selection& box,
              const ReferenceMap& references) {
  BoxElements elements(from, box);
  references.translate(from.type, elements.data(), elements.count());
  write_elements(to, box, elements.data());
}

}  // namespace

std::string joined(const std::string& path, const std::string& name) {
  return name.empty() ? path : path_below(path, name);
}

std::vector<FoundObject> objects_below(hid_t file, const std::string& path) {
  std::vector<FoundObject> objects;
  check_done(H5Ovisit_by_name2(file, path.c_str(), H5_INDEX_NAME, H5_ITER_NATIVE, keep_object,
                               &objects, H5O_INFO_BASIC | H5O_INFO_NUM_ATTRS, H5P_DEFAULT),
             cannot_copy);
  return objects;
}

bool has_references(const Type& type) {
  if (type.kind == Kind::object_reference || type.kind == Kind::region_reference) return true;
  return std::any_of(type.base.begin(), type.base.end(), has_references) ||
         std::any_of(type.members.begin(), type.members.end(),
                     [](const Member& member) { return has_references(member.type); });
}

ReferenceMap::ReferenceMap(hid_t from_file, hid_t to_file)
    : from_(from_file), to_(file_number(from_file) == file_number(to_file) ? from_file : to_file) {}

void ReferenceMap::add(const std::vector<FoundObject>& objects, const std::string& to) {
  if (!is_needed()) return;
  for (const FoundObject& object : objects) paths_.emplace(object.address, joined(to, object.name));
}

const std::string* ReferenceMap::new_path(hid_t object) const {
  H5O_info_t info;
  check_done(H5Oget_info2(object, &info, H5O_INFO_BASIC), cannot_copy);
  const auto found = paths_.find(info.addr);
  return found == paths_.end() ? nullptr : &found->second;
}

DatatypeHandle ReferenceMap::translate_type(hid_t type) const {
  const bool is_committed = is_needed() && check_answer(H5Tcommitted(type), cannot_copy);
  const std::string* path = is_committed ? new_path(type) : nullptr;
  if (path != nullptr)
    return DatatypeHandle(check_id(H5Topen2(to_, path->c_str(), H5P_DEFAULT), cannot_copy));
  return DatatypeHandle(check_id(H5Tcopy(type), cannot_copy));
}

void ReferenceMap::make_object_reference(std::byte* element) const {
  const ObjectHandle object(H5Rdereference2(from_, H5P_DEFAULT, H5R_OBJECT, element));
  std::memset(element, 0, sizeof(hobj_ref_t));
  // One that leads nowhere is null in the copy.
  const std::string* path = object ? new_path(object.get()) : nullptr;
  if (path != nullptr)
    check_done(H5Rcreate(element, to_, path->c_str(), H5R_OBJECT, -1), cannot_copy);
}

void ReferenceMap::make_region_reference(std::byte* element) const {
  const ObjectHandle object = object_of_region(from_, element);
  const DataspaceHandle region = object ? region_of(from_, element) : DataspaceHandle();
  std::memset(element, 0, sizeof(hdset_reg_ref_t));
  const std::string* path = region ? new_path(object.get()) : nullptr;
  if (path == nullptr) return;
  check_done(H5Rcreate(element, to_, path->c_str(), H5R_DATASET_REGION, region.get()), cannot_copy);
}

void ReferenceMap::translate_one(const Type& type, std::byte* element) const {
  const bool is_null = std::all_of(element, element + type.size,
                                   [](std::byte byte) { return byte == std::byte{0}; });
  if (is_null) return;
  if (type.kind == Kind::object_reference) return make_object_reference(element);
  if (type.kind == Kind::region_reference) return make_region_reference(element);
  for (const Member& member : type.members) translate(member.type, element + member.offset, 1);
  if (type.kind == Kind::array)
    translate(type.base[0], element, static_cast<std::size_t>(type.array_length()));
  if (type.kind == Kind::sequence) {
    hvl_t items;
    std::memcpy(&items, element, sizeof items);
    translate(type.base[0], static_cast<std::byte*>(items.p), items.len);
  }
}

void ReferenceMap::translate(const Type& type, std::byte* elements, std::size_t count) const {
  if (!is_needed() || !has_references(type)) return;
  for (std::size_t i = 0; i < count; ++i) translate_one(type, elements + i * type.size);
}

void copy_references(hid_t from_file, const std::string& from, hid_t to_file, const std::string& to,
                     const std::vector<FoundObject>& objects) {
  ReferenceMap references(from_file, to_file);
  references.add(objects, to);
  for (const FoundObject& object : objects) {
    const std::string source = joined(from, object.name);
    const std::string copy = joined(to, object.name);
    if (object.type == H5O_TYPE_DATASET)
      copy_dataset_references(from_file, source, to_file, copy, references);
    if (!object.has_attributes) continue;
    copy_attribute_references(open_object(from_file, source), open_object(to_file, copy), copy,
                              references);
  }
}

void copy_elements(const ElementPlace& from, const ElementPlace& to,
                   const ReferenceMap& references) {
  if (from.attribute) {
    const Selection all = resolve_slice({}, from.space, from.name);
    if (all.elements() > 0) copy_box(from, to, all, references);
    return;
  }
  BoxWalk walk(from.space, chunk_of(to.dataset.get()), from.type.size);
  Selection box;
  while (walk.next(&box)) copy_box(from, to, box, references);
}

}  // namespace kelvo
