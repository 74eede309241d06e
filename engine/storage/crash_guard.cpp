// The signal handler that ends a call, and the way back.
#include "storage/crash_guard.h"

#include <hdf5.h>

#include <array>
#include <csetjmp>
#include <csignal>

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

}  // namespace

bool call_guarded(void (*call)(void* arguments), void* arguments) {
  const Handlers handlers;
  // With the signal mask: a signal is blocked while its handler runs, and the handler is left here.
  if (sigsetjmp(way_back, 1) != 0) return false;
  call(arguments);
  return true;
}

void skip_work_at_exit() { H5dont_atexit(); }

}  // namespace kelvo
