// Histogram, entropy, median, mean and deviation against their plain forms, on random images.
#include <morvane/filters/Statistics.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/StatisticsOracle.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace morvane::filters
{

namespace
{

using tests::FramedImage;
using tests::Random;

constexpr std::array kCountedDepths{CV_8U, CV_16U, CV_32F};

cv::Size SomeSize(Random & random, int largest = 40)
{
    cv::Size const size = tests::RandomSize(random, largest);
    return {std::max(size.width, 1), std::max(size.height, 1)};
}

/// Few values, extremes, or all bits of integers.
cv::Mat SomeImage(Random & random, cv::Size size, int type)
{
    tests::Mixture const mixture{0.5 * random.Unit(), 0.5 * random.Unit(), 2 + random.Below(50)};
    cv::Mat image = tests::RandomImage(random, size, type, mixture);
    if (CV_MAT_DEPTH(type) > CV_32S || random.Chance(0.5)) return image;
    std::size_t const bytes = image.elemSize() * static_cast<std::size_t>(image.cols);
    for (int y = 0; y < image.rows; ++y)
    {
        for (std::size_t byte = 0; byte < bytes; ++byte)
        {
            image.ptr(y)[byte] = static_cast<uchar>(random.Next());
        }
    }
    return image;
}

/// Floats of the 256 bins and a little around them.
cv::Mat SomeFloats(Random & random, cv::Size size)
{
    cv::Mat image(size, CV_32FC1);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            image.at<float>(y, x) = static_cast<float>(random.Unit() * 270.0 - 5.0);
        }
    }
    return image;
}

/// Without NaN.
cv::Mat PlainHistogram(cv::Mat const & src, int maxValue)
{
    cv::Mat hist = cv::Mat::zeros(maxValue + 1, 1, CV_32FC1);
    for (int y = 0; y < src.rows; ++y)
    {
        for (int x = 0; x < src.cols; ++x)
        {
            double const bin = std::floor(tests::ElementAt(src, y, x));
            if (bin >= 0.0 && bin <= maxValue) hist.at<float>(static_cast<int>(bin)) += 1.0F;
        }
    }
    return hist;
}

TEST(ComputeHistogramRandom, AgreesWithOpenCVAndWithCounting)
{
    Random random(601);
    for (int const depth : kCountedDepths)
    {
        for (int const maxValue : {0, 1, 9, 100, 254, 255, 256, 300, 65534, 65535, 65536, 70000})
        {
            for (int repeat = 0; repeat < 5; ++repeat)
            {
                cv::Size const size = SomeSize(random);
                cv::Mat const src =
                    depth == CV_32F && repeat % 2 == 0 ? SomeFloats(random, size) : SomeImage(random, size, depth);
                SCOPED_TRACE(tests::StatisticsCase(src, static_cast<unsigned>(maxValue)));
                FramedImage framed(src);
                cv::Mat hist;
                ASSERT_TRUE(ComputeHistogram(framed.View(), hist, maxValue));
                ASSERT_TRUE(tests::EqualImages(hist, tests::OracleHistogram(src, maxValue)));
                if (depth == CV_32F) cv::patchNaNs(framed.View(), 3.0);
                ASSERT_TRUE(ComputeHistogram(framed.View(), hist, maxValue));
                ASSERT_TRUE(tests::EqualImages(hist, PlainHistogram(framed.View(), maxValue)));
            }
        }
    }
}

TEST(ComputeHistogramRandom, HistogramThatIsAViewLeavesNoTraceAroundIt)
{
    Random random(607);
    for (int const depth : kCountedDepths)
    {
        for (int const bins : {1, 3, 256, 300})
        {
            cv::Mat const src = SomeImage(random, {31, 17}, depth);
            SCOPED_TRACE(tests::StatisticsCase(src, static_cast<unsigned>(bins)));
            FramedImage hist(cv::Mat(bins, 1, CV_32FC1, cv::Scalar(7)));
            ASSERT_TRUE(ComputeHistogram(src, hist.View(), bins - 1));
            EXPECT_TRUE(tests::EqualImages(hist.View(), tests::OracleHistogram(src, bins - 1)));
            EXPECT_TRUE(hist.IsFrameUntouched());
        }
    }
}

TEST(EntropyNoZeroRandom, AgreesWithThePlainForm)
{
    Random random(602);
    for (int const depth : kCountedDepths)
    {
        for (int repeat = 0; repeat < 60; ++repeat)
        {
            cv::Size const size = SomeSize(random, 70);
            cv::Mat const src =
                depth == CV_32F && repeat % 2 == 0 ? SomeFloats(random, size) : SomeImage(random, size, depth);
            SCOPED_TRACE(tests::StatisticsCase(src, 0));
            FramedImage framed(src);
            double entropy = -7.0;
            ASSERT_TRUE(EntropyNoZero(framed.View(), entropy));
            ASSERT_EQ(std::bit_cast<std::uint64_t>(entropy), std::bit_cast<std::uint64_t>(*tests::OracleEntropy(src)));
        }
    }
}

TEST(EntropyNoZeroRandom, IsTheSameAtAnyThreadCount)
{
    Random random(603);
    cv::Mat const src = SomeImage(random, {1031, 777}, CV_8U);
    double const expected = *tests::OracleEntropy(src);
    cv::Mat const expectedHist = PlainHistogram(src, 255);
    for (int const threads : tests::kThreadCounts)
    {
        tests::ThreadCount const count(threads);
        double entropy = -7.0;
        cv::Mat hist;
        ASSERT_TRUE(EntropyNoZero(src, entropy));
        ASSERT_TRUE(ComputeHistogram(src, hist, 255));
        EXPECT_EQ(entropy, expected);
        EXPECT_TRUE(tests::EqualImages(hist, expectedHist));
    }
}

void ExpectMedian(cv::Mat const & src)
{
    SCOPED_TRACE(tests::StatisticsCase(src, 0));
    FramedImage framed(src);
    double median = -7.0;
    double medianOfView = -7.0;
    ASSERT_TRUE(MedianNoZero(src, median));
    ASSERT_TRUE(MedianNoZero(framed.View(), medianOfView));
    ASSERT_EQ(median, *tests::OracleMedian(src));
    ASSERT_EQ(medianOfView, median);
    ASSERT_TRUE(framed.IsFrameUntouched());
    ASSERT_TRUE(tests::EqualImages(framed.View(), src));
}

TEST(MedianNoZeroRandom, AgreesWithAFullSort)
{
    Random random(604);
    for (int const depth : tests::kDepths)
    {
        for (int repeat = 0; repeat < 80; ++repeat)
        {
            ExpectMedian(SomeImage(random, SomeSize(random), depth));
            ExpectMedian(SomeImage(random, {1 + random.Below(70), 1}, depth));
            ExpectMedian(SomeImage(random, {1, 1 + random.Below(70)}, depth));
            ExpectMedian(SomeImage(random, {1, 1}, depth));
            if (HasFatalFailure()) return;
        }
    }
}

TEST(MedianNoZeroRandom, OfLargeImagesAgreesWithAFullSort)
{
    Random random(605);
    for (int const depth : tests::kDepths)
    {
        // More pixels, and more of one value, than 16 bits count.
        ExpectMedian(SomeImage(random, {301, 333}, depth));
        ExpectMedian(SomeImage(random, {407, 201}, depth));
        cv::Mat often(cv::Size(300, 300), depth, cv::Scalar(100));
        often.rowRange(0, 40) = 1;
        often.rowRange(270, 300) = 120;
        ExpectMedian(often);
        if (HasFatalFailure()) return;
    }
}

TEST(MedianNoZeroRandom, StepsOverTheMiddleOfTwoValues)
{
    for (int const depth : tests::kDepths)
    {
        for (int ones = 0; ones <= 20; ++ones)
        {
            cv::Mat row(1, 20, depth, cv::Scalar(90));
            row.colRange(0, ones) = 60;
            double median = 0.0;
            ASSERT_TRUE(MedianNoZero(row, median));
            EXPECT_EQ(median, ones > 10 ? 60.0 : 90.0) << ones;
        }
    }
}

TEST(MeanAndStdDevRandom, AgreesWithOpenCV)
{
    Random random(606);
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int repeat = 0; repeat < 12; ++repeat)
            {
                cv::Mat const src = SomeImage(random, SomeSize(random), CV_MAKETYPE(depth, channels));
                SCOPED_TRACE(tests::StatisticsCase(src, 0));
                FramedImage framed(src);
                double mean = -7.0;
                double stdDev = -7.0;
                ASSERT_TRUE(MeanAndStdDev(framed.View(), mean, stdDev));
                tests::Moments const expected = *tests::OracleMoments(framed.View());
                ASSERT_EQ(std::bit_cast<std::uint64_t>(mean), std::bit_cast<std::uint64_t>(expected.mean));
                ASSERT_EQ(std::bit_cast<std::uint64_t>(stdDev), std::bit_cast<std::uint64_t>(expected.stdDev));
            }
        }
    }
}

} // namespace

} // namespace morvane::filters
