// SHOW of files and directories of the host.
#include <optional>

#include "error.h"
#include "session.h"
#include "statements/listing_clauses.h"
#include "statements/show.h"
#include "storage/file.h"
#include "storage/file_causes.h"
#include "storage/host_listing.h"
#include "storage/properties.h"

namespace kelvo {
namespace {

Answer show_host(Parser& parser, HostKind kind) {
  const std::string path = host_path(parser.at_path() ? parser.expect_path("a directory") : ".");
  const ListingClauses clauses = parse_listing_clauses(parser, {.recursive = true});
  HostRequest request;
  request.kind = kind;
  request.recursive = clauses.recursive;
  request.is_named = [&](const std::string& name, const std::string& relative) {
    return clauses.admit(name, relative, path);
  };
  return text_rows(list_directory(path, request));
}

// Only the host and the want of a file make an error: whatever else keeps it from opening is the
// answer NO, but for the mark of a writer, which only an HDF5 file bears.
bool is_valid(const std::string& path, const FileOptions& options) {
  try {
    open_file(path, Access::read, options);
    return true;
  } catch (const StatementError& error) {
    const Status status = error.status();
    if (status == Status::does_not_exist || status == Status::host_refused) throw;
    return is_marked_open(error);
  }
}

// Of any file of the host, else of what the HDF5 library alone can open as one.
std::uint64_t bytes_of(const std::string& path, const FileOptions& options) {
  if (const std::optional<std::uint64_t> bytes = host_file_size(path)) return *bytes;
  return file_bytes(open_file(path, Access::read, options).get());
}

}  // namespace

Answer show_file_validity(Parser& parser, Session& session) {
  const std::string path = host_path(parser.expect_path("a file"));
  parser.expect_end();
  const bool valid = session.is_in_use(path) || is_valid(path, session.settings().file_options);
  return text_row(valid ? "YES" : "NO");
}

Answer show_file_size(Parser& parser, Session& session) {
  std::optional<std::string> path;
  if (parser.at_path()) path = host_path(parser.expect_path("a file"));
  parser.expect_end();
  const std::uint64_t bytes = path ? bytes_of(*path, session.settings().file_options)
                                   : file_bytes(session.file_in_use(Access::read));
  return bigint_row(static_cast<std::int64_t>(bytes));
}

Answer show_directory(Parser& parser, Session& /*session*/) {
  return show_host(parser, HostKind::directory);
}
Answer show_file(Parser& parser, Session& /*session*/) { return show_host(parser, HostKind::file); }

}  // namespace kelvo
