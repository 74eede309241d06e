// The table of file formats.
#include "import/open_values.h"

#include <array>
#include <string_view>

#include "error.h"
#include "import/binary_file.h"
#include "import/json_file.h"
#include "import/table_file.h"

namespace kelvo {
namespace {

struct Format {
  std::string_view suffix;
  std::unique_ptr<ElementStream> (*open)(const std::string& path, const Type& type, bool header);
};

template <std::unique_ptr<ElementStream> (*open)(const std::string& path, const Type& type)>
std::unique_ptr<ElementStream> without_header(const std::string& path, const Type& type,
                                              bool header) {
  if (!header) return open(path, type);
  throw StatementError(Status::wrong_kind,
                       "File " + quoted(path) + " is of bytes and has no HEADER (text files may)");
}

constexpr std::array formats = {
    Format{".csv", open_csv},
    Format{".tsv", open_tsv},
    Format{".txt", open_txt},
    Format{".json", open_json},
    Format{".npy", without_header<open_npy>},
    Format{".bin", without_header<open_bin>},
};

}  // namespace

std::unique_ptr<ElementStream> open_values(const std::string& path, const Type& type, bool header) {
  for (const Format& format : formats) {
    if (path.ends_with(format.suffix)) return format.open(path, type, header);
  }
  throw StatementError(
      Status::wrong_kind,
      "File " + quoted(path) + " has none of the suffixes .csv .tsv .txt .json .npy .bin");
}

}  // namespace kelvo
