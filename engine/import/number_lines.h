// Lines of nothing but plain numbers, of which most text files consist, read where they lie.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "import/field.h"

namespace kelvo {

/// What a line's numbers become.
struct NumberLine {
  struct Field {
    std::size_t offset;  // in an element
    NumberReader read;
  };
  char separator = ',';           // ' ' stands for any blanks
  std::size_t elements = 1;       // that lie side by side
  std::size_t element_bytes = 0;  // of each
  std::vector<Field> fields;      // of each, in the order of the columns
};

struct LinesRead {
  std::size_t lines = 0;
  std::size_t bytes = 0;  // of the text
};

/// Reads up to `most` lines of the text, which ends with a line end, into elements side by side;
/// stops before a line that holds anything else, be it as little as a sign "+".
using LinesReader = LinesRead (*)(const NumberLine& line, std::string_view text, std::size_t most,
                                  std::byte* elements);

/// The fastest one for the line, which has a field at least.
LinesReader lines_reader(const NumberLine& line);

}  // namespace kelvo
