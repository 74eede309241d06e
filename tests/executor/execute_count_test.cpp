// The line that counts elements and seconds.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "executor/execute_fixture.h"
#include "executor/timer.h"
#include "support/scripted_engine.h"

namespace {

using scripted::Calls;
using scripted::engine;

TEST_F(ExecuteTest, OneElementTakesTheSingular) {
  engine().answers("a").row(KELVO_INT, {5}).count(1);
  run("a");
  EXPECT_EQ("5\n" + one_element, output());
}

TEST_F(ExecuteTest, NoElementTakesThePlural) {
  run("a");
  EXPECT_EQ(no_elements, output());
}

TEST_F(ExecuteTest, EveryOtherCountTakesThePlural) {
  for (const int count : {2, 10, -1, INT_MAX, INT_MIN}) {
    engine().reset();
    engine().answers("a").count(count);
    run("a");
    EXPECT_EQ("\x1b[1m(" + std::to_string(count) + " elements returned in 0.0 seconds)\x1b[0m\n",
              output());
  }
}

TEST_F(ExecuteTest, CountIsTheEnginesNotThatOfTheRows) {
  engine().answers("a").row(KELVO_INT, {5}).row(KELVO_INT, {6}).count(1);
  run("a");
  EXPECT_EQ("5\n6\n" + one_element, output());
}

struct Duration {
  long long milliseconds;
  const char* shown;
};

class SecondsTest : public ExecuteTest, public testing::WithParamInterface<Duration> {};

TEST_P(SecondsTest, AreMillisecondsOverAThousandWithOneDecimal) {
  const long long start = 5'000'000'400;
  clock_readings = {start, start + GetParam().milliseconds};
  engine().answers("a").count(1);
  run("a");
  EXPECT_EQ(std::string("\x1b[1m(1 element returned in ") + GetParam().shown + " seconds)\x1b[0m\n",
            output());
}

INSTANTIATE_TEST_SUITE_P(
    Values, SecondsTest,
    testing::Values(Duration{0, "0.0"}, Duration{40, "0.0"}, Duration{50, "0.1"},
                    Duration{99, "0.1"}, Duration{600, "0.6"}, Duration{949, "0.9"},
                    Duration{1000, "1.0"}, Duration{61234, "61.2"},
                    Duration{-2000, "-2.0"},  // the clock was set back
                    // 2^31 - 1 milliseconds, and one more, which wraps around in 32 bits
                    Duration{2147483647, "2147483.6"}, Duration{2147483648, "-2147483.6"}));

TEST_F(ExecuteTest, OnlyTheEnginesCallIsTimed) {
  clock_readings = {1000, 3000, 9000};
  int calls_in_execute = 0;
  int calls_in_display = 0;
  engine()
      .answers("a")
      .on("kelvo_execute", 1, [&] { calls_in_execute = clock_calls; })
      .on("kelvo_cursor_next", 1, [&] { calls_in_display = clock_calls; });
  run("a");
  EXPECT_EQ(1, calls_in_execute);
  EXPECT_EQ(2, calls_in_display);
  EXPECT_EQ(2, clock_calls);
  EXPECT_EQ("\x1b[1m(0 elements returned in 2.0 seconds)\x1b[0m\n", output());
}

TEST_F(ExecuteTest, EachStatementIsTimedByItself) {
  clock_readings = {1000, 2000, 7000, 7500};
  run("a\nb");
  EXPECT_EQ(
      "\x1b[1m(0 elements returned in 1.0 seconds)\x1b[0m\n"
      "\x1b[1m(0 elements returned in 0.5 seconds)\x1b[0m\n",
      output());
}

TEST_F(ExecuteTest, FailedStatementIsTimedToo) {
  engine().fails("bad", 1, 0, "No");
  run("bad");
  EXPECT_EQ(2, clock_calls);
}

TEST_F(ExecuteTest, WithoutStatusThereIsNoCountLineAndNoTiming) {
  time_start.time = 11;
  time_stop.time = 12;
  engine().answers("a").row(KELVO_INT, {1}).count(1);
  EXPECT_EQ(0, run_without_status("a"));
  EXPECT_EQ("1\n", output());
  EXPECT_EQ(0, clock_calls);
  EXPECT_EQ(11, time_start.time);
  EXPECT_EQ(12, time_stop.time);
  EXPECT_EQ(
      (Calls{"kelvo_execute(a)", "kelvo_cursor_next(null)", "kelvo_cursor_get_data_type(null)",
             "kelvo_cursor_get_int(null)", "kelvo_cursor_next(null)", "kelvo_cursor_clear(null)"}),
      engine().calls());
}

TEST_F(ExecuteTest, WithoutStatusStatementsAreSavedAllTheSame) {
  run_without_status("a\nb");
  EXPECT_EQ("a\nb\n", saved());
}

TEST_F(ExecuteTest, WithoutStatusErrorsAreReportedAllTheSame) {
  engine().fails("bad", -1, 2, "No");
  EXPECT_EQ(-1, run_without_status("bad"));
  EXPECT_EQ("No (line 1 at position 2 - status -1).\n", output());
}

}  // namespace
