// CREATE: files, groups, datasets and attributes.
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "error.h"
#include "language/dimensions.h"
#include "language/literal.h"
#include "language/type_notation.h"
#include "session.h"
#include "statements/family.h"
#include "statements/values.h"
#include "storage/check.h"
#include "storage/creation.h"
#include "storage/element_io.h"
#include "storage/object.h"

namespace kelvo {
namespace {

bool accept_if_not_exists(Parser& parser) { return parser.accept_keyword("IF NOT EXISTS"); }

Answer make_file(Parser& parser, Session& session, bool replace) {
  const bool optional = !replace && accept_if_not_exists(parser);
  const std::string path = host_path(parser.expect_path("a file"));
  parser.expect_end();
  if (session.is_in_use(path)) {
    throw StatementError(Status::exists_already,
                         "File " + quoted(path) + " is in use (CLOSE FILE closes it)");
  }
  if (!(optional && is_hdf5_file(path)))
    create_file(path, replace, session.settings().file_options);
  return nullptr;
}

Answer create_file_statement(Parser& parser, Session& session) {
  return make_file(parser, session, false);
}
Answer replace_file_statement(Parser& parser, Session& session) {
  return make_file(parser, session, true);
}

Answer create_group_statement(Parser& parser, Session& session) {
  const bool optional = accept_if_not_exists(parser);
  ObjectName name;
  name.path = parser.expect_path("a group");
  const bool tracked = parser.accept_keyword("TRACK ORDER");
  parser.expect_end();
  const Target target = session.find(name, Access::write);
  if (optional && kind_at(target.file, target.path) == ObjectKind::group) return nullptr;
  expect_free(target.file, target.path, "Group");
  create_group(target.file, target.path, tracked);
  return nullptr;
}

struct NewElements {
  Type type;
  Space space;
  std::optional<std::vector<Literal>> values;
};

NewElements parse_new_elements(Parser& parser) {
  NewElements made;
  made.type = parse_type(parser);
  made.space = parse_optional_dimensions(parser);
  if (parser.accept_keyword("VALUES")) made.values = parse_value_list(parser);
  parser.expect_end(made.values ? Mode::expression : Mode::words);
  return made;
}

Answer create_dataset_statement(Parser& parser, Session& session) {
  const bool optional = accept_if_not_exists(parser);
  ObjectName name;
  name.path = parser.expect_path("a dataset");
  const NewElements made = parse_new_elements(parser);
  const Target target = session.find(name, Access::write);
  if (optional && kind_at(target.file, target.path) == ObjectKind::dataset) return nullptr;
  expect_free(target.file, target.path, "Dataset");
  std::optional<EncodedElements> elements;
  if (made.values) elements = encode_values(made.type, *made.values, made.space.elements());
  DatasetHandle dataset = create_dataset(target.file, target.path, made.type, made.space);
  if (elements)
    write_whole(place_of(std::move(dataset), "Dataset " + quoted(target.path)), *elements);
  return nullptr;
}

Answer create_attribute_statement(Parser& parser, Session& session) {
  const bool optional = accept_if_not_exists(parser);
  const ObjectName name = parser.expect_attribute();
  const NewElements made = parse_new_elements(parser);
  const Target target = session.find(name, Access::write);
  const ObjectHandle object = open_object(target.file, target.path);
  if (has_attribute(object.get(), *target.attribute)) {
    if (optional) return nullptr;
    throw StatementError(Status::exists_already,
                         "Attribute " + quoted(target.shown()) + " already exists");
  }
  std::optional<EncodedElements> elements;
  if (made.values) elements = encode_values(made.type, *made.values, made.space.elements());
  AttributeHandle attribute =
      create_attribute(object.get(), *target.attribute, target.shown(), made.type, made.space);
  if (elements)
    write_whole(place_of(std::move(attribute), "Attribute " + quoted(target.shown())), *elements);
  return nullptr;
}

constexpr std::array forms = {
    Form{"FILE", create_file_statement},           Form{"OR REPLACE FILE", replace_file_statement},
    Form{"GROUP", create_group_statement},         Form{"DATASET", create_dataset_statement},
    Form{"ATTRIBUTE", create_attribute_statement},
};

}  // namespace

Answer run_create(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
