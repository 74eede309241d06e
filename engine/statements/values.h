// What the families that write share: values fitted to the place that they are meant for.
#pragma once

#include <vector>

#include "storage/element_io.h"
#include "values/encoded_elements.h"

namespace kelvo {

/// The values of `count` elements: as many as these, or one for all, which stays one. Throws where
/// their number or one of them does not fit. `type` must outlive the result.
EncodedElements encode_values(const Type& type, const std::vector<Literal>& values, Extent count);

/// Writes what encode_values gave for the elements of the selection.
void write_values(const ElementPlace& place, const Selection& selection,
                  const EncodedElements& elements);

}  // namespace kelvo
