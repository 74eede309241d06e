// Taking over SIGINT and giving it back.
#include "executor/interrupt.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

void other_handler(int /*signal_number*/) {}

class Interrupt : public testing::Test {
 protected:
  Interrupt() {
    interrupt_status = 0;
    sigaction(SIGINT, nullptr, &inherited_);
  }
  ~Interrupt() override { sigaction(SIGINT, &inherited_, nullptr); }

  static struct sigaction in_force() {
    struct sigaction action;
    sigaction(SIGINT, nullptr, &action);
    return action;
  }

 private:
  struct sigaction inherited_;
};

}  // namespace

TEST_F(Interrupt, HandlerRaisesTheFlag) {
  interrupt_handler(SIGINT);
  EXPECT_EQ(1, interrupt_status);
}

TEST_F(Interrupt, SignalRaisesTheFlagWhileTaken) {
  struct sigaction saved;
  take_interrupt(&saved);
  raise(SIGINT);
  EXPECT_EQ(1, interrupt_status);
  return_interrupt(&saved);
}

TEST_F(Interrupt, IsTakenWithAnEmptyMaskAndNoFlags) {
  struct sigaction saved;
  take_interrupt(&saved);
  const struct sigaction taken = in_force();
  EXPECT_EQ(&interrupt_handler, taken.sa_handler);
  constexpr int flags = static_cast<int>(SA_RESTART | SA_NODEFER | SA_RESETHAND | SA_SIGINFO);
  EXPECT_EQ(0, taken.sa_flags & flags);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1}) {
    EXPECT_EQ(0, sigismember(&taken.sa_mask, number)) << number;
  }
  return_interrupt(&saved);
}

TEST_F(Interrupt, FlagThatIsUpStaysUpWhenTaken) {
  interrupt_status = 1;
  struct sigaction saved;
  take_interrupt(&saved);
  EXPECT_EQ(1, interrupt_status);
  return_interrupt(&saved);
}

TEST_F(Interrupt, FlagIsClearedWhenReturned) {
  struct sigaction saved;
  take_interrupt(&saved);
  raise(SIGINT);
  return_interrupt(&saved);
  EXPECT_EQ(0, interrupt_status);
}

TEST_F(Interrupt, DispositionFoundIsPutBackWhole) {
  struct sigaction found = {};
  found.sa_handler = other_handler;
  found.sa_flags = SA_RESTART;
  sigaddset(&found.sa_mask, SIGUSR1);
  sigaction(SIGINT, &found, nullptr);

  struct sigaction saved;
  take_interrupt(&saved);
  return_interrupt(&saved);

  const struct sigaction restored = in_force();
  EXPECT_EQ(&other_handler, restored.sa_handler);
  EXPECT_NE(0, restored.sa_flags & SA_RESTART);
  EXPECT_EQ(1, sigismember(&restored.sa_mask, SIGUSR1));
}
