// The one exception of the engine: it ends a statement and carries what the program will show.
// Statuses are part of the users' contract: they never change meaning.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace kelvo {

enum class Status : std::int32_t {
  done = 0,
  not_a_statement = -1,  // the only one with a position
  nothing_in_use = -2,
  does_not_exist = -3,
  exists_already = -4,
  wrong_kind = -5,
  out_of_range = -6,
  not_available = -7,  // in this build, or in this HDF5 library
  host_refused = -8,
  hdf5_refused = -9,
  no_memory = -10,
};

class StatementError : public std::runtime_error {
 public:
  /// `message`: one line, no final full stop, naming the thing, what is wrong and the way out.
  StatementError(Status status, const std::string& message)
      : std::runtime_error(message), status_(status) {}

  /// The text is not a statement; `position` is that of the first byte not understood, from 1.
  static StatementError at(std::size_t position, const std::string& message) {
    StatementError error(Status::not_a_statement, message);
    error.position_ = static_cast<std::int32_t>(position);
    return error;
  }

  [[nodiscard]] Status status() const noexcept { return status_; }
  [[nodiscard]] std::int32_t position() const noexcept { return position_; }

 private:
  Status status_;
  std::int32_t position_ = 0;
};

/// The text without what addresses in it (http, https, s3) hold of secrets: a user's name and
/// password, and what stands behind "?", where signatures are.
std::string without_secrets(const std::string& text);

/// `name` as messages show it: between double quotes, control bytes as \xHH so that a message stays
/// one line, and without secrets.
std::string quoted(const std::string& name);

}  // namespace kelvo
