// The banner and the version.
#include "cli/banner.h"

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/scripted_engine.h"

TEST(Banner, ShowsVersionCompilerAndArchitectureAndTheNotice) {
  scripted::engine().reset();
  scripted::engine().compiler("Some CC 12.2");
  scripted::engine().architecture("x86-64 %s");
  EXPECT_EQ(
      "KelvoCLI (Command-Line Interface) version 2.3.0 (using Some CC 12.2 x86-64 %s library)\n"
      "KelvoCLI comes with no warranty of any kind.\n\n",
      capture_stdout(show_header));
}

TEST(Banner, AsksForTheArchitectureFirst) {
  scripted::engine().reset();
  capture_stdout(show_header);
  EXPECT_EQ((scripted::Calls{"_kelvo_get_architecture()", "_kelvo_get_compiler()"}),
            scripted::engine().calls());
}

TEST(Version, IsTheReleased) { EXPECT_STREQ("2.3.0", program_version); }
