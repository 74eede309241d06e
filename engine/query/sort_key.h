// Keys of ORDER BY as numbers and bytes whose order is that of the values, so that sorting asks
// nothing about types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "query/column.h"

namespace kelvo {

// Descending keys are in the opposite order; NAN comes last in both.

/// The keys of a column of numbers.
void number_keys(Domain domain, const void* column, std::size_t count, bool descending,
                 std::uint64_t* keys);

/// Appends the key of value i of a column as bytes.
void append_key(Domain domain, const void* column, std::size_t i, bool descending,
                std::string* key);

/// The first eight bytes of a key as a number of the same order; of a shorter one, with nulls
/// behind it.
std::uint64_t number_of(std::string_view key);

}  // namespace kelvo
