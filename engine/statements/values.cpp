// Values for CREATE and INSERT.
#include "statements/values.h"

#include <string>

#include "error.h"
#include "storage/element_writer.h"

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
  return elements;
}

void write_values(const ElementPlace& place, const Selection& selection,
                  const EncodedElements& elements) {
  const Extent copies = selection.elements() / elements.count();
  if (copies == 1) return write_elements(place, selection, elements.data());
  write_repeated(place, selection, elements.data());
}

}  // namespace kelvo
