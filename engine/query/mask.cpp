// Counts and combines masks.
#include "query/mask.h"

#include <algorithm>
#include <cstring>

namespace kelvo {
namespace {

constexpr std::size_t word_size = sizeof(std::uint64_t);

// Eight values of a mask, each in a byte of its own.
std::uint64_t word_at(const Mask* mask) {
  std::uint64_t word = 0;
  std::memcpy(&word, mask, word_size);
  return word;
}

}  // namespace

std::size_t count_true(const Mask* mask, std::size_t count) {
  // As many words as their bytes can be added without an overflow into the next byte.
  constexpr std::size_t most = 255 * word_size;
  std::size_t found = 0;
  std::size_t i = 0;
  while (count - i >= word_size) {
    const std::size_t end = i + std::min(most, (count - i) / word_size * word_size);
    std::uint64_t sums = 0;
    for (; i < end; i += word_size) sums += word_at(mask + i);
    for (; sums != 0; sums >>= 8U) found += sums & 0xffU;
  }
  for (; i < count; ++i) found += mask[i];
  return found;
}

bool any_true(const Mask* mask, std::size_t count) {
  Mask found = 0;
  for (std::size_t i = 0; i < count; ++i) found |= mask[i];
  return found != 0;
}

void keep_true(const Mask* __restrict other, std::size_t count, Mask* __restrict mask) {
  for (std::size_t i = 0; i < count; ++i) mask[i] &= other[i];
}

void add_true(const Mask* __restrict other, std::size_t count, Mask* __restrict mask) {
  for (std::size_t i = 0; i < count; ++i) mask[i] |= other[i];
}

void take_true(const Mask* __restrict other, std::size_t count, Mask* __restrict mask) {
  for (std::size_t i = 0; i < count; ++i) mask[i] &= other[i] ^ 1U;
}

}  // namespace kelvo
