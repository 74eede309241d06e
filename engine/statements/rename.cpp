// RENAME: new names, and new places in the same file or on the same file system.
#include <array>
#include <string>

#include "error.h"
#include "session.h"
#include "statements/family.h"
#include "statements/names.h"
#include "storage/attribute.h"
#include "storage/copy.h"
#include "storage/object.h"
#include "storage/reference_copy.h"

namespace kelvo {
namespace {

Answer rename_host(Parser& parser, Session& session, HostKind kind) {
  const char* what = kind == HostKind::directory ? "a directory" : "a file";
  const std::string from = parse_host_name(parser, what).path;
  parser.expect_keyword("TO");
  const HostName to = parse_host_name(parser, "a new name");
  parser.expect_end();
  expect_on_host(from, kind);
  kind == HostKind::directory ? refuse_directory_in_use(session, from)
                              : refuse_file_in_use(session, from);
  rename_on_host(from, host_destination(to, from, kind), kind);
  return nullptr;
}

// A group below itself would be lost: nothing above would lead to it.
void refuse_into_itself(const Target& from, const std::string& to) {
  std::string parent = split_path(to).parent;
  while (kind_at(from.file, parent) == ObjectKind::none) parent = split_path(parent).parent;
  if (!is_within(from.file, parent, from.path)) return;
  throw StatementError(Status::out_of_range,
                       "Group " + quoted(from.path) + " cannot be moved into itself");
}

Answer rename_name(Parser& parser, Session& session, NameKind kind) {
  const ObjectName old_name = parse_object(parser, with_article(kind));
  parser.expect_keyword("TO");
  const ObjectName new_name = parse_object(parser, "a new name");
  parser.expect_end();
  const Target from = session.find(old_name, Access::write);
  const Target to = session.find(new_name, Access::write);
  expect_there(from.file, from.path, kind);
  if (from.path == "/")
    throw StatementError(Status::wrong_kind, "The root group cannot be renamed");
  if (kind == NameKind::group) refuse_group_in_use(session, from);
  const std::string path = destination(to, new_name.path, from.path, kind);
  if (kind == NameKind::group) refuse_into_itself(from, path);
  move_name(from.file, from.path, path);
  return nullptr;
}

// "b", a name on the same object, or "p@b", which moves the attribute to another one.
ObjectName parse_new_attribute(Parser& parser, const ObjectName& old_name) {
  ObjectName name = parser.expect_place("a new name");
  if (!name.attribute) {
    name.attribute = name.path;
    name.path = old_name.path;
  }
  return name;
}

Answer rename_attribute_statement(Parser& parser, Session& session) {
  const ObjectName old_name = parser.expect_attribute();
  parser.expect_keyword("TO");
  const ObjectName new_name = parse_new_attribute(parser, old_name);
  parser.expect_end();
  const Target from = session.find(old_name, Access::write);
  const Target to = session.find(new_name, Access::write);
  const ObjectHandle from_object = open_object(from.file, from.path);
  const ObjectHandle to_object = open_object(to.file, to.path);
  open_attribute(from_object.get(), from.path, *from.attribute);
  expect_free_attribute(to_object.get(), *to.attribute, to.shown());
  if (from.path == to.path) {
    rename_attribute(from_object.get(), *from.attribute, *to.attribute, from.shown());
    return nullptr;
  }
  copy_attribute({from_object.get(), *from.attribute, from.shown()},
                 {to_object.get(), *to.attribute, to.shown()}, ReferenceMap(from.file, to.file));
  remove_attribute(from_object.get(), *from.attribute, from.shown());
  return nullptr;
}

template <HostKind kind>
Answer rename_on_host(Parser& parser, Session& session) {
  return rename_host(parser, session, kind);
}

template <NameKind kind>
Answer rename_in_file(Parser& parser, Session& session) {
  return rename_name(parser, session, kind);
}

constexpr std::array forms = {
    Form{"DIRECTORY", rename_on_host<HostKind::directory>},
    Form{"FILE", rename_on_host<HostKind::file>},
    Form{"GROUP", rename_in_file<NameKind::group>},
    Form{"DATASET", rename_in_file<NameKind::dataset>},
    Form{"ATTRIBUTE", rename_attribute_statement},
    Form{"LINK", rename_in_file<NameKind::link>},
    Form{"EXTERNAL LINK", rename_in_file<NameKind::external_link>},
};

}  // namespace

Answer run_rename(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
