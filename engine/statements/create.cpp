// CREATE: directories, files, groups, datasets, attributes and links.
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "error.h"
#include "language/dimensions.h"
#include "language/literal.h"
#include "language/storage_options.h"
#include "language/type_notation.h"
#include "session.h"
#include "statements/family.h"
#include "statements/names.h"
#include "statements/values.h"
#include "storage/attribute.h"
#include "storage/creation.h"
#include "storage/element_io.h"
#include "storage/object.h"
#include "storage/reference.h"

namespace kelvo {
namespace {

// "IF" alone may be a name.
bool accept_if_not_exists(Parser& parser) {
  if (!parser.accept_keyword("IF NOT")) return false;
  parser.expect_keyword("EXISTS");
  return true;
}

// --- on the host ---

Answer create_directory_statement(Parser& parser, Session& /*session*/) {
  const bool optional = accept_if_not_exists(parser);
  const std::string path = parse_host_name(parser, "a directory").path;
  parser.expect_end();
  if (optional && is_on_host(path, HostKind::directory)) return nullptr;
  expect_free_on_host(path, HostKind::directory);
  create_directory(path);
  return nullptr;
}

Answer make_file(Parser& parser, Session& session, bool replace) {
  const bool optional = !replace && accept_if_not_exists(parser);
  const std::string path = host_path(parser.expect_path("a file"));
  parser.expect_end();
  if (optional && is_hdf5_file(path)) return nullptr;
  if (replace) refuse_file_in_use(session, path);
  create_file(path, replace, session.settings().file_options);
  return nullptr;
}

Answer create_file_statement(Parser& parser, Session& session) {
  return make_file(parser, session, false);
}
Answer replace_file_statement(Parser& parser, Session& session) {
  return make_file(parser, session, true);
}

// --- in a file ---

// Whether there is nothing to do, since IF NOT EXISTS was said and it does. Throws where it cannot
// be created.
bool exists_already(const Target& target, NameKind kind, bool optional) {
  if (optional && is_there(target.file, target.path, kind)) return true;
  expect_creatable(target.file, target.path, kind);
  return false;
}

Answer create_group_statement(Parser& parser, Session& session) {
  const bool optional = accept_if_not_exists(parser);
  const ObjectName name = parse_object(parser, "a group");
  const bool tracked = parser.accept_clause("TRACK ORDER");
  parser.expect_end();
  const Target target = session.find(name, Access::write);
  if (exists_already(target, NameKind::group, optional)) return nullptr;
  create_group(target.file, target.path, tracked);
  return nullptr;
}

struct NewElements {
  Type type;
  Space space;
  StorageOptions options;  // of a dataset
  std::optional<std::vector<Literal>> values;
};

NewElements parse_new_elements(Parser& parser, bool is_dataset) {
  NewElements made;
  made.type = parse_type(parser);
  made.space = parse_optional_dimensions(parser, is_dataset);
  if (is_dataset) made.options = parse_storage_options(parser);
  if (parser.accept_keyword("VALUES")) {
    made.values = parse_value_list(parser);
    parser.expect_end(Mode::expression);
  } else {
    parser.expect_end();
  }
  return made;
}

std::optional<EncodedElements> encode_new(const NewElements& made) {
  if (!made.values) return std::nullopt;
  return encode_values(made.type, *made.values, made.space.elements());
}

void write_new(const ElementPlace& place, const EncodedElements& elements) {
  write_values(place, resolve_slice({}, place.space, place.name), elements);
}

Answer create_dataset_statement(Parser& parser, Session& session) {
  const bool optional = accept_if_not_exists(parser);
  const ObjectName name = parse_object(parser, "a dataset");
  NewElements made = parse_new_elements(parser, true);
  const Target target = session.find(name, Access::write);
  make_references_in(target.file, &made.type);
  if (exists_already(target, NameKind::dataset, optional)) return nullptr;
  const std::optional<EncodedElements> elements = encode_new(made);
  DatasetHandle dataset =
      create_dataset(target.file, target.path, made.type, made.space, made.options);
  if (elements)
    write_new(place_of(std::move(dataset), "Dataset " + quoted(target.path)), *elements);
  return nullptr;
}

Answer create_attribute_statement(Parser& parser, Session& session) {
  const bool optional = accept_if_not_exists(parser);
  const ObjectName name = parser.expect_attribute();
  NewElements made = parse_new_elements(parser, false);
  const Target target = session.find(name, Access::write);
  make_references_in(target.file, &made.type);
  const ObjectHandle object = open_object(target.file, target.path);
  if (optional && has_attribute(object.get(), *target.attribute)) return nullptr;
  expect_free_attribute(object.get(), *target.attribute, target.shown());
  const std::optional<EncodedElements> elements = encode_new(made);
  AttributeHandle attribute =
      create_attribute(object.get(), *target.attribute, target.shown(), made.type, made.space);
  if (elements)
    write_new(place_of(std::move(attribute), "Attribute " + quoted(target.shown())), *elements);
  return nullptr;
}

// --- links ---

// HDF5 follows no ".." in a soft link, so such a target is resolved, from the group that holds the
// link; any other is kept as it is written.
std::string soft_target(const std::string& link, const std::string& written) {
  const bool climbs = ("/" + written + "/").find("/../") != std::string::npos;
  return climbs ? absolute_path(split_path(link).parent, written) : written;
}

Answer create_soft_link_statement(Parser& parser, Session& session) {
  const bool optional = accept_if_not_exists(parser);
  const ObjectName name = parse_object(parser, "a link");
  parser.expect_keyword("TO");
  const std::string written = parser.expect_path("the link's target");
  parser.expect_end();
  const Target target = session.find(name, Access::write);
  if (exists_already(target, NameKind::link, optional)) return nullptr;
  create_soft_link(target.file, target.path, soft_target(target.path, written));
  return nullptr;
}

// A hard link is one more name of an object, and so of the object's kind.
Answer create_hard_link_statement(Parser& parser, Session& session) {
  const bool optional = accept_if_not_exists(parser);
  const ObjectName name = parse_object(parser, "a link");
  parser.expect_keyword("TO");
  const ObjectName object = parse_object(parser, "the link's target");
  parser.expect_end();
  const Target target = session.find(name, Access::write);
  const std::string linked = session.find(object, Access::write).path;
  open_object(target.file, linked);
  const NameKind kind = name_kind_at(target.file, target.path);
  if (optional && kind != NameKind::none && kind != NameKind::link &&
      kind != NameKind::external_link)
    return nullptr;
  expect_creatable(target.file, target.path, NameKind::link);
  create_hard_link(target.file, target.path, linked);
  return nullptr;
}

Answer create_external_link_statement(Parser& parser, Session& session) {
  const bool optional = accept_if_not_exists(parser);
  const ObjectName name = parse_object(parser, "an external link");
  parser.expect_keyword("TO");
  const std::string file = parser.expect_path("a file");
  const std::string object = parser.expect_path("an object in that file");
  parser.expect_end();
  const Target target = session.find(name, Access::write);
  if (exists_already(target, NameKind::external_link, optional)) return nullptr;
  // A relative file is kept so: it is sought beside the file that holds the link.
  const std::string kept = file.starts_with("~/") ? host_path(file) : file;
  create_external_link(target.file, target.path, kept, object);
  return nullptr;
}

constexpr std::array forms = {
    Form{"DIRECTORY", create_directory_statement},
    Form{"FILE", create_file_statement},
    Form{"OR REPLACE FILE", replace_file_statement},
    Form{"GROUP", create_group_statement},
    Form{"DATASET", create_dataset_statement},
    Form{"ATTRIBUTE", create_attribute_statement},
    Form{"LINK", create_soft_link_statement},
    Form{"SOFT LINK", create_soft_link_statement},
    Form{"HARD LINK", create_hard_link_statement},
    Form{"EXTERNAL LINK", create_external_link_statement},
};

}  // namespace

Answer run_create(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
