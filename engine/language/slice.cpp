// Reads slices.
#include "language/slice.h"

#include <algorithm>

#include "error.h"
#include "language/parser.h"

namespace kelvo {
namespace {

std::optional<std::int64_t> optional_bound(Parser& parser) {
  const bool negative = parser.accept_symbol("-", Mode::expression);
  if (!negative && parser.peek(Mode::expression).kind != TokenKind::number) return std::nullopt;
  const auto value = static_cast<std::int64_t>(parser.expect_unsigned("an index", INT64_MAX));
  return negative ? -value : value;
}

std::int64_t parse_step(Parser& parser) {
  const std::size_t position = parser.peek(Mode::expression).position;
  const std::optional<std::int64_t> step = optional_bound(parser);
  if (step && *step <= 0) throw StatementError::at(position, "Expected a positive step");
  return step.value_or(1);
}

SliceItem parse_item(Parser& parser) {
  SliceItem item;
  if (parser.accept_symbol("...", Mode::expression)) {
    item.kind = SliceItemKind::ellipsis;
    return item;
  }
  item.begin = optional_bound(parser);
  if (!parser.accept_symbol(":", Mode::expression)) {
    if (!item.begin) parser.fail_expected("an index, \":\" or \"...\"", Mode::expression);
    item.kind = SliceItemKind::index;
    return item;
  }
  item.end = optional_bound(parser);
  if (parser.accept_symbol(":", Mode::expression)) item.step = parse_step(parser);
  return item;
}

}  // namespace

Slice parse_optional_slice(Parser& parser) {
  Slice slice;
  if (!parser.accept_symbol("[")) return slice;
  do {
    const std::size_t position = parser.peek(Mode::expression).position;
    const SliceItem item = parse_item(parser);
    const bool second_ellipsis =
        item.kind == SliceItemKind::ellipsis &&
        std::any_of(slice.begin(), slice.end(),
                    [](const SliceItem& other) { return other.kind == SliceItemKind::ellipsis; });
    if (second_ellipsis) throw StatementError::at(position, "Expected only one \"...\" in a slice");
    slice.push_back(item);
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol("]", Mode::expression);
  return slice;
}

}  // namespace kelvo
