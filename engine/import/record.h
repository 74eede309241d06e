// How lines of text files are cut into the fields of records.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "import/line_reader.h"

namespace kelvo {

/// The fields of one record, good until the next one is cut. Those that had to be unescaped live in
/// `unescaped`, which never moves them while it is in use.
struct Record {
  std::vector<std::string_view> fields;
  std::vector<std::string> unescaped;
  std::string joined;      // a record of several lines
  std::uint64_t line = 0;  // the one that it begins in, from 1

  void clear() {
    fields.clear();
    unescaped.clear();
  }
};

/// Cuts the line given last, and takes more of them where the record goes on in the next one.
using Cutter = void (*)(LineReader& lines, std::string_view line, Record* record);

void cut_csv(LineReader& lines, std::string_view line, Record* record);
void cut_tsv(LineReader& lines, std::string_view line, Record* record);
/// Between tabs, nothing is escaped.
void cut_tabs(LineReader& lines, std::string_view line, Record* record);
/// Numbers between blanks, or "[1, 2, 3]".
void cut_numbers(LineReader& lines, std::string_view line, Record* record);
/// The whole line.
void cut_nothing(LineReader& lines, std::string_view line, Record* record);

}  // namespace kelvo
