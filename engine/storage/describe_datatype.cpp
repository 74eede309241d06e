// Reads HDF5 data types.
#include "storage/describe_datatype.h"

#include <algorithm>
#include <array>
#include <memory>

#include "storage/check.h"
#include "values/bits.h"

namespace kelvo {
namespace {

std::string cannot_describe() { return "The data type cannot be read"; }

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
  index_names(type);
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

}  // namespace kelvo
