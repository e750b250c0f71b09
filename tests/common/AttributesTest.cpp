// The six attributes: what they start from, take, merge and yield.
#include <morvane/common/Attributes.h>

#include "support/MaxTreeOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvane::common
{

namespace
{

using tests::Random;

constexpr std::uint64_t kMost = 18446744073709551615U;
constexpr std::uint64_t kNoRow = 4294967295U;

/// An attribute and its number.
template <class A, eAttributeType Number>
struct Kind
{
    using Attribute = A;
    static constexpr eAttributeType kNumber = Number;
};

using Kinds = ::testing::Types<
    Kind<HeightAttribute, eAttributeHeight>, Kind<WidthAttribute, eAttributeWidth>,
    Kind<StrainAttribute, eAttributeStrain>, Kind<MinHWAttribute, eAttributeMinHW>, Kind<AreaAttribute, eAttributeArea>,
    Kind<SqrtAreaAttribute, eAttributeSqrtArea>>;

template <class T>
class EveryAttribute : public ::testing::Test
{};

TYPED_TEST_SUITE(EveryAttribute, Kinds);

TEST(AttributeType, HasItsNumbers)
{
    EXPECT_EQ(static_cast<int>(eAttributeHeight), 0);
    EXPECT_EQ(static_cast<int>(eAttributeWidth), 1);
    EXPECT_EQ(static_cast<int>(eAttributeStrain), 2);
    EXPECT_EQ(static_cast<int>(eAttributeMinHW), 3);
    EXPECT_EQ(static_cast<int>(eAttributeArea), 4);
    EXPECT_EQ(static_cast<int>(eAttributeSqrtArea), 5);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<eAttributeType>, int>));
}

TEST(Attributes, HoldTheirNumbersInSixtyFourBitsBesideATable)
{
    std::size_t const table = sizeof(void *);
    EXPECT_EQ(sizeof(AreaAttribute), table + 8);
    EXPECT_EQ(sizeof(SqrtAreaAttribute), table + 8);
    EXPECT_EQ(sizeof(HeightAttribute), table + 16);
    EXPECT_EQ(sizeof(WidthAttribute), table + 16);
    EXPECT_EQ(sizeof(StrainAttribute), table + 32);
    EXPECT_EQ(sizeof(MinHWAttribute), table + 32);
}

TEST(Attributes, StartFromInvertedIntervals)
{
    HeightAttribute const height;
    EXPECT_EQ(height.GetYmin(), kNoRow);
    EXPECT_EQ(height.GetYmax(), 0U);
    WidthAttribute const width;
    EXPECT_EQ(width.GetXmin(), kMost);
    EXPECT_EQ(width.GetXmax(), 0U);
    EXPECT_EQ(AreaAttribute().GetArea(), 0U);
    EXPECT_EQ(SqrtAreaAttribute().GetArea(), 0U);
}

template <class A>
void ExpectBounds(A const & attribute, std::uint64_t xmin, std::uint64_t xmax, std::uint64_t ymin, std::uint64_t ymax)
{
    EXPECT_EQ(attribute.GetXmin(), xmin);
    EXPECT_EQ(attribute.GetXmax(), xmax);
    EXPECT_EQ(attribute.GetYmin(), ymin);
    EXPECT_EQ(attribute.GetYmax(), ymax);
}

/// StrainAttribute and MinHWAttribute, which have the same bounds.
template <class A>
class BoxAttribute : public ::testing::Test
{};

using Boxes = ::testing::Types<StrainAttribute, MinHWAttribute>;
TYPED_TEST_SUITE(BoxAttribute, Boxes);

TYPED_TEST(BoxAttribute, TakesColumnsAsIntsAndRowsAsUnsignedNumbers)
{
    ExpectBounds(TypeParam(), kMost, 0, kNoRow, 0);
    ExpectBounds(TypeParam(4), 4, 0, kNoRow, 0);
    ExpectBounds(TypeParam(4, 9), 4, 9, kNoRow, 0);
    ExpectBounds(TypeParam(4, 9, 2), 4, 9, 2, 0);
    ExpectBounds(TypeParam(4, 9, 2, 3), 4, 9, 2, 3);
    ExpectBounds(TypeParam(-3, -2, kMost - 1, kMost), kMost - 2, kMost - 1, kMost - 1, kMost);
}

TYPED_TEST(BoxAttribute, SettersWidenNegativeNumbersWithTheirSign)
{
    TypeParam attribute;
    attribute.SetXmin(-4);
    attribute.SetXmax(-3);
    attribute.SetYmin(-2);
    attribute.SetYmax(-1);
    ExpectBounds(attribute, kMost - 3, kMost - 2, kMost - 1, kMost);
    EXPECT_FALSE(attribute.IsEmpty());
    EXPECT_EQ(attribute.GetValue(), 2U);
    attribute.SetXmin(1);
    attribute.SetXmax(2);
    attribute.SetYmin(3);
    attribute.SetYmax(4);
    ExpectBounds(attribute, 1, 2, 3, 4);
}

TYPED_TEST(BoxAttribute, IsEmptyAndZeroWhenEitherIntervalIsInverted)
{
    EXPECT_TRUE(TypeParam(0, 5).IsEmpty());
    EXPECT_EQ(TypeParam(0, 5).GetValue(), 0U);
    EXPECT_TRUE(TypeParam(6, 5, 1, 1).IsEmpty());
    EXPECT_EQ(TypeParam(6, 5, 1, 1).GetValue(), 0U);
    EXPECT_TRUE(TypeParam(5, 5, 2, 1).IsEmpty());
    EXPECT_EQ(TypeParam(5, 5, 2, 1).GetValue(), 0U);
    EXPECT_FALSE(TypeParam(5, 5, 1, 1).IsEmpty());
    EXPECT_EQ(TypeParam(5, 5, 1, 1).GetValue(), 1U);
}

TEST(StrainAttribute, IsTheLargerOfWidthAndHeight)
{
    EXPECT_EQ(StrainAttribute(3, 9, 4, 5).GetStrain(), 7U);
    EXPECT_EQ(StrainAttribute(3, 4, 4, 12).GetStrain(), 9U);
    EXPECT_EQ(StrainAttribute(3, 4, 4, 12).GetValue(), 9U);
}

TEST(MinHWAttribute, IsTheSmallerOfWidthAndHeight)
{
    EXPECT_EQ(MinHWAttribute(3, 9, 4, 5).GetMinHW(), 2U);
    EXPECT_EQ(MinHWAttribute(3, 6, 4, 12).GetMinHW(), 4U);
    EXPECT_EQ(MinHWAttribute(3, 6, 4, 12).GetValue(), 4U);
}

TEST(HeightAttribute, CountsRowsOnceItHasAPixel)
{
    HeightAttribute height;
    EXPECT_TRUE(height.IsEmpty());
    EXPECT_EQ(height.GetValue(), 0U);
    height.AddPixel(3, 7, 0);
    EXPECT_FALSE(height.IsEmpty());
    EXPECT_EQ(height.GetValue(), 1U);
    EXPECT_EQ(height.GetYmin(), 7U);
    EXPECT_EQ(height.GetYmax(), 7U);
    height.AddPixel(-40, 10, 0);
    EXPECT_EQ(height.GetHeight(), 4U);
}

TEST(HeightAttribute, TakesAndSetsItsBounds)
{
    HeightAttribute height(5);
    EXPECT_EQ(height.GetYmin(), 5U);
    EXPECT_EQ(height.GetYmax(), 0U);
    EXPECT_TRUE(height.IsEmpty());
    height = HeightAttribute(kMost - 2, kMost);
    EXPECT_EQ(height.GetValue(), 3U);
    height.SetYmin(-1);
    EXPECT_EQ(height.GetYmin(), kMost);
    height.SetYmin(2);
    height.SetYmax(-7);
    EXPECT_EQ(height.GetYmax(), kMost - 6);
    EXPECT_EQ(height.GetYmin(), 2U);
}

TEST(WidthAttribute, TakesAndSetsItsBounds)
{
    WidthAttribute width(5);
    EXPECT_EQ(width.GetXmin(), 5U);
    EXPECT_EQ(width.GetXmax(), 0U);
    EXPECT_TRUE(width.IsEmpty());
    width = WidthAttribute(-3, -1);
    EXPECT_EQ(width.GetXmin(), kMost - 2);
    EXPECT_EQ(width.GetWidth(), 3U);
    width.SetXmin(-1);
    EXPECT_EQ(width.GetXmin(), kMost);
    width.SetXmin(2);
    width.SetXmax(6);
    EXPECT_EQ(width.GetXmax(), 6U);
    EXPECT_EQ(width.GetValue(), 5U);
}

TEST(Attributes, CompareNegativeCoordinatesAsHugeOnes)
{
    // The sentinel of the rows lies below them, that of the columns is just -1.
    HeightAttribute height;
    height.AddPixel(0, -1, 0);
    EXPECT_EQ(height.GetYmin(), kNoRow);
    EXPECT_EQ(height.GetYmax(), kMost);
    EXPECT_EQ(height.GetValue(), kMost - kNoRow + 1);
    WidthAttribute width;
    width.AddPixel(-1, 0, 0);
    EXPECT_EQ(width.GetXmin(), kMost);
    EXPECT_EQ(width.GetXmax(), kMost);
    EXPECT_EQ(width.GetValue(), 1U);
    width.AddPixel(-5, 0, 0);
    EXPECT_EQ(width.GetValue(), 5U);
    width.AddPixel(0, 0, 0);
    EXPECT_EQ(width.GetXmin(), 0U);
    EXPECT_EQ(width.GetXmax(), kMost);
    // All columns that there are: one more than 64 bits count.
    EXPECT_EQ(width.GetValue(), 0U);
    EXPECT_FALSE(width.IsEmpty());
}

TEST(AreaAttributes, TakeTheirAreaWithItsSign)
{
    EXPECT_EQ(AreaAttribute(12).GetArea(), 12U);
    EXPECT_EQ(AreaAttribute(12).GetValue(), 12U);
    EXPECT_EQ(AreaAttribute(-1).GetValue(), kMost);
    EXPECT_EQ(SqrtAreaAttribute(12).GetArea(), 12U);
    EXPECT_EQ(SqrtAreaAttribute(-2).GetArea(), kMost - 1);
    EXPECT_FALSE(AreaAttribute(1).IsEmpty());
    EXPECT_TRUE(AreaAttribute(0).IsEmpty());
    EXPECT_FALSE(SqrtAreaAttribute(1).IsEmpty());
    EXPECT_TRUE(SqrtAreaAttribute(0).IsEmpty());
}

TEST(SqrtAreaAttribute, TruncatesTheRoot)
{
    EXPECT_EQ(SqrtAreaAttribute(0).GetValue(), 0U);
    EXPECT_EQ(SqrtAreaAttribute(3).GetValue(), 1U);
    EXPECT_EQ(SqrtAreaAttribute(8).GetValue(), 2U);
    EXPECT_EQ(SqrtAreaAttribute(9).GetValue(), 3U);
    EXPECT_EQ(SqrtAreaAttribute(9).GetSqrtArea(), 3U);
    EXPECT_EQ(SqrtAreaAttribute(1000 * 1000 - 1).GetSqrtArea(), 999U);
}

TEST(SqrtAreaAttribute, RoundsInSinglePrecision)
{
    // The root of 4096^2 - 1 lies nearer to the float below 4096 than to it, as floats are closer there; that of
    // 4097^2 - 1 lies nearer to 4097.
    EXPECT_EQ(SqrtAreaAttribute(4096 * 4096 - 1).GetSqrtArea(), 4095U);
    EXPECT_EQ(SqrtAreaAttribute(4097 * 4097 - 1).GetSqrtArea(), 4097U);
    // Beyond 2^24 the area is rounded as well: 46340^2 - 1 and 46340^2 - 16 are the same float.
    EXPECT_EQ(SqrtAreaAttribute(46340 * 46340 - 16).GetSqrtArea(), 46340U);
    EXPECT_EQ(SqrtAreaAttribute(46340 * 46340 - 46340).GetSqrtArea(), 46339U);
    // 2^64 - 1 becomes 2^64.
    EXPECT_EQ(SqrtAreaAttribute(-1).GetSqrtArea(), 4294967296U);
}

TEST(SqrtAreaAttribute, GrowsPixelByPixelFromItsArea)
{
    SqrtAreaAttribute attribute(16777216);
    attribute.AddPixel(0, 0, 0);
    EXPECT_EQ(attribute.GetArea(), 16777217U);
    attribute.Merge(SqrtAreaAttribute(2147483647));
    EXPECT_EQ(attribute.GetArea(), 2164260864U);
}

/// Random pixels, not negative.
std::vector<cv::Point> RandomPoints(Random & random)
{
    std::vector<cv::Point> points(static_cast<std::size_t>(random.Below(12)));
    for (cv::Point & point : points)
    {
        point = {random.Below(random.Chance(0.3) ? 1 : 2000), random.Below(random.Chance(0.3) ? 1 : 2000)};
    }
    return points;
}

template <class A>
A Of(std::vector<cv::Point> const & points, int z)
{
    A attribute;
    for (cv::Point const point : points)
    {
        attribute.AddPixel(point.x, point.y, z);
    }
    return attribute;
}

TYPED_TEST(EveryAttribute, MeasuresTheUnionOfWhatItTookAndMerged)
{
    using A = typename TypeParam::Attribute;
    Random random(51);
    for (int round = 0; round < 200; ++round)
    {
        std::vector<cv::Point> const first = RandomPoints(random);
        std::vector<cv::Point> const second = RandomPoints(random);
        tests::OracleMeasure measure;
        for (auto const * const points : {&first, &second})
        {
            for (cv::Point const point : *points)
            {
                measure.Take(point);
            }
        }
        A attribute = Of<A>(first, random.Below(100));
        A const other = Of<A>(second, -7);
        attribute.Merge(other);
        EXPECT_EQ(attribute.IsEmpty(), first.empty() && second.empty());
        std::uint64_t const expected = measure.area == 0 ? 0 : tests::OracleValue(measure, TypeParam::kNumber);
        ASSERT_EQ(attribute.GetValue(), expected) << "round " << round;
    }
}

TYPED_TEST(EveryAttribute, IsEmptyAtFirst)
{
    using A = typename TypeParam::Attribute;
    A const attribute;
    EXPECT_TRUE(attribute.IsEmpty());
    EXPECT_EQ(attribute.GetValue(), 0U);
}

TYPED_TEST(EveryAttribute, StaysAsItIsWhenAnEmptyOneIsMerged)
{
    using A = typename TypeParam::Attribute;
    A attribute = Of<A>({{3, 7}, {5, 11}}, 0);
    std::uint64_t const before = attribute.GetValue();
    attribute.Merge(A());
    EXPECT_EQ(attribute.GetValue(), before);
    EXPECT_GT(before, 0U);
    A empty;
    empty.Merge(attribute);
    EXPECT_EQ(empty.GetValue(), before);
    empty = A();
    empty.Merge(A());
    EXPECT_TRUE(empty.IsEmpty());
}

TYPED_TEST(EveryAttribute, IsCopiedAndMovedMemberByMember)
{
    using A = typename TypeParam::Attribute;
    A const attribute = Of<A>({{3, 7}, {5, 11}}, 0);
    A copy(attribute);
    EXPECT_EQ(copy.GetValue(), attribute.GetValue());
    // Nine pixels, so that the root grows as well.
    for (int pixel = 0; pixel < 7; ++pixel)
    {
        copy.AddPixel(900, 900, 0);
    }
    EXPECT_NE(copy.GetValue(), attribute.GetValue());
    copy = attribute;
    EXPECT_EQ(copy.GetValue(), attribute.GetValue());
    A moved(std::move(copy));
    EXPECT_EQ(moved.GetValue(), attribute.GetValue());
    A assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned.GetValue(), attribute.GetValue());
}

/// An attribute that says that it is full.
template <class A>
class Full final : public A
{
public:
    [[nodiscard]] bool IsEmpty() const override { return false; }
};

TYPED_TEST(EveryAttribute, LetsOnlyEmptinessBeOverridden)
{
    using A = typename TypeParam::Attribute;
    Full<A> const full;
    A const & attribute = full;
    EXPECT_FALSE(attribute.IsEmpty());
    EXPECT_EQ(attribute.GetValue(), 0U);
}

} // namespace

} // namespace morvane::common
