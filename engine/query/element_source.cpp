// Reading for the sake of errors.
#include "query/element_source.h"

namespace kelvo {

std::optional<std::uint64_t> look_through(ElementSource& source, std::size_t most_bytes) {
  if (const std::optional<std::uint64_t> count = source.read_all()) return count;
  if (!source.is_plain()) return std::nullopt;
  std::uint64_t seen = 0;
  Elements elements;
  while (seen * source.type().size < most_bytes && source.next(elements)) seen += elements.count;
  source.rewind();
  return seen;
}

}  // namespace kelvo
