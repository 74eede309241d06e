// Names that statements give, take and change.
#include "statements/names.h"

#include <filesystem>

#include "error.h"
#include "session.h"
#include "storage/object.h"

namespace kelvo {
namespace {

std::string without_slash(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

}  // namespace

ObjectName parse_object(Parser& parser, std::string_view what) {
  ObjectName name;
  name.path = parser.expect_path(what);
  return name;
}

HostName parse_host_name(Parser& parser, std::string_view what) {
  const std::string written = parser.expect_path(what);
  return {without_slash(host_path(written)), written.ends_with('/')};
}

std::string host_destination(const HostName& to, const std::string& name, HostKind kind) {
  if (!to.into) {
    expect_free_on_host(to.path, kind);
    return to.path;
  }
  expect_on_host(to.path, HostKind::directory);
  std::string path =
      (std::filesystem::path(to.path) / std::filesystem::path(name).filename()).string();
  expect_free_on_host(path, kind);
  return path;
}

std::string destination(const Target& to, const std::string& written, const std::string& from,
                        NameKind kind) {
  std::string path = to.path;
  if (written.ends_with('/')) {
    open_group(to.file, path);
    path = path_below(path, split_path(from).name);
  }
  expect_creatable(to.file, path, kind);
  return path;
}

std::optional<LikePattern> parse_optional_like(Parser& parser) {
  if (!parser.accept_keyword("LIKE")) return std::nullopt;
  return parser.expect_like_pattern();
}

void refuse_file_in_use(const Session& session, const std::string& path) {
  for (const std::string& used : session.used_files()) {
    if (is_same_on_host(used, path)) {
      throw StatementError(Status::host_refused,
                           "File " + quoted(path) + " is in use (CLOSE FILE closes it)");
    }
  }
}

void refuse_directory_in_use(const Session& session, const std::string& path) {
  for (const std::string& file : session.used_files()) {
    if (is_within_directory(file, path)) {
      throw StatementError(Status::host_refused, "Directory " + quoted(path) + " holds file " +
                                                     quoted(file) +
                                                     ", which is in use (CLOSE FILE closes it)");
    }
  }
  std::error_code error;
  if (is_within_directory(std::filesystem::current_path(error).string(), path)) {
    throw StatementError(Status::host_refused,
                         "Directory " + quoted(path) + " is in use (USE DIRECTORY goes elsewhere)");
  }
}

void refuse_group_in_use(Session& session, const Target& group) {
  const std::string used = *session.used_group();
  if (kind_at(group.file, used) != ObjectKind::group) return;
  const bool below = used == group.path || used.starts_with(path_below(group.path, ""));
  if (!below && !is_within(group.file, used, group.path)) return;
  throw StatementError(Status::host_refused,
                       "Group " + quoted(group.path) + " is in use (CLOSE GROUP leaves it)");
}

}  // namespace kelvo
