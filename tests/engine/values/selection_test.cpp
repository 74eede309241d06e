// Slices against extents.
#include "values/selection.h"

#include <gtest/gtest.h>

#include "error.h"

namespace kelvo {
namespace {

using Extents = std::vector<Extent>;

SliceItem index(std::int64_t at) { return {SliceItemKind::index, at, std::nullopt, 1}; }
SliceItem range(std::optional<std::int64_t> begin, std::optional<std::int64_t> end,
                std::int64_t step = 1) {
  return {SliceItemKind::range, begin, end, step};
}
SliceItem ellipsis() { return {SliceItemKind::ellipsis, std::nullopt, std::nullopt, 1}; }

Selection resolve(const Slice& slice, const Extents& extents) {
  Space space;
  space.extents = extents;
  return resolve_slice(slice, space, "Dataset \"/x\"");
}

TEST(Selection, EmptySliceSelectsEverything) {
  const Selection all = resolve({}, {2, 3});
  EXPECT_EQ(Extents({0, 0}), all.start);
  EXPECT_EQ(Extents({2, 3}), all.count);
  EXPECT_EQ(6U, all.elements());
}

TEST(Selection, IndexRemovesItsDimension) {
  const Selection line = resolve({index(-1)}, {2, 3});
  EXPECT_EQ(Extents({1, 0}), line.start);
  EXPECT_EQ(Extents({3}), line.shape);
}

TEST(Selection, BoundsOutsideAreClipped) {
  const Selection clipped = resolve({range(-99, 99)}, {5});
  EXPECT_EQ(Extents({0}), clipped.start);
  EXPECT_EQ(Extents({5}), clipped.count);
}

TEST(Selection, StepsAreCountedFromTheBegin) {
  const Selection stepped = resolve({range(1, std::nullopt, 3)}, {8});
  EXPECT_EQ(Extents({1}), stepped.start);
  EXPECT_EQ(Extents({3}), stepped.stride);
  EXPECT_EQ(Extents({3}), stepped.count);  // 1, 4, 7
}

TEST(Selection, EndBeforeBeginSelectsNothing) {
  EXPECT_EQ(0U, resolve({range(4, 2)}, {8}).elements());
}

TEST(Selection, EllipsisStandsForAnyNumberOfDimensions) {
  EXPECT_EQ(Extents({2, 3}), resolve({ellipsis(), index(0)}, {2, 3, 4}).shape);
  EXPECT_EQ(Extents({}), resolve({index(0), ellipsis(), index(0)}, {2, 3}).shape);
}

TEST(Selection, NullSpaceHasNoElements) {
  Space space;
  space.is_null = true;
  EXPECT_EQ(0U, resolve_slice({}, space, "Dataset \"/x\"").elements());
}

std::string refusal(const Slice& slice, const Extents& extents) {
  try {
    resolve(slice, extents);
  } catch (const StatementError& error) {
    EXPECT_EQ(Status::out_of_range, error.status());
    return error.what();
  }
  return "";
}

TEST(Selection, IndexOutsideIsRefused) {
  EXPECT_EQ("Dataset \"/x\" has no index 5 in dimension 0 of extent 5", refusal({index(5)}, {5}));
  EXPECT_EQ("Dataset \"/x\" has no index -6 in dimension 0 of extent 5", refusal({index(-6)}, {5}));
}

TEST(Selection, MoreItemsThanDimensionsAreRefused) {
  EXPECT_EQ("Dataset \"/x\" has 1 dimension, the slice has 2", refusal({index(0), index(0)}, {5}));
  EXPECT_EQ("Dataset \"/x\" has 0 dimensions, the slice has 1", refusal({index(0)}, {}));
}

}  // namespace
}  // namespace kelvo
