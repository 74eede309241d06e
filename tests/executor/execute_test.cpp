// The display of results: every type's format, element lists, strings and the places where the interrupt flag is looked at.
#include "executor/render.h"

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/scripted_engine.h"

using scripted::engine;

TEST(Execute, EmptyResultPrintsNothingAndFinishes) {
  engine().reset();
  kelvo_execute("show group");
  EXPECT_EQ("", capture_stdout([] { EXPECT_EQ(render_finished, render_result()); }));
}
