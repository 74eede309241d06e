// Partial results side by side.
#pragma once

#include <array>
#include <cstddef>

namespace kelvo {

/// Independent of each other, so that the compiler keeps them in vector registers: a single one
/// would make each step wait for the one before it.
constexpr std::size_t lane_count = 8;

template <typename Value>
using Lanes = std::array<Value, lane_count>;

}  // namespace kelvo
