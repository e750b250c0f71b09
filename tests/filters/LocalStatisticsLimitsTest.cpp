// Statistics in windows whose counts pass 8 and 16 bits.
#include <morvane/filters/Statistics.h>

#include <morvane/common/ImageCompare.h>

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/StatisticsOracle.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace morvane::filters
{

namespace
{

using tests::EqualImages;
using tests::LocalStatistics;
using tests::Random;

/// What the operator of all four gives for an image of this grey, on which the single ones must agree.
LocalStatistics StatisticsOfGrey(cv::Mat const & grey, unsigned kernelSize)
{
    cv::Mat const src = tests::ImageOfGrey(grey, CV_16U);
    cv::Mat scaled;
    EXPECT_TRUE(common::ConvertToGrayScale(src, scaled));
    EXPECT_TRUE(EqualImages(scaled, grey));
    std::optional<LocalStatistics> const all = tests::CallLocal(src, kernelSize);
    EXPECT_TRUE(all);
    EXPECT_TRUE(tests::GivesStatistics(src, kernelSize, all));
    return all ? *all : tests::EmptyStatistics(grey.size());
}

/// Expects what the windows of some pixels measure.
void ExpectMeasured(
    cv::Mat const & grey, std::vector<cv::Point> const & pixels, unsigned kernelSize,
    LocalStatistics const & statistics)
{
    LocalStatistics actual = tests::EmptyStatistics(grey.size());
    LocalStatistics expected = tests::EmptyStatistics(grey.size());
    for (cv::Point const & pixel : pixels)
    {
        EXPECT_TRUE(tests::OracleMeasure(grey, pixel, kernelSize, expected));
        actual.entropy.at<float>(pixel) = statistics.entropy.at<float>(pixel);
        actual.mean.at<float>(pixel) = statistics.mean.at<float>(pixel);
        actual.stdDev.at<float>(pixel) = statistics.stdDev.at<float>(pixel);
        actual.median.at<uchar>(pixel) = statistics.median.at<uchar>(pixel);
    }
    EXPECT_TRUE(tests::EqualStatistics(actual, expected)) << kernelSize;
}

void ExpectMeasured(cv::Mat const & grey, std::vector<cv::Point> const & pixels, unsigned kernelSize)
{
    ExpectMeasured(grey, pixels, kernelSize, StatisticsOfGrey(grey, kernelSize));
}

/// Corners, the middle, and others.
std::vector<cv::Point> SomePixels(Random & random, cv::Size size, int count)
{
    int const right = size.width - 1;
    int const bottom = size.height - 1;
    std::vector<cv::Point> pixels{{0, 0}, {right, 0}, {0, bottom}, {right, bottom}, {right / 2, bottom / 2}};
    while (count-- > 0)
    {
        pixels.emplace_back(random.Below(size.width), random.Below(size.height));
    }
    return pixels;
}

/// Expects one value in all windows; their deviation is what OpenCV makes of it, which is not always 0.
void ExpectConstant(cv::Size size, uchar value, unsigned kernelSize)
{
    cv::Mat const grey(size, CV_8UC1, cv::Scalar(value));
    SCOPED_TRACE(tests::StatisticsCase(grey, kernelSize));
    LocalStatistics const statistics = StatisticsOfGrey(grey, kernelSize);
    EXPECT_TRUE(EqualImages(statistics.entropy, cv::Mat(size, CV_32FC1, cv::Scalar(-0.0))));
    EXPECT_TRUE(EqualImages(statistics.mean, cv::Mat(size, CV_32FC1, cv::Scalar(value))));
    EXPECT_TRUE(EqualImages(statistics.median, grey));
    EXPECT_LT(cv::norm(statistics.stdDev, cv::NORM_INF), 1e-4);
    Random random(620);
    ExpectMeasured(grey, SomePixels(random, size, 10), kernelSize, statistics);
}

TEST(LocalStatisticsLimits, WindowOf65536EqualPixels)
{
    // A count of one value that 16 bits hold as 0; one window below, and one above.
    ExpectConstant({290, 270}, 7, 250);
    ExpectConstant({290, 270}, 7, 256);
    ExpectConstant({270, 290}, 255, 260);
}

TEST(LocalStatisticsLimits, WindowOf65535PixelsAndOfOneMore)
{
    ExpectConstant({257, 255}, 7, 600);
    ExpectConstant({256, 256}, 7, 600);
}

TEST(LocalStatisticsLimits, SquaresThatAddUpToJustBelowAndJustAbove31Bits)
{
    // 33025 * 255 * 255 is 2^31 - 33023.
    ExpectConstant({1321, 25}, 255, 3000);
    ExpectConstant({337, 98}, 255, 3000);
}

TEST(LocalStatisticsLimits, CountsAround4096)
{
    Random random(625);
    // Windows of 60, 64 and 68 pixels a side, of which one value takes most.
    for (int const share : {0, 1, 40})
    {
        cv::Mat grey(130, 141, CV_8UC1, cv::Scalar(5));
        for (int count = 0; count < share * 10; ++count)
        {
            grey.at<uchar>(random.Below(130), random.Below(141)) = static_cast<uchar>(5 + random.Below(251));
        }
        grey.at<uchar>(70, 70) = share == 0 ? 5 : 9;
        std::vector<cv::Point> const pixels = SomePixels(random, grey.size(), 20);
        for (unsigned const kernelSize : {60U, 64U, 66U})
        {
            ExpectMeasured(grey, pixels, kernelSize);
        }
    }
    ExpectConstant({64, 64}, 7, 200);
    ExpectConstant({241, 17}, 7, 600);
}

TEST(LocalStatisticsLimits, RowOfMoreThan65535EqualPixels)
{
    ExpectConstant({66000, 1}, 7, 140000);
    ExpectConstant({66000, 1}, 255, 65700);
}

TEST(LocalStatisticsLimits, SparsePixelsInWindowsOfMoreThan65535)
{
    Random random(621);
    cv::Mat grey = cv::Mat::zeros(300, 310, CV_8UC1);
    std::vector<cv::Point> pixels = SomePixels(random, grey.size(), 100);
    for (cv::Point const & pixel : pixels)
    {
        grey.at<uchar>(pixel) = static_cast<uchar>(1 + random.Below(255));
    }
    // Empty pixels outnumber 16 bits.
    for (unsigned const kernelSize : {256U, 260U, 4000U})
    {
        ExpectMeasured(grey, pixels, kernelSize);
    }
}

TEST(LocalStatisticsLimits, FullPixelsInWindowsOfMoreThan65535)
{
    Random random(622);
    cv::Mat grey(290, 300, CV_8UC1);
    for (int y = 0; y < grey.rows; ++y)
    {
        for (int x = 0; x < grey.cols; ++x)
        {
            // One value is by far the most frequent.
            grey.at<uchar>(y, x) = static_cast<uchar>(random.Chance(0.01) ? 20 + random.Below(236) : 20 + x / 250);
        }
    }
    grey.at<uchar>(3, 4) = 20;
    std::vector<cv::Point> const pixels = SomePixels(random, grey.size(), 8);
    for (unsigned const kernelSize : {260U, 600U})
    {
        ExpectMeasured(grey, pixels, kernelSize);
    }
}

/// Few values that stand out, in a row that is empty otherwise and in one that is not.
cv::Mat LongRows(Random & random)
{
    cv::Mat grey(2, 70000, CV_8UC1);
    for (int x = 0; x < grey.cols; ++x)
    {
        grey.at<uchar>(0, x) = static_cast<uchar>(random.Chance(0.001) ? random.Below(256) : 0);
        grey.at<uchar>(1, x) = static_cast<uchar>(random.Chance(0.001) ? random.Below(256) : 9);
    }
    return grey;
}

TEST(LocalStatisticsLimits, LongRows)
{
    Random random(623);
    cv::Mat const grey = LongRows(random);
    ExpectMeasured(grey, SomePixels(random, grey.size(), 10), 66000);
}

// An image that is high and narrow takes the time of its height squared.

TEST(SlowLocalStatisticsLimits, ColumnOfMoreThan65535EqualPixels)
{
    ExpectConstant({1, 66000}, 7, 140000);
    ExpectConstant({1, 66000}, 255, 65700);
}

TEST(SlowLocalStatisticsLimits, LongColumns)
{
    Random random(624);
    cv::Mat const grey = LongRows(random).t();
    ExpectMeasured(grey, SomePixels(random, grey.size(), 10), 66000);
}

} // namespace

} // namespace morvane::filters
