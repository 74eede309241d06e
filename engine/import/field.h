// One field of a text file into one element, or one member of a compound.
#pragma once

#include <string_view>

#include "values/encoded_elements.h"

namespace kelvo {

/// Fills the part of the last element that is at `offset` and of `type`. Numbers are read as
/// statements write them; text types and enumerations' names take the field as it is; lists,
/// compounds and opaque values are in the notation that SELECT shows. Throws StatementError where
/// it does not fit.
void put_field(EncodedElements& elements, const Type& type, std::size_t offset,
               std::string_view field);

/// Reads a number at `begin` into the element; returns what is behind it, or null for whatever is
/// not an ordinary number of just the element's type: put_field decides about that then, and says
/// why not.
using NumberReader = const char* (*)(const char* begin, const char* end, std::byte* element);

/// Null where numbers of the type need more than reading.
NumberReader number_reader(const Type& type);

/// Whether a field of that kind is its value as it stands, and may be empty.
bool is_text(Kind kind);

/// A field's text as a literal for `type`; throws StatementError where it is none.
Literal field_literal(const Type& type, std::string_view text);

/// Without blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace kelvo
