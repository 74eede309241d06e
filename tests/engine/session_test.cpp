// What one statement leaves for the next.
#include "session.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

namespace kelvo {
namespace {

std::int32_t only_int(Session* session, const Cursor& cursor) {
  EXPECT_TRUE(session->result().next_row());
  std::int32_t value = 0;
  std::memcpy(&value, cursor.value, sizeof value);
  EXPECT_FALSE(session->result().next_row());
  return value;
}

TEST(Session, ShowsTheStatusOfTheStatementBefore) {
  Cursor cursor;
  Session session(cursor);
  EXPECT_EQ(Status::nothing_in_use, session.execute("SHOW GROUP"));
  EXPECT_EQ(Status::done, session.execute("SHOW EXECUTE STATUS"));
  EXPECT_EQ(-2, only_int(&session, cursor));
  EXPECT_EQ(Status::not_a_statement, session.execute("SHOW"));
  EXPECT_EQ(Status::done, session.execute("SHOW EXECUTE STATUS"));
  EXPECT_EQ(-1, only_int(&session, cursor));
  EXPECT_EQ(Status::done, session.execute("SHOW EXECUTE STATUS"));
  EXPECT_EQ(0, only_int(&session, cursor));
}

TEST(Session, SaysThatTheDirectoryInUseIsGone) {
  const std::filesystem::path before = std::filesystem::current_path();
  const std::filesystem::path gone = std::filesystem::temp_directory_path() / "kelvo-session-test";
  std::filesystem::create_directory(gone);
  std::filesystem::current_path(gone);
  std::filesystem::remove(gone);
  Cursor cursor;
  Session session(cursor);
  EXPECT_EQ(Status::host_refused, session.execute("SHOW USE DIRECTORY"));
  EXPECT_EQ(
      "The directory in use cannot be read: No such file or directory (USE DIRECTORY puts "
      "another one in use)",
      session.message());
  EXPECT_EQ(Status::done, session.execute(("USE DIRECTORY " + before.string()).c_str()));
  EXPECT_EQ(before, std::filesystem::current_path());
}

TEST(Session, FailedSettingChangesNothing) {
  Cursor cursor;
  Session session(cursor);
  const int threads = session.settings().threads;
  EXPECT_EQ(Status::out_of_range, session.execute("SET CACHE SLOTS 7 PREEMPTION 2"));
  EXPECT_EQ(521U, session.settings().chunk_cache.slots);
  EXPECT_EQ(Status::not_a_statement, session.execute("SET THREAD 3 x"));
  EXPECT_EQ(threads, session.settings().threads);
}

}  // namespace
}  // namespace kelvo
