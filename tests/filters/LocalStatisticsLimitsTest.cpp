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

/// Expects what the windows of some pixels measure, in the results of the operator of all four and of each by itself.
void ExpectMeasured(cv::Mat const & grey, std::vector<cv::Point> const & pixels, unsigned kernelSize)
{
    cv::Mat const src = tests::ImageOfGrey(grey, CV_16U);
    SCOPED_TRACE(tests::StatisticsCase(src, kernelSize));
    cv::Mat scaled;
    ASSERT_TRUE(common::ConvertToGrayScale(src, scaled));
    ASSERT_TRUE(EqualImages(scaled, grey));
    std::optional<LocalStatistics> const all = tests::CallLocal(src, kernelSize);
    ASSERT_TRUE(all);
    // The operators agree everywhere, and with the plain form in the chosen pixels.
    ASSERT_TRUE(tests::GivesStatistics(src, kernelSize, all));
    LocalStatistics actual = tests::EmptyStatistics(grey.size());
    LocalStatistics expected = tests::EmptyStatistics(grey.size());
    for (cv::Point const & pixel : pixels)
    {
        ASSERT_TRUE(tests::OracleMeasure(grey, pixel, kernelSize, expected));
        actual.entropy.at<float>(pixel) = all->entropy.at<float>(pixel);
        actual.mean.at<float>(pixel) = all->mean.at<float>(pixel);
        actual.stdDev.at<float>(pixel) = all->stdDev.at<float>(pixel);
        actual.median.at<uchar>(pixel) = all->median.at<uchar>(pixel);
    }
    EXPECT_TRUE(tests::EqualStatistics(actual, expected));
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

void ExpectConstant(cv::Size size, uchar value, unsigned kernelSize)
{
    cv::Mat const grey(size, CV_8UC1, cv::Scalar(value));
    cv::Mat const src = tests::ImageOfGrey(grey, CV_16U);
    SCOPED_TRACE(tests::StatisticsCase(src, kernelSize));
    LocalStatistics expected = tests::EmptyStatistics(size);
    expected.entropy = -0.0;
    expected.mean = value;
    expected.median = value;
    EXPECT_TRUE(tests::GivesStatistics(src, kernelSize, expected));
}

TEST(LocalStatisticsLimits, WindowOf65536EqualPixels)
{
    // A count of one value that 16 bits hold as 0; one window below, and one above.
    for (unsigned const kernelSize : {250U, 256U, 260U})
    {
        ExpectConstant({290, 270}, 7, kernelSize);
        ExpectConstant({270, 290}, 255, kernelSize);
    }
}

TEST(LocalStatisticsLimits, ColumnsAndRowsOfMoreThan65535Pixels)
{
    ExpectConstant({3, 66000}, 7, 70000 * 2);
    ExpectConstant({66000, 3}, 7, 70000 * 2);
    ExpectConstant({2, 66000}, 255, 65700);
    ExpectConstant({66000, 2}, 255, 65700);
}

TEST(LocalStatisticsLimits, SparsePixelsInWindowsOfMoreThan65535)
{
    Random random(621);
    cv::Mat grey = cv::Mat::zeros(300, 310, CV_8UC1);
    std::vector<cv::Point> pixels = SomePixels(random, grey.size(), 400);
    for (cv::Point const & pixel : pixels)
    {
        grey.at<uchar>(pixel) = static_cast<uchar>(1 + random.Below(255));
    }
    // Empty pixels outnumber 16 bits.
    for (unsigned const kernelSize : {255U, 256U, 260U, 301U, 4000U})
    {
        ExpectMeasured(grey, pixels, kernelSize);
        if (HasFatalFailure()) return;
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
    std::vector<cv::Point> const pixels = SomePixels(random, grey.size(), 20);
    for (unsigned const kernelSize : {256U, 260U, 600U})
    {
        ExpectMeasured(grey, pixels, kernelSize);
        if (HasFatalFailure()) return;
    }
}

TEST(LocalStatisticsLimits, LongColumnsAndRows)
{
    Random random(623);
    cv::Mat grey(2, 70000, CV_8UC1);
    for (int x = 0; x < grey.cols; ++x)
    {
        grey.at<uchar>(0, x) = static_cast<uchar>(random.Chance(0.001) ? random.Below(256) : 0);
        grey.at<uchar>(1, x) = static_cast<uchar>(random.Chance(0.001) ? random.Below(256) : 9);
    }
    std::vector<cv::Point> const pixels = SomePixels(random, grey.size(), 10);
    ExpectMeasured(grey, pixels, 66000);
    std::vector<cv::Point> turned;
    for (cv::Point const & pixel : pixels)
    {
        turned.emplace_back(pixel.y, pixel.x);
    }
    ExpectMeasured(grey.t(), turned, 66000);
}

} // namespace

} // namespace morvane::filters
