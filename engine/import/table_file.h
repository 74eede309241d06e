// Values from files of lines: CSV, TSV and plain text.
#pragma once

#include <memory>
#include <string>

#include "values/element_stream.h"

namespace kelvo {

// CSV: RFC 4180, fields separated by commas, quoted where they hold a comma, a quote or a line end.
// TSV: fields separated by tabs, with \t, \n, \r and \\ for a tab, line ends and a backslash.
// TXT: numbers separated by blanks, or a list of them in brackets; a compound in its notation, or
// its members separated by tabs; any other value a line of its own.
//
// A line of a compound has a column for each member, in CSV and TSV also for each member of a
// member; any other line has any number of elements, the same in all lines. `header`: the first
// line holds names. Without it, a first line that consists of the columns' names and cannot be
// values counts as one. Where the names of a header are those of the columns, it gives their order.
std::unique_ptr<ElementStream> open_csv(const std::string& path, const Type& type, bool header);
std::unique_ptr<ElementStream> open_tsv(const std::string& path, const Type& type, bool header);
std::unique_ptr<ElementStream> open_txt(const std::string& path, const Type& type, bool header);

}  // namespace kelvo
