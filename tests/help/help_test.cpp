// The entries of the topics without subtopics, and the requests for topics that do not exist. The
// other answers to HELP are in menus_test, tree_test and data_types_test.
#include "help/help.h"

#include <gtest/gtest.h>

#include <iterator>

#include "tests/help/help_request.h"

namespace {

constexpr char undefined_entry[] = R"(<b>Syntax:</b>
To be defined

<b>Description:</b>
To be defined
)";

constexpr char close_all_file_entry[] = R"(<b>Syntax:</b>
CLOSE ALL FILE

<b>Description:</b>
To be defined
)";

constexpr char main_menu_heading[] =
    "Select one of the following topics (example: \"help create\"):\n\n";

constexpr const char* undefined_topics[] = {
    "HELP CREATE DIRECTORY",
    "HELP CREATE FILE",
    "HELP CREATE GROUP",
    "HELP CREATE DATASET",
    "HELP CREATE ATTRIBUTE",
    "HELP CREATE LINK",
    "HELP CREATE EXTERNAL LINK",
    "HELP ALTER",
    "HELP RENAME DIRECTORY",
    "HELP RENAME FILE",
    "HELP RENAME GROUP",
    "HELP RENAME DATASET",
    "HELP RENAME ATTRIBUTE",
    "HELP RENAME LINK",
    "HELP RENAME EXTERNAL LINK",
    "HELP COPY FILE",
    "HELP COPY GROUP",
    "HELP COPY DATASET",
    "HELP COPY ATTRIBUTE",
    "HELP COPY LINK",
    "HELP COPY EXTERNAL LINK",
    "HELP DROP DIRECTORY",
    "HELP DROP FILE",
    "HELP DROP GROUP",
    "HELP DROP DATASET",
    "HELP DROP ATTRIBUTE",
    "HELP DROP LINK",
    "HELP DROP EXTERNAL LINK",
    "HELP INSERT",
    "HELP SELECT",
    "HELP SHOW FILE VALIDITY",
    "HELP SHOW USE DIRECTORY",
    "HELP SHOW USE FILE",
    "HELP SHOW ALL USE FILE",
    "HELP SHOW USE GROUP",
    "HELP SHOW GROUP",
    "HELP SHOW DATASET",
    "HELP SHOW ATTRIBUTE",
    "HELP SHOW LINK",
    "HELP SHOW EXTERNAL LINK",
    "HELP SHOW TYPE",
    "HELP SHOW DATA TYPE",
    "HELP SHOW MEMBER",
    "HELP SHOW MASK",
    "HELP SHOW ENDIANNESS",
    "HELP SHOW CHARSET",
    "HELP SHOW STORAGE TYPE",
    "HELP SHOW STORAGE ALLOCATION",
    "HELP SHOW STORAGE DIMENSION",
    "HELP SHOW DIMENSION",
    "HELP SHOW ORDER",
    "HELP SHOW TAG",
    "HELP SHOW OFFSET",
    "HELP SHOW FILL TYPE",
    "HELP SHOW FILL VALUE",
    "HELP SHOW FILE SIZE",
    "HELP SHOW SIZE",
    "HELP SHOW KELVO VERSION",
    "HELP SHOW HDF5 VERSION",
    "HELP SHOW MPI VERSION",
    "HELP SHOW DIRECTORY",
    "HELP SHOW FILE",
    "HELP SHOW EXECUTE STATUS",
    "HELP SHOW LIBRARY BOUNDS",
    "HELP SHOW CACHE",
    "HELP SHOW ATOMIC",
    "HELP SHOW EXTERNAL LINK PREFIX",
    "HELP SHOW FLUSH",
    "HELP SHOW THREAD",
    "HELP SHOW PLUGIN PATH",
    "HELP SHOW DEBUG",
    "HELP USE DIRECTORY",
    "HELP USE FILE",
    "HELP USE GROUP",
    "HELP FLUSH GLOBAL",
    "HELP FLUSH LOCAL",
    "HELP CLOSE FILE",
    "HELP CLOSE GROUP",
    "HELP SET LIBRARY BOUNDS",
    "HELP SET CACHE",
    "HELP SET ATOMIC",
    "HELP SET EXTERNAL LINK PREFIX",
    "HELP SET FLUSH",
    "HELP SET THREAD",
    "HELP SET PLUGIN PATH",
    "HELP SET DEBUG",
};
static_assert(std::size(undefined_topics) == 86);

std::string not_found(const std::string& topic) {
  return "Help topic/subtopic \"" + topic + "\" not found.\n";
}

}  // namespace

TEST(Help, EveryTopicWithoutSubtopicsHasAnEntry) {
  for (const char* request : undefined_topics) {
    EXPECT_EQ(shown(undefined_entry), help(request)) << request;
  }
}

TEST(Help, CloseAllFileHasASyntaxLine) {
  EXPECT_EQ(shown(close_all_file_entry), help("help close all file"));
}

TEST(Help, MainMenuWhateverTheLetterCaseAndTheBlanksAround) {
  for (const char* request : {"help", "HELP", "  Help  ", "help\t"}) {
    EXPECT_EQ(main_menu_heading, help(request).substr(0, std::size(main_menu_heading) - 1))
        << request;
  }
}

TEST(Help, BlanksBetweenTheWordsOfATopicDoNotMatter) {
  EXPECT_EQ(shown(undefined_entry), help("help   create    directory"));
  EXPECT_EQ(shown(undefined_entry), help("help\tcreate \t directory"));
}

TEST(Help, ShowKelvoVersionHasAnEntry) {
  EXPECT_EQ(shown(undefined_entry), help("help show kelvo version"));
}

TEST(Help, AllIsTheTreeWhateverTheBlanks) {
  EXPECT_EQ(help("help all"), help("HELP  ALL"));
  EXPECT_NE(not_found("all"), help("help all"));
}

TEST(HelpNotFound, PunctuationBelongsToTheTopic) {
  EXPECT_EQ(not_found("create directory;"), help("help create directory;"));
}

TEST(HelpNotFound, TopicIsQuotedAsTypedWithoutTheBlanksAround) {
  EXPECT_EQ(not_found("Show   Files"), help("help   Show   Files  "));
  EXPECT_EQ(not_found("a\t b"), help(" \tHeLP\t a\t b \t"));
}

TEST(HelpNotFound, CopyHasNoDirectoryTopic) {
  EXPECT_EQ(not_found("copy directory"), help("help copy directory"));
}

TEST(HelpNotFound, HelpIsNoTopic) { EXPECT_EQ(not_found("help"), help("help help")); }

TEST(HelpNotFound, DataTypesIsNoTopic) {
  EXPECT_EQ(not_found("data types"), help("help data types"));
}

TEST(HelpNotFound, SubtopicNeedsItsTopicWord) {
  EXPECT_EQ(not_found("directory"), help("help directory"));
}

TEST(HelpNotFound, BeginningOfATopicIsNoTopic) {
  EXPECT_EQ(not_found("creat"), help("help creat"));
  EXPECT_EQ(not_found("creates"), help("help creates"));
  EXPECT_EQ(not_found("create file validity"), help("help create file validity"));
}

TEST(HelpNotFound, TagsAndPercentSignsAreEchoed) {
  EXPECT_EQ(not_found("<b>x</b>"), help("help <b>x</b>"));
  EXPECT_EQ(not_found("%s %d%%"), help("help %s %d%%"));
}

TEST(HelpNotFound, OtherBytesThanBlanksAreKept) {
  EXPECT_EQ(not_found("\r\v"), help("help \r\v "));
}

TEST(HelpNotFound, TrailingBlanksAreCutFromTheStatementItself) {
  char statement[] = "help nothing \t";
  capture_stdout([&] { show_help(statement, "HELP NOTHING"); });
  EXPECT_STREQ("help nothing", statement);
}
