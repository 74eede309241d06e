// The signal handler that ends a call, and the way back.
#include "storage/crash_guard.h"

#include <hdf5.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <csetjmp>
#include <csignal>
#include <cstddef>

namespace kelvo {
namespace {

constexpr std::array fatal_signals = {SIGSEGV, SIGBUS, SIGFPE, SIGABRT};

struct JumpPoint {
  sigjmp_buf way_back;
  JumpPoint* outer;
};

// What the handler looks at. There is one engine in a process, and it runs on one thread.
JumpPoint* innermost = nullptr;
pthread_t guarded_thread;
std::array<struct sigaction, fatal_signals.size()> actions_before;

// Where the handler runs: the ordinary stack may be what came to its end.
alignas(std::max_align_t) std::array<std::byte, std::size_t{64} * 1024> handler_stack;

bool sent_by_another_process(const siginfo_t& info) {
  return (info.si_code == SI_USER || info.si_code == SI_TKILL || info.si_code == SI_QUEUE) &&
         info.si_pid != ::getpid();
}

// The signal comes again when the handler returns, and finds the action that it had before.
void pass_on(int signal) {
  for (std::size_t i = 0; i < fatal_signals.size(); ++i) {
    if (fatal_signals[i] == signal) sigaction(signal, &actions_before[i], nullptr);
  }
  raise(signal);
}

void leave(int signal, siginfo_t* info, void* /*context*/) {
  const bool ours = innermost != nullptr && pthread_equal(pthread_self(), guarded_thread) != 0;
  if (!ours || sent_by_another_process(*info)) return pass_on(signal);
  siglongjmp(innermost->way_back, 1);
}

// Installs the handlers and their stack, and puts back what the program had whatever happens.
class Handlers {
 public:
  Handlers() {
    guarded_thread = pthread_self();
    stack_t stack{};
    stack.ss_sp = handler_stack.data();
    stack.ss_size = handler_stack.size();
    sigaltstack(&stack, &stack_before_);
    struct sigaction ours {};
    ours.sa_sigaction = leave;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (std::size_t i = 0; i < fatal_signals.size(); ++i)
      sigaction(fatal_signals[i], &ours, &actions_before[i]);
  }
  Handlers(const Handlers&) = delete;
  Handlers& operator=(const Handlers&) = delete;
  ~Handlers() {
    for (std::size_t i = 0; i < fatal_signals.size(); ++i)
      sigaction(fatal_signals[i], &actions_before[i], nullptr);
    sigaltstack(&stack_before_, nullptr);
  }

 private:
  stack_t stack_before_{};
};

// A jump point as long as its call runs.
class Entry {
 public:
  Entry() : point{{}, innermost} { innermost = &point; }
  Entry(const Entry&) = delete;
  Entry& operator=(const Entry&) = delete;
  ~Entry() { innermost = point.outer; }

  JumpPoint point;
};

bool call_from(Entry& entry, void (*call)(void* arguments), void* arguments) {
  // With the signal mask: a signal is blocked while its handler runs, and the handler is left here.
  if (sigsetjmp(entry.point.way_back, 1) != 0) return false;
  call(arguments);
  return true;
}

}  // namespace

bool call_guarded(void (*call)(void* arguments), void* arguments) {
  if (innermost != nullptr) {
    Entry entry;
    return call_from(entry, call, arguments);
  }
  const Handlers handlers;
  Entry entry;
  return call_from(entry, call, arguments);
}

void skip_work_at_exit() { H5dont_atexit(); }

}  // namespace kelvo
