// Reading the HDF5 library's error stack.
#include "storage/check.h"

#include <optional>
#include <utility>

namespace kelvo {
namespace {

// The walk goes from the outermost call inwards, so the last one seen is the cause.
herr_t keep_description(unsigned /*depth*/, const H5E_error2_t* error, void* reason) {
  if (error->desc != nullptr && *error->desc != '\0')
    *static_cast<std::string*>(reason) = error->desc;
  return 0;
}

herr_t append_line(unsigned /*depth*/, const H5E_error2_t* error, void* lines) {
  auto& text = *static_cast<std::string*>(lines);
  text += (error->func_name != nullptr ? error->func_name : "?") + std::string(": ") +
          (error->desc != nullptr ? error->desc : "") + "\n";
  return 0;
}

// What the library says of things in a file whose form it does not know: "bad version number for
// layout message".
bool is_of_newer_library(const std::string& reason) {
  return reason.find("version number") != std::string::npos ||
         reason.find("'fail if unknown'") != std::string::npos;
}

std::string& failure_stack() {
  static std::string lines;
  return lines;
}

// Ours among the entries of an error stack: these carry a status in the place of a line number.
hid_t our_error_class() {
  static const hid_t registered = H5Eregister_class("kelvo", "kelvo", "1");
  return registered;
}

herr_t find_left_error(unsigned /*depth*/, const H5E_error2_t* error, void* found) {
  if (error->cls_id != our_error_class()) return 0;
  static_cast<std::optional<StatementError>*>(found)->emplace(
      static_cast<Status>(-static_cast<std::int32_t>(error->line)), error->desc);
  return 1;
}

}  // namespace

void silence_hdf5() {
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
  // Now, as registering it clears the error stack.
  our_error_class();
}

std::string hdf5_reason() {
  failure_stack() = hdf5_error_stack();
  std::string reason;
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_DOWNWARD, keep_description, &reason);
  // A message is one line.
  for (char& byte : reason) {
    if (byte == '\n') byte = ' ';
  }
  if (is_of_newer_library(reason))
    reason += ", as made by a newer HDF5 library (update the one in use) or damaged";
  return without_secrets(reason);
}

std::string take_failure_stack() { return std::exchange(failure_stack(), {}); }

std::string hdf5_error_stack() {
  std::string lines;
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_DOWNWARD, append_line, &lines);
  return lines;
}

void leave_error(const StatementError& error) noexcept {
  H5Epush2(H5E_DEFAULT, "", "kelvo", static_cast<unsigned>(-static_cast<int>(error.status())),
           our_error_class(), H5E_LINK, H5E_TRAVERSE, "%s", error.what());
}

void throw_left_error() {
  std::optional<StatementError> found;
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_DOWNWARD, find_left_error, &found);
  if (found) throw StatementError(*found);
}

void fail_hdf5(const std::string& what) {
  const std::string reason = hdf5_reason();
  throw_left_error();
  throw StatementError(Status::hdf5_refused, reason.empty() ? what : what + ": " + reason);
}

}  // namespace kelvo
