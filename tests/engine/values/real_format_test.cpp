// The range of real numbers of any layout.
#include "values/real_format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kelvo {
namespace {

TEST(RealFormat, OnlyTheWidthsOfTheStandardHaveAFormatOfTheirOwn) {
  for (const std::size_t size : {2, 4, 8}) EXPECT_TRUE(standard_format(size)) << size;
  for (const std::size_t size : {1, 3, 16}) EXPECT_FALSE(standard_format(size)) << size;
}

TEST(RealFormat, LeastTooLargeIsHalfAStepAboveTheHighestNumber) {
  EXPECT_EQ(65520.0, least_too_large(*standard_format(2)));
  const double highest = std::numeric_limits<float>::max();
  EXPECT_EQ(highest + std::ldexp(1.0, 103), least_too_large(*standard_format(4)));
}

TEST(RealFormat, NoDoubleIsTooLargeForDoubleAndWiderFormats) {
  EXPECT_TRUE(std::isinf(least_too_large(*standard_format(8))));
  EXPECT_TRUE(std::isinf(least_too_large(extended_format())));
}

TEST(RealFormat, SinglePrecisionHoldsHalfAndBrainFloats) {
  EXPECT_TRUE(fits_single(*standard_format(2)));
  EXPECT_TRUE(fits_single({16, 0, 15, 7, 8, 127, 0, 7, Normalization::implied}));
}

TEST(RealFormat, SinglePrecisionDoesNotHoldMoreDigitsOrAnotherRange) {
  EXPECT_FALSE(fits_single({32, 0, 31, 24, 7, 63, 0, 24, Normalization::implied}));
  EXPECT_FALSE(fits_single({16, 0, 15, 7, 8, 100, 0, 7, Normalization::implied}));
  EXPECT_FALSE(fits_single({16, 0, 15, 6, 9, 255, 0, 6, Normalization::implied}));
}

}  // namespace
}  // namespace kelvo
