// The signal handler that ends a call, and the way back.
#include "storage/crash_guard.h"

#include <array>
#include <csetjmp>
#include <csignal>

#include "storage/check.h"

namespace kelvo {
namespace {

constexpr std::array refusals = {SIGSEGV, SIGBUS, SIGFPE};

sigjmp_buf way_back;

void leave(int /*signal*/) { siglongjmp(way_back, 1); }

// Installs the handlers, and puts back those of the program whatever happens.
class Handlers {
 public:
  Handlers() {
    struct sigaction ours {};
    ours.sa_handler = leave;
    for (std::size_t i = 0; i < refusals.size(); ++i) sigaction(refusals[i], &ours, &before_[i]);
  }
  Handlers(const Handlers&) = delete;
  Handlers& operator=(const Handlers&) = delete;
  ~Handlers() {
    for (std::size_t i = 0; i < refusals.size(); ++i) sigaction(refusals[i], &before_[i], nullptr);
  }

 private:
  std::array<struct sigaction, refusals.size()> before_{};
};

struct OpenCall {
  hid_t (*open)(hid_t place, const char* name, hid_t access);
  hid_t place;
  const char* name;
  hid_t access;
  hid_t opened = H5I_INVALID_HID;
};

void run_open(void* arguments) {
  OpenCall& call = *static_cast<OpenCall*>(arguments);
  call.opened = call.open(call.place, call.name, call.access);
}

}  // namespace

bool call_guarded(void (*call)(void* arguments), void* arguments) {
  const Handlers handlers;
  // With the signal mask: a signal is blocked while its handler runs, and the handler is left here.
  if (sigsetjmp(way_back, 1) != 0) return false;
  call(arguments);
  return true;
}

hid_t open_guarded(hid_t (*open)(hid_t place, const char* name, hid_t access), hid_t place,
                   const char* name, hid_t access) {
  OpenCall call = {open, place, name, access};
  if (call_guarded(run_open, &call)) return call.opened;
  leave_error(StatementError(Status::hdf5_refused,
                             quoted(name) + " is damaged: it says more than there is of it"));
  return H5I_INVALID_HID;
}

void skip_work_at_exit() { H5dont_atexit(); }

}  // namespace kelvo
