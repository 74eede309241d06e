// Elements as bytes for other programs: NumPy's .npy, and plain .bin.
#pragma once

#include <string>

#include "query/element_source.h"

namespace kelvo {

/// Throws StatementError (wrong_kind) where elements of the type have no fixed size, so that they
/// cannot be written as bytes; `format` is what the message calls the file: ".npy".
void expect_plain(const Type& type, const std::string& format);

/// Makes elements what others expect: little endian, text padded with null bytes. True where there
/// is anything to do.
bool needs_cleaning(const Type& type);
void clean(const Type& type, std::byte* element);

/// The header of a .npy file for `count` elements, or for all of the shape where the query gives
/// one. Its length does not depend on the count.
std::string npy_header(const Selected& selected, Extent count);

}  // namespace kelvo
