// COPY: files, objects, attributes and links, within a file or to another one.
#include <array>
#include <string>

#include "language/storage_options.h"
#include "session.h"
#include "statements/family.h"
#include "statements/names.h"
#include "storage/attribute.h"
#include "storage/copy.h"
#include "storage/object.h"
#include "storage/reference_copy.h"
#include "storage/repack.h"

namespace kelvo {
namespace {

// Through the file that is open where it is in use: opened twice, the HDF5 library would remember
// committed data types by an opening that is over.
void repack(const std::string& from, const std::string& to, Session& session) {
  ObjectName root;
  root.path = "/";
  root.file = from;
  const Target source = session.find(root, Access::read);
  repack_file(source.file, from, to, session.settings().file_options);
}

Answer copy_file(Parser& parser, Session& session) {
  const std::string from = parse_host_name(parser, "a file").path;
  parser.expect_keyword("TO");
  const HostName to = parse_host_name(parser, "a new file");
  const bool anew = parser.accept_keyword("REPACK");
  parser.expect_end();
  expect_on_host(from, HostKind::file);
  const std::string path = host_destination(to, from, HostKind::file);
  anew ? repack(from, path, session) : copy_host_file(from, path);
  return nullptr;
}

// What is copied from where to where. The destination is found first: opening its file for writing
// may open the source's file again.
struct Way {
  Target to;
  Target from;
};

Way find_way(Session& session, const ObjectName& from, const ObjectName& to) {
  Way way;
  way.to = session.find(to, Access::write);
  way.from = session.find(from, Access::read);
  return way;
}

struct NamedWay {
  ObjectName from;
  ObjectName to;
};

NamedWay parse_way(Parser& parser, std::string_view what) {
  NamedWay names;
  names.from.path = parser.expect_path(what);
  if (parser.accept_keyword("IN")) names.from.file = parser.expect_file();
  parser.expect_keyword("TO");
  names.to.path = parser.expect_path("a new name");
  if (parser.accept_keyword("IN")) names.to.file = parser.expect_file();
  return names;
}

Answer copy_group(Parser& parser, Session& session) {
  const NamedWay names = parse_way(parser, "a group");
  parser.expect_end();
  const Way way = find_way(session, names.from, names.to);
  open_group(way.from.file, way.from.path);
  const std::string path = destination(way.to, names.to.path, way.from.path, NameKind::group);
  copy_object({way.from.file, way.from.path}, {way.to.file, path});
  return nullptr;
}

Answer copy_dataset(Parser& parser, Session& session) {
  const NamedWay names = parse_way(parser, "a dataset");
  const bool anew = !parser.at_end();
  const StorageOptions options = parse_storage_options(parser);
  parser.expect_end();
  const Way way = find_way(session, names.from, names.to);
  expect_dataset(way.from.file, way.from.path);
  const ObjectPlace from = {way.from.file, way.from.path};
  const ObjectPlace to = {way.to.file,
                          destination(way.to, names.to.path, way.from.path, NameKind::dataset)};
  anew ? store_anew(from, to, options) : copy_object(from, to);
  return nullptr;
}

Answer copy_attribute_statement(Parser& parser, Session& session) {
  NamedWay names;
  names.from = parser.expect_attribute();
  if (parser.accept_keyword("IN")) names.from.file = parser.expect_file();
  parser.expect_keyword("TO");
  names.to = parser.expect_object("an object or an attribute");
  parser.expect_end();
  if (!names.to.attribute) names.to.attribute = names.from.attribute;
  const Way way = find_way(session, names.from, names.to);
  const ObjectHandle from = open_object(way.from.file, way.from.path);
  const ObjectHandle to = open_object(way.to.file, way.to.path);
  open_attribute(from.get(), way.from.path, *way.from.attribute);
  expect_free_attribute(to.get(), *way.to.attribute, way.to.shown());
  ReferenceMap references(way.from.file, way.to.file);
  if (references.is_needed())
    references.add(objects_below(way.from.file, way.from.path), way.to.path);
  copy_attribute({from.get(), *way.from.attribute, way.from.shown()},
                 {to.get(), *way.to.attribute, way.to.shown()}, references);
  return nullptr;
}

template <NameKind kind>
Answer copy_any_link(Parser& parser, Session& session) {
  const NamedWay names = parse_way(parser, with_article(kind));
  parser.expect_end();
  const Way way = find_way(session, names.from, names.to);
  expect_there(way.from.file, way.from.path, kind);
  const std::string path = destination(way.to, names.to.path, way.from.path, kind);
  copy_link(way.from.file, way.from.path, way.to.file, path);
  return nullptr;
}

constexpr std::array forms = {
    Form{"FILE", copy_file},
    Form{"GROUP", copy_group},
    Form{"DATASET", copy_dataset},
    Form{"ATTRIBUTE", copy_attribute_statement},
    Form{"LINK", copy_any_link<NameKind::link>},
    Form{"EXTERNAL LINK", copy_any_link<NameKind::external_link>},
};

}  // namespace

Answer run_copy(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
