// Builds HDF5 data types.
#include "storage/datatype.h"

#include <algorithm>
#include <vector>

#include "storage/check.h"
#include "storage/half_conversion.h"
#include "storage/narrow_conversion.h"
#include "values/bits.h"

namespace kelvo {
namespace {

std::string cannot_build() { return "The data type cannot be made"; }

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

// Converting wider ones would cut them without a word.
void check_width(const Type& type) {
  const std::size_t bits = type.precision == 0 ? 8 * type.file_size : type.precision;
  if (bits <= 64) return;
  throw StatementError(Status::not_available, "it has integers of " + std::to_string(bits) +
                                                  " bits, this engine reads up to 64");
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

DatatypeHandle file_integer(const Type& type) {
  DatatypeHandle made = in_order(native_number(type), type.order);
  if (type.file_size != type.size)
    check_done(H5Tset_size(made.get(), type.file_size), cannot_build);
  check_done(H5Tset_precision(made.get(), std::min(type.value_bits(), 8 * type.file_size)),
             cannot_build);
  check_done(H5Tset_offset(made.get(), type.bit_offset), cannot_build);
  return made;
}

H5T_norm_t normalization(const RealFormat& format) {
  if (format.normalization == Normalization::implied) return H5T_NORM_IMPLIED;
  return format.normalization == Normalization::set ? H5T_NORM_MSBSET : H5T_NORM_NONE;
}

// Each step must fit what the steps before it made, so there is room first, and what is not needed
// is taken away last.
DatatypeHandle file_real(const Type& type) {
  const auto done = [](herr_t result) { check_done(result, cannot_build); };
  const RealFormat format = type.real_format();
  const std::size_t room = std::max<std::size_t>(type.file_size, 16);
  DatatypeHandle made = in_order(H5T_IEEE_F64LE, type.order);
  done(H5Tset_size(made.get(), room));
  done(H5Tset_precision(made.get(), 8 * room));
  done(H5Tset_fields(made.get(), format.sign_at, format.exponent_at, format.exponent_size,
                     format.mantissa_at, format.mantissa_size));
  done(H5Tset_offset(made.get(), format.offset));
  done(H5Tset_precision(made.get(), format.precision));
  done(H5Tset_size(made.get(), type.file_size));
  done(H5Tset_ebias(made.get(), format.bias));
  done(H5Tset_norm(made.get(), normalization(format)));
  return made;
}

H5T_str_t padding_of(const Type& type) {
  if (type.padding == Padding::null_terminated) return H5T_STR_NULLTERM;
  return type.padding == Padding::null_padded ? H5T_STR_NULLPAD : H5T_STR_SPACEPAD;
}

DatatypeHandle file_text(const Type& type) {
  DatatypeHandle text = copy_of(H5T_C_S1);
  const bool varying = type.kind == Kind::varying_text;
  check_done(H5Tset_size(text.get(), varying ? H5T_VARIABLE : type.size), cannot_build);
  check_done(H5Tset_strpad(text.get(), padding_of(type)), cannot_build);
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
    std::vector<std::byte> value(type.size);
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

DatatypeHandle memory_datatype(const Type& type, hid_t file_type) {
  switch (type.kind) {
    case Kind::integer:
    case Kind::bit_field:
      check_width(type);
      mend_narrow_conversion(type, file_type, native_number(type));
      return copy_of(native_number(type));
    case Kind::real:
      hasten_half_conversion(type, file_type, native_number(type));
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
      return file_integer(type);
    case Kind::real:
      return file_real(type);
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
