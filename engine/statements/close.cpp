// CLOSE: what is no longer worked on.
#include <array>
#include <optional>
#include <string>

#include "session.h"
#include "statements/family.h"

namespace kelvo {
namespace {

Answer close_file(Parser& parser, Session& session) {
  std::optional<std::string> path;
  if (parser.at_path()) path = host_path(parser.expect_path("a file"));
  parser.expect_end();
  path ? session.close_file(*path) : session.close_file();
  return nullptr;
}

Answer close_all_files(Parser& parser, Session& session) {
  parser.expect_end();
  session.close_all_files();
  return nullptr;
}

Answer close_group(Parser& parser, Session& session) {
  parser.expect_end();
  session.use_group("/");
  return nullptr;
}

constexpr std::array forms = {
    Form{"FILE", close_file},
    Form{"ALL FILE", close_all_files},
    Form{"GROUP", close_group},
};

}  // namespace

Answer run_close(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
