#include <morvane/common/Neighbourhood.h>
#include <morvane/connexity/Connexity.h>

#include "support/AllTypes.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace morvane::common
{

namespace
{

/// Offsets farther out and less regular than those of the shapes.
std::vector<cv::Point> const kSkewed{{-3, 1}, {0, 5}, {1, -1}, {4, 0}};

constexpr int kWidest = std::numeric_limits<int>::max();

std::optional<cv::Point> PlainNeighbour(cv::Point pixel, cv::Point offset, bool wraps, cv::Size size)
{
    cv::Point to = pixel + offset;
    if (wraps && to.x < 0)
    {
        to.x += size.width;
    }
    else if (wraps && to.x >= size.width)
    {
        to.x -= size.width;
    }
    bool const inside = to.x >= 0 && to.x < size.width && to.y >= 0 && to.y < size.height;
    return inside ? std::optional(to) : std::nullopt;
}

void ExpectPlainNeighbours(std::vector<cv::Point> const & offsets, bool wraps, cv::Size size)
{
    SCOPED_TRACE("rows " + std::to_string(size.height) + ", columns " + std::to_string(size.width));
    Neighbourhood const neighbourhood(offsets, wraps, size);
    ASSERT_EQ(neighbourhood.Count(), offsets.size());
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            bool allInside = true;
            for (std::size_t index = 0; index < offsets.size(); ++index)
            {
                cv::Point const pixel(x, y);
                ASSERT_EQ(neighbourhood.Offset(index), offsets[index]);
                ASSERT_EQ(neighbourhood.Neighbour(pixel, index), PlainNeighbour(pixel, offsets[index], wraps, size))
                    << "pixel " << pixel << ", offset " << offsets[index] << (wraps ? ", wrapped" : "");
                allInside = allInside && cv::Rect(cv::Point(), size).contains(pixel + offsets[index]);
            }
            // A pixel with all its neighbours inside may be called a border pixel, never the other way round.
            ASSERT_LE(neighbourhood.IsInterior({x, y}), allInside) << cv::Point(x, y);
        }
    }
}

TEST(Neighbourhood, FindsTheNeighboursOfEveryPixelInEverySmallSize)
{
    for (int rows = 0; rows <= 6; ++rows)
    {
        for (int cols = 0; cols <= 6; ++cols)
        {
            for (int connexity = 0; connexity < tests::kConnexityCount; ++connexity)
            {
                ExpectPlainNeighbours(tests::OracleOffsets(connexity), tests::OracleWraps(connexity), {cols, rows});
            }
            ExpectPlainNeighbours(kSkewed, false, {cols, rows});
            ExpectPlainNeighbours(kSkewed, true, {cols, rows});
        }
    }
}

TEST(Neighbourhood, SkipsNeighboursThatOneWrapDoesNotReach)
{
    Neighbourhood const oneColumn({{-2, 0}, {2, 1}, {-1, 0}, {0, 1}}, true, {1, 2});
    EXPECT_EQ(oneColumn.Neighbour({0, 0}, 0), std::nullopt);
    EXPECT_EQ(oneColumn.Neighbour({0, 0}, 1), std::nullopt);
    EXPECT_EQ(oneColumn.Neighbour({0, 0}, 2), cv::Point(0, 0)) << "a column is its own neighbour across the seam";
    EXPECT_EQ(oneColumn.Neighbour({0, 0}, 3), cv::Point(0, 1));
}

TEST(Neighbourhood, NeverWrapsRows)
{
    Neighbourhood const neighbourhood({{0, -1}, {0, 1}, {-1, -1}, {1, 1}}, true, {4, 3});
    EXPECT_EQ(neighbourhood.Neighbour({0, 0}, 0), std::nullopt);
    EXPECT_EQ(neighbourhood.Neighbour({0, 2}, 1), std::nullopt);
    EXPECT_EQ(neighbourhood.Neighbour({0, 0}, 2), std::nullopt);
    EXPECT_EQ(neighbourhood.Neighbour({3, 2}, 3), std::nullopt);
    EXPECT_EQ(neighbourhood.Neighbour({3, 1}, 3), cv::Point(0, 2));
}

TEST(Neighbourhood, EndsWhereAnIntDoes)
{
    std::vector<cv::Point> const offsets{{2, 0}, {1, 0}, {-2, 0}, {0, 2}, {0, 1}, {0, -2}, {2, 2}, {-2, -2}};
    Neighbourhood const neighbourhood(offsets, false, {kWidest, kWidest});
    cv::Point const last(kWidest - 1, kWidest - 1);
    EXPECT_EQ(neighbourhood.Neighbour(last, 0), std::nullopt);
    EXPECT_EQ(neighbourhood.Neighbour(last, 1), std::nullopt);
    EXPECT_EQ(neighbourhood.Neighbour(last, 2), cv::Point(kWidest - 3, kWidest - 1));
    EXPECT_EQ(neighbourhood.Neighbour(last, 3), std::nullopt);
    EXPECT_EQ(neighbourhood.Neighbour(last, 4), std::nullopt);
    EXPECT_EQ(neighbourhood.Neighbour(last, 5), cv::Point(kWidest - 1, kWidest - 3));
    EXPECT_EQ(neighbourhood.Neighbour(last, 6), std::nullopt);
    EXPECT_EQ(neighbourhood.Neighbour(last, 7), cv::Point(kWidest - 3, kWidest - 3));
    EXPECT_EQ(neighbourhood.Neighbour({kWidest - 3, kWidest - 3}, 6), last);
    EXPECT_TRUE(neighbourhood.IsInterior({kWidest - 3, kWidest - 3}));
    EXPECT_FALSE(neighbourhood.IsInterior({kWidest - 2, kWidest - 3}));
    EXPECT_FALSE(neighbourhood.IsInterior({kWidest - 3, kWidest - 2}));
    EXPECT_TRUE(neighbourhood.IsInterior({2, 2}));
    EXPECT_FALSE(neighbourhood.IsInterior({1, 2}));
}

TEST(Neighbourhood, WrapsTheWidestImages)
{
    std::vector<cv::Point> const offsets{{2, 0}, {1, 1}, {-2, 0}, {-1, -1}, {0, 2}};
    for (int const width : {kWidest - 1, kWidest})
    {
        Neighbourhood const neighbourhood(offsets, true, {width, 3});
        EXPECT_EQ(neighbourhood.Neighbour({width - 1, 1}, 0), cv::Point(1, 1));
        EXPECT_EQ(neighbourhood.Neighbour({width - 2, 1}, 0), cv::Point(0, 1));
        EXPECT_EQ(neighbourhood.Neighbour({width - 3, 1}, 0), cv::Point(width - 1, 1));
        EXPECT_EQ(neighbourhood.Neighbour({width - 1, 1}, 1), cv::Point(0, 2));
        EXPECT_EQ(neighbourhood.Neighbour({0, 1}, 2), cv::Point(width - 2, 1));
        EXPECT_EQ(neighbourhood.Neighbour({0, 1}, 3), cv::Point(width - 1, 0));
        EXPECT_EQ(neighbourhood.Neighbour({width - 1, 1}, 4), std::nullopt);
    }
}

TEST(Neighbourhood, LinearOffsetsOfTheLargestImagesNeedMoreThan32Bits)
{
    // Only a header: nothing is read. A row takes 8 GiB.
    constexpr int kCols = 1 << 28;
    double pixel[4] = {};
    cv::Mat const plane(3, kCols, CV_64FC4, pixel);
    auto const offsets = Neighbourhood({{1, 0}, {-1, -1}, {0, 2}}, false, plane.size()).LinearOffsets(plane);
    constexpr std::ptrdiff_t kRow = std::ptrdiff_t{32} * kCols;
    EXPECT_EQ(offsets, std::vector<std::ptrdiff_t>({32, -kRow - 32, 2 * kRow}));
}

TEST(Neighbourhood, CallsAllPixelsButTheBorderInterior)
{
    // The walk is fast on interior pixels: a border wider than the offsets need would cost time and show nowhere else.
    Neighbourhood const neighbourhood(kSkewed, true, {20, 30});
    for (int y = 0; y < 30; ++y)
    {
        for (int x = 0; x < 20; ++x)
        {
            ASSERT_EQ(neighbourhood.IsInterior({x, y}), x >= 3 && x < 16 && y >= 1 && y < 25) << cv::Point(x, y);
        }
    }
}

TEST(Neighbourhood, WithoutOffsetsHasNoNeighboursAndOnlyInteriorPixels)
{
    Neighbourhood const neighbourhood({}, false, {2, 2});
    EXPECT_EQ(neighbourhood.Count(), 0U);
    EXPECT_TRUE(neighbourhood.IsInterior({0, 0}));
    EXPECT_TRUE(neighbourhood.IsInterior({1, 1}));
    EXPECT_TRUE(neighbourhood.LinearOffsets(cv::Mat1b(2, 2)).empty());
}

TEST(Neighbourhood, LinearOffsetsLeadToTheNeighboursPixelInEveryTypeAndView)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            cv::Mat const whole(12, 11, CV_MAKETYPE(depth, channels), cv::Scalar::all(0));
            tests::FramedImage framed(whole);
            for (cv::Mat const & plane : {whole, framed.View()})
            {
                Neighbourhood const neighbourhood(kSkewed, false, plane.size());
                auto const offsets = neighbourhood.LinearOffsets(plane);
                ASSERT_EQ(offsets.size(), kSkewed.size());
                cv::Point const pixel(4, 3);
                ASSERT_TRUE(neighbourhood.IsInterior(pixel));
                for (std::size_t index = 0; index < offsets.size(); ++index)
                {
                    cv::Point const to = pixel + kSkewed[index];
                    EXPECT_EQ(plane.ptr(pixel.y, pixel.x) + offsets[index], plane.ptr(to.y, to.x))
                        << kSkewed[index] << " in " << cv::typeToString(plane.type());
                }
            }
        }
    }
}

} // namespace

} // namespace morvane::common
