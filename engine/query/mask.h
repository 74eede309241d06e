// Masks: what is true for each element of a batch.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// One byte a value: 1 for true, 0 for false.
using Mask = std::uint8_t;

/// How many values of a mask are true.
std::size_t count_true(const Mask* mask, std::size_t count);

/// Whether one of them is true.
bool any_true(const Mask* mask, std::size_t count);

/// mask[i] = mask[i] and other[i].
void keep_true(const Mask* other, std::size_t count, Mask* mask);

/// mask[i] = mask[i] or other[i].
void add_true(const Mask* other, std::size_t count, Mask* mask);

/// mask[i] = mask[i] and not other[i].
void take_true(const Mask* other, std::size_t count, Mask* mask);

}  // namespace kelvo
