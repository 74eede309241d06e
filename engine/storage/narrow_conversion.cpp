// A conversion of our own in the HDF5 library's table.
#include "storage/narrow_conversion.h"

#include "storage/check.h"
#include "values/bits.h"

namespace kelvo {
namespace {

std::string cannot_convert() { return "Integers of fewer bits cannot be converted"; }

// The value of the lowest `bits` bits.
std::uint64_t extended(std::uint64_t value, std::size_t bits, bool is_signed) {
  const std::size_t unused = 64 - bits;
  value <<= unused;
  return is_signed ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value) >> unused)
                   : value >> unused;
}

// As H5T_conv_t: both types have the same size, so each element stays where it is.
herr_t convert(hid_t from, hid_t /*to*/, H5T_cdata_t* call, std::size_t count, std::size_t stride,
               std::size_t /*background_stride*/, void* buffer, void* /*background*/,
               hid_t /*transfer*/) {
  call->need_bkg = H5T_BKG_NO;
  if (call->command != H5T_CONV_CONV) return 0;
  const std::size_t size = H5Tget_size(from);
  const std::size_t bits = H5Tget_precision(from);
  const bool is_signed = H5Tget_class(from) == H5T_INTEGER && H5Tget_sign(from) == H5T_SGN_2;
  const ByteOrder order = H5Tget_order(from) == H5T_ORDER_BE ? ByteOrder::big : ByteOrder::little;
  auto* element = static_cast<std::byte*>(buffer);
  for (std::size_t i = 0; i < count; ++i, element += stride == 0 ? size : stride) {
    const std::uint64_t value = load_integer(element, size, order, false);
    store_integer(extended(value, bits, is_signed), size, machine_order(), element);
  }
  return 0;
}

}  // namespace

void mend_narrow_conversion(const Type& type, hid_t file_type, hid_t memory_type) {
  const bool turned = type.order != machine_order() && type.size == type.file_size;
  if (!turned || type.precision == 0 || type.bit_offset != 0) return;
  check_done(H5Tregister(H5T_PERS_HARD, "narrow", file_type, memory_type, convert), cannot_convert);
}

}  // namespace kelvo
