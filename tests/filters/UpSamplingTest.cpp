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

/// Joins the value of one block with four details.
template <class T, class High, class Out = T>
void ExpectSums(T value, std::array<High, 4> const & detail, std::array<Out, 4> const & sums)
{
    cv::Mat const low = tests::Row<T>({value});
    cv::Mat const high = tests::Row<High>({detail[0], detail[1], detail[2], detail[3]}).reshape(0, 2);
    cv::Mat const expected = tests::Row<Out>({sums[0], sums[1], sums[2], sums[3]}).reshape(0, 2);
    SCOPED_TRACE(cv::typeToString(low.type()) + " and " + cv::typeToString(high.type()));
    cv::Mat dst;
    if (low.type() != expected.type()) dst.create(2, 2, expected.type());
    ASSERT_TRUE(UpSampling(low, high, dst));
    EXPECT_TRUE(EqualImages(dst, expected));
}

TEST(UpSampling, OfEightBits_AddsModulo256)
{
    ExpectSums<uchar, uchar>(3, {254, 255, 0, 1}, {1, 2, 3, 4});
    ExpectSums<uchar, uchar>(200, {100, 55, 56, 255}, {44, 255, 0, 199});
}

TEST(UpSampling, OfEightBitsAndWiderDetail_Clamps)
{
    ExpectSums<uchar, short>(3, {-2, -1, 0, 1}, {1, 2, 3, 4});
    ExpectSums<uchar, short>(200, {-201, -200, 55, 56}, {0, 0, 255, 255});
    ExpectSums<uchar, int>(200, {-201, -200, 55, 56}, {0, 0, 255, 255});
    ExpectSums<uchar, ushort>(200, {0, 55, 56, 65535}, {200, 255, 255, 255});
}

TEST(UpSampling, OfEightBits_WrapsInTheWidthOfTheDetailBeforeItClamps)
{
    ExpectSums<uchar, short>(200, {32767, 32568, 32567, -32768}, {0, 0, 255, 0});
    ExpectSums<uchar, int>(200, {kMost, kMost - 199, kMost - 200, kLeast}, {0, 0, 255, 0});
    ExpectSums<uchar, int>(200, {32767, 65535, 65536, -65536}, {255, 255, 255, 0});
}

TEST(UpSampling, Of16Bits_Saturates)
{
    ExpectSums<ushort, uchar>(65500, {0, 35, 36, 255}, {65500, 65535, 65535, 65535});
    ExpectSums<ushort, short>(100, {-100, -101, 32767, -32768}, {0, 0, 32867, 0});
    ExpectSums<ushort, ushort>(100, {65435, 65436, 0, 65535}, {65535, 65535, 100, 65535});
    ExpectSums<ushort, int>(100, {-100, -101, 65435, 65436}, {0, 0, 65535, 65535});
    ExpectSums<short, uchar>(32700, {0, 67, 68, 255}, {32700, 32767, 32767, 32767});
    ExpectSums<short, short>(-32000, {-768, -769, 32767, -32768}, {-32768, -32768, 767, -32768});
    ExpectSums<short, ushort>(-32768, {65535, 65534, 0, 1}, {32767, 32766, -32768, -32767});
    ExpectSums<short, int>(-1, {kMost, 32768, 32769, -32768}, {32767, 32767, 32767, -32768});
}

TEST(UpSampling, Of16Bits_WrapsIn32BitsBeforeItSaturates)
{
    ExpectSums<ushort, int>(1, {kMost, kMost - 1, kLeast, -1}, {0, 65535, 0, 0});
    ExpectSums<short, int>(-1, {kLeast, kLeast + 1, 0, 1}, {32767, -32768, -1, 0});
}

TEST(UpSampling, Of16Bits_SaturatesToTheDepthThatIsThere)
{
    ExpectSums<short, short, uchar>(-3, {0, 3, 258, 259}, {0, 0, 255, 255});
    ExpectSums<ushort, short, short>(40000, {0, -7233, -7232, -32768}, {32767, 32767, 32767, 7232});
    ExpectSums<short, short, ushort>(-3, {0, 3, 4, 32767}, {0, 0, 1, 32764});
    ExpectSums<ushort, ushort, int>(65535, {0, 1, 65535, 2}, {65535, 65536, 131070, 65537});
    ExpectSums<short, int, float>(
        -1, {0, kMost, kLeast + 1, -16777217}, {-1.0F, 2147483648.0F, -2147483648.0F, -16777218.0F});
    ExpectSums<short, int, double>(-1, {0, kMost, kLeast, -16777217}, {-1.0, kMost - 1.0, kMost, -16777218.0});
}

TEST(UpSampling, Of32BitsAndEightBitDetail_KeepsTheLowestByteAlone)
{
    ExpectSums<int, uchar>(3, {254, 255, 0, 1}, {1, 2, 3, 4});
    ExpectSums<int, uchar>(1000, {0, 23, 24, 255}, {232, 255, 0, 231});
    ExpectSums<int, uchar>(-1, {0, 1, 2, 255}, {255, 0, 1, 254});
    ExpectSums<int, uchar>(kLeast, {0, 1, 128, 255}, {0, 1, 128, 255});
}

TEST(UpSampling, Of32Bits_WrapsAround)
{
    ExpectSums<int, int>(-1, {kLeast, 0, 1, kMost}, {kMost, -1, 0, kMost - 1});
    ExpectSums<int, short>(kMost, {1, 0, -1, -32768}, {kLeast, kMost, kMost - 1, kMost - 32768});
    ExpectSums<int, ushort>(kMost - 65534, {65534, 65535, 0, 1}, {kMost, kLeast, kMost - 65534, kMost - 65533});
}

TEST(UpSampling, OfFloats_AddsInTheirType)
{
    ExpectSums<float, uchar>(0.5F, {0, 1, 2, 255}, {0.5F, 1.5F, 2.5F, 255.5F});
    ExpectSums<float, ushort>(-0.25F, {0, 1, 2, 65535}, {-0.25F, 0.75F, 1.75F, 65534.75F});
    ExpectSums<float, int>(1.0F, {16777217, kMost, kLeast, -1}, {16777216.0F, 2147483648.0F, -2147483648.0F, 0.0F});
    ExpectSums<double, short>(0.5, {-2, -1, 0, 1}, {-1.5, -0.5, 0.5, 1.5});
    ExpectSums<double, int>(0.5, {16777217, kMost, kLeast, -1}, {16777217.5, 2147483647.5, -2147483647.5, -0.5});
}

TEST(UpSampling, PlacesBlocksInRasterOrder)
{
    cv::Mat const low = Draw<uchar>({"15", "91"});
    cv::Mat const high = Draw<uchar>(
        {"0123", //
         "4560", //
         "0000", //
         "0008"});
    cv::Mat dst;
    ASSERT_TRUE(UpSampling(low, high, dst));
    ExpectDrawn(
        dst, {"1278", //
              "56b5", //
              "9911", //
              "9919"});
}

TEST(UpSampling, KeepsWhatLiesOutsideTheBlocks)
{
    cv::Mat dst(3, 4, CV_8UC1, cv::Scalar(7));
    uchar const * const data = dst.data;
    ASSERT_TRUE(UpSampling(Draw<uchar>({"1"}), Draw<short>({"123", "459", "999"}), dst));
    EXPECT_EQ(dst.data, data);
    ExpectDrawn(dst, {"2377", "5677", "7777"});
    ASSERT_TRUE(UpSampling(Draw<uchar>({"1"}), dst));
    EXPECT_EQ(dst.data, data);
    ExpectDrawn(dst, {"1177", "1177", "7777"});
}

TEST(UpSampling, WithoutDetail_RepeatsValues)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {1, 2, 3, 4, 5})
        {
            int const type = CV_MAKETYPE(depth, channels);
            cv::Mat dst;
            ASSERT_TRUE(UpSampling(Draw({"12Z", "930"}, type), dst));
            EXPECT_TRUE(EqualImages(
                dst, Draw(
                         {"1122ZZ", //
                          "1122ZZ", //
                          "993300", //
                          "993300"},
                         type)));
        }
    }
}

TEST(UpSampling, OfEmptyImages_IsEmpty)
{
    for (cv::Mat const & none : {cv::Mat(), cv::Mat(0, 5, CV_8UC1), cv::Mat(5, 0, CV_8UC1)})
    {
        cv::Mat dst;
        EXPECT_TRUE(UpSampling(none, dst));
        EXPECT_TRUE(dst.empty());
        EXPECT_TRUE(UpSampling(none, cv::Mat(10, 10, CV_8UC1), dst));
        EXPECT_TRUE(dst.empty());
        dst = cv::Mat(10, 10, CV_8UC1, cv::Scalar(7));
        EXPECT_TRUE(UpSampling(none, dst));
        EXPECT_TRUE(EqualImages(dst, cv::Mat(10, 10, CV_8UC1, cv::Scalar(7))));
    }
}

} // namespace

} // namespace morvane::filters
