// Reading the HDF5 library's error stack.
#include "storage/check.h"

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

}  // namespace

void silence_hdf5() { H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr); }

std::string hdf5_reason() {
  std::string reason;
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_DOWNWARD, keep_description, &reason);
  // A message is one line.
  for (char& byte : reason) {
    if (byte == '\n') byte = ' ';
  }
  return reason;
}

std::string hdf5_error_stack() {
  std::string lines;
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_DOWNWARD, append_line, &lines);
  return lines;
}

void fail_hdf5(const std::string& what) {
  const std::string reason = hdf5_reason();
  throw StatementError(Status::hdf5_refused, reason.empty() ? what : what + ": " + reason);
}

}  // namespace kelvo
