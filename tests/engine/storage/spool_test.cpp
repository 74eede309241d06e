// Bytes put aside, in memory, in the file and across the border between them.
#include "storage/spool.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <numeric>
#include <vector>

#include "error.h"

namespace kelvo {
namespace {

constexpr std::size_t block_bytes = 1000;

std::vector<unsigned char> block(std::size_t number) {
  std::vector<unsigned char> bytes(block_bytes);
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(number));
  return bytes;
}

void fill(Spool* spool, std::size_t blocks) {
  for (std::size_t i = 0; i < blocks; ++i) spool->append(block(i).data(), block_bytes);
}

// Budgets that put all into the file, some of it, and none.
class SpoolTest : public testing::TestWithParam<std::size_t> {};

TEST_P(SpoolTest, ReadsFromAnyPlace) {
  Spool spool(GetParam());
  fill(&spool, 100);
  EXPECT_EQ(100 * block_bytes, spool.size());
  for (const std::size_t number : {99, 0, 49, 50}) {
    std::vector<unsigned char> read(block_bytes);
    spool.read(number * block_bytes, read.data(), block_bytes);
    EXPECT_EQ(block(number), read) << number;
  }
}

TEST_P(SpoolTest, ReadsAcrossBlocks) {
  Spool spool(GetParam());
  fill(&spool, 100);
  std::vector<unsigned char> read(block_bytes * 2);
  spool.read(49 * block_bytes + 500, read.data(), read.size());
  EXPECT_EQ(block(49)[999], read[499]);
  EXPECT_EQ(block(50)[0], read[500]);
  EXPECT_EQ(block(51)[499], read[1999]);
}

TEST_P(SpoolTest, IsReadInOrder) {
  Spool spool(GetParam());
  fill(&spool, 100);
  SpoolReader reader(spool);
  std::vector<std::byte> read(block_bytes);
  for (std::size_t i = 0; i < 100; ++i) {
    reader.read(read.data(), 1);
    reader.read(read.data() + 1, block_bytes - 1);
    EXPECT_EQ(0, std::memcmp(read.data(), block(i).data(), block_bytes)) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Budgets, SpoolTest, testing::Values(0, 50'000, 49'500, 1'000'000));

TEST(Spool, NamesTheDirectoryThatTakesNoFile) {
  ::setenv("TMPDIR", "/nowhere", 1);
  Spool spool(block_bytes);
  fill(&spool, 1);
  try {
    fill(&spool, 1);
    ADD_FAILURE() << "a file was made";
  } catch (const StatementError& error) {
    EXPECT_EQ(Status::host_refused, error.status());
    EXPECT_STREQ("A temporary file in \"/nowhere\" cannot be made: No such file or directory",
                 error.what());
  }
  ::unsetenv("TMPDIR");
}

}  // namespace
}  // namespace kelvo
