// DROP: one thing by its name, or all in one place whose names match a pattern.
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "error.h"
#include "session.h"
#include "statements/family.h"
#include "statements/names.h"
#include "storage/attribute.h"
#include "storage/listing.h"
#include "storage/object.h"

namespace kelvo {
namespace {

[[noreturn]] void fail_no_match(const std::string& what, const LikePattern& like,
                                const std::string& where) {
  throw StatementError(Status::does_not_exist,
                       "No " + what + " in " + quoted(where) + " matches " + quoted(like.text));
}

std::vector<std::string> matching(const std::vector<std::string>& names, const LikePattern& like) {
  std::vector<std::string> matches;
  for (const std::string& name : names) {
    if (like.matches(name)) matches.push_back(name);
  }
  return matches;
}

// --- on the host ---

std::vector<std::string> matching_on_host(const std::string& directory, const LikePattern& like,
                                          HostKind kind, bool optional) {
  expect_on_host(directory, HostKind::directory);
  std::vector<std::string> paths;
  for (const std::string& name : matching(names_in_directory(directory, kind), like))
    paths.push_back(path_below(directory, name));
  if (paths.empty() && !optional)
    fail_no_match(kind == HostKind::file ? "file" : "directory", like, directory);
  return paths;
}

// What a statement "DROP kind [IF EXISTS] [path] [LIKE 'pattern']" names.
struct Dropped {
  bool optional = false;
  std::optional<LikePattern> like;
};

std::vector<std::string> host_paths(const Dropped& dropped, const std::string& path,
                                    HostKind kind) {
  if (dropped.like) return matching_on_host(path, *dropped.like, kind, dropped.optional);
  if (dropped.optional && !is_on_host(path, kind)) return {};
  expect_on_host(path, kind);
  return {path};
}

// The path may be left out before LIKE.
std::string parse_dropped_path(Parser& parser, std::string_view what, Dropped* dropped) {
  dropped->optional = parser.accept_keyword("IF EXISTS");
  std::string path = ".";
  if (!(dropped->like = parse_optional_like(parser))) {
    path = parser.expect_path(what);
    dropped->like = parse_optional_like(parser);
  }
  return path;
}

std::string parse_dropped_host(Parser& parser, std::string_view what, Dropped* dropped) {
  std::string path = host_path(parse_dropped_path(parser, what, dropped));
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

Answer drop_directory(Parser& parser, Session& session) {
  Dropped dropped;
  const std::string path = parse_dropped_host(parser, "a directory or LIKE", &dropped);
  const bool recursive = parser.accept_keyword("RECURSIVE");
  parser.expect_end();
  const std::vector<std::string> paths = host_paths(dropped, path, HostKind::directory);
  for (const std::string& one : paths) {
    refuse_directory_in_use(session, one);
    check_removable(one, recursive);
  }
  for (const std::string& one : paths) remove_directory(one, recursive);
  return nullptr;
}

Answer drop_file(Parser& parser, Session& session) {
  Dropped dropped;
  const std::string path = parse_dropped_host(parser, "a file or LIKE", &dropped);
  parser.expect_end();
  const std::vector<std::string> paths = host_paths(dropped, path, HostKind::file);
  for (const std::string& one : paths) refuse_file_in_use(session, one);
  remove_host_files(paths);
  return nullptr;
}

// --- in a file ---

std::vector<std::string> paths_in_file(const Dropped& dropped, const Target& target,
                                       NameKind kind) {
  if (!dropped.like) {
    if (dropped.optional && !is_there(target.file, target.path, kind)) return {};
    expect_there(target.file, target.path, kind);
    return {target.path};
  }
  if (dropped.optional && kind_at(target.file, target.path) == ObjectKind::none) return {};
  std::vector<std::string> paths;
  for (const std::string& name :
       matching(names_of_kind(target.file, target.path, kind), *dropped.like))
    paths.push_back(path_below(target.path, name));
  if (paths.empty() && !dropped.optional)
    fail_no_match(lower_title(kind), *dropped.like, target.path);
  return paths;
}

Answer drop_name(Parser& parser, Session& session, NameKind kind) {
  Dropped dropped;
  ObjectName name;
  name.path = parse_dropped_path(parser, with_article(kind) + " or LIKE", &dropped);
  parser.expect_end();
  Target target = session.find(name, Access::write);
  const std::vector<std::string> paths = paths_in_file(dropped, target, kind);
  for (const std::string& path : paths) {
    if (path == "/") throw StatementError(Status::wrong_kind, "The root group cannot be dropped");
    if (kind != NameKind::group) continue;
    target.path = path;
    refuse_group_in_use(session, target);
  }
  for (const std::string& path : paths) remove_name(target.file, path);
  return nullptr;
}

template <NameKind kind>
Answer drop_in_file(Parser& parser, Session& session) {
  return drop_name(parser, session, kind);
}

// --- attributes ---

void drop_matching_attributes(const Target& target, const LikePattern& like, bool optional) {
  const ObjectHandle object = open_object(target.file, target.path);
  const std::vector<std::string> names = matching(attribute_names(object.get(), target.path), like);
  if (names.empty() && !optional) fail_no_match("attribute", like, target.path);
  for (const std::string& name : names)
    remove_attribute(object.get(), name, target.path + "@" + name);
}

void drop_one_attribute(const Target& target, bool optional) {
  const ObjectHandle object = open_object(target.file, target.path);
  if (optional && !has_attribute(object.get(), *target.attribute)) return;
  open_attribute(object.get(), target.path, *target.attribute);
  remove_attribute(object.get(), *target.attribute, target.shown());
}

Answer drop_attribute(Parser& parser, Session& session) {
  const bool optional = parser.accept_keyword("IF EXISTS");
  ObjectName name;
  std::optional<LikePattern> like = parse_optional_like(parser);
  if (!like) {
    name = parser.expect_place("an attribute (object@name) or LIKE");
    if (!name.attribute && !(like = parse_optional_like(parser)))
      parser.fail_expected("\"@\" and the name of an attribute, or LIKE");
  }
  parser.expect_end();
  const Target target = session.find(name, Access::write);
  if (optional && kind_at(target.file, target.path) == ObjectKind::none) return nullptr;
  like ? drop_matching_attributes(target, *like, optional) : drop_one_attribute(target, optional);
  return nullptr;
}

constexpr std::array forms = {
    Form{"DIRECTORY", drop_directory},
    Form{"FILE", drop_file},
    Form{"GROUP", drop_in_file<NameKind::group>},
    Form{"DATASET", drop_in_file<NameKind::dataset>},
    Form{"ATTRIBUTE", drop_attribute},
    Form{"LINK", drop_in_file<NameKind::link>},
    Form{"EXTERNAL LINK", drop_in_file<NameKind::external_link>},
};

}  // namespace

Answer run_drop(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
