// INSERT: values into datasets and attributes, from the statement, a file or another object. All
// values are read and checked before the first one is written.
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "error.h"
#include "import/open_values.h"
#include "language/literal.h"
#include "language/query.h"
#include "language/slice.h"
#include "query/selected_stream.h"
#include "session.h"
#include "statements/family.h"
#include "statements/places.h"
#include "statements/select.h"
#include "statements/values.h"
#include "storage/element_writer.h"
#include "storage/growth.h"
#include "storage/reference.h"
#include "storage/spool.h"
#include "values/flatten.h"

namespace kelvo {
namespace {

// Where the values come from; one of them is there.
struct Source {
  std::optional<std::vector<Literal>> values;
  std::optional<std::string> file;
  bool header = false;  // the file's first line names its columns
  std::optional<Query> query;
};

struct Insertion {
  ObjectName name;
  Slice slice;
  bool append = false;
  Source source;
};

// Ends the statement, too: what may follow depends on the source.
Source parse_source(Parser& parser, bool append) {
  Source source;
  if (parser.accept_keyword("VALUES")) {
    source.values = parse_value_list(parser);
    parser.expect_end();
  } else if (parser.accept_keyword("FROM")) {
    source.file = parser.expect_file();
    source.header = parser.accept_keyword("HEADER");
    parser.expect_end();
  } else if (parser.accept_keyword("SELECT")) {
    source.query = parse_query(parser);
    parser.expect_end(Mode::expression);
  } else {
    parser.fail_expected(append ? "VALUES, FROM or SELECT" : "APPEND, VALUES, FROM or SELECT");
  }
  return source;
}

Insertion parse_insertion(Parser& parser) {
  Insertion insertion;
  parser.expect_keyword("INTO");
  insertion.name = parser.expect_object("a dataset or attribute");
  insertion.slice = parse_optional_slice(parser);
  insertion.append = parser.accept_keyword("APPEND");
  insertion.source = parse_source(parser, insertion.append);
  return insertion;
}

// Elements that have passed every check, kept until they are written.
class CheckedElements {
 public:
  explicit CheckedElements(const Type& type) : type_(type), spool_(memory_budget) {}

  void read_all(ElementStream& stream) {
    stream.read_all(type_, [this](const EncodedElements& block) { keep(block); });
  }

  [[nodiscard]] Extent count() const { return count_; }

  // The next elements; good until the next call.
  const std::byte* take(std::size_t count) {
    parts_.restart();
    bytes_.resize(count * type_.size);
    if (!type_.has_varying_parts()) {
      reader_.read(bytes_.data(), bytes_.size());
    } else {
      for (std::size_t i = 0; i < count; ++i)
        unflatten(type_, reader_, bytes_.data() + i * type_.size, &parts_);
    }
    return bytes_.data();
  }

 private:
  static constexpr std::size_t memory_budget = std::size_t{8} * 1024 * 1024;

  void keep(const EncodedElements& elements) {
    count_ += elements.count();
    if (!type_.has_varying_parts())
      return spool_.append(elements.data(), elements.count() * type_.size);
    bytes_.clear();
    for (std::size_t i = 0; i < elements.count(); ++i)
      flatten(type_, elements.data() + i * type_.size, &bytes_);
    spool_.append(bytes_.data(), bytes_.size());
  }

  const Type& type_;
  Spool spool_;
  SpoolReader reader_{spool_};
  Extent count_ = 0;
  std::vector<std::byte> bytes_;
  Arena parts_;
};

void expect_count(Extent given, Extent wanted) {
  if (given == wanted) return;
  throw StatementError(Status::out_of_range, std::to_string(wanted) +
                                                 (wanted == 1 ? " value is" : " values are") +
                                                 " needed, " + std::to_string(given) +
                                                 (given == 1 ? " is" : " are") + " given");
}

// The new rows of the first dimension that so many elements fill.
Selection grow_for(const ElementPlace& place, Extent elements) {
  const Extent row = elements_of_row(place);
  if (row == 0 || elements % row != 0) {
    throw StatementError(Status::out_of_range, "A row of " + place.name + " has " +
                                                   std::to_string(row) + " elements, which " +
                                                   std::to_string(elements) +
                                                   " values do not fill");
  }
  return add_rows(place, elements / row);
}

// Appended values fill rows; one alone is for all elements of a row.
void append_values(const ElementPlace& place, const std::vector<Literal>& values) {
  const bool one_for_all = values.size() == 1;
  const EncodedElements elements = encode_values(place.type, values, values.size());
  write_values(place, grow_for(place, one_for_all ? elements_of_row(place) : values.size()),
               elements);
}

void insert_values(const ElementPlace& place, const Insertion& insertion) {
  const std::vector<Literal>& values = *insertion.source.values;
  if (insertion.append) return append_values(place, values);
  const Selection selection = resolve_slice(insertion.slice, place.space, place.name);
  const EncodedElements elements = encode_values(place.type, values, selection.elements());
  write_values(place, selection, elements);
}

using StreamPointer = std::unique_ptr<ElementStream>;

StreamPointer open_stream(Source source, const ElementPlace& place, Session& session) {
  if (source.query)
    return std::make_unique<SelectedStream>(open_query(std::move(*source.query), session));
  return open_values(host_path(*source.file), place.type, source.header);
}

void insert_stream(const ElementPlace& place, const Insertion& insertion, StreamPointer stream) {
  CheckedElements elements(place.type);
  elements.read_all(*stream);
  stream.reset();  // it may hold the same dataset open
  Selection selection;
  if (insertion.append) {
    selection = grow_for(place, elements.count());
  } else {
    selection = resolve_slice(insertion.slice, place.space, place.name);
    expect_count(elements.count(), selection.elements());
  }
  ElementWriter writer(place, selection);
  for (std::size_t count = writer.next(); count > 0; count = writer.next())
    writer.write(elements.take(count));
}

}  // namespace

Answer run_insert(Parser& parser, Session& session) {
  Insertion insertion = parse_insertion(parser);
  const Target target = session.find(insertion.name, Access::write);
  ElementPlace place = open_place(target, session);
  expect_values(place);
  make_references_in(target.file, &place.type);
  if (place.space.is_null && !insertion.append)
    throw StatementError(Status::wrong_kind, place.name + " is of empty kind and takes no values");
  if (insertion.append) expect_growing(place, !insertion.slice.empty());
  if (insertion.source.values) {
    insert_values(place, insertion);
  } else {
    insert_stream(place, insertion, open_stream(std::move(insertion.source), place, session));
  }
  return nullptr;
}

}  // namespace kelvo
