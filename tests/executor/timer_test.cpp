// The arithmetic of the time that the count line shows.
#include "executor/timer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>

namespace {

std::int32_t elapsed(std::int64_t start, unsigned short start_milliseconds, std::int64_t stop,
                     unsigned short stop_milliseconds) {
  time_start.time = static_cast<std::time_t>(start);
  time_start.millitm = start_milliseconds;
  time_stop.time = static_cast<std::time_t>(stop);
  time_stop.millitm = stop_milliseconds;
  return timer_elapsed();
}

std::int64_t milliseconds(const struct timeb& time) {
  return static_cast<std::int64_t>(time.time) * 1000 + time.millitm;
}

std::int64_t now_in_milliseconds() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

}  // namespace

TEST(Timer, CountsMilliseconds) {
  EXPECT_EQ(0, elapsed(100, 7, 100, 7));
  EXPECT_EQ(40, elapsed(100, 10, 100, 50));
  EXPECT_EQ(2345, elapsed(100, 100, 102, 445));
}

TEST(Timer, BorrowsFromTheSeconds) { EXPECT_EQ(2, elapsed(100, 999, 101, 1)); }

TEST(Timer, ClockSetBackGivesANegativeTime) {
  EXPECT_EQ(-5000, elapsed(105, 0, 100, 0));
  EXPECT_EQ(-1, elapsed(100, 1, 100, 0));
}

TEST(Timer, LargestTimeThatFits) { EXPECT_EQ(2147483647, elapsed(0, 0, 2147483, 647)); }

TEST(Timer, LongerTimesWrapAround) {
  EXPECT_EQ(-2147483647 - 1, elapsed(0, 0, 2147483, 648));
  EXPECT_EQ(-1294967296, elapsed(0, 0, 3000000, 0));  // 3,000,000,000 - 2^32
}

TEST(Timer, SecondsAreTakenAs32Bits) { EXPECT_EQ(1000, elapsed(4294967295, 0, 4294967296, 0)); }

TEST(Timer, StartAndStopReadTheClock) {
  const std::int64_t before = now_in_milliseconds();
  timer_start();
  timer_stop();
  EXPECT_LE(before, milliseconds(time_start));
  EXPECT_LE(milliseconds(time_start), milliseconds(time_stop));
  EXPECT_LE(milliseconds(time_stop), now_in_milliseconds());
}
