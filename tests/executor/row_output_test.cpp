// Output that others have prepared is left as it is; what the buffer does is seen from outside, in
// program/output_test.py.
#include "executor/row_output.h"

#include <gtest/gtest.h>
#include <stdio_ext.h>

#include <cstdio>
#include <cstdlib>

namespace {

// In a process of its own, for the stream is the test's too.
[[noreturn]] void leave(bool as_expected) { std::_Exit(as_expected ? 0 : 1); }

TEST(RowOutput, UnbufferedStreamStaysSo) {
  EXPECT_EXIT(
      {
        std::setvbuf(stdout, nullptr, _IONBF, 0);
        widen_output();
        leave(__fbufsize(stdout) == 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(RowOutput, StreamOfLinesStaysSo) {
  EXPECT_EXIT(
      {
        std::setvbuf(stdout, nullptr, _IOLBF, 0);
        widen_output();
        leave(__flbf(stdout) != 0);
      },
      testing::ExitedWithCode(0), "");
}

TEST(RowOutput, ChosenBufferStays) {
  EXPECT_EXIT(
      {
        static char chosen[512];
        std::setvbuf(stdout, chosen, _IOFBF, sizeof chosen);
        widen_output();
        leave(__fbufsize(stdout) == sizeof chosen);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
