// Undoing filters. A whole statement would not show a chunk that is wrongly refused here, as the
// HDF5 library is asked then. The coded bytes are those that the library itself stored.
#include "storage/chunk_decoder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string_view>

namespace kelvo {
namespace {

using namespace std::string_view_literals;
using Numbers = std::array<std::int32_t, 5>;

constexpr Numbers numbers = {1, 258, -3, 70000, 5};
constexpr auto deflate = ChunkFilter::deflate;
constexpr auto lzf = ChunkFilter::lzf;
constexpr auto shuffle = ChunkFilter::shuffle;
constexpr auto fletcher32 = ChunkFilter::fletcher32;

constexpr std::string_view all =
    "\x78\x9c\x63\x64\xfa\x5b\xc0\xca\xc0\xf8\x5f\x90\x81\x81\xe1\x3f\x23\x88\x60\x60\x00\x00\x32"
    "\xa1"
    "\x04\x86\x81\xd5\xc4\x46"sv;
constexpr std::string_view deflated =
    "\x78\x9c\x63\x64\x60\x60\x60\x62\x64\x60\xf8\xfb\xff\xff\xff\x02\x41\x46\x06\x56\x20\x1f\x00"
    "\x2e"
    "\x26\x04\x86"sv;
constexpr std::string_view shuffled =
    "\x01\x02\xfd\x70\x05\x00\x01\xff\x11\x00\x00\x00\xff\x01\x00\x00\x00\xff\x00\x00"sv;
constexpr std::string_view summed =
    "\x01\x00\x00\x00\x02\x01\x00\x00\xfd\xff\xff\xff\x70\x11\x01\x00\x05\x00\x00\x00\x12\x77\x4d\xdb"sv;

// By hand, as the library's filters leave bytes alone that are so few: the shuffled ones as 14 that
// stand for themselves, 4 copied from 5 bytes before, and 2 again.
constexpr std::string_view packed =
    "\x0d\x01\x02\xfd\x70\x05\x00\x01\xff\x11\x00\x00\x00\xff\x01"
    "\x40\x04"
    "\x01\x00\x00"sv;

bool decodes(const ChunkCoding& coding, std::string_view coded, std::uint32_t mask = 0) {
  ChunkDecoder decoder(coding);
  Scratch chunk(coding.room());
  const auto* bytes = reinterpret_cast<const std::byte*>(coded.data());
  return decoder.decode({bytes, coded.size()}, mask, chunk.data()) &&
         std::memcmp(chunk.data(), numbers.data(), sizeof numbers) == 0;
}

const ChunkCoding whole = {{shuffle, deflate, fletcher32}, 4, sizeof numbers};

TEST(ChunkDecoder, UndoesEachFilter) {
  EXPECT_TRUE(decodes({{deflate}, 4, sizeof numbers}, deflated));
  EXPECT_TRUE(decodes({{shuffle}, 4, sizeof numbers}, shuffled));
  EXPECT_TRUE(decodes({{fletcher32}, 4, sizeof numbers}, summed));
}

TEST(ChunkDecoder, UndoesFiltersInTheirOrderBackwards) {
  EXPECT_TRUE(decodes(whole, all));
  EXPECT_TRUE(decodes({{shuffle, lzf}, 4, sizeof numbers}, packed));
}

TEST(ChunkDecoder, PassesOverFiltersThatWereLeftOut) {
  EXPECT_TRUE(decodes(whole, summed, 0b011));
  EXPECT_TRUE(decodes(whole, deflated, 0b101));
  EXPECT_TRUE(decodes(whole, shuffled, 0b110));
  EXPECT_TRUE(decodes(whole, summed.substr(0, sizeof numbers), 0b111));
}

TEST(ChunkDecoder, RefusesWhatTheFiltersDoNotMake) {
  EXPECT_FALSE(decodes(whole, all.substr(0, all.size() - 1)));
  EXPECT_FALSE(decodes(whole, ""));
  EXPECT_FALSE(decodes({{deflate}, 4, sizeof numbers - 4}, deflated));
  EXPECT_FALSE(decodes({{deflate}, 4, sizeof numbers + 4}, deflated));
  EXPECT_FALSE(decodes({{shuffle, lzf}, 4, sizeof numbers}, packed.substr(0, packed.size() - 3)));
  EXPECT_FALSE(decodes({{shuffle, lzf}, 4, sizeof numbers - 4}, packed));
  EXPECT_FALSE(decodes({{shuffle}, 4, sizeof numbers}, shuffled.substr(1)));
  EXPECT_FALSE(decodes({{fletcher32}, 4, sizeof numbers},
                       "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0"sv));
}

}  // namespace
}  // namespace kelvo
