// Values from files of lines: CSV, TSV and plain text.
#pragma once

#include <memory>
#include <string>

#include "values/element_stream.h"

namespace kelvo {

// CSV: RFC 4180, fields separated by commas, quoted where they hold a comma, a quote or a line end.
// TSV: fields separated by tabs, with \t, \n and \\ for a tab, a line end and a backslash.
// TXT: numbers separated by blanks; members of a compound by tabs; any other value a line of its
// own.
//
// A line of a compound has a column for each member; any other line has any number of elements, the
// same in all lines. A first line that holds just the columns' names (the members', or VALUE) is a
// header.
std::unique_ptr<ElementStream> open_csv(const std::string& path, const Type& type);
std::unique_ptr<ElementStream> open_tsv(const std::string& path, const Type& type);
std::unique_ptr<ElementStream> open_txt(const std::string& path, const Type& type);

}  // namespace kelvo
