// Cuts lines by the rules of each format.
#include "import/record.h"

#include <algorithm>

#include "error.h"
#include "import/field.h"

namespace kelvo {
namespace {

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

bool has_open_quote(std::string_view text) {
  return std::count(text.begin(), text.end(), '"') % 2 != 0;
}

[[noreturn]] void fail_quote(const LineReader& lines, const Record& record) {
  lines.fail(record.line, record.fields.size() + 1,
             StatementError(Status::wrong_kind, "A quoted field is not closed"));
}

// A line end within quotes belongs to the field: the record goes on in the next line.
std::string_view whole_record(LineReader& lines, std::string_view line, Record* record) {
  if (!has_open_quote(line)) return line;
  record->joined = line;
  for (bool open = true; open;) {
    record->joined += lines.had_return() ? "\r\n" : "\n";
    // A quote too many makes one field of all that follows.
    if (record->joined.size() > LineReader::longest_line || !lines.next(&line)) break;
    record->joined += line;
    open ^= has_open_quote(line);
  }
  return record->joined;
}

// A quoted field from its first quote on; moves `line` behind it. Within quotes a quote is written
// twice.
std::string take_quoted(std::string_view* line, const LineReader& lines, const Record& record) {
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
  fail_quote(lines, record);
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

}  // namespace

void cut_csv(LineReader& lines, std::string_view line, Record* record) {
  if (line.find('"') == std::string_view::npos) return cut_plainly(line, ',', record);
  line = whole_record(lines, line, record);
  // Reserved, since a string that moved would take its short text along.
  record->unescaped.reserve(count_fields(line, ','));
  for (;;) {
    if (line.starts_with('"')) {
      record->fields.push_back(record->unescaped.emplace_back(take_quoted(&line, lines, *record)));
      if (!line.empty() && line[0] != ',') {
        lines.fail(record->line, record->fields.size(),
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

void cut_numbers(LineReader& /*lines*/, std::string_view line, Record* record) {
  line = trimmed(line);
  if (line.starts_with('[') && line.ends_with(']')) {
    cut_plainly(line.substr(1, line.size() - 2), ',', record);
    return;
  }
  for (; !line.empty(); line = trimmed(line)) {
    const std::size_t length = std::min(line.find_first_of(" \t"), line.size());
    record->fields.push_back(line.substr(0, length));
    line.remove_prefix(length);
  }
}

void cut_nothing(LineReader& /*lines*/, std::string_view line, Record* record) {
  record->fields.push_back(line);
}

}  // namespace kelvo
