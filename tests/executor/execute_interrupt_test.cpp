// Displays cut short, who has SIGINT meanwhile, and what is put back on every way out.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>

#include "executor/execute_fixture.h"
#include "executor/interrupt.h"
#include "support/capture.h"
#include "support/scripted_engine.h"

namespace {

using scripted::Calls;
using scripted::engine;

const std::string bold_interrupted = "\x1b[1m(Interrupted by the user)\x1b[0m\n";
const std::string unexpected_type =
    "Error when showing result of the operation as the data type is unexpected.\n";

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

}  // namespace
