// SELECT: the elements of datasets and attributes.
#include "language/slice.h"
#include "query/element_rows.h"
#include "session.h"
#include "statements/family.h"
#include "statements/places.h"
#include "storage/reference.h"

namespace kelvo {

Answer run_select(Parser& parser, Session& session) {
  parser.expect_symbol("*", Mode::expression);
  parser.expect_keyword("FROM");
  ObjectName name = parser.expect_object("a dataset or attribute");
  const Slice slice = parse_optional_slice(parser);
  if (parser.accept_keyword("IN")) name.file = parser.expect_path("a file");
  parser.expect_end();
  Target target = session.find(name, Access::read);
  ElementPlace place = open_place(target, session);
  Selection selection = resolve_slice(slice, place.space, place.name);
  return std::make_unique<ElementRows>(std::move(target.opened), std::move(place),
                                       std::move(selection), reference_namer(target.file));
}

}  // namespace kelvo
