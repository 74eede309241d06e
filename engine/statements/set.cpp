// SET: how later statements work.
#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "build_info.h"
#include "error.h"
#include "language/literal.h"
#include "session.h"
#include "statements/family.h"
#include "storage/host.h"
#include "storage/plugin_path.h"

namespace kelvo {
namespace {

constexpr std::uint64_t most_slots = 100'000'000;
constexpr std::uint64_t most_cache_bytes = std::min<std::uint64_t>(
    std::numeric_limits<std::size_t>::max(), std::numeric_limits<std::int64_t>::max());

bool parse_enable(Parser& parser) {
  if (parser.accept_keyword("ENABLE")) return true;
  if (!parser.accept_keyword("DISABLE")) parser.fail_expected("ENABLE or DISABLE");
  return false;
}

std::string parse_directory(Parser& parser) {
  return host_path(parser.expect_path("a directory or DEFAULT"));
}

LibraryBound parse_bound(Parser& parser) {
  for (const LibraryBound& bound : library_bounds) {
    if (parser.accept_keyword(bound.word)) return bound;
  }
  parser.fail_expected("EARLIEST, V18, V110 or LATEST");
}

Answer set_library_bounds(Parser& parser, Session& session) {
  FileOptions options;
  if (!parser.accept_keyword("DEFAULT")) {
    options.low = parse_bound(parser);
    options.high = parse_bound(parser);
  }
  parser.expect_end();
  // The HDF5 library has no file format that is EARLIEST at the most.
  if (options.high.version < std::max(options.low.version, H5F_LIBVER_V18)) {
    throw StatementError(Status::out_of_range,
                         "Library bounds " + std::string(options.low.word) + " to " +
                             std::string(options.high.word) +
                             " are not possible: the second is V18 or later, and not before the "
                             "first");
  }
  session.settings().file_options = options;
  return nullptr;
}

void parse_slots(Parser& parser, ChunkCache* cache) {
  cache->slots = static_cast<std::size_t>(parser.expect_unsigned("a number of slots", most_slots));
  if (cache->slots == 0)
    throw StatementError(Status::out_of_range, "The chunk cache needs at least 1 slot");
}

void parse_bytes(Parser& parser, ChunkCache* cache) {
  cache->bytes =
      static_cast<std::size_t>(parser.expect_unsigned("a number of bytes", most_cache_bytes));
}

void parse_preemption(Parser& parser, ChunkCache* cache) {
  const Token& token = parser.peek(Mode::expression);
  if (token.kind != TokenKind::number && !token.is_symbol("-"))
    parser.fail_expected("a number from 0 to 1", Mode::expression);
  const Literal number = parse_literal(parser);
  cache->preemption = number.real;
  if (number.kind == LiteralKind::integer)
    cache->preemption = static_cast<double>(number.magnitude) * (number.negative ? -1 : 1);
  if (!(cache->preemption >= 0 && cache->preemption <= 1)) {
    throw StatementError(Status::out_of_range, "PREEMPTION " + number.text + " is not from 0 to 1");
  }
}

struct CachePart {
  std::string_view keyword;
  void (*parse)(Parser& parser, ChunkCache* cache);
};

constexpr std::array<CachePart, 3> cache_parts = {{
    {"SLOTS", parse_slots},
    {"SIZE", parse_bytes},
    {"PREEMPTION", parse_preemption},
}};

// The parts given, in any order and each at most once; the others stay as they are.
void parse_cache_parts(Parser& parser, ChunkCache* cache) {
  std::vector<CachePart> left(cache_parts.begin(), cache_parts.end());
  while (!left.empty()) {
    const auto part = std::find_if(left.begin(), left.end(), [&parser](const CachePart& one) {
      return parser.accept_keyword(one.keyword);
    });
    if (part == left.end()) break;
    part->parse(parser, cache);
    left.erase(part);
  }
  if (left.size() == cache_parts.size()) parser.fail_expected("SLOTS, SIZE, PREEMPTION or DEFAULT");
  cache->is_default = false;
}

Answer set_cache(Parser& parser, Session& session) {
  ChunkCache cache = session.settings().chunk_cache;
  if (parser.accept_keyword("DEFAULT")) {
    cache = {};
  } else {
    parse_cache_parts(parser, &cache);
  }
  parser.expect_end();
  session.settings().chunk_cache = cache;
  return nullptr;
}

Answer set_atomic(Parser& parser, Session& /*session*/) {
  parse_enable(parser);
  parser.expect_end();
  throw StatementError(Status::not_available, without_mpi);
}

Answer set_external_link_prefix(Parser& parser, Session& session) {
  std::string prefix;
  if (!parser.accept_keyword("DEFAULT")) prefix = parse_directory(parser);
  parser.expect_end();
  if (!prefix.empty()) expect_on_host(prefix, HostKind::directory);
  session.settings().external_link_prefix = prefix;
  return nullptr;
}

Answer set_flush(Parser& parser, Session& session) {
  Flush flush = Flush::disable;
  if (parse_enable(parser)) {
    flush = parser.accept_keyword("LOCAL") ? Flush::local : Flush::global;
    if (flush == Flush::global) parser.accept_keyword("GLOBAL");
  }
  parser.expect_end();
  session.settings().flush = flush;
  return nullptr;
}

Answer set_thread(Parser& parser, Session& session) {
  int threads = default_threads();
  if (!parser.accept_keyword("DEFAULT")) {
    threads = static_cast<int>(parser.expect_unsigned("a number of threads", most_threads));
  }
  parser.expect_end();
  if (threads == 0) {
    throw StatementError(Status::out_of_range,
                         "A number of threads is from 1 to " + std::to_string(most_threads));
  }
  session.settings().threads = threads;
  return nullptr;
}

Answer set_plugin_path_statement(Parser& parser, Session& /*session*/) {
  std::vector<std::string> directories;
  if (!parser.accept_keyword("DEFAULT")) {
    do {
      directories.push_back(parse_directory(parser));
    } while (parser.accept_symbol(","));
  }
  parser.expect_end();
  for (const std::string& directory : directories) expect_on_host(directory, HostKind::directory);
  directories.empty() ? reset_plugin_path() : set_plugin_path(directories);
  return nullptr;
}

Answer set_debug(Parser& parser, Session& session) {
  const bool debug = parse_enable(parser);
  parser.expect_end();
  session.settings().debug = debug;
  return nullptr;
}

constexpr std::array forms = {
    Form{"LIBRARY BOUNDS", set_library_bounds},
    Form{"CACHE", set_cache},
    Form{"ATOMIC", set_atomic},
    Form{"EXTERNAL LINK PREFIX", set_external_link_prefix},
    Form{"FLUSH", set_flush},
    Form{"THREAD", set_thread},
    Form{"PLUGIN PATH", set_plugin_path_statement},
    Form{"DEBUG", set_debug},
};

}  // namespace

Answer run_set(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
