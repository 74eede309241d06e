// SELECT: the elements of datasets and attributes.
#include "statements/select.h"

#include <optional>
#include <string>
#include <utility>

#include "error.h"
#include "query/element_rows.h"
#include "query/export.h"
#include "query/select_plan.h"
#include "query/text_rows.h"
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

namespace {

// What becomes of what is selected.
struct Output {
  std::optional<TextFormat> format;
  bool header = false;
  std::optional<std::string> file;  // as it was written
  bool replace = false;
};

TextFormat parse_format(Parser& parser) {
  if (parser.accept_keyword("TEXT", Mode::expression)) return TextFormat::text;
  if (parser.accept_keyword("CSV", Mode::expression)) return TextFormat::csv;
  if (parser.accept_keyword("TSV", Mode::expression)) return TextFormat::tsv;
  if (parser.accept_keyword("JSON", Mode::expression)) return TextFormat::json;
  parser.fail_expected("TEXT, CSV, TSV or JSON", Mode::expression);
}

Output parse_output(Parser& parser) {
  Output output;
  if (parser.accept_keyword("FORMAT", Mode::expression)) {
    output.format = parse_format(parser);
    output.header = parser.accept_keyword("HEADER", Mode::expression);
  }
  if (parser.accept_keyword("INTO", Mode::expression)) {
    output.replace = parser.accept_keyword("OR REPLACE");
    output.file = parser.expect_file();
  }
  parser.expect_end(output.file ? Mode::words : Mode::expression);
  return output;
}

ExportTarget export_target(const Output& output, const Session& session) {
  ExportTarget target;
  target.path = host_path(*output.file);
  target.replace = output.replace;
  target.format = output.format;
  target.header = output.header;
  if (session.is_in_use(target.path)) {
    throw StatementError(Status::exists_already,
                         "File " + quoted(target.path) + " is in use (CLOSE FILE ends that)");
  }
  return target;
}

}  // namespace

Answer run_select(Parser& parser, Session& session) {
  Query query = parse_query(parser);
  const Output output = parse_output(parser);
  Selected selected = open_query(std::move(query), session);
  if (output.file) {
    export_elements(selected, export_target(output, session));
    return nullptr;
  }
  if (output.format)
    return std::make_unique<FormattedRows>(std::move(selected), *output.format, output.header);
  return std::make_unique<ElementRows>(std::move(selected));
}

}  // namespace kelvo
