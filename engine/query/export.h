// INTO: what a query selects as a file of the host.
#pragma once

#include <optional>
#include <string>

#include "query/element_source.h"
#include "query/text_writer.h"

namespace kelvo {

struct ExportTarget {
  std::string path;  // absolute
  bool replace = false;
  std::optional<TextFormat> format;  // else what the suffix of the path says
  bool header = false;
};

/// Writes all elements, or leaves no file. Throws StatementError: wrong_kind for a suffix that
/// names no format, and for a type that the format cannot hold.
void export_elements(const Selected& selected, const ExportTarget& target);

}  // namespace kelvo
