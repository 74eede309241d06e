// What one call of the HDF5 library reads or writes of a dataset: how much at most, and the spaces
// that tell it which elements.
#pragma once

#include <vector>

#include "storage/element_io.h"

namespace kelvo {

/// Elements of the selection of a dataset that one call of the library may be asked for.
Extent most_elements_together(const ElementPlace& place, const Selection& selection);

/// Elements of the selection that are read or written at once: as many as fit `bytes`, but one at
/// least. Of an attribute all, as the library takes these whole.
Extent elements_at_once(const ElementPlace& place, const Selection& selection, std::size_t bytes);

struct HyperslabSpaces {
  DataspaceHandle file;    // the elements are selected in it
  DataspaceHandle memory;  // they lie side by side
};

/// For elements of a dataset: in each dimension `count` steps of `stride`, the first at `start`;
/// all three are empty for a scalar. `what` begins the error's message: `Dataset "/x" cannot be
/// read`.
HyperslabSpaces hyperslab_spaces(const ElementPlace& place, const std::vector<Extent>& start,
                                 const std::vector<Extent>& stride,
                                 const std::vector<Extent>& count, const std::string& what);

}  // namespace kelvo
