// Rows of text in the four formats.
#include "query/text_writer.h"

#include "query/element_rows.h"
#include "query/json.h"
#include "values/text.h"

namespace kelvo {

std::string_view TextWriter::separator() const {
  if (format_ == TextFormat::json) return ", ";
  return format_ == TextFormat::csv ? "," : "\t";
}

TextWriter::TextWriter(TextFormat format, const Selected& selected, bool line_ends)
    : format_(format),
      selected_(selected),
      line_ends_(line_ends),
      line_length_(line_length(selected)) {
  const Type& type = selected.source->type();
  if (type.kind == Kind::compound && (is_separated() || selected.several_items)) {
    for (const Member& member : type.members) add_columns(member.name, member.type, member.offset);
  } else {
    columns_.push_back({selected.label, &type, 0});
  }
}

// The members of a compound are columns of their own; in TEXT and JSON it stays one value.
void TextWriter::add_columns(const std::string& name, const Type& type, std::size_t offset) {
  if (type.kind != Kind::compound || !is_separated()) {
    columns_.push_back({name, &type, offset});
    return;
  }
  for (const Member& member : type.members)
    add_columns(name + "." + member.name, member.type, offset + member.offset);
}

void TextWriter::append_header(TextRows* rows) const {
  if (format_ == TextFormat::json) rows->text += '[';
  const std::size_t count = line_length_ > 0 ? line_length_ : columns_.size();
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) rows->text += separator();
    const std::string name = line_length_ > 0 ? std::to_string(i) : columns_[i].name;
    if (format_ == TextFormat::json) {
      append_json_string(name, &rows->text);
    } else {
      append_text_cell(name, &rows->text);
    }
  }
  if (format_ == TextFormat::json) rows->text += ']';
  end_row(rows);
}

void TextWriter::end_row(TextRows* rows) const {
  if (line_ends_) rows->text += '\n';
  rows->ends.push_back(rows->text.size());
}

void TextWriter::append(const Elements& elements, TextRows* rows) {
  const Type& type = selected_.source->type();
  for (std::size_t i = 0; i < elements.count; ++i) {
    const std::byte* element = elements.data + i * type.size;
    if (line_length_ > 0) {
      append_line_part(type, element, rows);
    } else {
      append_element(element, &rows->text);
      end_row(rows);
    }
  }
}

// A line of numbers: cells in CSV and TSV, a list in TEXT and JSON.
void TextWriter::append_line_part(const Type& type, const std::byte* element, TextRows* rows) {
  const bool first = in_line_ == 0;
  if (is_separated()) {
    if (!first) rows->text += separator();
    append_number(type, element, &rows->text);
  } else {
    rows->text += first ? "[" : ", ";
    if (format_ == TextFormat::json) {
      append_json(type, element, selected_.namer, &rows->text);
    } else {
      append_number(type, element, &rows->text);
    }
  }
  if (++in_line_ < line_length_) return;
  in_line_ = 0;
  if (!is_separated()) rows->text += ']';
  end_row(rows);
}

void TextWriter::append_element(const std::byte* element, std::string* text) {
  if (format_ == TextFormat::json) {
    append_json(selected_.source->type(), element, selected_.namer, text);
  } else {
    append_separated(element, text);
  }
}

void TextWriter::append_separated(const std::byte* element, std::string* text) {
  for (const Column& column : columns_) {
    if (&column != columns_.data()) *text += separator();
    append_cell(*column.type, element + column.offset, text);
  }
}

void TextWriter::append_cell(const Type& type, const std::byte* element, std::string* text) {
  if (type.is_numeric()) return append_number(type, element, text);
  cell_.clear();
  append_plain(type, element, selected_.namer, &cell_);
  append_text_cell(cell_, text);
}

void TextWriter::append_text_cell(std::string_view cell, std::string* text) const {
  // In front of a file a byte order mark is taken for none of the text.
  const bool quotes =
      format_ == TextFormat::csv && (cell.find_first_of(",\"\r\n") != std::string_view::npos ||
                                     cell.starts_with(byte_order_mark));
  if (quotes) {
    *text += '"';
    for (const char byte : cell) text->append(byte == '"' ? 2 : 1, byte);
    *text += '"';
  } else if (format_ == TextFormat::tsv) {
    for (const char byte : cell) {
      // A carriage return too, since readers take one before a line feed for a part of the line
      // end.
      if (byte == '\t' || byte == '\n' || byte == '\r' || byte == '\\') *text += '\\';
      *text += byte == '\t' ? 't' : byte == '\n' ? 'n' : byte == '\r' ? 'r' : byte;
    }
  } else {
    *text += cell;
  }
}

}  // namespace kelvo
