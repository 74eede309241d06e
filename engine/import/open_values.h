// Files that INSERT reads values from, by their suffix.
#pragma once

#include <memory>
#include <string>

#include "values/element_stream.h"

namespace kelvo {

/// The values of the file for elements of the type, which must outlive the stream. `header`: the
/// first line names the columns, whatever it says. Throws where the suffix is none of those that
/// are read (.csv .tsv .txt .json .npy .bin), the format has no header, or the file cannot be read.
std::unique_ptr<ElementStream> open_values(const std::string& path, const Type& type, bool header);

}  // namespace kelvo
