// Records into bytes.
#include "query/sort_record.h"

#include <limits>

#include "error.h"

namespace kelvo {
namespace {

std::uint32_t checked_size(std::size_t size) {
  if (size > std::numeric_limits<std::uint32_t>::max())
    throw StatementError(Status::no_memory, "ORDER BY cannot hold a value of more than 4 GiB");
  return static_cast<std::uint32_t>(size);
}

}  // namespace

void RecordLayout::append(std::string_view rest, std::string_view payload,
                          std::string* records) const {
  if (!of_all_) {
    const RecordSizes sizes{checked_size(rest.size()), checked_size(payload.size())};
    records->append(reinterpret_cast<const char*>(&sizes), sizeof sizes);
  }
  records->append(rest).append(payload);
}

}  // namespace kelvo
