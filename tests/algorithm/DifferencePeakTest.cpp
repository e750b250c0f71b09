// The most frequent difference of two pairs of images.
#include <morvane/algorithm/MatchingScores.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/ScoreOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::ImagePair;
using tests::Random;
using tests::Row;
using utils::ComputeMedian;

constexpr std::array kHistogramDepths{CV_8U, CV_16U, CV_32F};
constexpr double kLowest = std::numeric_limits<double>::lowest();

/// The peak of two pairs.
double PeakOf(ImagePair const & first, ImagePair const & second, double offset1 = 0.0, double offset2 = 0.0)
{
    double result = 77.0;
    EXPECT_TRUE(ComputeMedian(first.a, first.b, second.a, second.b, offset1, offset2, result));
    return result;
}

/// Expects false, and the lowest number.
void ExpectRefused(ImagePair const & first, ImagePair const & second)
{
    double result = 77.0;
    EXPECT_FALSE(ComputeMedian(first.a, first.b, second.a, second.b, 1.0, 2.0, result));
    EXPECT_EQ(result, kLowest);
}

/// A pair of one row with the differences, on top of 1.
ImagePair WithDifferences(std::vector<double> const & differences, int depth)
{
    auto const size = static_cast<int>(differences.size());
    ImagePair pair{cv::Mat(1, size, depth, cv::Scalar(1)), cv::Mat(1, size, depth, cv::Scalar(1))};
    for (int x = 0; x < size; ++x)
    {
        tests::SetElement(pair.a, 0, x, 0, differences.at(static_cast<std::size_t>(x)) + 1.0);
    }
    return pair;
}

/// Five differences of 0.
ImagePair Zeros(int depth)
{
    return WithDifferences({0, 0, 0, 0, 0}, depth);
}

TEST(ComputeMedian, IsTheLowerEndOfTheFullestBin)
{
    for (int const depth : kHistogramDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        // From 10 to 210, four bins of 50. The second has three, the last one has two: 210 is beyond it.
        ImagePair const first = WithDifferences({10, 70, 75, 80, 170, 175, 210}, depth);
        EXPECT_EQ(PeakOf(first, WithDifferences({1, 1, 1, 1, 1, 1, 1}, depth)), 60.0);
        // The second pair adds to the fourth.
        EXPECT_EQ(PeakOf(first, WithDifferences({165, 165, 1, 1, 1, 1, 1}, depth)), 160.0);
        // As many in both: the first.
        EXPECT_EQ(PeakOf(first, WithDifferences({165, 1, 1, 1, 1, 1, 1}, depth)), 60.0);
    }
}

TEST(ComputeMedian, PlacesBinsAsIfAllWere50Wide)
{
    // From 0 to 120: three bins of 40, told as 0, 50 and 100.
    EXPECT_EQ(PeakOf(WithDifferences({0, 41, 79, 60, 120}, CV_32F), Zeros(CV_32F)), 0.0);
    EXPECT_EQ(
        PeakOf(WithDifferences({0, 81, 119, 90, 120}, CV_32F), WithDifferences({100, 100, 9, 9, 9}, CV_32F)), 100.0);
    EXPECT_EQ(PeakOf(WithDifferences({0, 41, 79, 60, 120}, CV_32F), WithDifferences({50, 50, 9, 9, 9}, CV_32F)), 50.0);
}

TEST(ComputeMedian, OfIntegers_HasNoDifferencesBelow0)
{
    for (int const depth : {CV_8U, CV_16U})
    {
        cv::Mat const low(1, 5, depth, cv::Scalar(10));
        cv::Mat const high(1, 5, depth, cv::Scalar(200));
        EXPECT_EQ(PeakOf({low, high}, {high, low}), 0.0);
    }
    cv::Mat const low(1, 5, CV_32F, cv::Scalar(10));
    cv::Mat const high(1, 5, CV_32F, cv::Scalar(200));
    EXPECT_EQ(PeakOf({low, high}, {high, low}), -190.0);
}

TEST(ComputeMedian, AddsTheFirstOffsetAlone)
{
    ImagePair const first = WithDifferences({10, 70, 75, 80, 170}, CV_32F);
    for (double const offset2 : {0.0, 1e9, std::numeric_limits<double>::quiet_NaN()})
    {
        EXPECT_EQ(PeakOf(first, Zeros(CV_32F), 0.25, offset2), 60.25);
        EXPECT_EQ(PeakOf(WithDifferences({300}, CV_32F), WithDifferences({1}, CV_32F), -3.5, offset2), -3.5);
    }
}

TEST(ComputeMedian, OfFewerThanFivePixels_Is0)
{
    for (int const depth : kHistogramDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        ImagePair first = WithDifferences({100, 100, 100, 100, 100}, depth);
        EXPECT_EQ(PeakOf(first, Zeros(depth)), 100.0);
        EXPECT_EQ(PeakOf(WithDifferences({100, 100, 100, 100}, depth), WithDifferences({9, 9, 9, 9}, depth)), 0.0);
        // Pixels without a value in either image do not count.
        tests::SetElement(first.b, 0, 2, 0, 0.0);
        EXPECT_EQ(PeakOf(first, Zeros(depth)), 0.0);
        tests::SetElement(first.b, 0, 2, 0, 1.0);
        tests::SetElement(first.a, 0, 2, 0, 0.0);
        EXPECT_EQ(PeakOf(first, Zeros(depth)), 0.0);
    }
}

TEST(ComputeMedian, OfARangeWithoutWidth_IsItsValue)
{
    for (int const depth : kHistogramDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        EXPECT_EQ(
            PeakOf(WithDifferences({30, 30, 30, 30, 30, 30}, depth), WithDifferences({1, 2, 3, 4, 5, 6}, depth)), 30.0);
        EXPECT_EQ(PeakOf(Zeros(depth), WithDifferences({100, 100, 100, 100, 100}, depth), 7.0), 7.0);
    }
}

TEST(ComputeMedian, CountsTheSecondPairWhereTheFirstHasPixels)
{
    // The range is 0 to 200; where the second pair has no value its difference is 0, and counts.
    ImagePair const first = WithDifferences({0, 110, 120, 130, 200}, CV_32F);
    ImagePair second = WithDifferences({160, 160, 160, 160, 160}, CV_32F);
    EXPECT_EQ(PeakOf(first, second), 150.0);
    for (int x = 0; x < 3; ++x)
    {
        second.a.at<float>(0, x) = 0.0F;
    }
    EXPECT_EQ(PeakOf(first, second), 0.0);
    // Its own pixels where the first pair has none do not.
    ImagePair wide = WithDifferences({0, 110, 120, 130, 200, 1, 1, 1, 1}, CV_32F);
    wide.a.colRange(5, 9).setTo(0.0);
    second = WithDifferences({1, 300, 300, 300, 300, 160, 160, 160, 160}, CV_32F);
    EXPECT_EQ(PeakOf(wide, second), 100.0);
}

TEST(ComputeMedian, PixelsMustBeAbove0)
{
    ImagePair first = WithDifferences({100, 100, 100, 100, 100}, CV_32F);
    first.a.at<float>(0, 0) = -5.0F;
    EXPECT_EQ(PeakOf(first, Zeros(CV_32F)), 0.0);
    first.a.at<float>(0, 0) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(PeakOf(first, Zeros(CV_32F)), 0.0);
    first.a.at<float>(0, 0) = 101.0F;
    EXPECT_EQ(PeakOf(first, Zeros(CV_32F)), 100.0);
    first.b.at<float>(0, 0) = -1.0F;
    EXPECT_EQ(PeakOf(first, Zeros(CV_32F)), 0.0);
}

TEST(ComputeMedian, OfEmptyImages_Is0)
{
    EXPECT_EQ(PeakOf({}, {}, 3.0), 3.0);
    EXPECT_EQ(
        PeakOf(
            {cv::Mat(0, 0, CV_32FC1), cv::Mat(0, 0, CV_32FC1)}, {cv::Mat(0, 0, CV_32FC1), cv::Mat(0, 0, CV_32FC1)},
            3.0),
        3.0);
}

TEST(ComputeMedianRefusal, LeavesTheLowestNumber)
{
    cv::Mat const image(2, 3, CV_32FC1, cv::Scalar(1));
    ImagePair const good{image, image};
    for (cv::Mat const & bad :
         {cv::Mat(2, 2, CV_32FC1, cv::Scalar(1)), cv::Mat(), cv::Mat(2, 3, CV_32FC2, cv::Scalar::all(1))})
    {
        ExpectRefused({bad, image}, good);
        ExpectRefused({image, bad}, good);
        ExpectRefused(good, {bad, image});
        ExpectRefused(good, {image, bad});
    }
    for (int const depth : tests::kRefusedDepths)
    {
        cv::Mat bad(2, 3, depth);
        tests::FillBytes(bad, 1);
        ExpectRefused({bad, bad}, good);
        ExpectRefused(good, {bad, bad});
    }
}

TEST(ComputeMedian, OfTypesThatHistogramsDoNotTake_Throws)
{
    double result = 77.0;
    for (int const depth : {CV_16S, CV_32S, CV_64F})
    {
        ImagePair const first = WithDifferences({0, 10, 20, 30, 200}, depth);
        EXPECT_THROW(
            static_cast<void>(ComputeMedian(first.a, first.b, first.a, first.b, 0.0, 0.0, result)), cv::Exception);
    }
    // Two types in a pair, two sizes of one area, pairs of two widths.
    cv::Mat const floats(2, 6, CV_32FC1, cv::Scalar(1));
    auto const expectThrown = [&](ImagePair const & first, ImagePair const & second) {
        EXPECT_THROW(
            static_cast<void>(ComputeMedian(first.a, first.b, second.a, second.b, 0.0, 0.0, result)), cv::Exception);
    };
    expectThrown({floats, cv::Mat(2, 6, CV_8UC1, cv::Scalar(1))}, {floats, floats});
    expectThrown({floats, cv::Mat(3, 4, CV_32FC1, cv::Scalar(1))}, {floats, floats});
    cv::Mat const narrow(2, 5, CV_32FC1, cv::Scalar(1));
    expectThrown({floats, floats}, {narrow, narrow});
}

TEST(ComputeMedianRandom, AgreesWithThePlainForm)
{
    Random random(81006);
    for (int const depth : kHistogramDepths)
    {
        std::set<double> peaks;
        for (int repeat = 0; repeat < 120; ++repeat)
        {
            cv::Size const size(1 + random.Below(30), 1 + random.Below(30));
            SCOPED_TRACE(tests::Case(depth, size, repeat));
            auto const randomImage = [&](double base) {
                cv::Mat image = tests::RandomImage(random, size, depth, {0.2, repeat % 5 == 0 ? 0.1 : 0.0, 60});
                image *= depth == CV_8U ? 1.5 : 7.3;
                image += cv::Scalar(base);
                // Infinite ranges have a test of their own; a histogram of long ones fills the memory.
                if (depth == CV_32F) image.setTo(3.0, ~((image < 1e5F) & (image > -1e5F)));
                return image;
            };
            int const most = depth == CV_8U ? 150 : 900;
            ImagePair const first{randomImage(random.Below(most)), randomImage(0)};
            ImagePair const second{randomImage(random.Below(most)), randomImage(random.Below(2))};
            double const expected = tests::OraclePeakOfDifferences(first, second);
            peaks.insert(expected);
            tests::FramedImage a1(first.a);
            tests::FramedImage b1(first.b);
            tests::FramedImage a2(second.a);
            tests::FramedImage b2(second.b);
            ASSERT_EQ(PeakOf({a1.View(), b1.View()}, {a2.View(), b2.View()}, 0.5, 9.0), expected + 0.5);
        }
        EXPECT_GT(peaks.size(), depth == CV_8U ? 1U : 20U);
    }
}

TEST(ComputeMedian, OfAnInfiniteRange_IsItsLowerEnd)
{
    float const infinity = std::numeric_limits<float>::infinity();
    cv::Mat const ones = cv::Mat::ones(1, 5, CV_32FC1);
    EXPECT_EQ(PeakOf({Row<float>({infinity, 4, 5, 6, 7}), ones}, {ones, ones}), 3.0);
}

} // namespace

} // namespace morvane::algorithm
