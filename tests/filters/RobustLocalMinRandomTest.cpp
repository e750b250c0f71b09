// The interpolated floor against a full sort of each cell, on random images.
#include <morvane/filters/Statistics.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/StatisticsOracle.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <limits>
#include <vector>

namespace morvane::filters
{

namespace
{

using tests::FramedImage;
using tests::Random;

/// The depths that can be interpolated.
constexpr std::array kFloorDepths{CV_8U, CV_16U, CV_16S, CV_32F, CV_64F};

constexpr std::array kCellSizes{1U,  2U,  3U,  4U,  7U,    10U,
                                16U, 19U, 20U, 40U, 1000U, std::numeric_limits<unsigned>::max()};

/// Few values, extremes, all bits of integers, or floats that lose bits when they are summed.
cv::Mat SomeImage(Random & random, cv::Size size, int depth)
{
    cv::Mat image =
        tests::RandomImage(random, size, depth, {0.5 * random.Unit(), 0.3 * random.Unit(), 2 + random.Below(99)});
    if (random.Chance(0.3)) return image;
    bool const isFloating = depth == CV_32F || depth == CV_64F;
    std::size_t const bytes = image.elemSize() * static_cast<std::size_t>(image.cols);
    for (int y = 0; y < image.rows; ++y)
    {
        for (std::size_t byte = 0; !isFloating && byte < bytes; ++byte)
        {
            image.ptr(y)[byte] = static_cast<uchar>(random.Next());
        }
        for (int x = 0; isFloating && x < image.cols; ++x)
        {
            if (random.Chance(0.9))
                tests::SetElement(image, y, x, 0, random.Unit() * (random.Chance(0.2) ? 1e9 : 3.0) - 0.5);
        }
    }
    return image;
}

void ExpectLocalMin(cv::Mat const & src, unsigned cellSize)
{
    SCOPED_TRACE(tests::StatisticsCase(src, cellSize));
    cv::Mat const expected = tests::OracleLocalMin(src, cellSize);
    FramedImage framed(src);
    cv::Mat dst = tests::Draw<double>({"77"});
    ASSERT_TRUE(InterpolatedRobustLocalMinNoZero(framed.View(), cellSize, dst));
    ASSERT_TRUE(tests::EqualImages(dst, expected));
    ASSERT_TRUE(framed.IsFrameUntouched());
    ASSERT_TRUE(tests::EqualImages(framed.View(), src));
    FramedImage out(cv::Mat(src.size(), src.type(), cv::Scalar(7)));
    ASSERT_TRUE(InterpolatedRobustLocalMinNoZero(src, cellSize, out.View()));
    ASSERT_TRUE(tests::EqualImages(out.View(), expected));
    ASSERT_TRUE(out.IsFrameUntouched());
}

TEST(RobustLocalMinRandom, AllDepthsAgreeWithAFullSortOfEachCell)
{
    Random random(631);
    for (int const depth : kFloorDepths)
    {
        for (unsigned const cellSize : kCellSizes)
        {
            for (int repeat = 0; repeat < 8; ++repeat)
            {
                ExpectLocalMin(SomeImage(random, {1 + random.Below(50), 1 + random.Below(50)}, depth), cellSize);
                if (HasFatalFailure()) return;
            }
            ExpectLocalMin(SomeImage(random, {1 + random.Below(90), 1 + random.Below(3)}, depth), cellSize);
            ExpectLocalMin(SomeImage(random, {1 + random.Below(3), 1 + random.Below(90)}, depth), cellSize);
            ExpectLocalMin(SomeImage(random, {1, 1}, depth), cellSize);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(RobustLocalMinRandom, LargeCellsAgreeWithAFullSort)
{
    Random random(632);
    for (int const depth : kFloorDepths)
    {
        // Cells of more pixels than 16 bits count, and of fewer.
        ExpectLocalMin(SomeImage(random, {530, 517}, depth), 600);
        ExpectLocalMin(SomeImage(random, {430, 317}, depth), 140);
        ExpectLocalMin(SomeImage(random, {330, 217}, depth), 40);
        if (HasFatalFailure()) return;
    }
}

TEST(RobustLocalMinRandom, CellsAround256And16384Pixels)
{
    Random random(635);
    // Cells of 15 by 17, 16 by 16, 257 by 1, and of 127 by 129, 128 by 128, 145 by 113 pixels.
    for (int const depth : kFloorDepths)
    {
        for (cv::Size const cell :
             {cv::Size(15, 17), cv::Size(16, 16), cv::Size(257, 1), cv::Size(127, 129), cv::Size(128, 128),
              cv::Size(145, 113)})
        {
            ExpectLocalMin(SomeImage(random, cell * 2, depth), 1000);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(RobustLocalMinRandom, LargeCellsOfOneValueWrapAroundOften)
{
    for (int const depth : kFloorDepths)
    {
        ExpectLocalMin(cv::Mat(cv::Size(540, 520), depth, cv::Scalar(77)), 600);
        ExpectLocalMin(cv::Mat(cv::Size(340, 320), depth, cv::Scalar(255)), 100);
        if (HasFatalFailure()) return;
    }
    // The extremes of the types, whose sums end anywhere.
    ExpectLocalMin(cv::Mat(300, 300, CV_16UC1, cv::Scalar(65535)), 600);
    ExpectLocalMin(cv::Mat(300, 300, CV_16SC1, cv::Scalar(32767)), 600);
    ExpectLocalMin(cv::Mat(300, 300, CV_64FC1, cv::Scalar(std::numeric_limits<double>::max())), 600);
    ExpectLocalMin(
        cv::Mat(300, 300, CV_32FC1, cv::Scalar(static_cast<double>(std::numeric_limits<float>::max()))), 600);
}

TEST(RobustLocalMinRandom, EveryCountOfPixelsGivesItsShareOfLowest)
{
    Random random(633);
    for (int const depth : kFloorDepths)
    {
        for (int count = 1; count <= 260; ++count)
        {
            ExpectLocalMin(SomeImage(random, {2 * count + 1, 3}, depth), 1000);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(RobustLocalMinRandom, IntegersOf32BitsAreCopiedFromAGridOfTheImagesSize)
{
    Random random(634);
    for (int repeat = 0; repeat < 30; ++repeat)
    {
        int const side = 2 + random.Below(20);
        cv::Mat const src = SomeImage(random, {side, side}, CV_32S);
        cv::Mat dst;
        ASSERT_TRUE(InterpolatedRobustLocalMinNoZero(src, 1, dst));
        ASSERT_TRUE(tests::EqualImages(dst, tests::OracleCoarseFloor(src, 1)));
    }
}

TEST(RobustLocalMinRandom, PlainFormWrapsAndRounds)
{
    // The oracle itself, by hand.
    EXPECT_EQ(tests::OracleFloor<uchar>(std::vector<uchar>(40, 200)), 29);
    EXPECT_EQ(tests::OracleFloor<short>(std::vector<short>(40, 20000)), -1845);
    EXPECT_EQ(tests::OracleFloor<int>(std::vector<int>(40, 2000000000)), (6 * 2000000000LL - 3 * 4294967296LL) / 6);
    EXPECT_EQ(tests::OracleFloor<double>({4, 3, 2}), 2.0);
}

} // namespace

} // namespace morvane::filters
