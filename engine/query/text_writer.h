// Elements as text that loses nothing: what FORMAT delivers and INTO writes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "query/element_source.h"

namespace kelvo {

enum class TextFormat {
  text,  // values as they stand alone; items with a tab between them
  csv,   // RFC 4180: a column for each member; lines end with a line feed
  tsv,   // the same with tabs; backslash, tab and line feed in text escaped by a backslash
  json,  // one value a row; NAN and infinities are null
};

/// Rows of text, one after the other.
struct TextRows {
  std::string text;
  std::vector<std::size_t> ends;  // of each row that is whole, in `text`
};

class TextWriter {
 public:
  /// With `line_ends`, each row has a line feed behind it. `selected` must outlive the writer.
  TextWriter(TextFormat format, const Selected& selected, bool line_ends);

  /// Appends a row with the names of the columns.
  void append_header(TextRows* rows) const;

  /// Appends the elements' rows. A row may go on in the next call, where it is a line of many
  /// numbers.
  void append(const Elements& elements, TextRows* rows);

 private:
  struct Column {
    std::string name;
    const Type* type;
    std::size_t offset;
  };

  void add_columns(const std::string& name, const Type& type, std::size_t offset);
  void append_element(const std::byte* element, std::string* text);
  void append_separated(const std::byte* element, std::string* text);
  void append_cell(const Type& type, const std::byte* element, std::string* text);
  void append_text_cell(std::string_view cell, std::string* text) const;
  void append_line_part(const Type& type, const std::byte* element, TextRows* rows);
  void end_row(TextRows* rows) const;
  [[nodiscard]] std::string_view separator() const;
  [[nodiscard]] bool is_separated() const {
    return format_ == TextFormat::csv || format_ == TextFormat::tsv;
  }

  TextFormat format_;
  const Selected& selected_;
  bool line_ends_;
  std::size_t line_length_;  // values of a row, where rows are lines of numbers; else 0
  std::size_t in_line_ = 0;  // of them, written already
  std::vector<Column> columns_;
  std::string cell_;
};

}  // namespace kelvo
