// SHOW of how large an object is and how it is stored.
#include <limits>

#include "error.h"
#include "query/element_rows.h"
#include "query/select_plan.h"
#include "session.h"
#include "statements/places.h"
#include "statements/show.h"
#include "storage/object.h"
#include "storage/properties.h"
#include "storage/reference.h"

namespace kelvo {
namespace {

Target parse_dataset(Parser& parser, Session& session) {
  const ObjectName name = parser.expect_object("a dataset");
  parser.expect_end();
  Target target = session.find(name, Access::read);
  expect_no_attribute(target, ObjectKind::dataset);
  return target;
}

StorageDescription parse_stored(Parser& parser, Session& session) {
  const Target target = parse_dataset(parser, session);
  return describe_storage(open_place(target, session));
}

Answer extent_rows(const std::vector<Extent>& extents) {
  auto rows = std::make_unique<ReadyRows>();
  for (const Extent extent : extents)
    rows->add_bigint(extent == unlimited ? -1 : static_cast<std::int64_t>(extent));
  return rows;
}

std::uint64_t element_bytes(const ElementPlace& place) {
  const Extent elements = place.space.elements();
  const std::uint64_t size = place.type.file_size;
  if (elements > 0 && size > std::numeric_limits<std::int64_t>::max() / elements)
    throw StatementError(Status::out_of_range, place.name + " has more bytes than a BIGINT holds");
  return elements * size;
}

}  // namespace

Answer show_dimension(Parser& parser, Session& session) {
  const ObjectName name = parser.expect_object("a dataset or attribute");
  const bool maximum = parser.accept_keyword("MAX");
  parser.expect_end();
  const Target target = session.find(name, Access::read);
  const Space space = open_place(target, session).space;
  return extent_rows(maximum ? space.maximum : space.extents);
}

Answer show_size(Parser& parser, Session& session) {
  const ObjectName name = parser.expect_object("a dataset or attribute");
  const bool stored = parser.accept_keyword("STORAGE");
  parser.expect_end();
  const Target target = session.find(name, Access::read);
  const ElementPlace place = open_place(target, session);
  return bigint_row(static_cast<std::int64_t>(stored ? stored_bytes(place) : element_bytes(place)));
}

Answer show_storage_type(Parser& parser, Session& session) {
  return text_row(parse_stored(parser, session).type);
}
Answer show_storage_allocation(Parser& parser, Session& session) {
  return text_row(parse_stored(parser, session).allocation);
}
Answer show_storage_dimension(Parser& parser, Session& session) {
  return extent_rows(parse_stored(parser, session).chunk);
}
Answer show_fill_type(Parser& parser, Session& session) {
  return text_row(parse_stored(parser, session).fill_type);
}

Answer show_mask(Parser& parser, Session& session) {
  const Target target = parse_dataset(parser, session);
  auto rows = std::make_unique<ReadyRows>();
  for (const std::uint32_t mask : chunk_masks(open_place(target, session)))
    rows->add_unsigned_int(mask);
  return rows;
}

Answer show_order(Parser& parser, Session& session) {
  const ObjectName name = parser.expect_object("an object");
  parser.expect_end();
  const Target target = session.find(name, Access::read);
  expect_no_attribute(target, ObjectKind::none);
  const ObjectHandle object = open_object(target.file, target.path);
  return text_row(creation_order(object.get(), quoted(target.path)));
}

Answer show_fill_value(Parser& parser, Session& session) {
  const Target target = parse_dataset(parser, session);
  std::optional<FillValue> fill = fill_value(open_place(target, session));
  if (!fill) return nullptr;
  Query everything;
  everything.items.resize(1);
  everything.items[0].all = true;
  return std::make_unique<ElementRows>(plan_query(std::move(everything), std::move(fill->memory),
                                                  std::move(fill->place),
                                                  reference_namer(target.file)));
}

}  // namespace kelvo
