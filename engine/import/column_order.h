// NumPy's Fortran order, the first index fastest, read as the last index fastest: some rows are
// gathered at a time.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace kelvo {

class ColumnOrder {
 public:
  /// Bytes of rows that are gathered, and so the most that a row may have.
  static constexpr std::size_t budget = std::size_t{64} * 1024 * 1024;

  /// The file stands at its first element, and stays the caller's. A row, all elements of one first
  /// index, must fit the budget.
  ColumnOrder(std::FILE* file, std::vector<std::uint64_t> shape, std::size_t element_size);

  /// The next bytes of the elements; fewer where the file ends early or cannot be read.
  std::size_t read(std::byte* bytes, std::size_t count);

 private:
  bool gather_rows();
  bool gather_column(std::size_t column, std::size_t place);
  void next_place(std::size_t* place);

  std::FILE* file_;
  off_t begin_;
  std::vector<std::uint64_t> shape_;
  std::size_t element_size_;
  std::size_t row_length_ = 1;     // elements
  std::uint64_t first_row_ = 0;    // of the gathered ones
  std::size_t row_count_ = 0;      // gathered
  std::vector<std::uint64_t> at_;  // indices behind the first, of the column that is gathered
  std::vector<std::byte> column_;
  std::vector<std::byte> rows_;
  std::size_t taken_ = 0;  // bytes of the rows
};

}  // namespace kelvo
