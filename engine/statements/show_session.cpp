// SHOW of what is in use, of the last status and of versions.
#include <array>
#include <string>

#include "build_info.h"
#include "error.h"
#include "session.h"
#include "statements/show.h"
#include "storage/host_listing.h"

namespace kelvo {

Answer show_use_directory(Parser& parser, Session& /*session*/) {
  parser.expect_end();
  return text_row(working_directory());
}

Answer show_use_file(Parser& parser, Session& session) {
  parser.expect_end();
  const std::vector<std::string> files = session.used_files();
  return files.empty() ? nullptr : text_row(files.front());
}

Answer show_all_use_file(Parser& parser, Session& session) {
  parser.expect_end();
  return text_rows(session.used_files());
}

Answer show_use_group(Parser& parser, Session& session) {
  parser.expect_end();
  return session.used_group() == nullptr ? nullptr : text_row(*session.used_group());
}

Answer show_execute_status(Parser& parser, Session& session) {
  parser.expect_end();
  auto rows = std::make_unique<ReadyRows>();
  rows->add_int(session.status_before());
  return rows;
}

Answer show_kelvo_version(Parser& parser, Session& /*session*/) {
  parser.expect_end();
  return text_row(version());
}

Answer show_hdf5_version(Parser& parser, Session& /*session*/) {
  parser.expect_end();
  std::array<unsigned, 3> numbers{};
  H5get_libversion(numbers.data(), &numbers[1], &numbers[2]);
  return text_row(std::to_string(numbers[0]) + "." + std::to_string(numbers[1]) + "." +
                  std::to_string(numbers[2]));
}

Answer show_mpi_version(Parser& parser, Session& /*session*/) {
  parser.expect_end();
  throw StatementError(Status::not_available, without_mpi);
}

}  // namespace kelvo
