// Writes files.
#include "query/export.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "error.h"
#include "query/binary_writer.h"
#include "storage/output_file.h"

namespace kelvo {
namespace {

enum class FileFormat { text, npy, bin };

struct Suffix {
  std::string_view suffix;
  FileFormat format;
  TextFormat text;
};

constexpr std::array<Suffix, 6> suffixes = {{{".csv", FileFormat::text, TextFormat::csv},
                                             {".tsv", FileFormat::text, TextFormat::tsv},
                                             {".txt", FileFormat::text, TextFormat::text},
                                             {".json", FileFormat::text, TextFormat::json},
                                             {".npy", FileFormat::npy, TextFormat::text},
                                             {".bin", FileFormat::bin, TextFormat::text}}};

const Suffix& suffix_of(const std::string& path) {
  const auto* found = std::find_if(suffixes.begin(), suffixes.end(), [&path](const Suffix& one) {
    return path.ends_with(one.suffix);
  });
  if (found != suffixes.end()) return *found;
  throw StatementError(Status::wrong_kind,
                       "File " + quoted(path) +
                           " has none of the suffixes .csv .tsv .txt .json .npy .bin (FORMAT names "
                           "a format)");
}

void write_text(const Selected& selected, TextFormat format, bool header, OutputFile* file) {
  TextWriter writer(format, selected, /*line_ends=*/true);
  TextRows rows;
  if (header) writer.append_header(&rows);
  Elements elements;
  while (selected.source->next(elements)) {
    writer.append(elements, &rows);
    file->append(rows.text.data(), rows.text.size());
    rows.text.clear();
    rows.ends.clear();
  }
  file->append(rows.text.data(), rows.text.size());
}

// Returns how many elements there were.
Extent write_bytes(const Selected& selected, OutputFile* file) {
  const Type& type = selected.source->type();
  const bool dirty = needs_cleaning(type);
  std::vector<std::byte> cleaned;
  Extent count = 0;
  Elements elements;
  while (selected.source->next(elements)) {
    const std::size_t size = elements.count * type.size;
    count += elements.count;
    if (!dirty) {
      file->append(elements.data, size);
      continue;
    }
    cleaned.assign(elements.data, elements.data + size);
    for (std::size_t i = 0; i < elements.count; ++i) clean(type, cleaned.data() + i * type.size);
    file->append(cleaned.data(), size);
  }
  return count;
}

// The header says how many elements there are, so it is written once more at the end.
void write_npy(const Selected& selected, OutputFile* file) {
  const std::string header = npy_header(selected, 0);
  file->append(header.data(), header.size());
  const std::string counted = npy_header(selected, write_bytes(selected, file));
  file->write_first(counted.data(), counted.size());
}

}  // namespace

void export_elements(const Selected& selected, const ExportTarget& target) {
  const FileFormat format = target.format ? FileFormat::text : suffix_of(target.path).format;
  if (format == FileFormat::npy) expect_plain(selected.source->type(), ".npy");
  if (format == FileFormat::bin) expect_plain(selected.source->type(), ".bin");
  OutputFile file(target.path, target.replace);
  if (format == FileFormat::npy) {
    write_npy(selected, &file);
  } else if (format == FileFormat::bin) {
    write_bytes(selected, &file);
  } else {
    const TextFormat text = target.format ? *target.format : suffix_of(target.path).text;
    write_text(selected, text, target.header, &file);
  }
  file.commit();
}

}  // namespace kelvo
