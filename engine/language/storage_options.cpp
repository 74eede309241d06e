// Reads storage options. Each is a row of a table; what contradicts what is told from the rows.
#include "language/storage_options.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "error.h"
#include "language/literal.h"
#include "language/parser.h"

namespace kelvo {
namespace {

constexpr unsigned highest_filter_id = 65535;
constexpr unsigned highest_deflate_level = 9;

void parse_chunk(Parser& parser, StorageOptions* options) {
  parser.expect_symbol("[", Mode::expression);
  do {
    const Extent extent = parser.expect_unsigned("a chunk's extent", UINT32_MAX);
    if (extent == 0) {
      throw StatementError(Status::out_of_range, "A chunk has at least 1 element in a dimension");
    }
    options->chunk.push_back(extent);
  } while (parser.accept_symbol(",", Mode::expression));
  parser.expect_symbol("]", Mode::expression);
  options->layout = Layout::chunked;
}

void parse_contiguous(Parser& /*parser*/, StorageOptions* options) {
  options->layout = Layout::contiguous;
}

void parse_compact(Parser& /*parser*/, StorageOptions* options) {
  options->layout = Layout::compact;
}

void add_filter(StorageOptions* options, unsigned id, std::vector<unsigned> values = {}) {
  options->filters.push_back({id, std::move(values), id == fletcher32_id});
}

void parse_deflate(Parser& parser, StorageOptions* options) {
  const auto level = parser.expect_unsigned("the level of DEFLATE", highest_deflate_level);
  add_filter(options, deflate_id, {static_cast<unsigned>(level)});
}

void parse_shuffle(Parser& /*parser*/, StorageOptions* options) { add_filter(options, shuffle_id); }

void parse_fletcher32(Parser& /*parser*/, StorageOptions* options) {
  add_filter(options, fletcher32_id);
}

void parse_scaleoffset(Parser& parser, StorageOptions* options) {
  const auto factor = parser.expect_unsigned("the bits or digits of SCALEOFFSET", INT32_MAX);
  add_filter(options, scaleoffset_id, {static_cast<unsigned>(factor)});
}

void parse_nbit(Parser& /*parser*/, StorageOptions* options) { add_filter(options, nbit_id); }
void parse_szip(Parser& /*parser*/, StorageOptions* options) { add_filter(options, szip_id); }

void parse_filter(Parser& parser, StorageOptions* options) {
  const auto id = parser.expect_unsigned("the number of a filter", highest_filter_id);
  std::vector<unsigned> values;
  if (parser.accept_symbol("(") && !parser.accept_symbol(")")) {
    do {
      values.push_back(
          static_cast<unsigned>(parser.expect_unsigned("a value for the filter", UINT32_MAX)));
    } while (parser.accept_symbol(",", Mode::expression));
    parser.expect_symbol(")", Mode::expression);
  }
  add_filter(options, static_cast<unsigned>(id), std::move(values));
}

void parse_fill(Parser& parser, StorageOptions* options) { options->fill = parse_literal(parser); }

void parse_early(Parser& /*parser*/, StorageOptions* options) {
  options->allocation = Allocation::early;
}
void parse_late(Parser& /*parser*/, StorageOptions* options) {
  options->allocation = Allocation::late;
}
void parse_incremental(Parser& /*parser*/, StorageOptions* options) {
  options->allocation = Allocation::incremental;
}

void parse_track_order(Parser& /*parser*/, StorageOptions* options) { options->track_order = true; }

// What an option settles; two that settle the same contradict each other, and so do those that
// settle parts of it.
enum Settles : unsigned {
  nothing_else = 0,
  layout = 1U << 0U,
  needs_chunks = 1U << 1U,  // and so contradicts the other two layouts
  allocation = 1U << 2U,
  refuses_chunks = 1U << 3U,
  late_allocation = 1U << 4U,  // which compact storage cannot have
  refuses_late = 1U << 5U,
};

struct Option {
  std::string_view keywords;
  void (*parse)(Parser& parser, StorageOptions* options);
  unsigned settles;
  bool repeatable = false;
};

constexpr std::array options_table = {
    Option{"CHUNK", parse_chunk, layout | needs_chunks},
    Option{"CONTIGUOUS", parse_contiguous, layout | refuses_chunks},
    Option{"COMPACT", parse_compact, layout | refuses_chunks | refuses_late},
    Option{"DEFLATE", parse_deflate, needs_chunks},
    Option{"SHUFFLE", parse_shuffle, needs_chunks},
    Option{"FLETCHER32", parse_fletcher32, needs_chunks},
    Option{"SCALEOFFSET", parse_scaleoffset, needs_chunks},
    Option{"NBIT", parse_nbit, needs_chunks},
    Option{"SZIP", parse_szip, needs_chunks},
    Option{"FILTER", parse_filter, needs_chunks, true},
    Option{"FILL", parse_fill, nothing_else},
    Option{"EARLY ALLOCATION", parse_early, allocation},
    Option{"LATE ALLOCATION", parse_late, allocation | late_allocation},
    Option{"INCREMENTAL ALLOCATION", parse_incremental, allocation | late_allocation},
    Option{"TRACK ORDER", parse_track_order, nothing_else},
};

bool contradict(const Option& one, const Option& other) {
  const unsigned both = one.settles | other.settles;
  return (one.settles & other.settles & (layout | allocation)) != 0 ||
         ((both & needs_chunks) != 0 && (both & refuses_chunks) != 0) ||
         ((both & late_allocation) != 0 && (both & refuses_late) != 0);
}

bool may_follow(const Option& option, const std::vector<const Option*>& given) {
  return std::none_of(given.begin(), given.end(), [&option](const Option* before) {
    return before == &option ? !option.repeatable : contradict(option, *before);
  });
}

// One that may not follow is taken too, for an error of its own, but is none that could stand here.
const Option* next_option(Parser& parser, const std::vector<const Option*>& given) {
  for (const Option& option : options_table) {
    const bool is_looked_for =
        may_follow(option, given) || parser.matching_words(option.keywords) > 0;
    if (is_looked_for && parser.accept_clause(option.keywords)) return &option;
  }
  return nullptr;
}

// The filters of the options in their right order: first those that change values, then those that
// sort bytes, then those that press them together, and the checksum over what is stored.
unsigned stage(const Filter& filter) {
  switch (filter.id) {
    case scaleoffset_id:
    case nbit_id:
      return 0;
    case shuffle_id:
      return 1;
    case fletcher32_id:
      return 3;
    default:
      return 2;
  }
}

void check_against(const Option& option, const std::vector<const Option*>& given,
                   std::size_t position) {
  for (const Option* before : given) {
    if (before == &option && !option.repeatable) {
      throw StatementError::at(position, "Expected " + std::string(option.keywords) + " only once");
    }
    if (before != &option && contradict(option, *before)) {
      throw StatementError::at(position, "Expected no " + std::string(option.keywords) +
                                             ", which contradicts " +
                                             std::string(before->keywords));
    }
  }
}

// "FILTER 1" and DEFLATE are the same filter.
void check_filters(const std::vector<Filter>& filters, std::size_t position) {
  for (std::size_t i = 0; i + 1 < filters.size(); ++i) {
    if (filters[i].id == filters.back().id) {
      throw StatementError::at(position,
                               "Expected filter " + std::to_string(filters[i].id) + " only once");
    }
  }
}

}  // namespace

StorageOptions parse_storage_options(Parser& parser) {
  StorageOptions options;
  std::vector<const Option*> given;
  for (;;) {
    const std::size_t position = parser.peek().position;
    const Option* option = next_option(parser, given);
    if (option == nullptr) break;
    check_against(*option, given, position);
    given.push_back(option);
    option->parse(parser, &options);
    check_filters(options.filters, position);
  }
  std::stable_sort(
      options.filters.begin(), options.filters.end(),
      [](const Filter& one, const Filter& other) { return stage(one) < stage(other); });
  return options;
}

}  // namespace kelvo
