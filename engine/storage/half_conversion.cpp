// A conversion of our own in the HDF5 library's table.
#include "storage/half_conversion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "storage/check.h"

namespace kelvo {
namespace {

std::string cannot_convert() { return "Reals of half precision cannot be converted"; }

constexpr std::uint32_t half_size_bits = 0x7fff;
constexpr std::uint32_t half_infinity = 0x7c00;
constexpr std::uint32_t single_infinity = 0x7f800000;

// The mantissa and the exponent move to their places; a product then makes up for the exponents'
// different biases, and makes normal numbers of those that are too small to be so in half
// precision. Without a branch, for the compiler to do it to many at once.
float single_of(std::uint16_t half) {
  constexpr float biases_apart = 0x1p112F;
  const std::uint32_t size = half & half_size_bits;
  const float scaled = std::bit_cast<float>(size << 13U) * biases_apart;
  const std::uint32_t special = size >= half_infinity ? single_infinity : 0;
  const std::uint32_t sign = (half & ~half_size_bits) << 16U;
  return std::bit_cast<float>(std::bit_cast<std::uint32_t>(scaled) | special | sign);
}

std::uint16_t turned_around(std::uint16_t half) {
  return static_cast<std::uint16_t>(half << 8U | half >> 8U);
}

// Side by side the results take twice the room: from the last group on none is written over what is
// still to be read.
void convert_packed(std::byte* buffer, std::size_t count, bool turned) {
  constexpr std::size_t group = 64;
  std::array<std::uint16_t, group> halves{};
  std::array<float, group> singles;
  while (count > 0) {
    const std::size_t some = (count - 1) % group + 1;
    count -= some;
    std::memcpy(halves.data(), buffer + count * sizeof halves[0], some * sizeof halves[0]);
    if (turned) std::transform(halves.begin(), halves.end(), halves.begin(), turned_around);
    std::transform(halves.begin(), halves.end(), singles.begin(), single_of);
    std::memcpy(buffer + count * sizeof singles[0], singles.data(), some * sizeof singles[0]);
  }
}

// Each stays where it is.
void convert_apart(std::byte* buffer, std::size_t count, std::size_t stride, bool turned) {
  for (std::size_t i = 0; i < count; ++i, buffer += stride) {
    std::uint16_t half = 0;
    std::memcpy(&half, buffer, sizeof half);
    const float single = single_of(turned ? turned_around(half) : half);
    std::memcpy(buffer, &single, sizeof single);
  }
}

// As H5T_conv_t.
herr_t convert(hid_t from, hid_t /*to*/, H5T_cdata_t* call, std::size_t count, std::size_t stride,
               std::size_t /*background_stride*/, void* buffer, void* /*background*/,
               hid_t /*transfer*/) {
  call->need_bkg = H5T_BKG_NO;
  if (call->command != H5T_CONV_CONV) return 0;
  const ByteOrder order = H5Tget_order(from) == H5T_ORDER_BE ? ByteOrder::big : ByteOrder::little;
  const bool turned = order != machine_order();
  auto* bytes = static_cast<std::byte*>(buffer);
  stride == 0 ? convert_packed(bytes, count, turned) : convert_apart(bytes, count, stride, turned);
  return 0;
}

}  // namespace

void hasten_half_conversion(const Type& type, hid_t file_type, hid_t memory_type) {
  const bool is_half = type.file_size == sizeof(std::uint16_t) && type.size == sizeof(float);
  if (!is_half || type.format) return;
  check_done(H5Tregister(H5T_PERS_HARD, "half", file_type, memory_type, convert), cannot_convert);
}

}  // namespace kelvo
