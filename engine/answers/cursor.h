// Where the walk over a result stands. Going to the next row or element is an addition or a look at
// where it begins, as long as they lie in one block; the result takes care of everything else.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// Stands for where a text begins that is null.
constexpr std::size_t null_text = static_cast<std::size_t>(-1);

struct Cursor {
  std::int32_t code = 0;             // data-type code of the current row
  const std::byte* value = nullptr;  // of the current row, or the current element of it

  // Rows that hold one value each, up to the end of their block; of other rows none.
  const std::byte* rows_end = nullptr;
  const std::byte* next_row = nullptr;
  std::size_t row_size = 0;

  // Rows of text, likewise: where in `texts` each begins.
  const std::size_t* texts_end = nullptr;
  const std::size_t* next_text = nullptr;
  const std::byte* texts = nullptr;

  // Elements of the current row, as far as they lie side by side.
  const std::byte* elements_end = nullptr;
  const std::byte* next_element = nullptr;
  std::size_t element_size = 0;
  std::size_t element_count = 0;  // of the whole row

  /// Goes to the next row; false where the result has to do it.
  bool step_to_row() noexcept {
    if (next_row == rows_end) return step_to_text();
    value = next_row;
    next_row += row_size;
    return true;
  }

  bool step_to_text() noexcept {
    if (next_text == texts_end) return false;
    const std::size_t begin = *next_text++;
    value = begin == null_text ? nullptr : texts + begin;
    return true;
  }

  /// Goes to the next element of the row; false where the result has to do it.
  bool step_to_element() noexcept {
    if (next_element == elements_end) return false;
    value = next_element;
    next_element += element_size;
    return true;
  }
};

}  // namespace kelvo
