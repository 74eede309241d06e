// Reads and builds HDF5 data types.
#include "storage/datatype.h"

#include <algorithm>
#include <array>
#include <memory>

#include "storage/check.h"
#include "values/bits.h"

namespace kelvo {
namespace {

std::string cannot_describe() { return "The data type cannot be read"; }
std::string cannot_build() { return "The data type cannot be made"; }

ByteOrder order_of(hid_t type) {
  switch (H5Tget_order(type)) {
    case H5T_ORDER_LE:
      return ByteOrder::little;
    case H5T_ORDER_BE:
      return ByteOrder::big;
    default:  // no order of its own (one byte), or one that this library converts (VAX, mixed)
      return machine_order();
  }
}

// The machine's integers have 1, 2, 4 and 8 bytes; a file's may have any number.
std::size_t memory_integer_size(std::size_t file_size) {
  std::size_t size = 1;
  while (size < file_size && size < 8) size *= 2;
  return size;
}

void describe_number(hid_t file_type, Type* type) {
  type->order = order_of(file_type);
  switch (type->kind) {
    case Kind::real:
      type->size = type->file_size <= 4 ? 4 : 8;
      break;
    case Kind::time:
      type->size = type->file_size;
      break;
    default:
      type->size = memory_integer_size(type->file_size);
  }
  type->is_signed = type->kind == Kind::real || type->kind == Kind::time ||
                    (type->kind == Kind::integer && H5Tget_sign(file_type) == H5T_SGN_2);
}

void describe_text(hid_t file_type, Type* type) {
  type->charset = H5Tget_cset(file_type) == H5T_CSET_ASCII ? Charset::ascii : Charset::utf8;
  switch (H5Tget_strpad(file_type)) {
    case H5T_STR_NULLTERM:
      type->padding = Padding::null_terminated;
      break;
    case H5T_STR_SPACEPAD:
      type->padding = Padding::space_padded;
      break;
    default:
      type->padding = Padding::null_padded;
  }
  if (type->kind == Kind::varying_text) type->size = sizeof(char*);
}

Type describe_base(hid_t file_type) {
  const DatatypeHandle base(check_id(H5Tget_super(file_type), cannot_describe));
  return describe_datatype(base.get());
}

void describe_enumeration(hid_t file_type, Type* type) {
  type->base = {describe_base(file_type)};
  type->size = type->file_size;
  type->is_signed = type->base[0].is_signed;
  type->order = type->base[0].order;
  const int count = H5Tget_nmembers(file_type);
  for (unsigned i = 0; count > 0 && i < static_cast<unsigned>(count); ++i) {
    const std::unique_ptr<char, Hdf5Free> name(H5Tget_member_name(file_type, i));
    std::array<std::byte, 64> value{};
    if (name == nullptr || type->size > value.size()) fail_hdf5(cannot_describe());
    check_done(H5Tget_member_value(file_type, i, value.data()), cannot_describe);
    type->names.push_back(
        {name.get(), load_integer(value.data(), std::min<std::size_t>(type->size, 8), type->order,
                                  type->is_signed)});
  }
}

void describe_compound(hid_t file_type, Type* type) {
  type->size = 0;
  const int count = H5Tget_nmembers(file_type);
  for (unsigned i = 0; count > 0 && i < static_cast<unsigned>(count); ++i) {
    const std::unique_ptr<char, Hdf5Free> name(H5Tget_member_name(file_type, i));
    const DatatypeHandle member_type(check_id(H5Tget_member_type(file_type, i), cannot_describe));
    if (name == nullptr) fail_hdf5(cannot_describe());
    Member member;
    member.name = name.get();
    member.file_offset = H5Tget_member_offset(file_type, i);
    member.offset = type->size;
    member.type = describe_datatype(member_type.get());
    type->size += member.type.size;
    type->members.push_back(std::move(member));
  }
}

void describe_array(hid_t file_type, Type* type) {
  const int rank = H5Tget_array_ndims(file_type);
  std::array<hsize_t, H5S_MAX_RANK> extents{};
  if (rank < 0) fail_hdf5(cannot_describe());
  check_done(H5Tget_array_dims2(file_type, extents.data()), cannot_describe);
  type->extents.assign(extents.begin(), extents.begin() + rank);
  type->base = {describe_base(file_type)};
  type->size = type->base[0].size * static_cast<std::size_t>(type->array_length());
}

std::string opaque_tag(hid_t file_type) {
  const std::unique_ptr<char, Hdf5Free> tag(H5Tget_tag(file_type));
  return tag == nullptr ? "" : tag.get();
}

Kind kind_of(hid_t file_type) {
  switch (H5Tget_class(file_type)) {
    case H5T_INTEGER:
      return Kind::integer;
    case H5T_FLOAT:
      return Kind::real;
    case H5T_BITFIELD:
      return Kind::bit_field;
    case H5T_TIME:
      return Kind::time;
    case H5T_STRING:
      return H5Tis_variable_str(file_type) > 0 ? Kind::varying_text : Kind::text;
    case H5T_OPAQUE:
      return Kind::opaque;
    case H5T_ENUM:
      return Kind::enumeration;
    case H5T_REFERENCE:
      return H5Tequal(file_type, H5T_STD_REF_DSETREG) > 0 ? Kind::region_reference
                                                          : Kind::object_reference;
    case H5T_COMPOUND:
      return Kind::compound;
    case H5T_ARRAY:
      return Kind::array;
    case H5T_VLEN:
      return Kind::sequence;
    default:
      fail_hdf5(cannot_describe());
  }
}

DatatypeHandle copy_of(hid_t type) { return DatatypeHandle(check_id(H5Tcopy(type), cannot_build)); }

// --- in memory ---

hid_t native_number(const Type& type) {
  if (type.kind == Kind::real) return type.size == 4 ? H5T_NATIVE_FLOAT : H5T_NATIVE_DOUBLE;
  const bool bits = type.kind == Kind::bit_field;
  switch (type.size) {
    case 1:
      return bits ? H5T_NATIVE_B8 : type.is_signed ? H5T_NATIVE_INT8 : H5T_NATIVE_UINT8;
    case 2:
      return bits ? H5T_NATIVE_B16 : type.is_signed ? H5T_NATIVE_INT16 : H5T_NATIVE_UINT16;
    case 4:
      return bits ? H5T_NATIVE_B32 : type.is_signed ? H5T_NATIVE_INT32 : H5T_NATIVE_UINT32;
    default:
      return bits ? H5T_NATIVE_B64 : type.is_signed ? H5T_NATIVE_INT64 : H5T_NATIVE_UINT64;
  }
}

DatatypeHandle memory_base(const Type& type, hid_t file_type) {
  const DatatypeHandle base(check_id(H5Tget_super(file_type), cannot_build));
  return memory_datatype(type.base[0], base.get());
}

DatatypeHandle memory_compound(const Type& type, hid_t file_type) {
  DatatypeHandle compound(
      check_id(H5Tcreate(H5T_COMPOUND, std::max<std::size_t>(type.size, 1)), cannot_build));
  for (const Member& member : type.members) {
    // By its name: the description may hold only some of the file's members.
    const int index = H5Tget_member_index(file_type, member.name.c_str());
    if (index < 0) fail_hdf5(cannot_build());
    const DatatypeHandle file_member(
        check_id(H5Tget_member_type(file_type, static_cast<unsigned>(index)), cannot_build));
    const DatatypeHandle memory_member = memory_datatype(member.type, file_member.get());
    check_done(H5Tinsert(compound.get(), member.name.c_str(), member.offset, memory_member.get()),
               cannot_build);
  }
  return compound;
}

DatatypeHandle array_of(hid_t base, const std::vector<std::uint64_t>& extents) {
  const std::vector<hsize_t> dims(extents.begin(), extents.end());
  return DatatypeHandle(check_id(
      H5Tarray_create2(base, static_cast<unsigned>(dims.size()), dims.data()), cannot_build));
}

DatatypeHandle sequence_of(hid_t base) {
  return DatatypeHandle(check_id(H5Tvlen_create(base), cannot_build));
}

// --- in a file ---

DatatypeHandle in_order(hid_t native, ByteOrder order) {
  DatatypeHandle type = copy_of(native);
  check_done(H5Tset_order(type.get(), order == ByteOrder::little ? H5T_ORDER_LE : H5T_ORDER_BE),
             cannot_build);
  return type;
}

// IEEE 754's 16-bit format: sign at 15, 5 bits of exponent at 10 (bias 15), 10 bits of mantissa at
// 0.
DatatypeHandle half_float(ByteOrder order) {
  DatatypeHandle type = in_order(H5T_IEEE_F32LE, order);
  check_done(H5Tset_fields(type.get(), 15, 10, 5, 0, 10), cannot_build);
  check_done(H5Tset_size(type.get(), 2), cannot_build);
  check_done(H5Tset_ebias(type.get(), 15), cannot_build);
  return type;
}

DatatypeHandle file_text(const Type& type) {
  DatatypeHandle text = copy_of(H5T_C_S1);
  const bool varying = type.kind == Kind::varying_text;
  check_done(H5Tset_size(text.get(), varying ? H5T_VARIABLE : type.size), cannot_build);
  check_done(H5Tset_strpad(text.get(), varying ? H5T_STR_NULLTERM : H5T_STR_NULLPAD), cannot_build);
  check_done(
      H5Tset_cset(text.get(), type.charset == Charset::ascii ? H5T_CSET_ASCII : H5T_CSET_UTF8),
      cannot_build);
  return text;
}

DatatypeHandle file_opaque(const Type& type) {
  DatatypeHandle opaque(check_id(H5Tcreate(H5T_OPAQUE, type.size), cannot_build));
  check_done(H5Tset_tag(opaque.get(), type.tag.c_str()), cannot_build);
  return opaque;
}

DatatypeHandle file_enumeration(const Type& type) {
  const DatatypeHandle base = file_datatype(type.base[0]);
  DatatypeHandle enumeration(check_id(H5Tenum_create(base.get()), cannot_build));
  for (const EnumName& name : type.names) {
    std::array<std::byte, 8> value{};
    store_integer(name.bits, type.size, type.order, value.data());
    check_done(H5Tenum_insert(enumeration.get(), name.name.c_str(), value.data()), cannot_build);
  }
  return enumeration;
}

DatatypeHandle file_compound(const Type& type) {
  DatatypeHandle compound(check_id(H5Tcreate(H5T_COMPOUND, type.file_size), cannot_build));
  for (const Member& member : type.members) {
    const DatatypeHandle member_type = file_datatype(member.type);
    check_done(
        H5Tinsert(compound.get(), member.name.c_str(), member.file_offset, member_type.get()),
        cannot_build);
  }
  return compound;
}

}  // namespace

Type describe_datatype(hid_t file_type) {
  Type type;
  type.kind = kind_of(file_type);
  type.size = type.file_size = H5Tget_size(file_type);
  switch (type.kind) {
    case Kind::integer:
    case Kind::real:
    case Kind::bit_field:
    case Kind::time:
      describe_number(file_type, &type);
      break;
    case Kind::text:
    case Kind::varying_text:
      describe_text(file_type, &type);
      break;
    case Kind::opaque:
      type.tag = opaque_tag(file_type);
      break;
    case Kind::enumeration:
      describe_enumeration(file_type, &type);
      break;
    case Kind::compound:
      describe_compound(file_type, &type);
      break;
    case Kind::array:
      describe_array(file_type, &type);
      break;
    case Kind::sequence:
      type.base = {describe_base(file_type)};
      type.size = sizeof(hvl_t);
      break;
    case Kind::object_reference:
    case Kind::region_reference:
      break;
  }
  return type;
}

DatatypeHandle memory_datatype(const Type& type, hid_t file_type) {
  switch (type.kind) {
    case Kind::integer:
    case Kind::real:
    case Kind::bit_field:
      return copy_of(native_number(type));
    case Kind::compound:
      return memory_compound(type, file_type);
    case Kind::array:
      return array_of(memory_base(type, file_type).get(), type.extents);
    case Kind::sequence:
      return sequence_of(memory_base(type, file_type).get());
    default:
      // Everything else is read as the file's own bytes. For enumerations that is on purpose:
      // converting them would lose values that have no name.
      return copy_of(file_type);
  }
}

DatatypeHandle file_datatype(const Type& type) {
  switch (type.kind) {
    case Kind::integer:
    case Kind::bit_field:
      return in_order(native_number(type), type.order);
    case Kind::real:
      return type.file_size == 2 ? half_float(type.order)
                                 : in_order(native_number(type), type.order);
    case Kind::time:
      return in_order(type.size == 4 ? H5T_UNIX_D32LE : H5T_UNIX_D64LE, type.order);
    case Kind::text:
    case Kind::varying_text:
      return file_text(type);
    case Kind::opaque:
      return file_opaque(type);
    case Kind::enumeration:
      return file_enumeration(type);
    case Kind::object_reference:
      return copy_of(H5T_STD_REF_OBJ);
    case Kind::region_reference:
      return copy_of(H5T_STD_REF_DSETREG);
    case Kind::compound:
      return file_compound(type);
    case Kind::array:
      return array_of(file_datatype(type.base[0]).get(), type.extents);
    case Kind::sequence:
      return sequence_of(file_datatype(type.base[0]).get());
  }
  fail_hdf5(cannot_build());
}

}  // namespace kelvo
