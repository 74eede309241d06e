// Reads dimensions.
#include "language/dimensions.h"

#include <string>

#include "error.h"
#include "language/parser.h"

namespace kelvo {
namespace {

constexpr std::size_t highest_rank = 32;  // HDF5's own limit

void parse_extent(Parser& parser, bool can_grow, Space* space) {
  const Extent extent = parser.expect_unsigned("an extent", unlimited - 1);
  Extent maximum = extent;
  if (!can_grow && parser.peek(Mode::expression).is_keyword("TO"))
    parser.fail_expected("\"]\" (an attribute cannot grow)", Mode::expression);
  if (parser.accept_keyword("TO", Mode::expression)) {
    maximum = parser.accept_keyword("UNLIMITED", Mode::expression)
                  ? unlimited
                  : parser.expect_unsigned("a maximum or UNLIMITED", unlimited - 1);
  }
  if (maximum < extent) {
    throw StatementError(Status::out_of_range, "The maximum " + std::to_string(maximum) +
                                                   " is less than the extent " +
                                                   std::to_string(extent));
  }
  space->extents.push_back(extent);
  space->maximum.push_back(maximum);
}

}  // namespace

Space parse_optional_dimensions(Parser& parser, bool can_grow) {
  Space space;
  if (!parser.accept_symbol("[", Mode::expression)) return space;
  do {
    parse_extent(parser, can_grow, &space);
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol("]", Mode::expression);
  if (space.extents.size() > highest_rank) {
    throw StatementError(Status::out_of_range,
                         "A dataset has at most " + std::to_string(highest_rank) + " dimensions");
  }
  return space;
}

}  // namespace kelvo
