// INSERT: values into datasets and attributes.
#include <string>
#include <vector>

#include "error.h"
#include "language/literal.h"
#include "language/slice.h"
#include "session.h"
#include "statements/family.h"
#include "statements/places.h"
#include "statements/values.h"

namespace kelvo {

Answer run_insert(Parser& parser, Session& session) {
  parser.expect_keyword("INTO");
  const ObjectName name = parser.expect_object("a dataset or attribute");
  const Slice slice = parse_optional_slice(parser);
  parser.expect_keyword("VALUES");
  const std::vector<Literal> values = parse_value_list(parser);
  parser.expect_end(Mode::expression);
  const Target target = session.find(name, Access::write);
  const ElementPlace place = open_place(target, session);
  const Selection selection = resolve_slice(slice, place.space, place.name);
  const EncodedElements elements = encode_values(place.type, values, selection.elements());
  write_elements(place, selection, elements.data());
  return nullptr;
}

}  // namespace kelvo
