// Elements as JSON.
#pragma once

#include <string>
#include <string_view>

#include "values/text.h"

namespace kelvo {

/// Appends the element: numbers with all their digits, NAN and infinities as null, text as strings,
/// compounds as objects. An enumeration of FALSE and TRUE is a truth value; opaque bytes are
/// hexadecimal digits; null strings and references are null.
void append_json(const Type& type, const std::byte* element, const ReferenceNamer& namer,
                 std::string* json);

/// Whether it is an enumeration of just FALSE = 0 and TRUE = 1, as Python's h5py stores truth
/// values.
bool is_truth(const Type& type);

/// Appends a string. A byte that is not UTF-8 becomes the escape \udc80 to \udcff, so that none is
/// lost and the text is JSON.
void append_json_string(std::string_view text, std::string* json);

}  // namespace kelvo
