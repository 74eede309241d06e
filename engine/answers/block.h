// A run of rows of one type, as the cursor walks them: values lie side by side, so that going to
// the next row costs an addition.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "answers/cursor.h"

namespace kelvo {

enum class RowShape {
  scalar,  // `values` holds one value a row
  line,    // `values` holds elements; every `line_length` of them are a row, which may go on in the
           // next block
  list,    // `values` holds elements; row i has those from offsets[i] to offsets[i + 1]
  text,    // `values` holds NUL-terminated strings; row i begins at byte offsets[i], which is
           // null_text for a null string
};

struct Block {
  std::int32_t code = 0;  // data-type code of every row
  RowShape shape = RowShape::scalar;
  std::size_t value_size = 1;   // bytes of a value or element
  std::size_t line_length = 1;  // line: elements of a row, at least 1
  std::size_t elements = 0;     // what the block counts for in the count of elements returned
  std::vector<std::byte> values;
  std::vector<std::size_t> offsets;  // list: one more than rows; text: one a row

  /// Values or elements in the block.
  [[nodiscard]] std::size_t value_count() const { return values.size() / value_size; }
  /// Rows of a scalar, list or text block.
  [[nodiscard]] std::size_t row_count() const;
  /// Bytes that the block holds, for the budget of what is read ahead.
  [[nodiscard]] std::size_t bytes() const {
    return values.size() + offsets.size() * sizeof(std::size_t);
  }

  /// Empties it and makes it hold rows of that kind; memory is kept for the next use.
  void restart(std::int32_t row_code, RowShape row_shape, std::size_t size);

  /// Makes it hold scalar or line rows of those values. What it held goes into `bytes` with its
  /// size: mostly that of what is read into it next, which need not be cleared first then.
  void exchange(std::int32_t row_code, RowShape row_shape, std::size_t size,
                std::vector<std::byte>* bytes);

  // For the shapes list and text; each appends one row.
  void append_text(std::string_view text);
  void append_null_text();
  void append_list(const std::byte* items, std::size_t count);

  /// Appends texts without copying them: `write(i, place)` puts the one of row i where `room` bytes
  /// are free and returns the byte behind it, for a NUL to stand there.
  template <typename Write>
  void append_texts(std::size_t count, std::size_t room, Write write);

 private:
  void describe(std::int32_t row_code, RowShape row_shape, std::size_t size);
};

template <typename Write>
void Block::append_texts(std::size_t count, std::size_t room, Write write) {
  // So many at a time that the room which stays free, and is cleared in vain, matters little.
  constexpr std::size_t group = 64;
  for (std::size_t first = 0; first < count; first += group) {
    const std::size_t begin = values.size();
    values.resize(begin + group * (room + 1));
    char* const texts = reinterpret_cast<char*>(values.data());
    char* place = texts + begin;
    for (std::size_t i = first; i < std::min(first + group, count); ++i) {
      offsets.push_back(static_cast<std::size_t>(place - texts));
      place = write(i, place);
      *place++ = '\0';
    }
    values.resize(static_cast<std::size_t>(place - texts));
  }
}

}  // namespace kelvo
