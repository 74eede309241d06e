// The last resort against damaged files. The HDF5 library trusts sizes, addresses and indexes in a
// file in places that no check of ours can stand in front of: it then reads where there is no
// memory, frees what was never allocated, divides by nothing, or calls itself until the stack ends.
// Such a signal ends the call instead of the process.
#pragma once

#include <type_traits>

namespace kelvo {

/// Calls `call(arguments)`; false where a signal ended it: SIGSEGV, SIGBUS or SIGFPE of this
/// thread, or SIGABRT from libc, which checks the heap. The frames of the call are left without
/// being unwound: what they owned stays allocated, open and locked for good, and whoever calls this
/// gives up whatever they were working on. After SIGABRT the heap itself may be damaged; going on
/// is still better than losing everything for certain. Calls may nest: the innermost ends.
/// Exceptions pass. For one thread at a time; signals of others, and those that other programs
/// send, act as if nothing were guarded.
bool call_guarded(void (*call)(void* arguments), void* arguments);

/// The same for anything that can be called without arguments.
template <typename Call>
bool run_guarded(Call&& call) {
  using Callable = std::remove_reference_t<Call>;
  return call_guarded([](void* callable) { (*static_cast<Callable*>(callable))(); }, &call);
}

/// Makes the HDF5 library do nothing when the process ends, as what such a call left behind would
/// make it fail again; files are closed by their owners. To be called before anything else of it.
void skip_work_at_exit();

}  // namespace kelvo
