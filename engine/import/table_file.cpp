// One stream for all files of lines; they differ in how a line is cut into fields.
#include "import/table_file.h"

#include <algorithm>
#include <vector>

#include "error.h"
#include "import/field.h"
#include "import/line_reader.h"

namespace kelvo {
namespace {

constexpr std::size_t elements_per_block = 16384;

// The fields of one record. Those that had to be unescaped live in `unescaped`, which never moves
// them while it is in use.
struct Record {
  std::vector<std::string_view> fields;
  std::vector<std::string> unescaped;
  std::string joined;  // a record of several lines
};

using Cutter = void (*)(LineReader& lines, std::string_view line, Record* record);

std::size_t count_fields(std::string_view line, char separator) {
  return static_cast<std::size_t>(std::count(line.begin(), line.end(), separator)) + 1;
}

void cut_plainly(std::string_view line, char separator, Record* record) {
  for (;;) {
    const std::size_t end = line.find(separator);
    record->fields.push_back(line.substr(0, end));
    if (end == std::string_view::npos) return;
    line.remove_prefix(end + 1);
  }
}

// A quoted field from its first quote on; moves `line` behind it. Within quotes a quote is written
// twice.
std::string take_quoted(std::string_view* line, std::size_t column, const LineReader& lines) {
  std::string field;
  for (std::size_t at = 1; at < line->size(); ++at) {
    if ((*line)[at] != '"') {
      field += (*line)[at];
    } else if (at + 1 < line->size() && (*line)[at + 1] == '"') {
      field += (*line)[at++];
    } else {
      line->remove_prefix(at + 1);
      return field;
    }
  }
  lines.fail(column, StatementError(Status::wrong_kind, "A quoted field is not closed"));
}

bool has_open_quote(std::string_view text) {
  return std::count(text.begin(), text.end(), '"') % 2 != 0;
}

// A line end within quotes belongs to the field: the record goes on in the next line.
std::string_view whole_record(LineReader& lines, std::string_view line, Record* record) {
  if (!has_open_quote(line)) return line;
  record->joined = line;
  bool open = true;
  while (open && lines.next(&line)) {
    record->joined += '\n';
    record->joined += line;
    open ^= has_open_quote(line);
  }
  return record->joined;
}

void cut_csv(LineReader& lines, std::string_view line, Record* record) {
  if (line.find('"') == std::string_view::npos) return cut_plainly(line, ',', record);
  line = whole_record(lines, line, record);
  // Reserved, since a string that moved would take its short text along.
  record->unescaped.reserve(count_fields(line, ','));
  for (;;) {
    if (line.starts_with('"')) {
      record->fields.push_back(
          record->unescaped.emplace_back(take_quoted(&line, record->fields.size() + 1, lines)));
      if (!line.empty() && line[0] != ',') {
        lines.fail(record->fields.size(),
                   StatementError(Status::wrong_kind, "A comma is missing behind a quoted field"));
      }
    } else {
      record->fields.push_back(line.substr(0, line.find(',')));
      line.remove_prefix(record->fields.back().size());
    }
    if (line.empty()) return;
    line.remove_prefix(1);
  }
}

std::string unescape_tsv(std::string_view field) {
  static constexpr std::string_view letters = "tnr\\";
  static constexpr std::string_view meanings = "\t\n\r\\";
  std::string text;
  for (std::size_t i = 0; i < field.size(); ++i) {
    const std::size_t letter =
        i + 1 < field.size() ? letters.find(field[i + 1]) : std::string_view::npos;
    const bool escape = field[i] == '\\' && letter != std::string_view::npos;
    text += escape ? meanings[letter] : field[i];
    if (escape) ++i;
  }
  return text;
}

void cut_tsv(LineReader& /*lines*/, std::string_view line, Record* record) {
  cut_plainly(line, '\t', record);
  if (line.find('\\') == std::string_view::npos) return;
  record->unescaped.reserve(record->fields.size());
  for (std::string_view& field : record->fields)
    field = record->unescaped.emplace_back(unescape_tsv(field));
}

void cut_tabs(LineReader& /*lines*/, std::string_view line, Record* record) {
  cut_plainly(line, '\t', record);
}

void cut_blanks(LineReader& /*lines*/, std::string_view line, Record* record) {
  for (std::string_view rest = trimmed(line); !rest.empty(); rest = trimmed(rest)) {
    const std::size_t length = std::min(rest.find_first_of(" \t"), rest.size());
    record->fields.push_back(rest.substr(0, length));
    rest.remove_prefix(length);
  }
}

void cut_nothing(LineReader& /*lines*/, std::string_view line, Record* record) {
  record->fields.push_back(line);
}

class TableStream : public ElementStream {
 public:
  TableStream(const std::string& path, const Type& type, Cutter cut) : lines_(path), cut_(cut) {
    if (type.kind != Kind::compound) {
      columns_.push_back({"VALUE", 0, 0, type});
    } else {
      columns_ = type.members;
    }
    is_compound_ = type.kind == Kind::compound;
  }

  void read_all(const Type& type, const Taker& take) override {
    EncodedElements block(type);
    while (next_record()) {
      is_compound_ ? add_compound(block) : add_elements(block);
      if (block.count() < elements_per_block) continue;
      take(block);
      block.clear();
    }
    take(block);
  }

 private:
  bool next_record() {
    do {
      if (!cut_next()) return false;
    } while (is_first_ && is_header());
    if (is_first_) width_ = is_compound_ ? columns_.size() : record_.fields.size();
    is_first_ = false;
    if (record_.fields.size() != width_) fail_width();
    return true;
  }

  // An empty line holds nothing, unless a single column of text may be empty.
  bool cut_next() {
    std::string_view line;
    const Kind kind = columns_[0].type.kind;
    const bool may_be_empty =
        columns_.size() == 1 && (kind == Kind::text || kind == Kind::varying_text);
    do {
      if (!lines_.next(&line)) return false;
    } while (line.empty() && !may_be_empty);
    record_.fields.clear();
    record_.unescaped.clear();
    cut_(lines_, line, &record_);
    return true;
  }

  bool is_header() {
    if (header_seen_) return false;
    header_seen_ = record_.fields.size() == columns_.size() &&
                   std::equal(columns_.begin(), columns_.end(), record_.fields.begin(),
                              [](const Member& column, std::string_view field) {
                                return column.name == field;
                              });
    return header_seen_;
  }

  [[noreturn]] void fail_width() {
    const std::size_t count = record_.fields.size();
    lines_.fail(
        0, StatementError(Status::out_of_range,
                          std::to_string(width_) + (width_ == 1 ? " column is" : " columns are") +
                              " needed, the line has " + std::to_string(count)));
  }

  void put(EncodedElements& elements, const Member& column, std::size_t field) {
    try {
      put_field(elements, column.type, column.offset, record_.fields[field]);
    } catch (const StatementError& error) {
      lines_.fail(field + 1, error);
    }
  }

  void add_compound(EncodedElements& elements) {
    elements.append_zeros();
    for (std::size_t i = 0; i < columns_.size(); ++i) put(elements, columns_[i], i);
  }

  void add_elements(EncodedElements& elements) {
    for (std::size_t i = 0; i < record_.fields.size(); ++i) {
      elements.append_zeros();
      put(elements, columns_[0], i);
    }
  }

  LineReader lines_;
  Cutter cut_;
  std::vector<Member> columns_;
  bool is_compound_ = false;
  Record record_;
  bool is_first_ = true;
  bool header_seen_ = false;
  std::size_t width_ = 0;
};

}  // namespace

std::unique_ptr<ElementStream> open_csv(const std::string& path, const Type& type) {
  return std::make_unique<TableStream>(path, type, cut_csv);
}

std::unique_ptr<ElementStream> open_tsv(const std::string& path, const Type& type) {
  return std::make_unique<TableStream>(path, type, cut_tsv);
}

std::unique_ptr<ElementStream> open_txt(const std::string& path, const Type& type) {
  const Cutter cut = type.kind == Kind::compound ? cut_tabs
                     : type.is_numeric()         ? cut_blanks
                                                 : cut_nothing;
  return std::make_unique<TableStream>(path, type, cut);
}

}  // namespace kelvo
