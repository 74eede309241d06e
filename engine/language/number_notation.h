// The types of numbers as they are written, and what other types are written with too.
#pragma once

#include <cstddef>
#include <string_view>

#include "values/type.h"

namespace kelvo {

class Parser;

/// A number, or a sequence of numbers (VARINT and its kin), if one is next.
bool accept_number_type(Parser& parser, Type* type);

/// One of TINYINT to BIGINT, UNSIGNED too.
Type expect_integer_type(Parser& parser);

/// LITTLE ENDIAN or BIG ENDIAN if one is next.
void parse_byte_order(Parser& parser, Type* type);

/// "(n)", n being at least 1; `what` names it in the error: "a number of bytes".
std::size_t expect_type_size(Parser& parser, std::string_view what);

/// A sequence of any length.
Type sequence_of(Type base);

}  // namespace kelvo
