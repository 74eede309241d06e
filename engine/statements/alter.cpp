// ALTER: the extents of datasets.
#include <array>
#include <string>
#include <vector>

#include "error.h"
#include "session.h"
#include "statements/family.h"
#include "statements/names.h"
#include "storage/chunk_cache.h"
#include "storage/creation.h"
#include "storage/growth.h"
#include "storage/object.h"

namespace kelvo {
namespace {

// A new extent as it is written: "n", "+n", "-n", or "*", which is "+0".
struct ExtentChange {
  char sign = '=';
  Extent value = 0;
};

ExtentChange parse_change(Parser& parser) {
  if (parser.accept_symbol("*", Mode::expression)) return {'+', 0};
  ExtentChange change;
  for (const char sign : {'+', '-'}) {
    if (parser.accept_symbol(std::string(1, sign), Mode::expression)) change.sign = sign;
  }
  const Token& token = parser.peek(Mode::expression);
  if (token.kind != TokenKind::number)
    parser.fail_expected("an extent, +n, -n or \"*\"", Mode::expression);
  change.value = parser.expect_unsigned("an extent", unlimited - 1);
  return change;
}

std::vector<ExtentChange> parse_changes(Parser& parser) {
  std::vector<ExtentChange> changes;
  parser.expect_symbol("[", Mode::expression);
  do {
    changes.push_back(parse_change(parser));
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol("]", Mode::expression);
  return changes;
}

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
  throw StatementError(Status::out_of_range, "Dataset " + quoted(path) + " " + why);
}

Extent changed(Extent extent, const ExtentChange& change, Extent maximum, std::size_t dimension,
               const std::string& path) {
  const std::string where = " in dimension " + std::to_string(dimension);
  if (change.sign == '-' && change.value > extent) {
    refuse(path, "has extent " + std::to_string(extent) + where + ", too little for -" +
                     std::to_string(change.value));
  }
  if (change.sign == '-') return extent - change.value;
  const Extent base = change.sign == '+' ? extent : 0;
  if (change.value > maximum || base > maximum - change.value) {
    refuse(path, "has at most extent " + std::to_string(maximum) + where);
  }
  return base + change.value;
}

void check_rank(std::size_t given, std::size_t rank, const std::string& path) {
  if (given == rank) return;
  refuse(path, "has " + std::to_string(rank) + (rank == 1 ? " dimension, " : " dimensions, ") +
                   std::to_string(given) + (given == 1 ? " is given" : " are given"));
}

Answer alter_dataset(Parser& parser, Session& session) {
  const ObjectName name = parse_object(parser, "a dataset");
  parser.expect_keyword("DIMENSION");
  const std::vector<ExtentChange> changes = parse_changes(parser);
  parser.expect_end();
  const Target target = session.find(name, Access::write);
  expect_dataset(target.file, target.path);
  const std::string shown = "Dataset " + quoted(target.path);
  const DatasetHandle dataset =
      open_for_reading(target.file, target.path, session.settings().chunk_cache);
  // First: asking a virtual dataset for its extents would open the files of its sources.
  if (chunk_of(dataset.get()).empty()) {
    throw StatementError(Status::wrong_kind,
                         shown +
                             " is not chunked, so its extents are fixed (COPY DATASET with CHUNK "
                             "stores it anew)");
  }
  Space space = space_of(dataset.get(), shown);
  check_rank(changes.size(), space.extents.size(), target.path);
  for (std::size_t d = 0; d < changes.size(); ++d)
    space.extents[d] = changed(space.extents[d], changes[d], space.maximum[d], d, target.path);
  if (!space.is_countable()) refuse(target.path, "would have more elements than can be counted");
  set_extents(dataset.get(), space.extents, shown);
  return nullptr;
}

constexpr std::array forms = {
    Form{"DATASET", alter_dataset},
};

}  // namespace

Answer run_alter(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
