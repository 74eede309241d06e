// SHOW of what is in a file: members of groups, attributes, kinds.
#include "error.h"
#include "session.h"
#include "statements/show.h"
#include "storage/check.h"
#include "storage/listing.h"
#include "storage/object.h"

namespace kelvo {
namespace {

Answer text_rows(const std::vector<std::string>& texts) {
  auto rows = std::make_unique<ReadyRows>();
  for (const std::string& text : texts) rows->add_text(text);
  return rows;
}

Answer show_members(Parser& parser, Session& session, ObjectKind kind) {
  const ObjectName name = parser.optional_object();
  parser.expect_end();
  const Target target = session.find(name, Access::read);
  return text_rows(member_names(target.file, target.path, kind));
}

std::string link_or_object_type(const Target& target) {
  if (target.attribute) {
    const ObjectHandle object = open_object(target.file, target.path);
    open_attribute(object.get(), target.path, *target.attribute);
    return "ATTRIBUTE";
  }
  switch (kind_at(target.file, target.path)) {
    case ObjectKind::group:
      return "GROUP";
    case ObjectKind::dataset:
      return "DATASET";
    case ObjectKind::data_type:
      return "DATA TYPE";
    case ObjectKind::dangling_link:
      return is_external_link(target.file, target.path) ? "EXTERNAL LINK" : "LINK";
    case ObjectKind::none:
      break;
  }
  throw StatementError(Status::does_not_exist, "Object " + quoted(target.path) + " does not exist");
}

}  // namespace

Answer show_group(Parser& parser, Session& session) {
  return show_members(parser, session, ObjectKind::group);
}
Answer show_dataset(Parser& parser, Session& session) {
  return show_members(parser, session, ObjectKind::dataset);
}

Answer show_attribute(Parser& parser, Session& session) {
  const ObjectName name = parser.optional_object();
  parser.expect_end();
  const Target target = session.find(name, Access::read);
  const ObjectHandle object = open_object(target.file, target.path);
  return text_rows(attribute_names(object.get(), target.path));
}

Answer show_type(Parser& parser, Session& session) {
  const ObjectName name = parser.expect_object("an object");
  parser.expect_end();
  return text_rows({link_or_object_type(session.find(name, Access::read))});
}

}  // namespace kelvo
