// Elements as text: the notation of compounds and of all that has no row type of its own. Numbers
// are written with the fewest digits that read back to the same value.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "values/type.h"

namespace kelvo {

/// The path (and, for a region, its bounds in slice form) of what a reference points to; "" for a
/// null reference. Values know nothing of files, so whoever reads them passes this in.
using ReferenceNamer = std::function<std::string(const Type& type, const std::byte* element)>;

/// The bytes of a fixed-length string without its padding.
std::string_view without_padding(const Type& type, const std::byte* element);

/// The null-safe text of a varying_text element; data() is null for a null string.
std::string_view varying_text(const std::byte* element);

/// Bytes that must be free where the text of a number goes.
constexpr std::size_t number_room = 40;

/// Writes the number of an element to a place with that much room and returns the byte behind it.
using NumberWriter = char* (*)(const std::byte* element, char* text);

/// The writer for elements of the type; null for all that are not numbers of the machine's: times
/// have the file's byte order.
NumberWriter number_writer(const Type& type);

/// Appends the number of a numeric element.
void append_number(const Type& type, const std::byte* element, std::string* text);

/// Appends the element as it stands alone in a VARCHAR row: text unquoted, an enumeration's name, a
/// reference's path.
void append_plain(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                  std::string* text);

/// Appends the element as it stands inside a compound or list: text quoted, in the notation that
/// INSERT reads.
void append_nested(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                   std::string* text);

/// A string literal of the statement language: '...' or, where it holds control bytes, E'...'.
std::string string_literal(std::string_view text);

/// A quoted name of the statement language: "..." or, where it holds control bytes, E"...".
std::string quoted_name(std::string_view name);

/// What some programs write in front of UTF-8 text in files. It is no part of the text.
constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";

}  // namespace kelvo
