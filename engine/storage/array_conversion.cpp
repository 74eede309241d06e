// A conversion of our own in the HDF5 library's table.
#include "storage/array_conversion.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <vector>

#include "storage/check.h"
#include "storage/handle.h"

namespace kelvo {
namespace {

std::string cannot_convert() { return "Arrays cannot be converted"; }

DatatypeHandle base_of(hid_t type) {
  return DatatypeHandle(check_id(H5Tget_super(type), cannot_convert));
}

bool owns_memory(hid_t type);

bool a_member_owns_memory(hid_t compound) {
  const int count = H5Tget_nmembers(compound);
  for (unsigned i = 0; count > 0 && i < static_cast<unsigned>(count); ++i) {
    const DatatypeHandle member(check_id(H5Tget_member_type(compound, i), cannot_convert));
    if (owns_memory(member.get())) return true;
  }
  return false;
}

bool owns_memory(hid_t type) {
  switch (H5Tget_class(type)) {
    case H5T_VLEN:
      return true;
    case H5T_STRING:
      return H5Tis_variable_str(type) > 0;
    case H5T_ARRAY:
      return owns_memory(base_of(type).get());
    case H5T_COMPOUND:
      return a_member_owns_memory(type);
    default:
      return false;
  }
}

std::vector<hsize_t> extents_of(hid_t array) {
  std::vector<hsize_t> extents(static_cast<std::size_t>(std::max(0, H5Tget_array_ndims(array))));
  check_done(H5Tget_array_dims2(array, extents.data()), cannot_convert);
  return extents;
}

// All others stay with the library.
bool is_ours(hid_t from, hid_t to) {
  return owns_memory(from) && owns_memory(to) && extents_of(from) == extents_of(to);
}

struct Places {
  std::byte* from;
  std::byte* to;
};

// Where each array is and comes to, in an order in which none overwrites one that is still to be
// converted.
Places place_of_array(std::byte* buffer, std::size_t at, std::size_t from_size, std::size_t to_size,
                      std::size_t stride) {
  if (stride != 0) return {buffer + at * stride, buffer + at * stride};
  return {buffer + at * from_size, buffer + at * to_size};
}

void convert_all(hid_t from, hid_t to, std::size_t count, std::size_t stride, std::byte* buffer,
                 hid_t transfer) {
  const DatatypeHandle from_base = base_of(from);
  const DatatypeHandle to_base = base_of(to);
  const std::size_t from_size = H5Tget_size(from);
  const std::size_t to_size = H5Tget_size(to);
  const std::size_t length = from_size / H5Tget_size(from_base.get());
  std::vector<std::byte> background(std::max(from_size, to_size));
  std::vector<std::byte> array(background.size());
  const bool forwards = stride != 0 || from_size >= to_size;
  for (std::size_t i = 0; i < count; ++i) {
    const Places places =
        place_of_array(buffer, forwards ? i : count - 1 - i, from_size, to_size, stride);
    std::memcpy(array.data(), places.from, from_size);
    std::fill(background.begin(), background.end(), std::byte{0});
    check_done(H5Tconvert(from_base.get(), to_base.get(), length, array.data(), background.data(),
                          transfer),
               cannot_convert);
    std::memcpy(places.to, array.data(), to_size);
  }
}

// As H5T_conv_t.
herr_t convert(hid_t from, hid_t to, H5T_cdata_t* call, std::size_t count, std::size_t stride,
               std::size_t /*background_stride*/, void* buffer, void* /*background*/,
               hid_t transfer) {
  call->need_bkg = H5T_BKG_NO;
  try {
    if (call->command == H5T_CONV_INIT) return is_ours(from, to) ? 0 : -1;
    if (call->command == H5T_CONV_CONV)
      convert_all(from, to, count, stride, static_cast<std::byte*>(buffer), transfer);
    return 0;
  } catch (const std::exception&) {
    return -1;
  }
}

}  // namespace

void mend_array_conversion() {
  const std::array<hsize_t, 1> extents = {1};
  const DatatypeHandle any(
      check_id(H5Tarray_create2(H5T_NATIVE_INT, 1, extents.data()), cannot_convert));
  check_done(H5Tregister(H5T_PERS_SOFT, "arrays", any.get(), any.get(), convert), cannot_convert);
}

}  // namespace kelvo
