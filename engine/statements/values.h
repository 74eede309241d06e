// What the families that write share: values fitted to the place that they are meant for.
#pragma once

#include <vector>

#include "storage/element_io.h"
#include "values/encode.h"

namespace kelvo {

/// The values as `count` elements: as many values as elements, or one for all. Throws where their
/// number or one of them does not fit. `type` must outlive the result.
EncodedElements encode_values(const Type& type, const std::vector<Literal>& values, Extent count);

/// Writes all elements of a place.
void write_whole(const ElementPlace& place, const EncodedElements& elements);

}  // namespace kelvo
