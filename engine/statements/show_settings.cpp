// SHOW of what SET sets.
#include <array>

#include "session.h"
#include "statements/show.h"
#include "storage/plugin_path.h"

namespace kelvo {
namespace {

const char* enabled(bool is_enabled) { return is_enabled ? "ENABLE" : "DISABLE"; }

}  // namespace

Answer show_library_bounds(Parser& parser, Session& session) {
  parser.expect_end();
  const FileOptions& options = session.settings().file_options;
  return text_rows(std::array{std::string(options.low.word), std::string(options.high.word)});
}

Answer show_cache(Parser& parser, Session& session) {
  parser.expect_end();
  const ChunkCache& cache = session.settings().chunk_cache;
  auto rows = std::make_unique<ReadyRows>();
  rows->add_bigint(static_cast<std::int64_t>(cache.slots));
  rows->add_bigint(static_cast<std::int64_t>(cache.bytes));
  rows->add_double(cache.preemption);
  return rows;
}

// Without MPI nothing is ever atomic in its sense.
Answer show_atomic(Parser& parser, Session& /*session*/) {
  parser.expect_end();
  return text_row(enabled(false));
}

Answer show_external_link_prefix(Parser& parser, Session& session) {
  parser.expect_end();
  const std::string& prefix = session.settings().external_link_prefix;
  return prefix.empty() ? nullptr : text_row(prefix);
}

Answer show_flush(Parser& parser, Session& session) {
  parser.expect_end();
  switch (session.settings().flush) {
    case Flush::disable:
      break;
    case Flush::local:
      return text_row("LOCAL");
    case Flush::global:
      return text_row("GLOBAL");
  }
  return text_row("DISABLE");
}

Answer show_thread(Parser& parser, Session& session) {
  parser.expect_end();
  auto rows = std::make_unique<ReadyRows>();
  rows->add_int(session.settings().threads);
  return rows;
}

Answer show_plugin_path(Parser& parser, Session& /*session*/) {
  parser.expect_end();
  return text_rows(plugin_path());
}

Answer show_debug(Parser& parser, Session& session) {
  parser.expect_end();
  return text_row(enabled(session.settings().debug));
}

}  // namespace kelvo
