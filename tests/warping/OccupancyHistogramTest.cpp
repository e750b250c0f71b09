// The occupancy of columns and rows, and ranges of bins that are narrowed.
#include <morvane/warping/Warping.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/WarpingOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <vector>

namespace morvane::warping
{

namespace
{

using tests::Draw;
using tests::ParityStep;
using tests::Random;
using tests::Row;

using Bins = std::vector<unsigned int>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(OccupancyHistogram, AddsUpColumnsAndRows)
{
    Bins columns;
    Bins rows;
    EXPECT_TRUE(CreateOccupancyHistogramFromImage(Draw<float>({"123", "4.6"}), columns, rows));
    EXPECT_EQ(columns, Bins({5, 2, 9}));
    EXPECT_EQ(rows, Bins({6, 10}));
}

TEST(OccupancyHistogram, AddsToWhatIsThere)
{
    Bins columns{100, 200, 300, 400};
    Bins rows{1000};
    EXPECT_TRUE(CreateOccupancyHistogramFromImage(Draw<float>({"123", "4.6"}), columns, rows));
    EXPECT_EQ(columns, Bins({105, 202, 309}));
    EXPECT_EQ(rows, Bins({1006, 10}));
}

/// What one value adds.
unsigned int WeightOf(float value)
{
    Bins columns{1000};
    Bins rows{2000};
    EXPECT_TRUE(CreateOccupancyHistogramFromImage(Row<float>({value}), columns, rows));
    EXPECT_EQ(rows[0] - 2000U, columns[0] - 1000U);
    return columns[0] - 1000U;
}

TEST(OccupancyHistogram, CutsValuesTowards0)
{
    EXPECT_EQ(WeightOf(1.99F), 1U);
    EXPECT_EQ(WeightOf(0.99F), 0U);
    EXPECT_EQ(WeightOf(-0.99F), 0U);
    EXPECT_EQ(WeightOf(-1.99F), 0xFFFFFFFFU);
    EXPECT_EQ(WeightOf(-3.0F), 0xFFFFFFFDU);
}

TEST(OccupancyHistogram, KeepsTheLow32BitsOf64)
{
    EXPECT_EQ(WeightOf(std::ldexp(1.0F, 31)), 0x80000000U);
    EXPECT_EQ(WeightOf(std::ldexp(1.0F, 32)), 0U);
    // The last bits of 24.
    EXPECT_EQ(WeightOf(std::ldexp(16777215.0F, 20)), 0xFFF00000U);
    EXPECT_EQ(WeightOf(-std::ldexp(16777215.0F, 20)), 0x00100000U);
    EXPECT_EQ(WeightOf(-std::ldexp(1.0F, 63)), 0U);
}

TEST(OccupancyHistogram, WhatIsNoIntegerOf64BitsAddsNothing)
{
    for (float const value : {kNaN, -kNaN, kInfinity, -kInfinity, 1e30F, -1e30F, std::ldexp(1.0F, 63)})
    {
        EXPECT_EQ(WeightOf(value), 0U) << value;
    }
}

TEST(OccupancyHistogram, WrapsAround)
{
    Bins columns{0xFFFFFFFFU};
    Bins rows{0xFFFFFFFEU, 0};
    EXPECT_TRUE(CreateOccupancyHistogramFromImage((cv::Mat_<float>(2, 1) << 3, 4), columns, rows));
    EXPECT_EQ(columns, Bins({6}));
    EXPECT_EQ(rows, Bins({1, 4}));
}

TEST(OccupancyHistogram, WithoutBins_IsFalse)
{
    Bins columns{1, 2};
    Bins rows{3};
    EXPECT_FALSE(CreateOccupancyHistogramFromImage(cv::Mat(0, 3, CV_32FC1), columns, rows));
    EXPECT_EQ(columns, Bins({1, 2, 0}));
    EXPECT_TRUE(rows.empty());
    EXPECT_FALSE(CreateOccupancyHistogramFromImage(cv::Mat(2, 0, CV_32FC1), columns, rows));
    EXPECT_TRUE(columns.empty());
    EXPECT_EQ(rows, Bins({0, 0}));
    EXPECT_FALSE(CreateOccupancyHistogramFromImage(cv::Mat(0, 0, CV_32FC1), columns, rows));
}

TEST(OccupancyHistogramRefusal, LeavesTheBins)
{
    Bins columns{1, 2};
    Bins rows{3};
    auto const expectRefused = [&](cv::Mat const & image) {
        EXPECT_FALSE(CreateOccupancyHistogramFromImage(image, columns, rows)) << cv::typeToString(image.type());
        EXPECT_EQ(columns, Bins({1, 2}));
        EXPECT_EQ(rows, Bins({3}));
    };
    for (int const type : {CV_8UC1, CV_8SC1, CV_16UC1, CV_16SC1, CV_32SC1, CV_64FC1, CV_16FC1, CV_32FC2, CV_32FC3})
    {
        expectRefused(cv::Mat::zeros(2, 2, type));
        expectRefused(cv::Mat(0, 0, type));
    }
    expectRefused(cv::Mat(std::vector<int>{2, 2, 2}, CV_32FC1, cv::Scalar(1)));
}

TEST(OccupancyHistogramRandom, AgreesWithThePlainForm)
{
    Random random(102003);
    for (int repeat = 0; repeat < 100; ++repeat)
    {
        cv::Size const size = tests::RandomSize(random);
        cv::Mat image = tests::RandomImage(random, size, CV_32FC1, {0.3, 0.1, 60});
        Bins columns(static_cast<std::size_t>(random.Below(50)), 7U);
        Bins rows(static_cast<std::size_t>(random.Below(50)), 9U);
        Bins expectedColumns = columns;
        Bins expectedRows = rows;
        expectedColumns.resize(static_cast<std::size_t>(size.width));
        expectedRows.resize(static_cast<std::size_t>(size.height));
        for (int y = 0; y < size.height; ++y)
        {
            for (int x = 0; x < size.width; ++x)
            {
                double const value = tests::ElementAt(image, y, x);
                bool const fits = value > -9e18 && value < 9e18;
                auto const whole = fits ? static_cast<std::int64_t>(value) : 0;
                expectedColumns.at(static_cast<std::size_t>(x)) += static_cast<unsigned int>(whole);
                expectedRows.at(static_cast<std::size_t>(y)) += static_cast<unsigned int>(whole);
            }
        }
        tests::FramedImage framed(image);
        ASSERT_EQ(CreateOccupancyHistogramFromImage(framed.View(), columns, rows), !size.empty());
        ASSERT_EQ(columns, expectedColumns);
        ASSERT_EQ(rows, expectedRows);
    }
}

/// The range that is left, as {first, last}; {-7, -7} where it was refused and nothing written.
std::vector<int> Narrowed(Bins const & histogram, double ratio)
{
    int first = -7;
    int last = -7;
    if (!TruncateHistogram(histogram, ratio, first, last))
    {
        EXPECT_EQ(first, -7);
        EXPECT_EQ(last, -7);
    }
    return {first, last};
}

using Range = std::vector<int>;

TEST(TruncateHistogram, TwoBins_Stay)
{
    for (double const ratio : {0.0, 0.5, 1.0})
    {
        EXPECT_EQ(Narrowed({1, 2}, ratio), Range({0, 1}));
        EXPECT_EQ(Narrowed({0, 0}, ratio), Range({0, 1}));
    }
}

TEST(TruncateHistogram, OneBin_LeavesARangeThatEndsBeforeItStarts)
{
    for (double const ratio : {0.0, 0.5, 1.0})
    {
        EXPECT_EQ(Narrowed({5}, ratio), Range({0, -1}));
        EXPECT_EQ(Narrowed({0}, ratio), Range({0, -1}));
    }
}

TEST(TruncateHistogram, EqualBins_GoFromTheStart)
{
    // Five of ten go: 5 to 9 stay, whose difference is even; the bin before is taken back.
    EXPECT_EQ(Narrowed(Bins(10, 1), 0.5), Range({4, 9}));
    EXPECT_EQ(Narrowed(Bins(10, 7), 0.5), Range({4, 9}));
    // Four of ten go.
    EXPECT_EQ(Narrowed(Bins(10, 1), 0.6), Range({4, 9}));
}

TEST(TruncateHistogram, WithARatioOf1_RemovesNothing)
{
    EXPECT_EQ(Narrowed({1, 2, 3, 4}, 1.0), Range({0, 3}));
    EXPECT_EQ(Narrowed({0, 0, 3, 0, 0, 0}, 1.0), Range({0, 5}));
    // An odd number of bins: one less, at the start where that is the lighter end.
    EXPECT_EQ(Narrowed({1, 2, 3}, 1.0), Range({1, 2}));
    EXPECT_EQ(Narrowed({3, 2, 1}, 1.0), Range({0, 1}));
    EXPECT_EQ(Narrowed({3, 2, 3}, 1.0), Range({0, 1}));
}

TEST(TruncateHistogram, WithARatioOf0_RemovesAllItCan)
{
    // 1, 2, 3 from the left and then 4 against 9: 9 is left alone with its neighbour.
    EXPECT_EQ(Narrowed({1, 2, 3, 4, 9}, 0.0), Range({3, 4}));
    EXPECT_EQ(Narrowed({9, 4, 3, 2, 1}, 0.0), Range({0, 1}));
    // The first 0, as that at the end is no lighter; then the last one.
    EXPECT_EQ(Narrowed({0, 5, 0, 0}, 0.0), Range({1, 2}));
}

TEST(TruncateHistogram, AnEndThatWeighsAllThatMayGo_Stays)
{
    // 10 in all, 2 may go: the 2 at the start does not.
    EXPECT_EQ(Narrowed({2, 3, 2, 3}, 0.8), Range({0, 3}));
    // 1 and 1 go, one after the other; the third would be too much.
    EXPECT_EQ(Narrowed({1, 1, 1, 4, 3}, 0.8), Range({1, 4}));
    // From the end: 1 goes; after it, 1 more than may go.
    EXPECT_EQ(Narrowed({5, 4, 4, 4, 1, 1, 1}, 0.9), Range({0, 5}));
}

TEST(TruncateHistogram, TheLimitIsThatOfTheStart)
{
    // 20 in all, 10 may go: 4, and then 6, which is all that may still go but less than 10.
    EXPECT_EQ(Narrowed({4, 6, 1, 1, 1, 7}, 0.5), Range({2, 5}));
}

TEST(TruncateHistogram, RoundsTheWeightThatStaysDown)
{
    // 7.5 of 10 are 7: 3 may go, so that the 2 at the start is no end that weighs as much.
    EXPECT_EQ(Narrowed({1, 2, 2, 1, 1, 3}, 0.75), Range({2, 5}));
}

TEST(TruncateHistogram, RefusesOtherRatiosAndNoBins)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (double const ratio : {-1e-300, -0.5, std::nextafter(1.0, 2.0), 2.0, nan, HUGE_VAL, -HUGE_VAL})
    {
        EXPECT_EQ(Narrowed({1, 2, 3, 4}, ratio), Range({-7, -7})) << ratio;
        EXPECT_EQ(Narrowed({}, ratio), Range({-7, -7})) << ratio;
    }
    for (double const ratio : {0.0, 0.5, 1.0})
    {
        EXPECT_EQ(Narrowed({}, ratio), Range({-7, -7})) << ratio;
    }
    EXPECT_EQ(Narrowed({1, 2, 3, 4}, -0.0), Narrowed({1, 2, 3, 4}, 0.0));
}

TEST(TruncateHistogramRandom, AgreesWithThePlainFormInEveryWayOfMendingTheParity)
{
    Random random(102004);
    std::set<ParityStep> reached;
    for (int repeat = 0; repeat < 20000; ++repeat)
    {
        Bins histogram(static_cast<std::size_t>(1 + random.Below(repeat % 2 == 0 ? 6 : 40)));
        int const largest = repeat % 3 == 0 ? 3 : 1000;
        for (unsigned int & bin : histogram)
        {
            bin = random.Chance(0.2) ? 0U : static_cast<unsigned int>(random.Below(largest));
        }
        // Sums up to the largest `int`.
        if (repeat % 7 == 0) histogram[histogram.size() / 2] = 2147400000U;
        double ratio = random.Unit();
        if (repeat % 4 == 0) ratio = random.Below(11) * 0.1;
        ratio = std::min(ratio, 1.0);
        tests::OracleBins const expected = tests::OracleNarrowed(histogram, ratio);
        reached.insert(expected.parity);
        ASSERT_EQ(Narrowed(histogram, ratio), Range({expected.first, expected.last}))
            << ::testing::PrintToString(histogram) << " " << ratio;
        // One bin leaves none; all others a difference that is odd, inside the histogram.
        ASSERT_NE((expected.last - expected.first) % 2, 0);
        ASSERT_LT(expected.last, static_cast<int>(histogram.size()));
        ASSERT_GE(expected.first, 0);
    }
    EXPECT_EQ(reached.size(), 7U);
}

} // namespace

} // namespace morvane::warping
