// Signals inside and outside of a guarded call.
#include "storage/crash_guard.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace kelvo {
namespace {

constexpr std::size_t page_bytes = 4096;

// Reads where nothing may be read.
int read_forbidden_memory() {
  void* page = mmap(nullptr, page_bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  const int value = *static_cast<volatile int*>(page);
  munmap(page, page_bytes);
  return value;
}

// Never comes to an end before the stack does.
int recurse(volatile int* depth) {
  volatile char frame[page_bytes];
  frame[0] = static_cast<char>(*depth);
  *depth = *depth + 1;
  return *depth == 0 ? 0 : recurse(depth) + frame[0];
}

TEST(CrashGuard, LetsACallComeToItsEnd) {
  bool called = false;
  EXPECT_TRUE(run_guarded([&] { called = true; }));
  EXPECT_TRUE(called);
}

TEST(CrashGuard, LetsExceptionsPass) {
  EXPECT_THROW(run_guarded([] { throw std::runtime_error("passes"); }), std::runtime_error);
  EXPECT_FALSE(run_guarded([] { raise(SIGSEGV); }));
}

TEST(CrashGuard, EndsACallAtEachSignalAgainAndAgain) {
  for (int round = 0; round < 3; ++round) {
    EXPECT_FALSE(run_guarded([] { read_forbidden_memory(); }));
    EXPECT_FALSE(run_guarded([] { raise(SIGBUS); }));
    EXPECT_FALSE(run_guarded([] { raise(SIGFPE); }));
    EXPECT_FALSE(run_guarded([] { std::abort(); }));
  }
}

TEST(CrashGuard, EndsACallThatUsesUpTheStack) {
  volatile int depth = 1;
  EXPECT_FALSE(run_guarded([&] { recurse(&depth); }));
  EXPECT_GT(depth, 100);
}

TEST(CrashGuard, EndsTheInnermostCall) {
  bool went_on = false;
  EXPECT_TRUE(run_guarded([&] {
    EXPECT_FALSE(run_guarded([] { std::abort(); }));
    went_on = true;
  }));
  EXPECT_TRUE(went_on);
  EXPECT_FALSE(run_guarded([] {
    EXPECT_TRUE(run_guarded([] {}));
    std::abort();
  }));
}

TEST(CrashGuardDeathTest, DoesNothingOutside) {
  EXPECT_TRUE(run_guarded([] {}));
  EXPECT_EXIT(std::abort(), testing::KilledBySignal(SIGABRT), "");
}

TEST(CrashGuardDeathTest, LeavesOtherThreadsAlone) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(run_guarded([] { std::thread([] { std::abort(); }).join(); }),
              testing::KilledBySignal(SIGABRT), "");
}

TEST(CrashGuardDeathTest, LeavesSignalsOfOthersAlone) {
  EXPECT_EXIT(run_guarded([] {
                const pid_t here = getpid();
                if (fork() == 0) {
                  kill(here, SIGABRT);
                  _exit(0);
                }
                pause();
              }),
              testing::KilledBySignal(SIGABRT), "");
}

TEST(CrashGuard, PutsBackTheActionsOfTheProgram) {
  struct sigaction before {};
  struct sigaction own {};
  struct sigaction after {};
  own.sa_handler = [](int) { _exit(1); };
  own.sa_flags = SA_RESTART;
  sigaction(SIGSEGV, &own, &before);
  EXPECT_FALSE(run_guarded([] { std::abort(); }));
  sigaction(SIGSEGV, &before, &after);
  EXPECT_EQ(own.sa_handler, after.sa_handler);
  EXPECT_NE(0, after.sa_flags & SA_RESTART);
}

}  // namespace
}  // namespace kelvo
