// The road of a text: which lines run, what is reported, counted and saved, who has SIGINT
// meanwhile, and what is put back on every way out.
#include "executor/execute.h"

#include <gtest/gtest.h>
#include <sys/timeb.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdio>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "executor/interrupt.h"
#include "executor/timer.h"
#include "support/capture.h"
#include "support/scripted_engine.h"

namespace {

/// What libc's clock answers, call by call, as milliseconds since the epoch; the last answer stays.
std::deque<long long> clock_readings;
int clock_calls;

}  // namespace

// Takes the place of libc's clock in this program.
extern "C" int ftime(struct timeb* now) {
  const long long reading = clock_readings.front();
  if (clock_readings.size() > 1) {
    clock_readings.pop_front();
  }
  ++clock_calls;
  *now = {};
  now->time = static_cast<time_t>(reading / 1000);
  now->millitm = static_cast<unsigned short>(reading % 1000);
  return 0;
}

namespace {

using scripted::Calls;
using scripted::engine;

const std::string no_elements = "\x1b[1m(0 elements returned in 0.0 seconds)\x1b[0m\n";
const std::string one_element = "\x1b[1m(1 element returned in 0.0 seconds)\x1b[0m\n";
const std::string bold_interrupted = "\x1b[1m(Interrupted by the user)\x1b[0m\n";
const std::string unexpected_type =
    "Error when showing result of the operation as the data type is unexpected.\n";

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

class ExecuteTest : public testing::Test {
 protected:
  ExecuteTest() : save_file_(std::tmpfile()) {
    engine().reset();
    clock_readings = {1000};
    clock_calls = 0;
    interrupt_status = 0;
  }
  ~ExecuteTest() override { interrupt_status = 0; }

  /// Runs a text with status shown and a save file.
  int run(const std::string& text) { return run(text, 0, "saved.txt", save_file_.get()); }

  int run_without_status(const std::string& text) {
    return run(text, 1, "saved.txt", save_file_.get());
  }

  int run_without_save_file(const std::string& text) { return run(text, 0, "", nullptr); }

  int run(const std::string& text, int no_status, const char* path, std::FILE* save_file) {
    std::vector<char> buffer(text.c_str(), text.c_str() + text.size() + 1);
    int status = 0;
    output_ = capture_stdout([&] { status = execute(buffer.data(), no_status, path, save_file); });
    return status;
  }

  /// What the last run wrote.
  const std::string& output() const { return output_; }

  /// What has reached the save file, its stream's buffer aside.
  std::string saved() const {
    char content[4096];
    const ssize_t size = pread(fileno(save_file_.get()), content, sizeof content, 0);
    return std::string(content, static_cast<std::size_t>(size));
  }

 private:
  File save_file_;
  std::string output_;
};

// --- Lines and statements ---

TEST_F(ExecuteTest, EmptyTextRunsNothing) {
  EXPECT_EQ(0, run(""));
  EXPECT_EQ("", output());
  EXPECT_EQ("", saved());
  EXPECT_EQ(Calls{"kelvo_cursor_clear(null)"}, engine().calls());
}

TEST_F(ExecuteTest, TextOfBlankAndCommentLinesRunsNothing) {
  EXPECT_EQ(0, run("\n  \t \n# comment\r\n \t# comment\n\r\n#"));
  EXPECT_EQ("", output());
  EXPECT_EQ("", saved());
  EXPECT_EQ(Calls{"kelvo_cursor_clear(null)"}, engine().calls());
}

TEST_F(ExecuteTest, TwoLinesAreTwoStatementsWithTwoCountLines) {
  EXPECT_EQ(0, run("show group\nshow dataset"));
  EXPECT_EQ((Calls{"show group", "show dataset"}), engine().executed());
  EXPECT_EQ(no_elements + no_elements, output());
  EXPECT_EQ("show group\nshow dataset\n", saved());
}

TEST_F(ExecuteTest, CallsOfATextComeInOrderAndTheCursorIsClearedOnce) {
  engine().answers("a").row(KELVO_INT, {1}).count(1);
  EXPECT_EQ(0, run("a\nb\n"));
  EXPECT_EQ((Calls{"kelvo_execute(a)", "kelvo_cursor_next(null)",
                   "kelvo_cursor_get_data_type(null)", "kelvo_cursor_get_int(null)",
                   "kelvo_cursor_next(null)", "_kelvo_get_last_data_count()",  //
                   "kelvo_execute(b)", "kelvo_cursor_next(null)", "_kelvo_get_last_data_count()",
                   "kelvo_cursor_clear(null)"}),
            engine().calls());
}

TEST_F(ExecuteTest, WhatTheEnginePrintsItselfComesInOrder) {
  const auto print = [] { std::fputs("debug\n", stdout); };
  engine().answers("a").row(KELVO_INT, {1});
  engine().answers("b").row(KELVO_INT, {2}).on("kelvo_execute", 1, print);
  run("a\nb");
  EXPECT_EQ("1\n" + no_elements + "debug\n2\n" + no_elements, output());
}

TEST_F(ExecuteTest, StatementIsPassedAndSavedAsTyped) {
  EXPECT_EQ(0, run("  Show\tGroup 'a  b' ;  \n"));
  EXPECT_EQ(Calls{"  Show\tGroup 'a  b' ;  "}, engine().executed());
  EXPECT_EQ("  Show\tGroup 'a  b' ;  \n", saved());
}

TEST_F(ExecuteTest, CommentAfterAStatementIsPartOfIt) {
  EXPECT_EQ(0, run("show group # all of them"));
  EXPECT_EQ(Calls{"show group # all of them"}, engine().executed());
  EXPECT_EQ("show group # all of them\n", saved());
}

TEST_F(ExecuteTest, BlanksBeforeANumberSignMakeAComment) {
  EXPECT_EQ(0, run("  \t# show group\n"));
  EXPECT_EQ(Calls{}, engine().executed());
}

TEST_F(ExecuteTest, CarriageReturnAndLineFeedEndALine) {
  EXPECT_EQ(0, run("a\r\nb\r\n"));
  EXPECT_EQ((Calls{"a", "b"}), engine().executed());
  EXPECT_EQ("a\nb\n", saved());
}

TEST_F(ExecuteTest, LoneCarriageReturnIsContent) {
  EXPECT_EQ(0, run("a\rb\n \r \n"));
  EXPECT_EQ((Calls{"a\rb", " \r "}), engine().executed());
}

TEST_F(ExecuteTest, CarriageReturnAtTheEndStaysInTheStatement) {
  EXPECT_EQ(0, run("a\r"));
  EXPECT_EQ(Calls{"a\r"}, engine().executed());
  EXPECT_EQ("a\r\n", saved());
}

TEST_F(ExecuteTest, OnlyTheLastOfSeveralCarriageReturnsBelongsToTheLineEnd) {
  EXPECT_EQ(0, run("a\r\r\n"));
  EXPECT_EQ(Calls{"a\r"}, engine().executed());
}

TEST_F(ExecuteTest, VerticalTabAndFormFeedAreContent) {
  EXPECT_EQ(0, run("\v\n\f\n"));
  EXPECT_EQ((Calls{"\v", "\f"}), engine().executed());
}

TEST_F(ExecuteTest, QuotesDoNotHoldALineTogether) {
  EXPECT_EQ(0, run("a 'b\nc'"));
  EXPECT_EQ((Calls{"a 'b", "c'"}), engine().executed());
}

TEST_F(ExecuteTest, LaterLinesAreNotTouchedBeforeAnEarlierOneHasRun) {
  char text[] = "a\r\nb\nc";
  std::string rest;
  engine().answers("a").on("kelvo_execute", 1, [&] { rest = text + 3; });
  capture_stdout([&] { execute(text, 0, "", nullptr); });
  EXPECT_EQ("b\nc", rest);
}

TEST_F(ExecuteTest, TextIsSplitInPlace) {
  char text[] = "a\r\nb\n";
  capture_stdout([&] { execute(text, 0, "", nullptr); });
  EXPECT_STREQ("a", text);
  EXPECT_EQ('\0', text[1]);
  EXPECT_STREQ("b", text + 3);
  EXPECT_EQ('\0', text[4]);
}

// --- Failures ---

TEST_F(ExecuteTest, StatusMinusOneShowsLinePositionAndStatus) {
  engine().fails("bad", -1, 12, "Unknown statement");
  EXPECT_EQ(-1, run("bad"));
  EXPECT_EQ("Unknown statement (line 1 at position 12 - status -1).\n", output());
}

TEST_F(ExecuteTest, StatusMinusOneAsksForThePositionOnceAndBeforeTheMessage) {
  engine().fails("bad", -1, 1, "No");
  run("bad");
  EXPECT_EQ((Calls{"kelvo_execute(bad)", "kelvo_error_get_position()", "kelvo_error_get_message()",
                   "kelvo_cursor_clear(null)"}),
            engine().calls());
}

TEST_F(ExecuteTest, PositionIsPrintedAsItComes) {
  for (const int position : {0, -7, INT_MAX, INT_MIN}) {
    engine().reset();
    engine().fails("bad", -1, position, "No");
    run("bad");
    EXPECT_EQ("No (line 1 at position " + std::to_string(position) + " - status -1).\n", output());
  }
}

class OtherStatusTest : public ExecuteTest, public testing::WithParamInterface<int> {};

TEST_P(OtherStatusTest, ShowsMessageAndStatusAndAsksForNoPosition) {
  engine().fails("bad", GetParam(), 5, "File not found");
  EXPECT_EQ(GetParam(), run("bad"));
  EXPECT_EQ("File not found (status " + std::to_string(GetParam()) + ").\n", output());
  EXPECT_EQ((Calls{"kelvo_execute(bad)", "kelvo_error_get_message()", "kelvo_cursor_clear(null)"}),
            engine().calls());
}

INSTANTIATE_TEST_SUITE_P(Values, OtherStatusTest,
                         testing::Values(1, 2, 28, -2, 255, 256, INT_MAX, INT_MIN));

TEST_F(ExecuteTest, ErrorMessageIsNeitherFormatNorMarkUp) {
  engine().fails("bad", 3, 0, "<b>%s%n</b>");
  run("bad");
  EXPECT_EQ("<b>%s%n</b> (status 3).\n", output());
}

TEST_F(ExecuteTest, ErrorMessageMayBeEmpty) {
  engine().fails("bad", -1, 0, "");
  run("bad");
  EXPECT_EQ(" (line 1 at position 0 - status -1).\n", output());
}

TEST_F(ExecuteTest, FailureInTheThirdLineStopsTheTextAndKeepsWhatRan) {
  engine().fails("three", -1, 4, "No");
  EXPECT_EQ(-1, run("one\ntwo\nthree\nfour\n"));
  EXPECT_EQ((Calls{"one", "two", "three"}), engine().executed());
  EXPECT_EQ(no_elements + no_elements + "No (line 3 at position 4 - status -1).\n", output());
  EXPECT_EQ("one\ntwo\n", saved());
}

TEST_F(ExecuteTest, BlankAndCommentLinesCountInTheLineNumber) {
  engine().fails("bad", -1, 1, "No");
  EXPECT_EQ(-1, run("# comment\n\nbad\n"));
  EXPECT_EQ("No (line 3 at position 1 - status -1).\n", output());
}

TEST_F(ExecuteTest, EveryKindOfLineEndCountsOnceInTheLineNumber) {
  engine().fails("bad", -1, 1, "No");
  EXPECT_EQ(-1, run("ok\r\n\r\n#\r\n\r \nbad"));
  EXPECT_EQ(no_elements + no_elements + "No (line 5 at position 1 - status -1).\n", output());
}

TEST_F(ExecuteTest, FailedStatementIsNotDisplayed) {
  engine().fails("bad", 1, 0, "No").row(KELVO_INT, {1}).count(1);
  run("bad");
  EXPECT_EQ("No (status 1).\n", output());
}

TEST_F(ExecuteTest, FailedStatementIsNotSaved) {
  engine().fails("bad", 1, 0, "No");
  run("bad");
  EXPECT_EQ("", saved());
}

// --- Displays cut short ---

TEST_F(ExecuteTest, UnexpectedTypeStopsTheTextWithoutCountLineAndWithoutSaving) {
  engine().answers("odd").row(KELVO_INT, {1}).row(KELVO_COMPOUND, {});
  EXPECT_EQ(0, run("odd\nnext"));
  EXPECT_EQ("1\n" + unexpected_type, output());
  EXPECT_EQ(Calls{"odd"}, engine().executed());
  EXPECT_EQ("", saved());
  EXPECT_EQ("kelvo_cursor_clear(null)", engine().calls().back());
}

TEST_F(ExecuteTest, InterruptedDisplayStopsTheTextWithoutCountLineAndWithoutSaving) {
  engine()
      .answers("long")
      .row(KELVO_VARINT, {1, 2, 3, 4})
      .interrupted_in("kelvo_subcursor_get_int", 2);
  EXPECT_EQ(0, run("first\nlong\nnext"));
  EXPECT_EQ(no_elements + "1 2 \n" + bold_interrupted, output());
  EXPECT_EQ((Calls{"first", "long"}), engine().executed());
  EXPECT_EQ("first\n", saved());
}

TEST_F(ExecuteTest, InterruptWhileTheEngineWorksIsHonouredAtTheFirstValue) {
  engine().answers("a").row(KELVO_INT, {1}).row(KELVO_INT, {2}).interrupted_in("kelvo_execute");
  EXPECT_EQ(0, run("a\nb"));
  EXPECT_EQ("1\n" + bold_interrupted, output());
  EXPECT_EQ(Calls{"a"}, engine().executed());
}

TEST_F(ExecuteTest, InterruptOfAStatementWithoutValuesStopsTheNextOneThatShowsAValue) {
  engine().answers("quiet").interrupted_in("kelvo_execute");
  engine().answers("list").row(KELVO_VARINT, {1, 2}).count(2);
  EXPECT_EQ(0, run("quiet\nquieter\nlist\nlast"));
  EXPECT_EQ(no_elements + no_elements + "1 \n" + bold_interrupted, output());
  EXPECT_EQ((Calls{"quiet", "quieter", "list"}), engine().executed());
  EXPECT_EQ("quiet\nquieter\n", saved());
}

TEST_F(ExecuteTest, FlagUpOnEntryIsNotClearedThere) {
  interrupt_status = 1;
  engine().answers("a").row(KELVO_INT, {1});
  EXPECT_EQ(0, run("a"));
  EXPECT_EQ("1\n" + bold_interrupted, output());
}

TEST_F(ExecuteTest, InterruptDuringAnErrorReportIsForgotten) {
  engine().fails("bad", 1, 0, "No").interrupted_in("kelvo_error_get_message");
  engine().answers("list").row(KELVO_VARINT, {1, 2}).count(2);
  run("bad");
  run("list");
  EXPECT_EQ("1 2\n\x1b[1m(2 elements returned in 0.0 seconds)\x1b[0m\n", output());
}

TEST_F(ExecuteTest, InterruptAfterTheLastDisplayIsForgotten) {
  engine().answers("a").interrupted_in("_kelvo_get_last_data_count");
  engine().answers("list").row(KELVO_VARINT, {1, 2}).count(2);
  run("a");
  EXPECT_EQ(no_elements, output());
  EXPECT_EQ("a\n", saved());
  run("list");
  EXPECT_EQ("1 2\n\x1b[1m(2 elements returned in 0.0 seconds)\x1b[0m\n", output());
}

// --- SIGINT and what is put back ---

void some_handler(int /*signal*/) {}

TEST_F(ExecuteTest, SigintHasTheHandlerWithEmptyMaskAndNoFlags) {
  struct sigaction during = {};
  engine().answers("a").on("kelvo_execute", 1, [&] { sigaction(SIGINT, nullptr, &during); });
  run("a");
  EXPECT_EQ(&interrupt_handler, during.sa_handler);
  constexpr int flags = static_cast<int>(SA_RESTART | SA_NODEFER | SA_RESETHAND | SA_SIGINFO |
                                         SA_ONSTACK | SA_NOCLDSTOP | SA_NOCLDWAIT);
  EXPECT_EQ(0, during.sa_flags & flags);
  for (int signal = 1; signal <= 64; ++signal) {
    EXPECT_NE(1, sigismember(&during.sa_mask, signal)) << signal;
  }
}

TEST_F(ExecuteTest, HandlerOnlyRaisesTheFlag) {
  const std::string output = capture_stdout([] { interrupt_handler(SIGINT); });
  EXPECT_EQ("", output);
  EXPECT_EQ(1, interrupt_status);
  EXPECT_EQ(Calls{}, engine().calls());
}

TEST_F(ExecuteTest, SigintAndTheFlagArePutBackBeforeTheCursorIsCleared) {
  struct sigaction in_clear = {};
  int flag_in_clear = -1;
  engine().answers("a").interrupted_in("kelvo_execute").on("kelvo_cursor_clear", 1, [&] {
    sigaction(SIGINT, nullptr, &in_clear);
    flag_in_clear = interrupt_status;
  });
  run("a");
  EXPECT_NE(&interrupt_handler, in_clear.sa_handler);
  EXPECT_EQ(0, flag_in_clear);
}

struct WayOut {
  const char* name;
  const char* text;
};

class WayOutTest : public ExecuteTest, public testing::WithParamInterface<WayOut> {
 protected:
  WayOutTest() {
    engine().answers("value").row(KELVO_INT, {1});
    engine().fails("bad", 9, 0, "No");
    engine().fails("worse", -1, 0, "No");
    engine().answers("long").row(KELVO_INT, {1}).interrupted_in("kelvo_execute");
    engine().answers("odd").row(KELVO_ENUMERATION, {});
    struct sigaction own = {};
    own.sa_handler = some_handler;
    own.sa_flags = SA_RESTART;
    sigaddset(&own.sa_mask, SIGUSR1);
    sigaction(SIGINT, &own, &before_);
  }
  ~WayOutTest() override { sigaction(SIGINT, &before_, nullptr); }

 private:
  struct sigaction before_ = {};
};

TEST_P(WayOutTest, PutsSigintBack) {
  run(GetParam().text);
  struct sigaction after = {};
  sigaction(SIGINT, nullptr, &after);
  EXPECT_EQ(&some_handler, after.sa_handler);
  EXPECT_NE(0, after.sa_flags & SA_RESTART);
  EXPECT_EQ(1, sigismember(&after.sa_mask, SIGUSR1));
}

TEST_P(WayOutTest, ClearsTheFlag) {
  interrupt_status = 1;
  run(GetParam().text);
  EXPECT_EQ(0, interrupt_status);
}

TEST_P(WayOutTest, ClearsTheCursorOnceAndLast) {
  run(GetParam().text);
  const Calls& calls = engine().calls();
  EXPECT_EQ("kelvo_cursor_clear(null)", calls.back());
  EXPECT_EQ(1, std::count(calls.begin(), calls.end(), "kelvo_cursor_clear(null)"));
}

INSTANTIATE_TEST_SUITE_P(All, WayOutTest,
                         testing::Values(WayOut{"EmptyText", ""}, WayOut{"NothingToRun", "#\n \n"},
                                         WayOut{"NormalEnd", "value"},
                                         WayOut{"ErrorWithPosition", "worse"},
                                         WayOut{"OtherError", "bad"},
                                         WayOut{"Interruption", "long"},
                                         WayOut{"UnexpectedType", "odd"}),
                         [](const auto& way) { return std::string(way.param.name); });

// --- Count line and time ---

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

// --- Save file ---

TEST_F(ExecuteTest, WithoutSaveFileNothingIsWritten) {
  EXPECT_EQ(0, run_without_save_file("a"));
  EXPECT_EQ(no_elements, output());
}

TEST_F(ExecuteTest, StatementIsInTheFileBeforeTheNextOneRuns) {
  std::string seen;
  engine().answers("b").on("kelvo_execute", 1, [&] { seen = saved(); });
  run("a\nb");
  EXPECT_EQ("a\n", seen);
}

TEST_F(ExecuteTest, StatementIsSavedAfterItsCountLine) {
  std::string seen = "not asked";
  engine().answers("a").on("_kelvo_get_last_data_count", 1, [&] { seen = saved(); });
  run("a");
  EXPECT_EQ("", seen);
  EXPECT_EQ("a\n", saved());
}

TEST_F(ExecuteTest, SavedStatementIsNoFormat) {
  run("insert %s%d%n");
  EXPECT_EQ("insert %s%d%n\n", saved());
}

class FullDeviceTest : public ExecuteTest {
 protected:
  /// Longer than any stream's buffer, so that the write itself fails and not only the flush.
  const std::string long_statement = std::string(300000, 'x');
  File full{std::fopen("/dev/full", "a")};
};

TEST_F(FullDeviceTest, WriteErrorForLackOfSpaceIsReportedAsSuch) {
  EXPECT_EQ(0, run(long_statement, 0, "full.txt", full.get()));
  EXPECT_EQ(no_elements + "Error when writing operation \"" + long_statement +
                "\" into file \"full.txt\" as there is not enough space available.\n",
            output());
}

TEST_F(FullDeviceTest, WriteErrorDoesNotStopTheText) {
  const std::string message = "Error when writing operation \"" + long_statement +
                              "\" into file \"full.txt\" as there is not enough space available.\n";
  EXPECT_EQ(0, run(long_statement + "\n" + long_statement + "\n", 1, "full.txt", full.get()));
  EXPECT_EQ(message + message, output());
}

TEST_F(FullDeviceTest, ErrorThatShowsOnlyAtTheFlushGoesUnreported) {
  EXPECT_EQ(0, run("a\nb", 0, "full.txt", full.get()));
  EXPECT_EQ(no_elements + no_elements, output());
}

TEST_F(ExecuteTest, OtherWriteErrorIsReportedPlainly) {
  const File unwritable(std::fopen("/dev/null", "r"));
  EXPECT_EQ(0, run("a %s <b>", 0, "saved %d.txt", unwritable.get()));
  EXPECT_EQ(no_elements + "Error when writing operation \"a %s <b>\" into file \"saved %d.txt\".\n",
            output());
}

TEST_F(ExecuteTest, StatementAfterAWriteErrorIsStillSaved) {
  const File file(std::tmpfile());
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  // For the first statement alone the file's descriptor is one that cannot be written to.
  const File writable(fdopen(dup(fileno(file.get())), "r"));
  const File unwritable(std::fopen("/dev/null", "r"));
  engine().answers("a").on("kelvo_execute", 1,
                           [&] { dup2(fileno(unwritable.get()), fileno(file.get())); });
  engine().answers("b").on("kelvo_execute", 1,
                           [&] { dup2(fileno(writable.get()), fileno(file.get())); });
  EXPECT_EQ(0, run("a\nb", 1, "saved.txt", file.get()));
  EXPECT_EQ("Error when writing operation \"a\" into file \"saved.txt\".\n", output());
  char content[16] = "";
  EXPECT_EQ(2, pread(fileno(writable.get()), content, sizeof content, 0));
  EXPECT_STREQ("b\n", content);
}

}  // namespace
