// SHOW of what is in use, of settings and of versions.
#include <array>
#include <cstdio>
#include <string>

#include "build_info.h"
#include "error.h"
#include "session.h"
#include "statements/show.h"

namespace kelvo {
namespace {

Answer one_text(const std::string& text) {
  auto rows = std::make_unique<ReadyRows>();
  rows->add_text(text);
  return rows;
}

}  // namespace

Answer show_use_file(Parser& parser, Session& session) {
  parser.expect_end();
  const std::vector<std::string> files = session.used_files();
  return files.empty() ? nullptr : one_text(files.front());
}

Answer show_use_group(Parser& parser, Session& session) {
  parser.expect_end();
  return session.used_group() == nullptr ? nullptr : one_text(*session.used_group());
}

Answer show_kelvo_version(Parser& parser, Session& /*session*/) {
  parser.expect_end();
  return one_text(version());
}

Answer show_hdf5_version(Parser& parser, Session& /*session*/) {
  parser.expect_end();
  std::array<unsigned, 3> numbers{};
  H5get_libversion(numbers.data(), &numbers[1], &numbers[2]);
  return one_text(std::to_string(numbers[0]) + "." + std::to_string(numbers[1]) + "." +
                  std::to_string(numbers[2]));
}

Answer show_mpi_version(Parser& parser, Session& /*session*/) {
  parser.expect_end();
  throw StatementError(Status::not_available, "This engine was built without MPI");
}

Answer show_debug(Parser& parser, Session& session) {
  parser.expect_end();
  return one_text(session.settings().debug ? "ENABLE" : "DISABLE");
}

}  // namespace kelvo
