// The most frequent value of an image.
#include <morvane/algorithm/ImageUtilities.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <limits>
#include <tuple>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Random;
using tests::Row;

constexpr double kBefore = -77.5;

void ExpectMode(cv::Mat const & image, double mode, double count, cv::Mat const & mask = cv::Mat())
{
    double actualMode = kBefore;
    double actualCount = kBefore;
    EXPECT_TRUE(ImageMode(image, actualMode, actualCount, mask));
    EXPECT_EQ(actualMode, mode);
    EXPECT_EQ(actualCount, count);
}

void ExpectNoMode(cv::Mat const & image, cv::Mat const & mask = cv::Mat())
{
    double mode = kBefore;
    double count = kBefore;
    EXPECT_FALSE(ImageMode(image, mode, count, mask));
    EXPECT_EQ(mode, kBefore);
    EXPECT_EQ(count, kBefore);
}

TEST(ImageMode, FindsTheMostFrequentValue)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        ExpectMode(Draw({"777", "777"}, depth), 7, 6);
        ExpectMode(Draw({"1235", "3.43", "9999", "9993"}, depth), 9, 7);
        ExpectMode(Draw({".....", "1.2.9"}, depth), 0, 7);
        ExpectMode(Draw({"7"}, depth), 7, 1);
        ExpectMode(Draw({"."}, depth), 0, 1);
    }
}

TEST(ImageMode, OfEqualCounts_TakesTheFirst)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        ExpectMode(Draw({"9922", "5522", "5599"}, depth), 2, 4);
        ExpectMode(Draw({"987654321"}, depth), 1, 1);
        ExpectMode(Draw({"98765432."}, depth), 0, 1);
    }
}

TEST(ImageMode, CountsUnderAMask)
{
    cv::Mat const mask = (cv::Mat_<uchar>(2, 4) << 255, 1, 0, 0, 2, 0, 0, 128);
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        ExpectMode(Draw({"3599", "5993"}, depth), 3, 2, mask);
        // The maximum lies outside the mask: there is no bin for it, and none is needed.
        ExpectMode(Draw({"2200", "2zz1"}, depth), 2, 3, mask);
        // A number without a bin is not counted where the mask is 0.
        cv::Mat image = Draw({"2..1", "2..1"}, depth);
        image.setTo(cv::Scalar(120), mask == 0);
        ExpectMode(image, 2, 2, mask);
    }
}

TEST(ImageMode, UnderAMaskOfZeros_Is0WithoutPixels)
{
    cv::Mat const mask = cv::Mat::zeros(2, 3, CV_8UC1);
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        ExpectMode(Draw({"123", "456"}, depth), 0, 0, mask);
    }
}

TEST(ImageMode, OfMasksThatAreViews_SeesThemAlone)
{
    Random random(8451);
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = Draw({"777733", "777733", "777733"}, depth);
        tests::FramedImage mask(Draw<uchar>({"....11", "1...11", "1...11"}));
        SCOPED_TRACE(cv::depthToString(depth));
        ExpectMode(image, 3, 6, mask.View());
        tests::FramedImage framed(image);
        ExpectMode(framed.View(), 3, 6, mask.View());
        ExpectMode(framed.View(), 7, 12);
    }
}

TEST(ImageMode, DoesNotCountNegativeNumbers)
{
    ExpectMode(Row<short>({-1, -1, -1, 4, 4, -32768}), 4, 2);
    ExpectMode(Row<int>({-1, -1, 0, -1}), 0, 1);
    ExpectMode(Row<float>({-0.25F, -0.25F, 0.5F}), 0, 1);
}

TEST(ImageMode, OfFractions_HasBinsOfAbout1)
{
    // Three bins over 3.4: the first ends at 1.13.
    ExpectMode(Row<float>({1.1F, 1.1F, 2.4F, 1.2F}), 0, 2);
    ExpectMode(Row<double>({1.1, 1.2, 1.2, 2.4, 1.2}), 1, 3);
    // One bin over 1.75.
    ExpectMode(Row<double>({0.1, 0.5, 0.75}), 0, 3);
    ExpectMode(Row<double>({-0.0, -0.0}), 0, 2);
}

TEST(ImageMode, CountsValuesInSinglePrecision)
{
    // 2^24 + 1 is 2^24, and 2^24 + 3 is 2^24 + 4.
    ExpectMode(Row<int>({16777217, 16777216, 16777219, 5}), 16777216, 2);
}

TEST(ImageMode, OfManyValues_HasABinForEach)
{
    ExpectMode(Row<ushort>({65535, 3, 65535, 65534}), 65535, 2);
    ExpectMode(Row<uchar>({255, 3, 255, 254}), 255, 2);
    ExpectMode(Row<short>({32767, 3, 32767, 32766}), 32767, 2);
    ExpectMode(Row<float>({100000.0F, 99999.0F, 99999.0F}), 99999, 2);
}

/// The fullest bin of the histogram that OpenCV makes, and what it holds.
cv::Point2d ModeByOpenCV(cv::Mat const & image, double maximum)
{
    cv::Mat floats;
    image.convertTo(floats, CV_32F);
    int const bins = static_cast<int>(maximum + 1.0);
    std::array const range{0.0F, static_cast<float>(maximum + 1.0)};
    float const * ranges = range.data();
    cv::Mat hist;
    cv::calcHist(&floats, 1, nullptr, cv::noArray(), hist, 1, &bins, &ranges);
    int mode = 0;
    for (int bin = 1; bin < bins; ++bin)
    {
        if (hist.at<float>(bin) > hist.at<float>(mode)) mode = bin;
    }
    return {static_cast<double>(mode), static_cast<double>(hist.at<float>(mode))};
}

TEST(ImageMode, CountsNaNWhereOpenCVDoes)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    for (int const depth : {CV_32F, CV_64F})
    {
        cv::Mat image = Draw({"1335555"}, depth);
        image.colRange(3, 7).setTo(nan);
        // NaN is no maximum.
        cv::Point2d const expected = ModeByOpenCV(image, 3.0);
        ExpectMode(image, expected.x, expected.y);
        image.colRange(4, 7).setTo(3);
        ExpectMode(image, 3, 5);
    }
}

TEST(ImageModeRefusal, MaximaWithoutBins)
{
    ExpectNoMode(Row<short>({-1, -5}));
    ExpectNoMode(Row<double>({-0.25, -0.25}));
    ExpectNoMode(Row<double>({-1e300}));
    ExpectNoMode(Row<int>({5, std::numeric_limits<int>::max()}));
    ExpectNoMode(Row<float>({5.0F, 2147483648.0F}));
    ExpectNoMode(Row<double>({5.0, 2147483647.0}));
    ExpectNoMode(Row<double>({5.0, 1e300}));
    ExpectNoMode(Row<double>({5.0, std::numeric_limits<double>::infinity()}));
    // Under the mask.
    ExpectNoMode(Row<int>({5, -3}), Row<uchar>({0, 1}));
    ExpectMode(Row<int>({5, std::numeric_limits<int>::max()}), 5, 1, Row<uchar>({1, 0}));
}

TEST(ImageModeRefusal, ChannelsPixelsAndDimensions)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        for (int const channels : {2, 3, 4, 5})
        {
            ExpectNoMode(Draw({"555", "555"}, CV_MAKETYPE(depth, channels)));
        }
        for (cv::Mat const & image : {cv::Mat(0, 0, depth), cv::Mat(0, 5, depth), cv::Mat(5, 0, depth)})
        {
            ExpectNoMode(image);
        }
        ExpectNoMode(cv::Mat(std::vector<int>{2, 3, 4}, depth, cv::Scalar(5)));
    }
    ExpectNoMode(cv::Mat());
}

TEST(ImageModeRefusal, WhatOpenCVRefuses)
{
    cv::Mat const image = Draw<uchar>({"123", "456"});
    cv::Mat half(2, 3, CV_16FC1);
    tests::FillBytes(half, 0);
    double mode = kBefore;
    double count = kBefore;
    EXPECT_THROW(std::ignore = ImageMode(half, mode, count, cv::Mat()), cv::Exception);
    for (cv::Mat const & mask : {Draw<ushort>({"111", "111"}), Draw<uchar>({"111"}), Draw<uchar>({"11", "11", "11"})})
    {
        EXPECT_THROW(std::ignore = ImageMode(image, mode, count, mask), cv::Exception);
    }
    EXPECT_EQ(mode, kBefore);
    EXPECT_EQ(count, kBefore);
}

TEST(ImageModeRandom, OfWholeNumbers_AgreesWithCounting)
{
    Random random(8452);
    for (int const depth : tests::kDepths)
    {
        for (int repeat = 0; repeat < 60; ++repeat)
        {
            cv::Size const size(1 + random.Below(60), 1 + random.Below(40));
            SCOPED_TRACE(tests::Case(depth, size, repeat));
            cv::Mat const image = tests::RandomImage(random, size, depth, {0.01, 0.0, 2 + random.Below(200)});
            cv::Mat const mask = repeat % 3 == 0 ? cv::Mat() : cv::Mat(tests::RandomMask(random, size, 0.6));
            std::vector<int> counts(256, 0);
            for (int y = 0; y < size.height; ++y)
            {
                for (int x = 0; x < size.width; ++x)
                {
                    if (!mask.empty() && mask.at<uchar>(y, x) == 0) continue;
                    ++counts[static_cast<std::size_t>(tests::ElementAt(image, y, x))];
                }
            }
            auto const fullest = std::max_element(counts.begin(), counts.end());
            ExpectMode(image, static_cast<double>(fullest - counts.begin()), *fullest, mask);
            if (HasFailure()) return;
        }
    }
}

TEST(ImageModeRandom, OfFractions_AgreesWithTheHistogramOfOpenCV)
{
    Random random(8453);
    for (int const depth : {CV_32F, CV_64F})
    {
        for (int repeat = 0; repeat < 60; ++repeat)
        {
            cv::Mat image(1 + random.Below(40), 1 + random.Below(40), depth);
            double maximum = 0.0;
            for (int y = 0; y < image.rows; ++y)
            {
                for (int x = 0; x < image.cols; ++x)
                {
                    tests::SetElement(image, y, x, 0, random.Unit() * 12.0 - 1.0);
                    maximum = std::max(maximum, tests::ElementAt(image, y, x));
                }
            }
            if (maximum == 0.0) continue;
            cv::Point2d const expected = ModeByOpenCV(image, maximum);
            ExpectMode(image, expected.x, expected.y);
        }
    }
}

} // namespace

} // namespace morvane::algorithm
