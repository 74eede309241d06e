// FLUSH: what is written goes to the disk now.
#include <array>

#include "session.h"
#include "statements/family.h"
#include "storage/file.h"

namespace kelvo {
namespace {

template <FlushScope scope>
Answer flush(Parser& parser, Session& session) {
  parser.expect_end();
  flush_file(session.file_in_use(Access::read), scope);
  return nullptr;
}

constexpr std::array forms = {
    Form{"GLOBAL", flush<FlushScope::global>},
    Form{"LOCAL", flush<FlushScope::local>},
};

}  // namespace

Answer run_flush(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
