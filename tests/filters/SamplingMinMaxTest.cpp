// The pyramids of maxima and minima, and how an odd remainder enters a minimum.
#include <morvane/filters/Sampling.h>

#include "support/ImageLiterals.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <initializer_list>
#include <limits>

namespace morvane::filters
{

namespace
{

using tests::Draw;
using tests::EqualImages;
using tests::ExpectDrawn;

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

using Operator = bool (*)(cv::Mat const & src, cv::Mat & low, cv::Mat & high);

constexpr Operator kMax = DownSamplingWithMax;
constexpr Operator kMin = DownSamplingWithMin;

/// An image from a list in raster order.
template <class T>
cv::Mat Rows(int rows, std::initializer_list<T> pixels)
{
    return tests::Row<T>(pixels).reshape(0, rows);
}

/// Expects the value and the detail of an image that is one block.
template <class T, class High>
void ExpectReduced(Operator reduce, cv::Mat const & image, T value, std::initializer_list<High> detail)
{
    cv::Mat low;
    cv::Mat high(image.size(), cv::traits::Type<High>::value);
    ASSERT_TRUE(reduce(image, low, high));
    EXPECT_TRUE(EqualImages(low, tests::Row<T>({value})));
    EXPECT_TRUE(EqualImages(high, Rows<High>(image.rows, detail)));
}

TEST(DownSamplingWithMax, SplitsABlockIntoItsMaximumAndTheDifferences)
{
    cv::Mat const block = Draw<uchar>({"13", "42"});
    ExpectReduced<uchar, uchar>(kMax, block, 4, {253, 255, 0, 254});
    ExpectReduced<uchar, ushort>(kMax, block, 4, {65533, 65535, 0, 65534});
    ExpectReduced<uchar, short>(kMax, block, 4, {-3, -1, 0, -2});
    ExpectReduced<uchar, int>(kMax, block, 4, {-3, -1, 0, -2});
    ExpectReduced<uchar, float>(kMax, block, 4, {-3.0F, -1.0F, 0.0F, -2.0F});
    ExpectReduced<uchar, double>(kMax, block, 4, {-3.0, -1.0, 0.0, -2.0});
}

TEST(DownSamplingWithMin, SplitsABlockIntoItsMinimumAndTheDifferences)
{
    cv::Mat const block = Draw<uchar>({"43", "72"});
    ExpectReduced<uchar, uchar>(kMin, block, 2, {2, 1, 5, 0});
    ExpectReduced<uchar, short>(kMin, block, 2, {2, 1, 5, 0});
    ExpectReduced<uchar, double>(kMin, block, 2, {2.0, 1.0, 5.0, 0.0});
    ExpectReduced<ushort, uchar>(kMin, Rows<ushort>(2, {1000, 700, 2000, 900}), 700, {44, 0, 20, 200});
    ExpectReduced<short, uchar>(kMin, Rows<short>(2, {-1, 2, -3, 4}), -3, {2, 5, 0, 7});
}

TEST(DownSamplingsWithMinAndMax, Of32Bits_WrapAround)
{
    cv::Mat const block = Rows<int>(2, {kLeast, kMost, 0, -1});
    ExpectReduced<int, int>(kMax, block, kMost, {1, 0, kLeast + 1, kLeast});
    ExpectReduced<int, int>(kMin, block, kLeast, {0, -1, kLeast, kMost});
    ExpectReduced<int, ushort>(kMax, block, kMost, {1, 0, 1, 0});
    // Nothing wraps in floating point.
    ExpectReduced<int, double>(kMax, block, kMost, {-4294967295.0, 0.0, -2147483647.0, -2147483648.0});
    ExpectReduced<int, float>(kMin, block, kLeast, {0.0F, 4294967296.0F, 2147483648.0F, 2147483648.0F});
}

TEST(DownSamplingsWithMinAndMax, OfFloatsIntoIntegers_CutTheDifference)
{
    cv::Mat const block = Rows<float>(2, {0.5F, 2.25F, -1.5F, 300.75F});
    ExpectReduced<float, short>(kMax, block, 300.75F, {-300, -298, -302, 0});
    ExpectReduced<float, uchar>(kMax, block, 300.75F, {212, 214, 210, 0});
    ExpectReduced<float, short>(kMin, block, -1.5F, {2, 3, 0, 302});
    ExpectReduced<float, uchar>(kMin, block, -1.5F, {2, 3, 0, 46});
    // Beyond all integers counts as the smallest one.
    cv::Mat const far = Rows<double>(2, {1e10, 0.0, 1.0, 2.0});
    ExpectReduced<double, int>(kMax, far, 1e10, {0, kLeast, kLeast, kLeast});
    ExpectReduced<double, uchar>(kMax, far, 1e10, {0, 0, 0, 0});
}

TEST(DownSamplingsWithMinAndMax, TakeNaNOnlyAsFirstPixel)
{
    cv::Mat low;
    cv::Mat high;
    ASSERT_TRUE(DownSamplingWithMax(Rows<float>(2, {1.0F, kNaN, kNaN, 3.0F}), low, high));
    EXPECT_EQ(low.at<float>(0, 0), 3.0F);
    EXPECT_EQ(high.at<float>(0, 0), -2.0F);
    EXPECT_TRUE(std::isnan(high.at<float>(0, 1)));
    ASSERT_TRUE(DownSamplingWithMin(Rows<float>(2, {1.0F, kNaN, kNaN, 3.0F}), low, high));
    EXPECT_EQ(low.at<float>(0, 0), 1.0F);
    EXPECT_EQ(high.at<float>(1, 1), 2.0F);
    for (Operator const reduce : {kMax, kMin})
    {
        ASSERT_TRUE(reduce(Rows<float>(2, {kNaN, 1.0F, 2.0F, 3.0F}), low, high));
        EXPECT_TRUE(std::isnan(low.at<float>(0, 0)));
        EXPECT_TRUE(std::isnan(high.at<float>(1, 1)));
    }
}

TEST(DownSamplingsWithMinAndMax, TakeTheFirstOfTwoZeros)
{
    for (Operator const reduce : {kMax, kMin})
    {
        cv::Mat low;
        cv::Mat high;
        ASSERT_TRUE(reduce(Rows<double>(2, {0.0, -0.0, -0.0, 0.0}), low, high));
        EXPECT_FALSE(std::signbit(low.at<double>(0, 0)));
        ASSERT_TRUE(reduce(Rows<double>(2, {-0.0, 0.0, 0.0, -0.0}), low, high));
        EXPECT_TRUE(std::signbit(low.at<double>(0, 0)));
    }
}

TEST(DownSamplingWithMax, LeavesAnOddRemainderAlone)
{
    cv::Mat const image = Draw<uchar>(
        {"319", //
         "249", //
         "999"});
    cv::Mat low;
    cv::Mat high(3, 3, CV_16SC1, cv::Scalar(7));
    ASSERT_TRUE(DownSamplingWithMax(image, low, high));
    ExpectDrawn(low, {"4"});
    EXPECT_TRUE(EqualImages(high, Rows<short>(3, {-1, -3, 7, -2, 0, 7, 7, 7, 7})));
}

TEST(DownSamplingWithMin, OfThreeByThree_TakesAllNinePixels)
{
    cv::Mat const image = Draw<uchar>(
        {"987", //
         "654", //
         "321"});
    cv::Mat low;
    cv::Mat high;
    ASSERT_TRUE(DownSamplingWithMin(image, low, high));
    ExpectDrawn(low, {"1"});
    ExpectDrawn(
        high, {"876", //
               "543", //
               "210"});
}

TEST(DownSamplingWithMin, OfAnOddWidth_WidensTheLastBlocks)
{
    cv::Mat const image = Draw<uchar>(
        {"55992", //
         "56798"});
    cv::Mat low;
    cv::Mat high;
    ASSERT_TRUE(DownSamplingWithMin(image, low, high));
    ExpectDrawn(low, {"52"});
    ExpectDrawn(
        high, {"00770", //
               "01576"});
}

TEST(DownSamplingWithMin, OfAnOddHeight_HeightensTheLastBlocks)
{
    cv::Mat const image = Draw<uchar>(
        {"1199", //
         "1199", //
         "5566", //
         "5566", //
         "5497"});
    cv::Mat low;
    cv::Mat high;
    ASSERT_TRUE(DownSamplingWithMin(image, low, high));
    ExpectDrawn(
        low, {"19", //
              "46"});
    ExpectDrawn(
        high, {"0000", //
               "0000", //
               "1100", //
               "1100", //
               "1031"});
}

TEST(DownSamplingWithMin, OfOddSides_TakesTheCorner)
{
    cv::Mat const image = Draw<uchar>(
        {"99999", //
         "99999", //
         "99999", //
         "99999", //
         "99993"});
    cv::Mat low;
    cv::Mat high;
    ASSERT_TRUE(DownSamplingWithMin(image, low, high));
    ExpectDrawn(
        low, {"99", //
              "93"});
    ExpectDrawn(
        high, {"00000", //
               "00000", //
               "00666", //
               "00666", //
               "00660"});
}

TEST(DownSamplingWithMin, ReducesThreeRowsOfTwoColumns)
{
    cv::Mat low;
    cv::Mat high;
    ASSERT_TRUE(DownSamplingWithMin(Draw<int>({"43", "56", "72"}), low, high));
    ExpectDrawn(low, {"2"});
    ExpectDrawn(high, {"21", "34", "50"});
    high.release();
    ASSERT_TRUE(DownSamplingWithMin(Draw<int>({"435", "561"}), low, high));
    ExpectDrawn(low, {"1"});
    ExpectDrawn(high, {"324", "450"});
}

TEST(DownSamplingWithMin, WritesTheLastRowOfBlocksInALargerLow)
{
    cv::Mat low(4, 3, CV_8UC1, cv::Scalar(9));
    cv::Mat high(4, 5, CV_8UC1, cv::Scalar(9));
    ASSERT_TRUE(DownSamplingWithMin(Draw<uchar>({"555", "555", "552"}), low, high));
    ExpectDrawn(low, {"299", "999", "999", "999"});
    ExpectDrawn(high, {"33399", "33399", "33099", "99999"});
}

TEST(DownSamplingsWithMinAndMax, GiveTheSameValuesWithoutDetail)
{
    cv::Mat const image = Draw<ushort>(
        {"194Z4", //
         "82641", //
         "99559"});
    cv::Mat low;
    ASSERT_TRUE(DownSamplingWithMax(image, low));
    ExpectDrawn(low, {"9Z"});
    ASSERT_TRUE(DownSamplingWithMin(image, low));
    ExpectDrawn(low, {"11"});
    low = cv::Mat(2, 3, CV_16UC1, cv::Scalar(7));
    ASSERT_TRUE(DownSamplingWithMax(image, low));
    ExpectDrawn(low, {"9Z7", "777"});
}

} // namespace

} // namespace morvane::filters
