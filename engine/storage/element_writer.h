// Writing a stream of elements into a selection, a block at a time.
#pragma once

#include "storage/element_io.h"
#include "values/block_walk.h"

namespace kelvo {

class ElementWriter {
 public:
  /// Both must outlive the writer.
  ElementWriter(const ElementPlace& place, const Selection& selection);

  /// Elements that the next write takes; 0 when all are written.
  std::size_t next();

  /// Writes the elements that next() asked for.
  void write(const std::byte* elements);

 private:
  const ElementPlace& place_;
  const Selection& selection_;
  BlockWalk walk_;
};

/// Writes one element, laid out as the place's type says, everywhere in the selection; in blocks.
void write_repeated(const ElementPlace& place, const Selection& selection,
                    const std::byte* element);

}  // namespace kelvo
