// When the HDF5 library is started. A test program of its own: others' cases would start it.
#include <gtest/gtest.h>
#include <hdf5.h>

#include "session.h"

namespace kelvo {
namespace {

// Before the engine starts the library it has it leave out its work at the end of the process. That
// can be asked for only once.
bool hdf5_was_started() { return H5dont_atexit() < 0; }

TEST(LibraryStart, StatementsThatTouchNoFileDoNotStartIt) {
  Cursor cursor;
  Session session(cursor);
  for (const char* statement :
       {"SHOW USE FILE", "SHOW ALL USE FILE", "SHOW USE GROUP", "SHOW USE DIRECTORY",
        "SHOW DIRECTORY", "SHOW THREAD", "SHOW CACHE", "SHOW DEBUG", "SHOW FLUSH", "# nothing"}) {
    EXPECT_EQ(Status::done, session.execute(statement)) << statement;
  }
  EXPECT_EQ(Status::not_a_statement, session.execute("SHOW ME"));
  EXPECT_FALSE(hdf5_was_started());
}

}  // namespace
}  // namespace kelvo
