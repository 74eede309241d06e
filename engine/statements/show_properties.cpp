// SHOW of what a dataset or attribute is like.
#include "session.h"
#include "statements/places.h"
#include "statements/show.h"
#include "storage/datatype.h"
#include "storage/object.h"

namespace kelvo {

Answer show_data_type(Parser& parser, Session& session) {
  const ObjectName name = parser.expect_object("a dataset or attribute");
  parser.expect_end();
  const Target target = session.find(name, Access::read);
  auto rows = std::make_unique<ReadyRows>();
  if (!target.attribute && kind_at(target.file, target.path) == ObjectKind::data_type) {
    rows->add_text(notation(describe_datatype(open_object(target.file, target.path).get())));
  } else {
    rows->add_text(notation(open_place(target, session).type));
  }
  return rows;
}

Answer show_dimension(Parser& parser, Session& session) {
  const ObjectName name = parser.expect_object("a dataset or attribute");
  const bool maximum = parser.accept_keyword("MAX");
  parser.expect_end();
  const Target target = session.find(name, Access::read);
  const Space space = open_place(target, session).space;
  auto rows = std::make_unique<ReadyRows>();
  for (const Extent extent : maximum ? space.maximum : space.extents) {
    rows->add_bigint(extent == unlimited ? -1 : static_cast<std::int64_t>(extent));
  }
  return rows;
}

}  // namespace kelvo
