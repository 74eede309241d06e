// What CREATE, RENAME, COPY and DROP share: where a new name goes, which names LIKE means, and what
// is in use and so is left alone.
#pragma once

#include <optional>
#include <string>

#include "language/parser.h"
#include "storage/host.h"
#include "storage/link.h"

namespace kelvo {

class Session;
struct Target;

/// An object of the file in use. `what` names it in the error: "a group".
ObjectName parse_object(Parser& parser, std::string_view what);

/// A host path as it was written, and what it means.
struct HostName {
  std::string path;   // absolute
  bool into = false;  // it ends in "/": what is moved or copied keeps its name and goes into it
};
HostName parse_host_name(Parser& parser, std::string_view what);

/// Where a host file or directory called `name` goes. Throws unless that is free.
std::string host_destination(const HostName& to, const std::string& name, HostKind kind);

/// Where an object with the path `from` goes: a `written` path that ends in "/" is a group, which
/// it is put into. Throws unless the path that comes out can be created.
std::string destination(const Target& to, const std::string& written, const std::string& from,
                        NameKind kind);

/// LIKE 'pattern' [ESCAPE 'c'], where it stands next.
std::optional<LikePattern> parse_optional_like(Parser& parser);

/// Throws where the file is in use, or one in or below the directory.
void refuse_file_in_use(const Session& session, const std::string& path);
void refuse_directory_in_use(const Session& session, const std::string& path);

/// Throws where the group in use is the group, or below it.
void refuse_group_in_use(Session& session, const Target& group);

}  // namespace kelvo
