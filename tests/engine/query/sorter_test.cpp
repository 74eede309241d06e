// Records sorted in memory and in parts must come out as the standard library's stable sort orders
// them.
#include "query/sorter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "query/radix_sort.h"
#include "query/sort_key.h"

namespace kelvo {
namespace {

struct Record {
  std::uint64_t number;
  std::string rest;
  std::string payload;  // tells records apart
};

bool is_before(const Record& one, const Record& other) {
  return one.number != other.number ? one.number < other.number : one.rest < other.rest;
}

constexpr std::uint64_t everything = ~std::uint64_t{0};

std::string bytes_of(std::uint64_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

// Numbers that are often equal, with rests and payloads of the given sizes at most.
std::vector<Record> records_of(std::size_t count, std::size_t rest, std::size_t payload,
                               bool are_equal) {
  std::mt19937_64 random(20);
  const auto below = [&random](std::size_t end) {
    return static_cast<std::size_t>(random() % end);
  };
  std::vector<Record> records(count);
  for (std::size_t i = 0; i < count; ++i) {
    Record& record = records[i];
    record.number = random() % 1000 << random() % 60;
    record.rest.assign(are_equal ? rest : below(rest + 1), static_cast<char>(random() % 3));
    record.payload = bytes_of(i);
    record.payload.resize(are_equal ? payload : sizeof i + below(payload - sizeof i + 1));
  }
  return records;
}

// Not the records themselves: a difference would be too long to show.
bool is_sorted_right(std::vector<Record> records, RecordLayout layout, std::uint64_t wanted) {
  Sorter sorter(wanted, layout);
  for (const Record& record : records) sorter.add({record.number, record.rest}, record.payload);
  sorter.finish();
  std::stable_sort(records.begin(), records.end(), is_before);
  records.resize(static_cast<std::size_t>(std::min<std::uint64_t>(records.size(), wanted)));
  std::string_view payload;
  const bool equal = std::all_of(records.begin(), records.end(), [&](const Record& record) {
    return sorter.next(&payload) && payload == record.payload;
  });
  return equal && (wanted != everything || !sorter.next(&payload));
}

const RecordLayout varying{std::nullopt};
const RecordLayout numbers{RecordSizes{0, 8}};
const RecordLayout fixed{RecordSizes{8, 20}};

// As many as fit a part, some more than once over.
constexpr std::size_t in_memory = 20'000;
constexpr std::size_t in_parts = 1'200'000;

TEST(Sorter, SortsInMemory) {
  EXPECT_TRUE(is_sorted_right(records_of(in_memory, 0, 8, true), numbers, everything));
  EXPECT_TRUE(is_sorted_right(records_of(in_memory, 8, 20, true), fixed, everything));
  EXPECT_TRUE(is_sorted_right(records_of(in_memory, 20, 30, false), varying, everything));
}

static_assert(in_parts * 2 * sizeof(SortEntry) > Sorter::memory_bytes);

TEST(Sorter, MergesPartsOfNumbers) {
  EXPECT_TRUE(is_sorted_right(records_of(in_parts, 0, 8, true), numbers, everything));
}

TEST(Sorter, MergesPartsOfRecordsOfOneSize) {
  EXPECT_TRUE(is_sorted_right(records_of(in_parts, 8, 20, true), fixed, everything));
}

TEST(Sorter, MergesPartsOfRecordsOfVaryingSizes) {
  EXPECT_TRUE(is_sorted_right(records_of(in_parts, 20, 30, false), varying, everything));
}

TEST(Sorter, MergesRecordsLargerThanAWindow) {
  std::vector<Record> records = records_of(100, 8, 20, true);
  for (Record& record : records) record.payload.resize(1'000'000);
  EXPECT_TRUE(is_sorted_right(records, varying, everything));
}

TEST(Sorter, KeepsOnlyWhatIsWanted) {
  for (const std::uint64_t wanted : {0U, 1U, 100U, 10'000U}) {
    EXPECT_TRUE(is_sorted_right(records_of(in_memory * 5, 8, 20, true), fixed, wanted)) << wanted;
    EXPECT_TRUE(is_sorted_right(records_of(in_memory * 5, 20, 30, false), varying, wanted))
        << wanted;
  }
}

TEST(Sorter, WithoutRecords) { EXPECT_TRUE(is_sorted_right({}, numbers, everything)); }

TEST(RadixSort, DealsByEachByteAlone) {
  for (unsigned shift = 0; shift < 64; shift += 8) {
    std::mt19937_64 random(shift);
    std::vector<SortEntry> entries(5000);
    for (std::size_t i = 0; i < entries.size(); ++i)
      entries[i] = {0x0123456789abcdef ^ (random() % 200 << shift), static_cast<std::uint32_t>(i)};
    std::vector<SortEntry> expected = entries;
    std::stable_sort(
        expected.begin(), expected.end(),
        [](const SortEntry& one, const SortEntry& other) { return one.number < other.number; });
    std::vector<SortEntry> scratch;
    sort_by_number(&entries, &scratch);
    const bool equal = std::equal(entries.begin(), entries.end(), expected.begin(), expected.end(),
                                  [](const SortEntry& one, const SortEntry& other) {
                                    return one.number == other.number && one.offset == other.offset;
                                  });
    EXPECT_TRUE(equal) << shift;
  }
}

TEST(SortKey, NumbersOfBytesKeepTheirOrder) {
  const std::vector<std::string> keys = {
      "", std::string("\0\0\1", 3), "a", "ab", "abcdefgh", "b", "\x80"};
  for (std::size_t i = 1; i < keys.size(); ++i)
    EXPECT_LT(number_of(keys[i - 1]), number_of(keys[i])) << i;
  EXPECT_EQ(number_of("abcdefgh"), number_of("abcdefghi"));
}

}  // namespace
}  // namespace kelvo
