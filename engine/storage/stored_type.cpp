// The HDF5 library describes a file's types as they would lie in memory, where varying parts have
// another size; what follows them in a compound is moved back to its place in the file.
#include "storage/stored_type.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "storage/check.h"

namespace kelvo {
namespace {

constexpr const char* reference_tag = "kelvo: reference to a heap";

std::string cannot_build() { return "The data type cannot be made"; }

DatatypeHandle reference_type(std::size_t size) {
  DatatypeHandle reference(check_id(H5Tcreate(H5T_OPAQUE, size), cannot_build));
  check_done(H5Tset_tag(reference.get(), reference_tag), cannot_build);
  return reference;
}

bool is_reference(hid_t type) {
  const std::unique_ptr<char, Hdf5Free> tag(H5Tget_tag(type));
  return tag != nullptr && std::strcmp(tag.get(), reference_tag) == 0;
}

// As H5T_conv_t: the bytes stay where and what they are.
herr_t keep_reference(hid_t from, hid_t to, H5T_cdata_t* call, std::size_t /*count*/,
                      std::size_t /*stride*/, std::size_t /*background_stride*/, void* /*buffer*/,
                      void* /*background*/, hid_t /*transfer*/) {
  call->need_bkg = H5T_BKG_NO;
  if (call->command != H5T_CONV_INIT) return 0;
  return is_reference(to) && H5Tget_size(from) == H5Tget_size(to) ? 0 : -1;
}

// Sequences and strings of varying length are of one class to the library.
void register_conversion() {
  static const bool is_registered = [] {
    const DatatypeHandle sequence(check_id(H5Tvlen_create(H5T_NATIVE_CHAR), cannot_build));
    const DatatypeHandle reference = reference_type(reference_bytes(8));
    check_done(
        H5Tregister(H5T_PERS_SOFT, "reference", sequence.get(), reference.get(), keep_reference),
        cannot_build);
    return true;
  }();
  static_cast<void>(is_registered);
}

DatatypeHandle stored_array(hid_t file_type, std::size_t address_bytes) {
  const DatatypeHandle base(check_id(H5Tget_super(file_type), cannot_build));
  std::array<hsize_t, H5S_MAX_RANK> extents{};
  const int rank = H5Tget_array_dims2(file_type, extents.data());
  if (rank < 0) fail_hdf5(cannot_build());
  return DatatypeHandle(check_id(H5Tarray_create2(stored_datatype(base.get(), address_bytes).get(),
                                                  static_cast<unsigned>(rank), extents.data()),
                                 cannot_build));
}

struct StoredMember {
  std::string name;
  std::size_t offset = 0;
  std::size_t size_in_memory = 0;
  DatatypeHandle type;
};

std::vector<StoredMember> stored_members(hid_t file_type, std::size_t address_bytes) {
  std::vector<StoredMember> members;
  const int count = H5Tget_nmembers(file_type);
  for (unsigned i = 0; count > 0 && i < static_cast<unsigned>(count); ++i) {
    const std::unique_ptr<char, Hdf5Free> name(H5Tget_member_name(file_type, i));
    const DatatypeHandle type(check_id(H5Tget_member_type(file_type, i), cannot_build));
    if (name == nullptr) fail_hdf5(cannot_build());
    members.push_back({name.get(), H5Tget_member_offset(file_type, i), H5Tget_size(type.get()),
                       stored_datatype(type.get(), address_bytes)});
  }
  return members;
}

DatatypeHandle stored_compound(hid_t file_type, std::size_t address_bytes) {
  std::vector<StoredMember> members = stored_members(file_type, address_bytes);
  std::sort(members.begin(), members.end(), [](const StoredMember& one, const StoredMember& other) {
    return one.offset < other.offset;
  });
  // Modulo 2^n, where members take less room in the file.
  std::size_t moved = 0;
  for (StoredMember& member : members) {
    member.offset += moved;
    moved += H5Tget_size(member.type.get()) - member.size_in_memory;
  }
  DatatypeHandle compound(
      check_id(H5Tcreate(H5T_COMPOUND, H5Tget_size(file_type) + moved), cannot_build));
  for (const StoredMember& member : members) {
    check_done(H5Tinsert(compound.get(), member.name.c_str(), member.offset, member.type.get()),
               cannot_build);
  }
  return compound;
}

// In memory these have room for an address of 8 bytes.
DatatypeHandle stored_object_reference(hid_t file_type, std::size_t address_bytes) {
  if (address_bytes == sizeof(hobj_ref_t))
    return DatatypeHandle(check_id(H5Tcopy(file_type), cannot_build));
  const bool is_region = H5Tequal(file_type, H5T_STD_REF_DSETREG) > 0;
  const std::size_t size = is_region ? address_bytes + 4 : address_bytes;
  return DatatypeHandle(check_id(H5Tcreate(H5T_OPAQUE, size), cannot_build));
}

}  // namespace

std::size_t address_bytes_of(hid_t object) {
  const FileHandle file(check_id(H5Iget_file_id(object), cannot_build));
  const PropertyHandle creation(check_id(H5Fget_create_plist(file.get()), cannot_build));
  std::size_t address_bytes = 0;
  std::size_t length_bytes = 0;
  check_done(H5Pget_sizes(creation.get(), &address_bytes, &length_bytes), cannot_build);
  return address_bytes;
}

DatatypeHandle stored_datatype(hid_t file_type, std::size_t address_bytes) {
  register_conversion();
  switch (H5Tget_class(file_type)) {
    case H5T_VLEN:
      return reference_type(reference_bytes(address_bytes));
    case H5T_STRING:
      if (H5Tis_variable_str(file_type) > 0) return reference_type(reference_bytes(address_bytes));
      break;
    case H5T_REFERENCE:
      return stored_object_reference(file_type, address_bytes);
    case H5T_ARRAY:
      return stored_array(file_type, address_bytes);
    case H5T_COMPOUND:
      return stored_compound(file_type, address_bytes);
    default:
      break;
  }
  return DatatypeHandle(check_id(H5Tcopy(file_type), cannot_build));
}

}  // namespace kelvo
