// Every call of the HDF5 library passes through one of these: a failed return becomes a
// StatementError in our words with the library's reason behind it.
#pragma once

#include <hdf5.h>

#include <string>

#include "error.h"

namespace kelvo {

/// Stops the HDF5 library from printing its error stack, for the whole process: the engine reads it
/// instead.
void silence_hdf5();

/// The reason that the HDF5 library gave for the call that failed last: its innermost description,
/// or "" for none.
std::string hdf5_reason();

/// The whole error stack, outermost call first, one line each.
std::string hdf5_error_stack();

/// The error stack of the last failure that a message was made for, and forgets it; for debug
/// output. The library's own is gone by then: closing what was open clears it.
std::string take_failure_stack();

/// Leaves an error of ours on the HDF5 library's error stack, for functions of ours that the
/// library calls and that cannot throw: the failure of the call that led to them becomes that
/// error.
void leave_error(const StatementError& error) noexcept;

/// Throws the error that one of those functions left during the call that failed last, if any did.
void throw_left_error();

/// Throws `what` (a sentence without its end: "Dataset "/x" cannot be read") with ": reason" behind
/// it; or the error that was left.
[[noreturn]] void fail_hdf5(const std::string& what);

/// Each returns its argument unless it reports a failure. `what()` makes the message; it is called
/// only on failure, since most calls succeed and messages cost time.
template <typename What>
hid_t check_id(hid_t id, const What& what) {
  if (id < 0) fail_hdf5(what());
  return id;
}

template <typename What>
void check_done(herr_t result, const What& what) {
  if (result < 0) fail_hdf5(what());
}

template <typename What>
bool check_answer(htri_t answer, const What& what) {
  if (answer < 0) fail_hdf5(what());
  return answer > 0;
}

}  // namespace kelvo
