// The plane with a margin on which walks need no question about borders.
#include "common/PaddedGrid.h"

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <type_traits>

namespace morvane::common
{

namespace
{

using tests::Random;

template <class Index>
class PaddedGridOf : public ::testing::Test
{};

using Indices = ::testing::Types<std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(PaddedGridOf, Indices);

Neighbourhood Over(int connexity, cv::Size size)
{
    return {tests::OracleOffsets(connexity), tests::OracleWraps(connexity), size};
}

/// The element of a position on the plane, which may lie in the margin.
template <class Index>
Index ElementOf(PaddedGrid<Index> const & grid, cv::Point at)
{
    Index const stride = grid.RowStart(1) - grid.RowStart(0);
    Index const origin = grid.RowStart(0) - grid.Margin() * (stride + 1);
    return origin + (static_cast<Index>(at.y) + grid.Margin()) * stride + static_cast<Index>(at.x) + grid.Margin();
}

TYPED_TEST(PaddedGridOf, HasAMarginAsWideAsTheOffsetsReach)
{
    PaddedGrid<TypeParam> const narrow(Over(0, {5, 3}), {5, 3});
    EXPECT_EQ(narrow.Margin(), 1U);
    EXPECT_EQ(narrow.Total(), 7U * 5U);
    EXPECT_EQ(narrow.RowStart(0), 8U);
    EXPECT_EQ(narrow.RowStart(2), 22U);
    PaddedGrid<TypeParam> const wide(Over(5, {5, 3}), {5, 3});
    EXPECT_EQ(wide.Margin(), 2U);
    EXPECT_EQ(wide.Total(), 9U * 7U);
    EXPECT_EQ(wide.RowStart(0), 20U);
    // One far offset, to any side, widens all sides.
    for (cv::Point const offset : {cv::Point(0, 4), cv::Point(-4, 0), cv::Point(4, 1), cv::Point(0, -4)})
    {
        PaddedGrid<TypeParam> const far(Neighbourhood({offset}, false, {5, 3}), {5, 3});
        EXPECT_EQ(far.Margin(), 4U);
        EXPECT_EQ(far.Total(), 13U * 11U);
    }
}

TYPED_TEST(PaddedGridOf, WithoutOffsetsIsTheImageItself)
{
    PaddedGrid<TypeParam> const grid(Neighbourhood({}, false, {5, 3}), {5, 3});
    EXPECT_EQ(grid.Margin(), 0U);
    EXPECT_EQ(grid.Total(), 15U);
    EXPECT_EQ(grid.RowStart(2), 10U);
    EXPECT_TRUE(grid.Steps().empty());
}

TYPED_TEST(PaddedGridOf, StepsLeadToTheNeighboursInTheirOrder)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        auto const offsets = tests::OracleOffsets(number);
        for (cv::Size const size : {cv::Size(1, 1), cv::Size(7, 1), cv::Size(1, 6), cv::Size(9, 5)})
        {
            PaddedGrid<TypeParam> const grid(Over(number, size), size);
            ASSERT_EQ(grid.Steps().size(), offsets.size());
            for (int y = 0; y < size.height; ++y)
            {
                for (int x = 0; x < size.width; ++x)
                {
                    auto const element = static_cast<TypeParam>(grid.RowStart(y) + static_cast<TypeParam>(x));
                    for (std::size_t index = 0; index < offsets.size(); ++index)
                    {
                        auto const neighbour = static_cast<TypeParam>(element + grid.Steps()[index]);
                        ASSERT_EQ(neighbour, ElementOf(grid, cv::Point(x, y) + offsets[index]));
                        ASSERT_LT(neighbour, grid.Total());
                    }
                }
            }
        }
    }
}

TYPED_TEST(PaddedGridOf, RowsNeverShareAnElementWithEachOtherOrTheMargin)
{
    cv::Size const size(4, 6);
    PaddedGrid<TypeParam> const grid(Over(11, size), size);
    std::set<TypeParam> pixels;
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            EXPECT_TRUE(pixels.insert(static_cast<TypeParam>(grid.RowStart(y) + static_cast<TypeParam>(x))).second);
        }
    }
    for (int y = -2; y < size.height + 2; ++y)
    {
        for (int x = -2; x < size.width + 2; ++x)
        {
            bool const isInside = cv::Rect({}, size).contains({x, y});
            EXPECT_EQ(pixels.count(ElementOf(grid, {x, y})), isInside ? 1U : 0U);
        }
    }
}

TYPED_TEST(PaddedGridOf, AcrossLeadsFromTheMarginToTheOtherEndOfTheRow)
{
    for (int const number : {0, 4, 10, 12})
    {
        for (int width = 1; width <= 6; ++width)
        {
            cv::Size const size(width, 3);
            PaddedGrid<TypeParam> const grid(Over(number, size), size);
            int const margin = static_cast<int>(grid.Margin());
            for (int y = 0; y < size.height; ++y)
            {
                for (int x = -margin; x < width + margin; ++x)
                {
                    int other = x;
                    if (x < 0) other = x + width;
                    if (x >= width) other = x - width;
                    // One width is not enough on an image narrower than the margin: there is no such pixel.
                    if (other < 0 || other >= width) other = x;
                    ASSERT_EQ(grid.Across(ElementOf(grid, {x, y})), ElementOf(grid, {other, y}))
                        << "column " << x << " of " << width << ", margin " << margin;
                }
            }
        }
    }
}

TYPED_TEST(PaddedGridOf, CarriesImagesToAPlaneAndBack)
{
    Random random(70);
    tests::ForEachElement([&]<class T> {
        for (int round = 0; round < 10; ++round)
        {
            cv::Size const size = tests::RandomSize(random, 12);
            cv::Mat const image = tests::RandomImage(random, size, cv::traits::Type<T>::value);
            PaddedGrid<TypeParam> const grid(Over(round % tests::kConnexityCount, size), size);
            tests::FramedImage from(image);
            auto const plane = PlaneOf<T>(from.View(), grid, T{7});
            ASSERT_EQ(plane.size(), grid.Total());
            auto const margin = std::count(plane.begin(), plane.end(), T{7});
            auto const inside = size.empty() ? 0 : cv::countNonZero(image == 7);
            EXPECT_EQ(
                margin,
                static_cast<std::ptrdiff_t>(grid.Total()) - static_cast<std::ptrdiff_t>(image.total()) + inside);
            tests::FramedImage to(cv::Mat(size.height, size.width, image.type(), cv::Scalar(1)));
            CopyPlane(plane, grid, to.View());
            EXPECT_TRUE(tests::EqualImages(to.View(), image));
            EXPECT_TRUE(to.IsFrameUntouched());
        }
    });
}

/// The bytes of the numbers of a grid's elements.
std::size_t IndexBytes(int connexity, cv::Size size)
{
    return VisitIndex(Over(connexity, size), size, []<class Index> { return sizeof(Index); });
}

TEST(PaddedGrid, ElementsAreNumberedIn32BitsAsLongAsThatManySuffice)
{
    EXPECT_EQ(IndexBytes(2, {1, 1}), 4U);
    EXPECT_EQ(IndexBytes(2, {65000, 66000}), 4U);
    // 65537 columns by 65535 rows, with the margin, are one less than 2^32.
    EXPECT_EQ(IndexBytes(2, {65535, 65533}), 4U);
    EXPECT_EQ(IndexBytes(2, {65534, 65534}), 8U);
    EXPECT_EQ(IndexBytes(5, {65533, 65531}), 4U);
    EXPECT_EQ(IndexBytes(5, {65535, 65533}), 8U) << "the margin counts";
    EXPECT_EQ(IndexBytes(2, {2147483647, 2147483647}), 8U);
}

TEST(PaddedGrid, LargePlanesAreNumberedWithoutOverflow)
{
    cv::Size const size(100000, 100000);
    PaddedGrid<std::uint64_t> const grid(Over(0, size), size);
    EXPECT_EQ(grid.Total(), std::uint64_t{100002} * 100002);
    EXPECT_EQ(grid.RowStart(99999), std::uint64_t{100000} * 100002 + 1);
    std::uint64_t const below = grid.RowStart(99999) + grid.Steps()[2];
    EXPECT_EQ(below, std::uint64_t{100001} * 100002 + 1);
    EXPECT_EQ(grid.Across(grid.RowStart(99999) - 1), grid.RowStart(99999) + 99999);
}

} // namespace

} // namespace morvane::common
