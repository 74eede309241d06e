// LZF: steps written by hand, and bytes of all sorts there and back. That h5py reads and writes the
// same is tested with whole files.
#include "storage/lzf.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

const std::uint8_t* bytes_of(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

// What the steps make; "none" for nothing.
std::string unpacked(std::string_view packed, std::size_t room) {
  std::vector<std::uint8_t> out(room + 1, '#');
  const std::optional<std::size_t> made =
      unpack_lzf({bytes_of(packed), packed.size()}, {out.data(), room});
  EXPECT_EQ('#', out.back()) << "written behind the room";
  return made ? std::string(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(*made)) : "none";
}

TEST(Lzf, RunsAndCopies) {
  EXPECT_EQ("", unpacked("", 0));
  EXPECT_EQ("abc", unpacked("\2abc", 3));
  EXPECT_EQ("abcabc", unpacked("\2abc\x20\2", 6));
  EXPECT_EQ(std::string(11, 'a'), unpacked("\0a\xe0\1\0"sv, 11));  // reaches into itself
}

TEST(Lzf, RefusesStepsThatEndEarly) {
  for (const std::string_view packed : {"\2ab"sv, "\2abc\x20"sv, "\2abc\xe0"sv, "\2abc\xe0\1"sv})
    EXPECT_EQ("none", unpacked(packed, 1000));
}

TEST(Lzf, RefusesCopiesFromBeforeTheBeginning) {
  EXPECT_EQ("none", unpacked("\x20\0"sv, 1000));
  EXPECT_EQ("none", unpacked("\2abc\x20\3"sv, 1000));
}

TEST(Lzf, RefusesWhatHasNoRoom) {
  EXPECT_EQ("none", unpacked("\2abc", 2));
  EXPECT_EQ("none", unpacked("\2abc\x20\2", 5));
}

TEST(Lzf, ThereAndBack) {
  std::mt19937 random(20);
  for (const unsigned letters : {1U, 2U, 20U, 256U}) {
    for (const std::size_t size : {1U, 2U, 3U, 33U, 300U, 10'000U, 100'000U}) {
      std::string text(size, '\0');
      for (char& letter : text) letter = static_cast<char>(random() % letters);
      std::vector<std::uint8_t> packed;
      pack_lzf(bytes_of(text), size, &packed);
      EXPECT_TRUE(text ==
                  unpacked({reinterpret_cast<const char*>(packed.data()), packed.size()}, size))
          << letters << " " << size;
      EXPECT_LE(size, most_unpacked_lzf(packed.size()));
    }
  }
}

}  // namespace
}  // namespace kelvo
