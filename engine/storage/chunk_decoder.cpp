// The filters, backwards.
#include "storage/chunk_decoder.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "storage/lzf.h"

namespace kelvo {
namespace {

constexpr std::size_t checksum_size = 4;

bool is_applied(std::uint32_t mask, std::size_t filter) { return (mask >> filter & 1U) == 0; }

// --- checksums ---

// The sum's remainder by 65535, as one's-complement addition of 16-bit numbers gives it: 0 only
// where all of them are 0.
std::uint64_t folded(std::uint64_t sum) { return sum == 0 ? 0 : (sum - 1) % 65535 + 1; }

// Fletcher's: the sum of all 16-bit numbers, and the sum of all sums on the way.
std::uint32_t fletcher32(std::span<const std::byte> bytes) {
  constexpr std::size_t most = 65536;  // numbers before the sums could overflow
  std::uint64_t sum = 0;
  std::uint64_t sums = 0;
  const std::size_t whole = bytes.size() / 2 * 2;
  for (std::size_t begin = 0; begin < whole; begin += 2 * most) {
    const std::size_t end = std::min(whole, begin + 2 * most);
    for (std::size_t i = begin; i < end; i += 2) {
      sum += std::to_integer<std::uint64_t>(bytes[i]) << 8U |
             std::to_integer<std::uint64_t>(bytes[i + 1]);
      sums += sum;
    }
    sum = folded(sum);
    sums = folded(sums);
  }
  if (whole < bytes.size()) {
    sum = folded(sum + (std::to_integer<std::uint64_t>(bytes.back()) << 8U));
    sums = folded(sums + sum);
  }
  return static_cast<std::uint32_t>(sums << 16U | sum);
}

// The checksum stands behind the bytes, lowest byte first.
bool take_checksum(std::span<const std::byte>* bytes) {
  if (bytes->size() < checksum_size) return false;
  std::uint32_t stored = 0;
  for (std::size_t i = 1; i <= checksum_size; ++i)
    stored = stored << 8U | std::to_integer<std::uint32_t>((*bytes)[bytes->size() - i]);
  *bytes = bytes->first(bytes->size() - checksum_size);
  return fletcher32(*bytes) == stored;
}

// --- shuffling ---

// Byte j of every element stands in the j-th part of the bytes. The common sizes are told to the
// compiler, which then handles many elements at once.
template <std::size_t size>
void join_bytes(const std::byte* from, std::size_t count, std::byte* __restrict to) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = 0; j < size; ++j) to[i * size + j] = from[j * count + i];
  }
}

void unshuffle(std::span<const std::byte> bytes, std::size_t size, std::byte* to) {
  const std::byte* from = bytes.data();
  const std::size_t count = bytes.size() / size;
  // What is less than an element stays where it is, at the end.
  const std::size_t whole = count * size;
  std::memcpy(to + whole, from + whole, bytes.size() - whole);
  switch (size) {
    case 2:
      return join_bytes<2>(from, count, to);
    case 4:
      return join_bytes<4>(from, count, to);
    case 8:
      return join_bytes<8>(from, count, to);
    default:
      for (std::size_t j = 0; j < size; ++j) {
        for (std::size_t i = 0; i < count; ++i) to[i * size + j] = from[j * count + i];
      }
  }
}

}  // namespace

std::size_t ChunkCoding::room() const noexcept { return chunk_size + checksum_size; }

void ChunkDecoder::FreeDecompressor::operator()(
    libdeflate_decompressor* decompressor) const noexcept {
  libdeflate_free_decompressor(decompressor);
}

ChunkDecoder::ChunkDecoder(const ChunkCoding& coding)
    : coding_(coding), decompressor_(libdeflate_alloc_decompressor()) {
  if (decompressor_ == nullptr) throw std::bad_alloc();
  if (coding.filters.size() > 1) between_.reserve(coding.room());
}

// Bytes that a filter was applied to: only a checksum before it changes their number, as only one
// compresses.
std::size_t ChunkDecoder::size_before(std::size_t filter, std::uint32_t mask) const {
  std::size_t size = coding_.chunk_size;
  for (std::size_t i = 0; i < filter; ++i) {
    if (is_applied(mask, i) && coding_.filters[i] == ChunkFilter::fletcher32) size += checksum_size;
  }
  return size;
}

bool ChunkDecoder::decode(std::span<const std::byte> coded, std::uint32_t mask, std::byte* chunk) {
  const std::vector<ChunkFilter>& filters = coding_.filters;
  std::size_t moves = 0;
  for (std::size_t i = 0; i < filters.size(); ++i) {
    if (is_applied(mask, i) && filters[i] != ChunkFilter::fletcher32) ++moves;
  }
  for (std::size_t i = filters.size(); i-- > 0;) {
    if (!is_applied(mask, i)) continue;
    if (filters[i] == ChunkFilter::fletcher32) {
      if (!take_checksum(&coded)) return false;
      continue;
    }
    // Alternately here and there, so that the last one ends in the chunk.
    std::byte* to = --moves % 2 == 0 ? chunk : between_.data();
    if (!undo(filters[i], coded, size_before(i, mask), to)) return false;
    coded = {to, size_before(i, mask)};
  }
  if (coded.size() != coding_.chunk_size) return false;
  if (coded.data() != chunk) std::memcpy(chunk, coded.data(), coded.size());
  return true;
}

bool ChunkDecoder::undo(ChunkFilter filter, std::span<const std::byte> bytes, std::size_t size,
                        std::byte* to) {
  if (filter == ChunkFilter::deflate) {
    return libdeflate_zlib_decompress(decompressor_.get(), bytes.data(), bytes.size(), to, size,
                                      nullptr) == LIBDEFLATE_SUCCESS;
  }
  if (filter == ChunkFilter::lzf) {
    const auto* packed = reinterpret_cast<const std::uint8_t*>(bytes.data());
    return unpack_lzf({packed, bytes.size()}, {reinterpret_cast<std::uint8_t*>(to), size}) == size;
  }
  if (bytes.size() != size) return false;
  unshuffle(bytes, coding_.element_size, to);
  return true;
}

}  // namespace kelvo
