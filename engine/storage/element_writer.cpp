// Blocks of a selection, one after the other.
#include "storage/element_writer.h"

#include "storage/hyperslab.h"

namespace kelvo {
namespace {

constexpr std::size_t block_bytes = std::size_t{1024} * 1024;

}  // namespace

ElementWriter::ElementWriter(const ElementPlace& place, const Selection& selection)
    : place_(place),
      selection_(selection),
      walk_(selection, elements_at_once(place, selection, block_bytes)) {}

std::size_t ElementWriter::next() {
  return walk_.next() ? static_cast<std::size_t>(walk_.elements()) : 0;
}

void ElementWriter::write(const std::byte* elements) {
  Selection block;
  block.start = walk_.start();
  block.count = walk_.count();
  block.stride = selection_.stride;
  write_elements(place_, block, elements);
}

}  // namespace kelvo
