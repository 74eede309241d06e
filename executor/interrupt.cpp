// The only place that knows sigaction. Its results are not checked: with a valid signal it cannot
// fail.
#include "executor/interrupt.h"

volatile int interrupt_status = 0;

void interrupt_handler(int /*signal_number*/) { interrupt_status = 1; }

void take_interrupt(struct sigaction* saved) {
  sigaction(SIGINT, nullptr, saved);
  struct sigaction taken = {};
  taken.sa_handler = interrupt_handler;
  sigemptyset(&taken.sa_mask);
  taken.sa_flags = 0;
  sigaction(SIGINT, &taken, nullptr);
}

void return_interrupt(const struct sigaction* saved) {
  sigaction(SIGINT, saved, nullptr);
  interrupt_status = 0;
}
