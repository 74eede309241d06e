// Reads and builds HDF5 data types.
#include "storage/datatype.h"

#include <algorithm>
#include <array>
#include <memory>

#include "storage/check.h"
#include "storage/narrow_conversion.h"
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

// Bits that a damaged file has outside the bytes of its elements: the HDF5 library would take them
// from elsewhere.
void check_bits(hid_t file_type, std::size_t file_size) {
  const int offset = H5Tget_offset(file_type);
  const std::size_t bits = 8 * file_size;
  if (offset >= 0 && static_cast<std::size_t>(offset) <= bits &&
      H5Tget_precision(file_type) <= bits - static_cast<std::size_t>(offset))
    return;
  throw StatementError(Status::hdf5_refused,
                       "The data type is damaged: its bits do not lie in its " +
                           std::to_string(file_size) + " bytes");
}

void describe_integer(hid_t file_type, Type* type) {
  check_bits(file_type, type->file_size);
  type->order = order_of(file_type);
  type->is_signed = type->kind == Kind::integer && H5Tget_sign(file_type) == H5T_SGN_2;
  type->size = integer_size_in_memory(type->file_size);
  const std::size_t precision = H5Tget_precision(file_type);
  type->precision = precision == 8 * type->file_size ? 0 : precision;
  type->bit_offset = static_cast<std::size_t>(std::max(H5Tget_offset(file_type), 0));
}

Normalization normalization_of(hid_t file_type) {
  switch (H5Tget_norm(file_type)) {
    case H5T_NORM_IMPLIED:
      return Normalization::implied;
    case H5T_NORM_MSBSET:
      return Normalization::set;
    default:
      return Normalization::none;
  }
}

void describe_real(hid_t file_type, Type* type) {
  check_bits(file_type, type->file_size);
  RealFormat format;
  format.precision = H5Tget_precision(file_type);
  format.offset = static_cast<std::size_t>(std::max(H5Tget_offset(file_type), 0));
  check_done(H5Tget_fields(file_type, &format.sign_at, &format.exponent_at, &format.exponent_size,
                           &format.mantissa_at, &format.mantissa_size),
             cannot_describe);
  format.bias = H5Tget_ebias(file_type);
  format.normalization = normalization_of(file_type);
  type->order = order_of(file_type);
  type->size = fits_single(format) && type->file_size <= 4 ? 4 : 8;
  if (format != standard_format(type->file_size)) type->format = format;
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
        {name.get(), load_integer(value.data(), type->size, type->order, type->is_signed)});
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

Kind reference_kind(hid_t file_type) {
  if (H5Tequal(file_type, H5T_STD_REF_OBJ) > 0) return Kind::object_reference;
  if (H5Tequal(file_type, H5T_STD_REF_DSETREG) > 0) return Kind::region_reference;
  throw StatementError(Status::not_available,
                       "This HDF5 library does not know references of that kind");
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
      // Times are never converted, so one of a width that the machine has not stays what it is:
      // bytes.
      return H5Tget_size(file_type) == 4 || H5Tget_size(file_type) == 8 ? Kind::time : Kind::opaque;
    case H5T_STRING:
      return H5Tis_variable_str(file_type) > 0 ? Kind::varying_text : Kind::text;
    case H5T_OPAQUE:
      return Kind::opaque;
    case H5T_ENUM:
      return Kind::enumeration;
    case H5T_REFERENCE:
      return reference_kind(file_type);
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

// Types nest; a damaged file could make them nest deeper than the stack.
constexpr int deepest_type = 64;
int type_depth = 0;

struct TypeLevel {
  TypeLevel() { ++type_depth; }
  ~TypeLevel() { --type_depth; }
  TypeLevel(const TypeLevel&) = delete;
  TypeLevel& operator=(const TypeLevel&) = delete;
};

}  // namespace

Type describe_datatype(hid_t file_type) {
  const TypeLevel level;
  if (type_depth > deepest_type) {
    throw StatementError(
        Status::not_available,
        "Types that nest more than " + std::to_string(deepest_type) + " deep cannot be read");
  }
  Type type;
  type.kind = kind_of(file_type);
  type.size = type.file_size = H5Tget_size(file_type);
  switch (type.kind) {
    case Kind::integer:
    case Kind::bit_field:
      describe_integer(file_type, &type);
      break;
    case Kind::real:
      describe_real(file_type, &type);
      break;
    case Kind::time:
      type.order = order_of(file_type);
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
    case Kind::bit_field:
      check_width(type);
      mend_narrow_conversion(type, file_type, native_number(type));
      return copy_of(native_number(type));
    case Kind::real:
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
