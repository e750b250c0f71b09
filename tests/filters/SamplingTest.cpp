#include <morvane/filters/Sampling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
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

/// An image of four pixels, in raster order.
template <class T>
cv::Mat Block(std::array<T, 4> const & pixels)
{
    cv::Mat image(2, 2, cv::traits::Type<T>::value);
    image.at<T>(0, 0) = pixels[0];
    image.at<T>(0, 1) = pixels[1];
    image.at<T>(1, 0) = pixels[2];
    image.at<T>(1, 1) = pixels[3];
    return image;
}

using Operator = bool (*)(cv::Mat const & src, cv::Mat & low, cv::Mat & high);

constexpr Operator kMax = DownSamplingWithMax;
constexpr Operator kMin = DownSamplingWithMin;

/// Reduces a block and expects its value and its detail.
template <class T, class High>
void ExpectBlock(Operator reduce, std::array<T, 4> const & pixels, T value, std::array<High, 4> const & detail)
{
    cv::Mat low;
    cv::Mat high(2, 2, cv::traits::Type<High>::value);
    ASSERT_TRUE(reduce(Block(pixels), low, high));
    EXPECT_TRUE(EqualImages(low, tests::Row<T>({value})));
    EXPECT_TRUE(EqualImages(high, Block(detail)));
}

TEST(DownSampling, SplitsABlockIntoItsMeanAndTheDifferences)
{
    std::array<uchar, 4> const block{1, 2, 3, 4};
    ExpectBlock<uchar, uchar>(DownSampling, block, 3, {254, 255, 0, 1});
    ExpectBlock<uchar, ushort>(DownSampling, block, 3, {65534, 65535, 0, 1});
    ExpectBlock<uchar, short>(DownSampling, block, 3, {-2, -1, 0, 1});
    ExpectBlock<uchar, int>(DownSampling, block, 3, {-2, -1, 0, 1});
    ExpectBlock<uchar, float>(DownSampling, block, 2, {-1.5F, -0.5F, 0.5F, 1.5F});
    ExpectBlock<uchar, double>(DownSampling, block, 2, {-1.5, -0.5, 0.5, 1.5});
}

TEST(DownSampling, RoundsHalvesUpwards)
{
    ExpectBlock<uchar, short>(DownSampling, {0, 0, 0, 1}, 0, {0, 0, 0, 1});
    ExpectBlock<uchar, short>(DownSampling, {0, 1, 0, 1}, 1, {-1, 0, -1, 0});
    ExpectBlock<uchar, short>(DownSampling, {1, 1, 0, 1}, 1, {0, 0, -1, 0});
    ExpectBlock<short, short>(DownSampling, {-1, -1, -2, -2}, -1, {0, 0, -1, -1});
    ExpectBlock<short, short>(DownSampling, {-1, -2, -2, -2}, -2, {1, 0, 0, 0});
    ExpectBlock<int, int>(DownSampling, {-3, 0, 0, 0}, -1, {-2, 1, 1, 1});
}

TEST(DownSampling, ReadsPixelsInTheWidthOfTheSource)
{
    // The low byte of the differences, not the differences of low bytes.
    ExpectBlock<ushort, uchar>(DownSampling, {1000, 1000, 1000, 2000}, 1250, {6, 6, 6, 238});
    ExpectBlock<short, uchar>(DownSampling, {-300, -300, -300, -304}, -301, {1, 1, 1, 253});
    ExpectBlock<ushort, short>(DownSampling, {65535, 0, 0, 0}, 16384, {-16385, -16384, -16384, -16384});
    ExpectBlock<int, short>(DownSampling, {200000, 0, 0, 0}, 50000, {18928, 15536, 15536, 15536});
}

TEST(DownSampling, Of32Bits_WrapsAround)
{
    ExpectBlock<int, int>(DownSampling, {kMost, kMost, kMost, kMost}, -1, {kLeast, kLeast, kLeast, kLeast});
    ExpectBlock<int, int>(DownSampling, {kLeast, kLeast, 0, 0}, 0, {kLeast, kLeast, 0, 0});
    ExpectBlock<int, uchar>(DownSampling, {kMost, kMost, 0, 0}, 0, {255, 255, 0, 0});
}

TEST(DownSampling, OfFloatsIntoIntegers_CutsPixelsFirst)
{
    ExpectBlock<float, uchar>(DownSampling, {1.9F, 2.9F, 3.9F, 4.9F}, 3.0F, {254, 255, 0, 1});
    ExpectBlock<double, short>(DownSampling, {-1.9, -1.9, -2.9, -2.9}, -1.0, {0, 0, -1, -1});
    // 300 is 44 in eight bits, and -1 is 255.
    ExpectBlock<float, uchar>(DownSampling, {300.7F, 44.0F, 44.0F, 44.0F}, 44.0F, {0, 0, 0, 0});
    ExpectBlock<double, uchar>(DownSampling, {-1.0, -1.0, -1.0, -1.0}, 255.0, {0, 0, 0, 0});
    ExpectBlock<double, ushort>(DownSampling, {-1.0, -1.0, -1.0, -1.0}, 65535.0, {0, 0, 0, 0});
    ExpectBlock<double, short>(DownSampling, {65535.0, 65535.0, 65535.0, 65535.0}, -1.0, {0, 0, 0, 0});
    ExpectBlock<float, short>(DownSampling, {40000.5F, 0.0F, 0.0F, 0.0F}, -6384.0F, {-19152, 6384, 6384, 6384});
}

TEST(DownSampling, OfFloatsBeyondAllIntegers_TakesTheSmallestOne)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    for (double const beyond : {infinity, -infinity, nan, 1e30, -1e30, 2147483648.0, -2147483648.0})
    {
        SCOPED_TRACE(beyond);
        ExpectBlock<double, uchar>(DownSampling, {beyond, 4.0, 4.0, 4.0}, 3.0, {253, 1, 1, 1});
        ExpectBlock<double, short>(DownSampling, {beyond, 4.0, 4.0, 4.0}, 3.0, {-3, 1, 1, 1});
        // (2^31 + 14) / 4 with a sign
        ExpectBlock<double, int>(
            DownSampling, {beyond, 4.0, 4.0, 4.0}, -536870909.0, {-1610612739, 536870913, 536870913, 536870913});
    }
}

TEST(DownSampling, IntoFloats_TakesAQuarterOfTheSum)
{
    ExpectBlock<short, float>(DownSampling, {-1, -1, -1, 0}, 0, {-0.25F, -0.25F, -0.25F, 0.75F});
    ExpectBlock<int, double>(DownSampling, {kMost, kMost, kMost, kMost}, kMost, {0.0, 0.0, 0.0, 0.0});
    ExpectBlock<float, float>(DownSampling, {0.5F, 1.0F, 1.5F, 2.0F}, 1.25F, {-0.75F, -0.25F, 0.25F, 0.75F});
    ExpectBlock<double, double>(DownSampling, {0.5, 1.0, 1.5, 2.0}, 1.25, {-0.75, -0.25, 0.25, 0.75});
    // Single precision: 2^24 + 1 is 2^24, and 2^31 - 1 is 2^31, which no int holds.
    ExpectBlock<int, float>(
        DownSampling, {16777217, 0, 0, 0}, 4194304, {12582912.0F, -4194304.0F, -4194304.0F, -4194304.0F});
    ExpectBlock<int, float>(DownSampling, {kMost, kMost, kMost, kMost}, kLeast, {0.0F, 0.0F, 0.0F, 0.0F});
}

TEST(DownSampling, OfTwoFloatTypes_ComputesInTheWiderOne)
{
    // 2^24 + 1 + 1 in single precision would stay 2^24.
    ExpectBlock<float, double>(
        DownSampling, {16777216.0F, 1.0F, 1.0F, 0.0F}, 4194304.5F, {12582911.5, -4194303.5, -4194303.5, -4194304.5});
    ExpectBlock<double, float>(
        DownSampling, {16777216.0, 1.0, 1.0, 0.0}, 4194304.5, {12582912.0F, -4194303.5F, -4194303.5F, -4194304.5F});
}

TEST(DownSampling, GoesDownAndBackUpExactly)
{
    cv::Mat const image = Draw<uchar>(
        {"19Zc", //
         "Za37", //
         "0404", //
         "Z09k"});
    cv::Mat low;
    cv::Mat high;
    cv::Mat again;
    ASSERT_TRUE(DownSampling(image, low, high));
    ExpectDrawn(low, {"kl", "g8"});
    EXPECT_EQ(high.type(), CV_8UC1);
    ASSERT_TRUE(UpSampling(low, high, again));
    EXPECT_TRUE(EqualImages(again, image));
}

TEST(DownSampling, KeepsTheDetailOutsideTheBlocks)
{
    cv::Mat const image = Draw<uchar>(
        {"22448", //
         "22448", //
         "66008", //
         "66008", //
         "88888"});
    cv::Mat low;
    cv::Mat high(5, 5, CV_8UC1, cv::Scalar(7));
    ASSERT_TRUE(DownSampling(image, low, high));
    ExpectDrawn(low, {"24", "60"});
    ExpectDrawn(
        high, {"00007", //
               "00007", //
               "00007", //
               "00007", //
               "77777"});
    // A new one holds zeros there.
    high.release();
    ASSERT_TRUE(DownSampling(image + 1, low, high));
    ExpectDrawn(high, {".....", ".....", ".....", ".....", "....."});
}

TEST(DownSampling, WritesIntoLargerOutputsInPlace)
{
    cv::Mat const image = Draw<short>(
        {"1133", //
         "1133", //
         "5577", //
         "5578"});
    cv::Mat low(3, 4, CV_16SC1, cv::Scalar(9));
    cv::Mat high(5, 6, CV_8UC1, cv::Scalar(9));
    uchar const * const lowData = low.data;
    uchar const * const highData = high.data;
    ASSERT_TRUE(DownSampling(image, low, high));
    EXPECT_EQ(low.data, lowData);
    EXPECT_EQ(high.data, highData);
    ExpectDrawn(
        low, {"1399", //
              "5799", //
              "9999"});
    ExpectDrawn(
        high, {"000099", //
               "000099", //
               "000099", //
               "000199", //
               "999999"});
}

TEST(DownSampling, TakesADetailOfTheBlocksAlone)
{
    cv::Mat const image = Draw<uchar>(
        {"117", //
         "117", //
         "777"});
    cv::Mat low;
    cv::Mat high(2, 2, CV_8UC1, cv::Scalar(9));
    ASSERT_TRUE(DownSampling(image, low, high));
    ExpectDrawn(low, {"1"});
    ExpectDrawn(high, {"00", "00"});
}

TEST(DownSampling, MakesItsOutputsInTheTypeOfTheSource)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            cv::Mat const image(7, 5, CV_MAKETYPE(depth, channels), cv::Scalar::all(0));
            cv::Mat low;
            cv::Mat high;
            ASSERT_TRUE(DownSampling(image, low, high));
            EXPECT_EQ(low.size(), cv::Size(2, 3));
            EXPECT_EQ(low.type(), image.type());
            EXPECT_EQ(high.size(), cv::Size(5, 7));
            EXPECT_EQ(high.type(), image.type());
        }
    }
}

TEST(DownSampling, ReducesChannelsOneByOne)
{
    cv::Mat image(2, 2, CV_8UC2);
    image.at<cv::Vec2b>(0, 0) = {1, 10};
    image.at<cv::Vec2b>(0, 1) = {2, 20};
    image.at<cv::Vec2b>(1, 0) = {3, 30};
    image.at<cv::Vec2b>(1, 1) = {4, 40};
    cv::Mat low;
    cv::Mat high(2, 2, CV_16SC2);
    ASSERT_TRUE(DownSampling(image, low, high));
    EXPECT_EQ(low.at<cv::Vec2b>(0, 0), cv::Vec2b(3, 25));
    EXPECT_EQ(high.at<cv::Vec2s>(0, 0), cv::Vec2s(-2, -15));
    EXPECT_EQ(high.at<cv::Vec2s>(0, 1), cv::Vec2s(-1, -5));
    EXPECT_EQ(high.at<cv::Vec2s>(1, 0), cv::Vec2s(0, 5));
    EXPECT_EQ(high.at<cv::Vec2s>(1, 1), cv::Vec2s(1, 15));
}

TEST(DownSamplings, TakeFiveChannels)
{
    cv::Mat const image = Draw({"224", "224", "884"}, CV_8UC(5));
    cv::Mat low;
    cv::Mat high;
    for (Operator const reduce : {Operator{DownSampling}, Operator{DownSamplingWithLogicalOr}, kMax, kMin})
    {
        low.release();
        high.release();
        ASSERT_TRUE(reduce(image, low, high));
        EXPECT_TRUE(EqualImages(low, Draw({"2"}, CV_8UC(5))));
        cv::Mat const zeros = Draw({"000", "000", "000"}, CV_8UC(5));
        cv::Mat const remainder = Draw({"002", "002", "662"}, CV_8UC(5));
        EXPECT_TRUE(EqualImages(high, reduce == kMin ? remainder : zeros));
    }
}

TEST(DownSamplingWithLogicalOr, DilatesAMaskByBlocks)
{
    cv::Mat const mask = Draw<uchar>(
                             {"..Z...", //
                              "...Z.."}) /
                         61 * 255;
    cv::Mat low;
    cv::Mat high;
    ASSERT_TRUE(DownSamplingWithLogicalOr(mask, low, high));
    EXPECT_TRUE(EqualImages(low, tests::Row<uchar>({0, 255, 0})));
    EXPECT_TRUE(EqualImages(
        high, Draw<uchar>(
                  {"...Z..", //
                   "..Z..."}) /
                  61 * 255));
}

TEST(DownSamplingWithLogicalOr, JoinsBits)
{
    ExpectBlock<uchar, uchar>(DownSamplingWithLogicalOr, {1, 2, 4, 6}, 7, {6, 5, 3, 1});
    ExpectBlock<uchar, int>(DownSamplingWithLogicalOr, {128, 0, 0, 1}, 129, {1, 129, 129, 128});
    ExpectBlock<ushort, uchar>(DownSamplingWithLogicalOr, {0x1201, 0, 0, 0x0104}, 0x1305, {0x04, 0x05, 0x05, 0x01});
    ExpectBlock<int, short>(DownSamplingWithLogicalOr, {kLeast, 0x18001, 0, -1}, -1, {-1, 0x7FFE, -1, 0});
    ExpectBlock<int, int>(
        DownSamplingWithLogicalOr, {kLeast, 5, 0, 0}, kLeast + 5, {5, kLeast, kLeast + 5, kLeast + 5});
}

TEST(DownSamplingWithLogicalOr, Takes16BitsAsUnsigned)
{
    ExpectBlock<short, short>(DownSamplingWithLogicalOr, {-32768, 1, 0, 0}, -32767, {1, -32768, -32767, -32767});
    ExpectBlock<short, ushort>(DownSamplingWithLogicalOr, {-32768, 1, 0, 0}, -32767, {1, 32768, 32769, 32769});
    ExpectBlock<ushort, short>(DownSamplingWithLogicalOr, {32768, 1, 0, 0}, 32769, {1, -32768, -32767, -32767});
    ExpectBlock<short, int>(DownSamplingWithLogicalOr, {-32768, 1, 0, 0}, -32767, {1, 32768, 32769, 32769});
    ExpectBlock<ushort, int>(DownSamplingWithLogicalOr, {32768, 1, 0, 0}, 32769, {1, 32768, 32769, 32769});
}

TEST(DownSamplings, OfOneRowOrColumn_HaveNoBlock)
{
    for (Operator const reduce : {Operator{DownSampling}, Operator{DownSamplingWithLogicalOr}, kMax, kMin})
    {
        for (cv::Size const size : {cv::Size(5, 1), cv::Size(1, 5), cv::Size(1, 1)})
        {
            cv::Mat const image(size, CV_8UC1, cv::Scalar(4));
            cv::Mat low;
            cv::Mat high(size, CV_8UC1, cv::Scalar(9));
            ASSERT_TRUE(reduce(image, low, high));
            EXPECT_TRUE(low.empty());
            EXPECT_EQ(low.rows, size.height / 2);
            EXPECT_EQ(low.cols, size.width / 2);
            EXPECT_TRUE(EqualImages(high, cv::Mat(size, CV_8UC1, cv::Scalar(9))));
            low = cv::Mat(3, 3, CV_8UC1, cv::Scalar(8));
            high.release();
            ASSERT_TRUE(reduce(image, low, high));
            EXPECT_TRUE(EqualImages(low, cv::Mat(3, 3, CV_8UC1, cv::Scalar(8))));
            EXPECT_TRUE(EqualImages(high, cv::Mat(size, CV_8UC1, cv::Scalar(0))));
        }
    }
}

TEST(DownSamplings, OfEmptyImages_AreEmpty)
{
    for (Operator const reduce : {Operator{DownSampling}, Operator{DownSamplingWithLogicalOr}, kMax, kMin})
    {
        for (cv::Mat const & none : {cv::Mat(), cv::Mat(0, 5, CV_8UC1), cv::Mat(5, 0, CV_8UC1)})
        {
            cv::Mat low;
            cv::Mat high;
            EXPECT_TRUE(reduce(none, low, high));
            EXPECT_TRUE(low.empty());
            EXPECT_TRUE(high.empty());
            low = cv::Mat(5, 5, CV_8UC1, cv::Scalar(8));
            high = cv::Mat(5, 5, CV_32SC1, cv::Scalar(9));
            EXPECT_TRUE(reduce(none, low, high));
            EXPECT_TRUE(EqualImages(low, cv::Mat(5, 5, CV_8UC1, cv::Scalar(8))));
            EXPECT_TRUE(EqualImages(high, cv::Mat(5, 5, CV_32SC1, cv::Scalar(9))));
        }
    }
}

} // namespace

} // namespace morvane::filters
