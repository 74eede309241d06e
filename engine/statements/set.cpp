// SET: how later statements work.
#include <array>

#include "session.h"
#include "statements/family.h"

namespace kelvo {
namespace {

bool parse_enable(Parser& parser) {
  if (parser.accept_keyword("ENABLE")) return true;
  if (!parser.accept_keyword("DISABLE")) parser.fail_expected("ENABLE or DISABLE");
  return false;
}

Answer set_debug(Parser& parser, Session& session) {
  const bool debug = parse_enable(parser);
  parser.expect_end();
  session.settings().debug = debug;
  return nullptr;
}

constexpr std::array forms = {
    Form{"DEBUG", set_debug},
};

}  // namespace

Answer run_set(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
