// The checked copies: what just fits, and that one byte more ends the process.
#include "cli/bounded.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

namespace {

constexpr std::size_t longest = 1023;

std::string text(std::size_t length) { return std::string(length, 'x'); }

}  // namespace

TEST(BoundedCopy, ReplacesWhatWasThere) {
  char buffer[text_size] = "something longer";
  bounded_copy(buffer, "short");
  EXPECT_STREQ("short", buffer);
}

TEST(BoundedCopy, LongestTextFits) {
  char buffer[text_size];
  bounded_copy(buffer, text(longest).c_str());
  EXPECT_EQ(text(longest), buffer);
}

TEST(BoundedCopyDeathTest, LongerTextAborts) {
  char buffer[text_size];
  EXPECT_EXIT(bounded_copy(buffer, text(longest + 1).c_str()), testing::KilledBySignal(SIGABRT),
              "");
}

TEST(BoundedAppend, TakesTheBytesAskedFor) {
  char buffer[text_size] = "show";
  bounded_append(buffer, " group\\", 6);
  EXPECT_STREQ("show group", buffer);
}

TEST(BoundedAppend, TakesNothing) {
  char buffer[text_size] = "show";
  bounded_append(buffer, "\\", 0);
  EXPECT_STREQ("show", buffer);
}

TEST(BoundedAppend, LongestTextFits) {
  char buffer[text_size] = "";
  bounded_append(buffer, text(longest - 1).c_str(), longest - 1);
  bounded_append(buffer, "xy", 1);
  EXPECT_EQ(text(longest), buffer);
}

TEST(BoundedAppendDeathTest, LongerTextAborts) {
  char buffer[text_size] = "";
  bounded_append(buffer, text(longest).c_str(), longest);
  EXPECT_EXIT(bounded_append(buffer, "x", 1), testing::KilledBySignal(SIGABRT), "");
}

TEST(BoundedPrompt, PathAndSign) {
  char buffer[text_size];
  bounded_prompt(buffer, "/my group/%s");
  EXPECT_STREQ("/my group/%s>", buffer);
}

TEST(BoundedPrompt, LongestPathFits) {
  char buffer[text_size];
  bounded_prompt(buffer, text(longest - 1).c_str());
  EXPECT_EQ(text(longest - 1) + ">", buffer);
}

TEST(BoundedPromptDeathTest, LongerPathAborts) {
  char buffer[text_size];
  EXPECT_EXIT(bounded_prompt(buffer, text(longest).c_str()), testing::KilledBySignal(SIGABRT), "");
}
