// Statistics in a sliding window against those of each window by itself, on random images.
#include <morvane/filters/Statistics.h>

#include <morvane/common/ImageCompare.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/StatisticsOracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

namespace morvane::filters
{

namespace
{

using tests::FramedImage;
using tests::GivesStatistics;
using tests::LocalStatistics;
using tests::OracleLocal;
using tests::Random;

/// Both sides of each even half size, odd and even.
constexpr std::array kKernelSizes{0U, 1U, 2U, 3U, 5U, 6U, 9U, 10U, 12U, 13U, 31U, 32U};
constexpr std::array kHugeKernelSizes{100U, 65535U, 65536U, 1U << 31U, std::numeric_limits<unsigned>::max()};

/// How a grey image is mixed.
struct GreyMixture
{
    double emptyShare = 0.2; ///< pixels of 0
    double whiteShare = 0.1; ///< pixels of 255
    int lowest = 1;          ///< the others are from this
    int values = 255;        ///< so many values
};

cv::Mat RandomGrey(Random & random, cv::Size size, GreyMixture const & mixture)
{
    cv::Mat grey(size, CV_8UC1);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            int value = mixture.lowest + random.Below(mixture.values);
            if (random.Chance(mixture.emptyShare)) value = 0;
            if (random.Chance(mixture.whiteShare)) value = 255;
            grey.at<uchar>(y, x) = static_cast<uchar>(value);
        }
    }
    return grey;
}

/// An image of the grey, or of almost that: two pixels become equal and the lowest.
cv::Mat ImageOf(cv::Mat grey, int depth)
{
    double least = 0.0;
    cv::minMaxLoc(grey, &least);
    grey.at<uchar>(grey.rows - 1, grey.cols - 1) = static_cast<uchar>(least);
    grey.at<uchar>(grey.rows / 2, grey.cols / 2) = static_cast<uchar>(least);
    return tests::ImageOfGrey(grey, depth);
}

TEST(LocalStatisticsRandom, AllDepthsAgreeWithEachWindowByItself)
{
    Random random(611);
    for (int const depth : tests::kDepths)
    {
        for (unsigned const kernelSize : kKernelSizes)
        {
            for (int repeat = 0; repeat < 3; ++repeat)
            {
                tests::Mixture const mixture{0.6 * random.Unit(), 0.2 * random.Unit(), 2 + random.Below(60)};
                cv::Mat const src = tests::RandomImage(random, tests::RandomSize(random, 20), depth, mixture);
                SCOPED_TRACE(tests::StatisticsCase(src, kernelSize));
                FramedImage framed(src);
                ASSERT_TRUE(GivesStatistics(framed.View(), kernelSize, OracleLocal(src, kernelSize)));
                ASSERT_TRUE(framed.IsFrameUntouched());
                ASSERT_TRUE(tests::EqualImages(framed.View(), src));
            }
        }
    }
}

TEST(LocalStatisticsRandom, BytesOfAllValuesAgreeWithEachWindowByItself)
{
    Random random(612);
    for (unsigned const kernelSize : kKernelSizes)
    {
        for (double const emptyShare : {0.0, 0.3, 0.95})
        {
            cv::Size const size(1 + random.Below(30), 1 + random.Below(30));
            cv::Mat const src = RandomGrey(random, size, {emptyShare, 0.05, 1, 255});
            SCOPED_TRACE(tests::StatisticsCase(src, kernelSize));
            ASSERT_TRUE(GivesStatistics(src, kernelSize, OracleLocal(src, kernelSize)));
        }
    }
}

TEST(LocalStatisticsRandom, HeightsAndWidthsAroundEightAndSixteen)
{
    Random random(613);
    std::array const sides{1, 2, 3, 7, 8, 9, 15, 16, 17, 23, 24, 25, 31, 32, 33};
    for (int const height : sides)
    {
        for (int const width : sides)
        {
            if (height * width == 1) continue;
            unsigned const kernelSize = kKernelSizes.at(2 + static_cast<std::size_t>(random.Below(10)));
            GreyMixture const mixture{random.Unit() * 0.7, random.Unit() * 0.3, 1 + random.Below(100), 100};
            cv::Mat const src = ImageOf(RandomGrey(random, {width, height}, mixture), CV_16U);
            SCOPED_TRACE(tests::StatisticsCase(src, kernelSize));
            ASSERT_TRUE(GivesStatistics(src, kernelSize, OracleLocal(src, kernelSize)));
        }
    }
}

TEST(LocalStatisticsRandom, RowsAndColumns)
{
    Random random(614);
    for (unsigned const kernelSize : kKernelSizes)
    {
        for (int repeat = 0; repeat < 3; ++repeat)
        {
            GreyMixture const mixture{random.Unit() * 0.7, random.Unit() * 0.3, 1 + random.Below(200), 50};
            cv::Mat const row = ImageOf(RandomGrey(random, {2 + random.Below(80), 1}, mixture), CV_32F);
            SCOPED_TRACE(tests::StatisticsCase(row, kernelSize));
            ASSERT_TRUE(GivesStatistics(row, kernelSize, OracleLocal(row, kernelSize)));
            cv::Mat const column = row.t();
            ASSERT_TRUE(GivesStatistics(column, kernelSize, OracleLocal(column, kernelSize)));
        }
    }
}

TEST(LocalStatisticsRandom, WindowsMuchLargerThanTheImage)
{
    Random random(615);
    for (unsigned const kernelSize : kHugeKernelSizes)
    {
        for (cv::Size const size : {cv::Size(2, 1), cv::Size(1, 9), cv::Size(17, 8), cv::Size(12, 19)})
        {
            cv::Mat const src = ImageOf(RandomGrey(random, size, {}), CV_64F);
            SCOPED_TRACE(tests::StatisticsCase(src, kernelSize));
            ASSERT_TRUE(GivesStatistics(src, kernelSize, OracleLocal(src, kernelSize)));
        }
    }
}

TEST(LocalStatisticsRandom, PatchesOfOneValue)
{
    Random random(616);
    for (unsigned const kernelSize : kKernelSizes)
    {
        cv::Mat grey(33, 29, CV_8UC1, cv::Scalar(random.Below(256)));
        for (int patch = 0; patch < 6; ++patch)
        {
            cv::Rect const place(random.Below(20), random.Below(20), 1 + random.Below(9), 1 + random.Below(9));
            grey(place) = random.Chance(0.3) ? 0 : random.Below(256);
        }
        cv::Mat const src = ImageOf(grey, CV_16S);
        SCOPED_TRACE(tests::StatisticsCase(src, kernelSize));
        ASSERT_TRUE(GivesStatistics(src, kernelSize, OracleLocal(src, kernelSize)));
    }
}

TEST(LocalStatisticsRandom, RampsMoveTheMedianFarInOneStep)
{
    for (unsigned const kernelSize : {3U, 10U, 31U})
    {
        // Bands of the lowest and the highest values, so that the window's values change wholly from one to the next.
        cv::Mat grey(40, 45, CV_8UC1);
        for (int y = 0; y < grey.rows; ++y)
        {
            for (int x = 0; x < grey.cols; ++x)
            {
                bool const high = (x / 5 + y / 10) % 2 == 0;
                grey.at<uchar>(y, x) = static_cast<uchar>(high ? 255 - (x + y) % 3 : 1 + (x * y) % 4);
            }
        }
        cv::Mat const src = ImageOf(grey, CV_32S);
        EXPECT_TRUE(GivesStatistics(src, kernelSize, OracleLocal(src, kernelSize))) << kernelSize;
    }
}

TEST(LocalStatisticsRandom, FewPixelsAmongEmptyOnes)
{
    Random random(617);
    for (unsigned const kernelSize : kKernelSizes)
    {
        cv::Mat grey = cv::Mat::zeros(65, 71, CV_8UC1);
        for (int count = 0; count < 40; ++count)
        {
            grey.at<uchar>(random.Below(65), random.Below(71)) = static_cast<uchar>(random.Below(256));
        }
        cv::Mat const src = ImageOf(grey, CV_32F);
        SCOPED_TRACE(tests::StatisticsCase(src, kernelSize));
        ASSERT_TRUE(GivesStatistics(src, kernelSize, OracleLocal(src, kernelSize)));
    }
}

TEST(LocalStatisticsRandom, TransposedImagesHaveTransposedStatistics)
{
    Random random(618);
    for (unsigned const kernelSize : {4U, 13U, 32U, 200U})
    {
        cv::Mat const src = ImageOf(RandomGrey(random, {150, 113}, {}), CV_16U);
        LocalStatistics const upright = *tests::CallLocal(src, kernelSize);
        LocalStatistics const lying = *tests::CallLocal(src.t(), kernelSize);
        EXPECT_TRUE(tests::EqualStatistics(
            lying, {upright.entropy.t(), upright.mean.t(), upright.stdDev.t(), upright.median.t()}))
            << kernelSize;
    }
}

TEST(LocalStatisticsRandom, OutputsThatFitAreWrittenWithoutATraceAroundThem)
{
    Random random(619);
    cv::Size const size(21, 18);
    cv::Mat const src = ImageOf(RandomGrey(random, size, {}), CV_16U);
    LocalStatistics const expected = *OracleLocal(src, 9);
    std::vector<FramedImage> frames;
    for (int const depth : {CV_32F, CV_32F, CV_32F, CV_8U})
    {
        frames.emplace_back(cv::Mat(size, depth, cv::Scalar(7)));
    }
    auto const view = [&](std::size_t number) -> cv::Mat & {
        return frames[number].View();
    };
    for (int round = 0; round < 2; ++round)
    {
        if (round == 0)
        {
            ASSERT_TRUE(LocalStatisticsNoZero(src, 9, view(0), view(1), view(2), view(3)));
        }
        else
        {
            ASSERT_TRUE(LocalEntropyNoZero(src, 9, view(0)));
            ASSERT_TRUE(LocalMeanNoZero(src, 9, view(1), view(2)));
            ASSERT_TRUE(LocalMedianNoZero(src, 9, view(3)));
        }
        EXPECT_TRUE(tests::EqualStatistics({view(0), view(1), view(2), view(3)}, expected));
        for (FramedImage & frame : frames)
        {
            EXPECT_TRUE(frame.IsFrameUntouched());
            tests::FillBytes(frame.View(), 7);
        }
    }
}

} // namespace

} // namespace morvane::filters
