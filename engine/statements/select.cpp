// SELECT: the elements of datasets and attributes.
#include "statements/select.h"

#include <utility>

#include "query/element_rows.h"
#include "query/select_plan.h"
#include "session.h"
#include "statements/family.h"
#include "statements/places.h"
#include "storage/reference.h"

namespace kelvo {

Selected open_query(Query query, Session& session) {
  Target target = session.find(query.object, Access::read);
  ElementPlace place = open_place(target, session);
  ReferenceNamer namer = reference_namer(target.file);
  return plan_query(std::move(query), std::move(target.opened), std::move(place), std::move(namer));
}

Answer run_select(Parser& parser, Session& session) {
  Query query = parse_query(parser);
  parser.expect_end(Mode::expression);
  return std::make_unique<ElementRows>(open_query(std::move(query), session));
}

}  // namespace kelvo
