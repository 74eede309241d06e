// USE: what later statements work on.
#include <array>
#include <string>

#include "session.h"
#include "statements/family.h"
#include "storage/host_listing.h"

namespace kelvo {
namespace {

Answer use_directory(Parser& parser, Session& /*session*/) {
  const std::string path = host_path(parser.expect_path("a directory"));
  parser.expect_end();
  change_working_directory(path);
  return nullptr;
}

Answer use_file(Parser& parser, Session& session) {
  const std::string path = host_path(parser.expect_path("a file"));
  const bool read_only = parser.accept_clause("READ ONLY");
  parser.expect_end();
  session.use_file(path, read_only);
  return nullptr;
}

Answer use_group(Parser& parser, Session& session) {
  ObjectName name;
  name.path = parser.expect_path("a group");
  parser.expect_end();
  session.use_group(session.find(name, Access::read).path);
  return nullptr;
}

constexpr std::array forms = {
    Form{"DIRECTORY", use_directory},
    Form{"FILE", use_file},
    Form{"GROUP", use_group},
};

}  // namespace

Answer run_use(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
