// FLUSH: what is written goes to the disk now.
#include <array>

#include "session.h"
#include "statements/family.h"
#include "storage/check.h"

namespace kelvo {
namespace {

Answer flush(Parser& parser, Session& session, H5F_scope_t scope) {
  parser.expect_end();
  check_done(H5Fflush(session.file_in_use(Access::read), scope),
             [] { return std::string("The file in use cannot be flushed"); });
  return nullptr;
}

Answer flush_global(Parser& parser, Session& session) {
  return flush(parser, session, H5F_SCOPE_GLOBAL);
}
Answer flush_local(Parser& parser, Session& session) {
  return flush(parser, session, H5F_SCOPE_LOCAL);
}

constexpr std::array forms = {
    Form{"GLOBAL", flush_global},
    Form{"LOCAL", flush_local},
};

}  // namespace

Answer run_flush(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
