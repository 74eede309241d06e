// Blocks of a selection, one after the other.
#include "storage/element_writer.h"

#include <cstring>
#include <vector>

#include "storage/box_walk.h"
#include "storage/creation.h"
#include "storage/hyperslab.h"

namespace kelvo {
namespace {

constexpr std::size_t block_bytes = std::size_t{1024} * 1024;

std::vector<std::byte> repeated(const std::byte* element, std::size_t size, Extent count) {
  std::vector<std::byte> bytes(static_cast<std::size_t>(count) * size);
  for (std::size_t at = 0; at < bytes.size(); at += size)
    std::memcpy(bytes.data() + at, element, size);
  return bytes;
}

// All of a dataset, so that whole chunks can be written.
void write_boxes(const ElementPlace& place, const std::byte* element) {
  BoxWalk walk(place.space, chunk_of(place.dataset.get()), place.type.size);
  std::vector<std::byte> bytes;
  Selection box;
  while (walk.next(&box)) {
    // The first box is the largest.
    if (bytes.empty()) bytes = repeated(element, place.type.size, box.elements());
    write_elements(place, box, bytes.data());
  }
}

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

void write_repeated(const ElementPlace& place, const Selection& selection,
                    const std::byte* element) {
  if (place.dataset && selects_all(selection, place.space)) return write_boxes(place, element);
  ElementWriter writer(place, selection);
  std::vector<std::byte> bytes;
  for (std::size_t count = writer.next(); count > 0; count = writer.next()) {
    // The first block is the largest.
    if (bytes.empty()) bytes = repeated(element, place.type.size, count);
    writer.write(bytes.data());
  }
}

}  // namespace kelvo
