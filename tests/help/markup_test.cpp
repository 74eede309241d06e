// The mark-up printer: tags, what only looks like one, and its place among other output.
#include "help/markup.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/capture.h"

namespace {

std::string printed(const std::string& text) {
  return capture_stdout([&] { print_text(text.c_str()); });
}

}  // namespace

TEST(Markup, BoldHeading) { EXPECT_EQ("\x1b[1mSyntax:\x1b[0m\n", printed("<b>Syntax:</b>\n")); }

TEST(Markup, Cyan) { EXPECT_EQ("\x1b[36mx\x1b[0m", printed("<c>x</c>")); }

TEST(Markup, OpeningTagAloneIsNotClosed) {
  EXPECT_EQ("\x1b[1m", printed("<b>"));
  EXPECT_EQ("\x1b[36m", printed("<c>"));
  EXPECT_EQ("\x1b[1mx", printed("<b>x"));
}

TEST(Markup, ClosingTagWithoutAnOpeningOneResets) {
  EXPECT_EQ("\x1b[0m", printed("</b>"));
  EXPECT_EQ("\x1b[0m", printed("</c>"));
}

TEST(Markup, FirstClosingTagEndsAllAttributes) {
  EXPECT_EQ("\x1b[1m\x1b[36mx\x1b[0my\x1b[0m", printed("<b><c>x</c>y</b>"));
}

TEST(Markup, TagCutOffByTheEndIsText) {
  for (const char* text : {"<", "<b", "<c", "</", "</b", "</c", "x</b", "a<b"}) {
    EXPECT_EQ(text, printed(text));
  }
}

TEST(Markup, WhatOnlyLooksLikeATagIsText) {
  for (const char* text : {"<B>x</B>", "</x>", "< b>", "<b >", "</ b>", "<bb>", "<>", "b>", "/b>",
                           "<d>", "<\\b>", "a > b", "%s%n"}) {
    EXPECT_EQ(text, printed(text));
  }
}

TEST(Markup, BytesAfterALoneSignAreLookedAtAfresh) {
  EXPECT_EQ("<\x1b[1m", printed("<<b>"));
  EXPECT_EQ("</\x1b[0m", printed("</</b>"));
  EXPECT_EQ("<b\x1b[36m>", printed("<b<c>>"));
}

TEST(Markup, TagsInTheMiddleOfWords) { EXPECT_EQ("a\x1b[1mb\x1b[0mc", printed("a<b>b</b>c")); }

TEST(Markup, EmptyTextWritesNothing) { EXPECT_EQ("", printed("")); }

TEST(Markup, AllOtherBytesAreWrittenAsTheyAre) {
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(bytes, printed(bytes));
}

TEST(Markup, KeepsItsPlaceAmongPlainOutput) {
  EXPECT_EQ("1\x1b[1m2\x1b[0m3\n4", capture_stdout([] {
              std::putchar('1');
              print_text("<b>2</b>");
              std::puts("3");
              print_text("4");
            }));
}
