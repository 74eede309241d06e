// Values for CREATE and INSERT.
#include "statements/values.h"

#include <string>

#include "error.h"

namespace kelvo {

EncodedElements encode_values(const Type& type, const std::vector<Literal>& values, Extent count) {
  if (values.size() != count && values.size() != 1) {
    throw StatementError(Status::out_of_range, std::to_string(count) +
                                                   (count == 1 ? " value is" : " values are") +
                                                   " needed, or one for all; " +
                                                   std::to_string(values.size()) + " are given");
  }
  EncodedElements elements(type);
  for (const Literal& value : values) elements.append(value);
  if (values.size() != count) elements.repeat(static_cast<std::size_t>(count));
  return elements;
}

void write_whole(const ElementPlace& place, const EncodedElements& elements) {
  write_elements(place, resolve_slice({}, place.space, place.name), elements.data());
}

}  // namespace kelvo
