// Statistics in a sliding window, on images small enough to see.
#include <morvane/filters/Statistics.h>

#include <morvane/common/ImageCompare.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"
#include "support/StatisticsOracle.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace morvane::filters
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::ExpectDrawn;
using tests::ExpectEqualImages;
using tests::GivesStatistics;
using tests::LocalStatistics;
using tests::Row;

/// The depths in which an image can have any grey.
constexpr std::array kScaledDepths{CV_16U, CV_16S, CV_32S, CV_32F, CV_64F};

/// The four statistics of an image of this grey, which must not come out as none.
LocalStatistics StatisticsOfGrey(cv::Mat const & grey, unsigned kernelSize)
{
    cv::Mat const src = tests::ImageOfGrey(grey, CV_16U);
    cv::Mat scaled;
    EXPECT_TRUE(common::ConvertToGrayScale(src, scaled));
    ExpectEqualImages(scaled, grey);
    std::optional<LocalStatistics> const statistics = tests::CallLocal(src, kernelSize);
    EXPECT_TRUE(statistics);
    return statistics ? *statistics : tests::EmptyStatistics(grey.size());
}

/// The pixels whose mean is not @p ground.
cv::Mat Reached(LocalStatistics const & statistics, double ground)
{
    return (statistics.mean != ground) / 255;
}

float Share(double share)
{
    return static_cast<float>(-share * std::log(share));
}

TEST(LocalStatistics, WindowReachesOnePixelFurtherUpAndLeft)
{
    cv::Mat grey(8, 9, CV_8UC1, cv::Scalar(10));
    grey.at<uchar>(3, 4) = 100;
    // A window of 4 by 4 with its centre at its third row and column.
    for (unsigned const kernelSize : {2U, 3U, 4U, 5U})
    {
        LocalStatistics const statistics = StatisticsOfGrey(grey, kernelSize);
        ExpectDrawn(
            Reached(statistics, 10.0), {
                                           ".........",
                                           ".........",
                                           "...1111..",
                                           "...1111..",
                                           "...1111..",
                                           "...1111..",
                                           ".........",
                                           ".........",
                                       });
        EXPECT_EQ(statistics.mean.at<float>(3, 4), 250.0F / 16.0F);
        EXPECT_EQ(statistics.median.at<uchar>(3, 4), 10);
    }
}

TEST(LocalStatistics, WindowIsCutAtTheBorders)
{
    cv::Mat grey(5, 6, CV_8UC1, cv::Scalar(64));
    // At (0, 0) it is 2 by 2, at (1, 0) 3 by 2, at (2, 2) 4 by 4, at (5, 4) 3 by 3.
    grey.at<uchar>(0, 0) = 128;
    LocalStatistics const statistics = StatisticsOfGrey(grey, 3);
    EXPECT_EQ(statistics.mean.at<float>(0, 0), 80.0F);
    EXPECT_EQ(statistics.mean.at<float>(0, 1), static_cast<float>(64.0 + 64.0 / 6.0));
    EXPECT_EQ(statistics.mean.at<float>(1, 1), static_cast<float>(64.0 + 64.0 / 9.0));
    EXPECT_EQ(statistics.mean.at<float>(2, 2), 68.0F);
    EXPECT_EQ(statistics.mean.at<float>(4, 5), 64.0F);
    ExpectDrawn(Reached(statistics, 64.0), {"111...", "111...", "111...", "......", "......"});
    grey.at<uchar>(0, 0) = 64;
    grey.at<uchar>(4, 5) = 128;
    LocalStatistics const mirrored = StatisticsOfGrey(grey, 3);
    EXPECT_EQ(mirrored.mean.at<float>(4, 5), static_cast<float>(64.0 + 64.0 / 9.0));
    ExpectDrawn(Reached(mirrored, 64.0), {"......", "......", "......", "....11", "....11"});
}

TEST(LocalStatistics, HalfSizeIsRoundedDownAndThenUpToAnEvenNumber)
{
    // Kernel size and the side of the window.
    using Side = std::pair<unsigned, int>;
    cv::Mat grey(1, 201, CV_8UC1, cv::Scalar(10));
    grey.at<uchar>(0, 100) = 90;
    for (auto const & [kernelSize, side] :
         {Side{2, 4},   Side{3, 4},   Side{4, 4},   Side{5, 4},   Side{6, 8},     Side{7, 8},    Side{9, 8},
          Side{10, 12}, Side{12, 12}, Side{13, 12}, Side{14, 16}, Side{31, 32},   Side{32, 32},  Side{33, 32},
          Side{34, 36}, Side{63, 64}, Side{64, 64}, Side{66, 68}, Side{100, 100}, Side{102, 104}})
    {
        SCOPED_TRACE(kernelSize);
        cv::Mat const along = Reached(StatisticsOfGrey(grey, kernelSize), 10.0);
        EXPECT_EQ(cv::countNonZero(along), side);
        EXPECT_EQ(cv::countNonZero(along.colRange(0, 100)), side / 2 - 1);
        cv::Mat const down = Reached(StatisticsOfGrey(grey.t(), kernelSize), 10.0);
        ExpectEqualImages(down, along.t());
    }
}

TEST(LocalStatistics, PixelNextToEmptyOnesCountsThemInAllButTheMedian)
{
    LocalStatistics const statistics = StatisticsOfGrey(Row<uchar>({0, 8, 8, 8, 0}), 3);
    // The windows are 0 8 8, 0 8 8 8 and 8 8 8 0.
    float const third = static_cast<float>(-(1.0 / 3.0 * std::log(1.0 / 3.0) + 2.0 / 3.0 * std::log(2.0 / 3.0)));
    float const fourth = static_cast<float>(-(0.25 * std::log(0.25) + 0.75 * std::log(0.75)));
    ExpectEqualImages(statistics.entropy, Row<float>({0, third, fourth, fourth, 0}));
    ExpectEqualImages(statistics.mean, Row<float>({0, static_cast<float>(16.0 / 3.0), 6, 6, 0}));
    EXPECT_EQ(statistics.stdDev.at<float>(0, 2), static_cast<float>(std::sqrt(12.0)));
    EXPECT_EQ(statistics.stdDev.at<float>(0, 0), 0.0F);
    ExpectEqualImages(statistics.median, Row<uchar>({0, 8, 8, 8, 0}));
}

TEST(LocalStatistics, MedianOfAWindowIsTheUpperOne)
{
    // The windows are 1 2, 1 2 3, 1 2 3 4 and 2 3 4 0.
    LocalStatistics const statistics = StatisticsOfGrey(Row<uchar>({1, 2, 3, 4, 0, 0}), 4);
    ExpectEqualImages(statistics.median, Row<uchar>({2, 2, 3, 3, 0, 0}));
}

TEST(LocalStatistics, PixelsOf255HaveNoTermInTheEntropy)
{
    // The windows are half empty, or a quarter.
    LocalStatistics const statistics = StatisticsOfGrey(Row<uchar>({255, 0, 0, 255, 255, 255, 0}), 2);
    float const half = Share(0.5);
    float const quarter = Share(0.25);
    ExpectEqualImages(statistics.entropy, Row<float>({half, 0, 0, half, quarter, quarter, 0}));
    ExpectEqualImages(statistics.median, Row<uchar>({255, 0, 0, 255, 255, 255, 0}));
}

TEST(LocalStatistics, EntropyOfOneValueIsANegativeZero)
{
    // Minus one times a sum that is 0.
    for (uchar const value : {uchar{1}, uchar{7}, uchar{254}, uchar{255}})
    {
        cv::Mat const grey(6, 9, CV_8UC1, cv::Scalar(value));
        LocalStatistics const statistics = StatisticsOfGrey(grey, 6);
        ExpectEqualImages(statistics.entropy, cv::Mat(grey.size(), CV_32FC1, cv::Scalar(-0.0)));
        ExpectEqualImages(statistics.mean, cv::Mat(grey.size(), CV_32FC1, cv::Scalar(value)));
        ExpectEqualImages(statistics.stdDev, cv::Mat::zeros(grey.size(), CV_32FC1));
        ExpectEqualImages(statistics.median, grey);
    }
}

TEST(LocalStatistics, PixelThatIsEmptyInGreyHasNoResult)
{
    // Scaled by 256 / 512: 1 becomes 0 and 513 the same, 256 more.
    cv::Mat const src = Row<ushort>({1, 201, 1, 513, 100, 2});
    LocalStatistics const statistics = *tests::CallLocal(src, 3);
    ExpectEqualImages(statistics.median, Row<uchar>({0, 100, 0, 0, 50, 50}));
    EXPECT_EQ(statistics.mean.at<float>(0, 1), static_cast<float>(100.0 / 3.0));
    EXPECT_EQ(statistics.mean.at<float>(0, 4), 12.75F);
    for (int const x : {0, 2, 3})
    {
        EXPECT_EQ(statistics.mean.at<float>(0, x), 0.0F);
        EXPECT_EQ(statistics.stdDev.at<float>(0, x), 0.0F);
        EXPECT_EQ(statistics.entropy.at<float>(0, x), 0.0F);
    }
}

TEST(LocalStatistics, NegativePixelTakesPartWithTheLowBitsOfItsGrey)
{
    // The scale is 1 and -1 becomes 255, as the other pixels are.
    cv::Mat const src = Row<short>({-1, 255, -1, 255});
    LocalStatistics const statistics = *tests::CallLocal(src, 3);
    ExpectEqualImages(statistics.median, Row<uchar>({255, 255, 255, 255}));
    ExpectEqualImages(statistics.mean, Row<float>({255, 255, 255, 255}));
}

TEST(LocalStatistics, ImageThatIsEmptyInGreyNeedsNoWindow)
{
    for (int const depth : tests::kDepths)
    {
        // The scale is 32, and 256 is stored as 0.
        cv::Mat const src = Draw({"..8..", "8...8"}, depth);
        for (unsigned const kernelSize : {1U, 2U, 3U, 50U, std::numeric_limits<unsigned>::max()})
        {
            EXPECT_TRUE(GivesStatistics(src, kernelSize, tests::EmptyStatistics(src.size()))) << depth;
        }
    }
}

TEST(LocalStatistics, KernelSizeOfOneIsRefusedAtTheFirstPixelThatIsNotEmpty)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const src = Draw({"..9", "95."}, depth);
        EXPECT_TRUE(GivesStatistics(src, 1, {})) << depth;
        LocalStatistics out{Draw<uchar>({"777"}), Draw<float>({"777", "777"}), cv::Mat(), Draw<double>({"77"})};
        LocalStatistics const zeros = tests::EmptyStatistics(src.size());
        EXPECT_FALSE(LocalStatisticsNoZero(src, 1, out.entropy, out.mean, out.stdDev, out.median));
        EXPECT_TRUE(tests::EqualStatistics(out, zeros));
        LocalStatistics single{Draw<uchar>({"777"}), Draw<float>({"777", "777"}), cv::Mat(), Draw<double>({"77"})};
        EXPECT_FALSE(LocalEntropyNoZero(src, 1, single.entropy));
        EXPECT_FALSE(LocalMeanNoZero(src, 1, single.mean, single.stdDev));
        EXPECT_FALSE(LocalMedianNoZero(src, 1, single.median));
        EXPECT_TRUE(tests::EqualStatistics(single, zeros));
    }
}

TEST(LocalStatistics, WindowThatCoversTheImageMeasuresAllOfIt)
{
    cv::Mat const grey = Draw<uchar>({"1.3", "54.", "2.1", ".1."});
    double entropy = 0.0;
    double median = 0.0;
    double mean = 0.0;
    double stdDev = 0.0;
    ASSERT_TRUE(EntropyNoZero(grey, entropy));
    ASSERT_TRUE(MedianNoZero(grey, median));
    ASSERT_TRUE(MeanAndStdDev(grey, mean, stdDev));
    unsigned const most = std::numeric_limits<unsigned>::max();
    for (unsigned const kernelSize :
         {6U, 7U, 1000U, 1U << 31U, (1U << 31U) - 1, (1U << 31U) + 1, most - 3, most - 1, most})
    {
        SCOPED_TRACE(kernelSize);
        LocalStatistics const statistics = StatisticsOfGrey(grey, kernelSize);
        for (int number = 0; number < 12; ++number)
        {
            cv::Point const at(number % 3, number / 3);
            bool const full = grey.at<uchar>(at) != 0;
            EXPECT_EQ(statistics.entropy.at<float>(at), full ? static_cast<float>(entropy) : 0.0F);
            EXPECT_EQ(statistics.median.at<uchar>(at), full ? static_cast<uchar>(median) : 0);
            EXPECT_EQ(statistics.mean.at<float>(at), full ? static_cast<float>(mean) : 0.0F);
            EXPECT_EQ(statistics.stdDev.at<float>(at), full ? static_cast<float>(stdDev) : 0.0F);
        }
    }
}

TEST(LocalStatistics, EveryDepthIsMeasuredInGrey)
{
    cv::Mat const grey = Draw<uchar>({"1..3", "z4Z.", ".9.1"});
    LocalStatistics const expected = StatisticsOfGrey(grey, 3);
    for (int const depth : kScaledDepths)
    {
        EXPECT_TRUE(GivesStatistics(tests::ImageOfGrey(grey, depth), 3, expected)) << depth;
    }
}

TEST(LocalStatistics, SourceMayBeAnOutput)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat const src = Draw({"1..3", "z4Z.", ".9.1"}, depth);
        LocalStatistics const expected = *tests::OracleLocal(src, 5);
        cv::Mat other;
        cv::Mat image = src.clone();
        ASSERT_TRUE(LocalEntropyNoZero(image, 5, image));
        ExpectEqualImages(image, expected.entropy);
        image = src.clone();
        ASSERT_TRUE(LocalMeanNoZero(image, 5, image, other));
        ExpectEqualImages(image, expected.mean);
        image = src.clone();
        ASSERT_TRUE(LocalMeanNoZero(image, 5, other, image));
        ExpectEqualImages(image, expected.stdDev);
        image = src.clone();
        ASSERT_TRUE(LocalMedianNoZero(image, 5, image));
        ExpectEqualImages(image, expected.median);
    }
}

TEST(LocalStatistics, SourceMayBeAnyOfTheFourOutputs)
{
    cv::Mat const pixels = Draw<float>({"1..3", "z4Z.", ".9.1"});
    LocalStatistics const expected = *tests::OracleLocal(pixels, 5);
    for (int which = 0; which < 4; ++which)
    {
        LocalStatistics out;
        cv::Mat & src =
            *std::array{&out.entropy, &out.mean, &out.stdDev, &out.median}.at(static_cast<std::size_t>(which));
        src = pixels.clone();
        // Shares the pixels of the output that is written over.
        cv::Mat const shared = src;
        ASSERT_TRUE(
            LocalStatisticsNoZero(which % 2 == 0 ? src : shared, 5, out.entropy, out.mean, out.stdDev, out.median));
        EXPECT_TRUE(tests::EqualStatistics(out, expected)) << which;
    }
}

TEST(LocalStatistics, OutputsThatAreOneObjectStayInBounds)
{
    // What they hold is open.
    cv::Mat const src = Draw<ushort>({"1234567", "1.39123", "7654321"});
    cv::Mat out;
    EXPECT_TRUE(LocalMeanNoZero(src, 3, out, out));
    EXPECT_EQ(out.size(), src.size());
    EXPECT_TRUE(LocalStatisticsNoZero(src, 3, out, out, out, out));
    EXPECT_EQ(out.size(), src.size());
}

TEST(LocalStatistics, SeveralChannelsAreMeasuredInTheirGrey)
{
    // The range is that of all elements, 256, and the first elements of the row are scaled: 3, 9, 8, 200.
    cv::Mat const src = Row<cv::Vec2w>({{3, 9}, {8, 200}, {0, 256}, {7, 7}});
    cv::Mat median;
    ASSERT_TRUE(LocalMedianNoZero(src, 3, median));
    ExpectEqualImages(median, Row<uchar>({9, 8, 9, 9}));
}

} // namespace

} // namespace morvane::filters
