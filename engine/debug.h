// What SET DEBUG shows of a statement: how it was understood, what was read and written, how long
// it took. Lines on standard output, each beginning with "[debug] " and none with a secret.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "error.h"

namespace kelvo {

/// Lives as long as one statement runs.
class StatementLog {
 public:
  explicit StatementLog(const char* statement);

  /// Words of the statement's form, from the left, as each table of forms knows them.
  void add_form(std::string_view keywords);

  /// An object that a name in the statement was found to mean.
  void show_object(const std::string& object, const std::string& file);

  /// `returned`: elements in the answer so far.
  void show_end(Status status, std::uint64_t returned);

 private:
  void show_form();

  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::string form_;
};

}  // namespace kelvo
