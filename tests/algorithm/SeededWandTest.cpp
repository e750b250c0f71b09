#include <morvane/algorithm/RegionGrowing.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using connexity::eConnexity4;
using connexity::eConnexity4Wrapped;
using connexity::eConnexity8;
using connexity::eConnexity8Wrapped;
using tests::Draw;
using tests::ExpectDrawn;
using tests::Row;
using tests::Shape;

using Seeds = std::vector<cv::Point>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

cv::Mat Wand(cv::Mat const & image, int connexity, Seeds const & seeds, float delta, int type = CV_32SC1)
{
    return tests::Written(
        image.size(), type, [&](cv::Mat & out) { return MagicWand(image, Shape(connexity), seeds, delta, out); });
}

/// Does a wand set on the first of two pixels take the second?
template <class T>
bool Reaches(T from, T to, float delta)
{
    cv::Mat const labels = Wand(Row<T>({from, to}), eConnexity4, {{0, 0}}, delta);
    EXPECT_EQ(labels.at<int>(0, 0), 1);
    return labels.at<int>(0, 1) == 1;
}

TEST(SeededWand, Zones_AreNumberedInTheOrderOfTheirSeeds)
{
    cv::Mat const image = Draw<uchar>({
        "1155",
        "1155",
        "3333",
        "9955",
    });
    ExpectDrawn(Wand(image, eConnexity4, {{3, 3}, {0, 0}, {1, 2}, {0, 3}}, 0.0F), {"22..", "22..", "3333", "4411"});
}

TEST(SeededWand, SecondSeedOfAZone_AddsNothing)
{
    cv::Mat const image = Draw<ushort>({
        "111.5",
        "1.1.5",
        "111.5",
    });
    for (int const type : tests::kLabelDepths)
    {
        // The counter advances once for the two seeds of the ring, and not for those that come twice.
        ExpectDrawn(
            Wand(image, eConnexity4, {{0, 0}, {2, 2}, {0, 0}, {4, 1}, {4, 1}, {1, 0}, {1, 1}}, 0.0F, type),
            {"111.2", "131.2", "111.2"});
    }
}

TEST(SeededWand, PixelsThatNoSeedReaches_Are0)
{
    cv::Mat const image = Draw<int>({
        "1191",
        "9911",
    });
    ExpectDrawn(Wand(image, eConnexity4, {{0, 0}}, 3.0F), {"11..", "...."});
    ExpectDrawn(Wand(image, eConnexity8, {{0, 0}}, 7.0F), {"11.1", "..11"});
    ExpectDrawn(Wand(image, eConnexity8, {{0, 0}}, 8.0F), {"1111", "1111"});
}

TEST(SeededWand, EmptyPixels_ArePixelsLikeOthers)
{
    cv::Mat const image = Draw<float>({
        "..12",
        "...9",
    });
    ExpectDrawn(Wand(image, eConnexity4, {{0, 1}}, 1.0F), {"1111", "111."});
}

TEST(SeededWand, SlowRamp_IsOneZoneHoweverFarItsEndsLieApart)
{
    cv::Mat const image = Draw<uchar>({
        "0369c",
        "zzzzf",
        "rolif",
    });
    ExpectDrawn(Wand(image, eConnexity4, {{0, 0}}, 3.0F), {"11111", "....1", "11111"});
    ExpectDrawn(Wand(image, eConnexity4, {{0, 0}}, 2.0F), {"1....", ".....", "....."});
}

TEST(SeededWand, WrappedShape_JoinsTheLastColumnToTheFirst)
{
    cv::Mat const image = Draw<uchar>({
        "19991",
        "99999",
        "99999",
    });
    ExpectDrawn(Wand(image, eConnexity4, {{0, 0}}, 0.0F), {"1....", ".....", "....."});
    ExpectDrawn(Wand(image, eConnexity4Wrapped, {{0, 0}}, 0.0F), {"1...1", ".....", "....."});
    ExpectDrawn(Wand(image, eConnexity4Wrapped, {{4, 0}}, 0.0F), {"1...1", ".....", "....."});
}

TEST(SeededWand, WrappedShape_DoesNotJoinTheFirstRowToTheLast)
{
    cv::Mat const image = Draw<uchar>({
        "1999",
        "9999",
        "1999",
    });
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        bool const reachesTwoRows = number >= 5;
        cv::Mat const labels = Wand(image, number, {{0, 0}}, 0.0F);
        EXPECT_EQ(labels.at<int>(2, 0), reachesTwoRows ? 1 : 0);
    }
    cv::Mat const tall = Draw<uchar>({
        "1",
        "9",
        "9",
        "9",
        "1",
    });
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        ExpectDrawn(Wand(tall, number, {{0, 0}}, 0.0F), {"1", ".", ".", ".", "."});
    }
}

TEST(SeededWand, NumberOutsideTheTableOfShapes_GivesZonesOfOnePixel)
{
    cv::Mat const image = Draw<uchar>({
        "11",
        "11",
    });
    for (int const number : tests::kStrangeConnexities)
    {
        ExpectDrawn(Wand(image, number, {{1, 1}, {0, 0}}, 5.0F), {"2.", ".1"});
    }
}

TEST(SeededWand, SeedsOutsideTheImage_ArePassedOver)
{
    cv::Mat const image = Draw<uchar>({
        "159",
        "159",
    });
    int const least = std::numeric_limits<int>::min();
    int const most = std::numeric_limits<int>::max();
    Seeds const seeds{{-1, 0},        {2, 0}, {3, 0},       {0, -1},   {0, 2},
                      {least, least}, {0, 1}, {most, most}, {most, 0}, {0, least}};
    ExpectDrawn(Wand(image, eConnexity8, seeds, 0.0F), {"2.1", "2.1"});
    ExpectDrawn(Wand(image, eConnexity8Wrapped, {{-1, 0}, {3, 1}}, 0.0F), {"...", "..."});
}

TEST(SeededWand, ThreeHundredZonesInEightBits_WrapThroughZero)
{
    cv::Mat const image = tests::RowOfZones(300, CV_32FC1);
    Seeds seeds;
    for (int x = 299; x >= 0; --x)
    {
        seeds.emplace_back(x, 0);
    }
    cv::Mat const labels = Wand(image, eConnexity4, seeds, 0.0F, CV_8UC1);
    for (int zone = 1; zone <= 300; ++zone)
    {
        ASSERT_EQ(labels.at<uchar>(0, 300 - zone), zone <= 255 ? zone : zone - 256) << "zone " << zone;
    }
    EXPECT_EQ(labels.at<uchar>(0, 300 - 256), 0);
    EXPECT_EQ(labels.at<uchar>(0, 0), 44);
}

TEST(SeededWand, MoreThan65536ZonesIn16Bits_WrapThroughZero)
{
    cv::Mat const image = tests::RowOfZones(65600, CV_8UC1);
    Seeds seeds;
    for (int x = 0; x < image.cols; ++x)
    {
        seeds.emplace_back(x, 0);
    }
    cv::Mat const narrow = Wand(image, eConnexity4, seeds, 0.0F, CV_16UC1);
    cv::Mat const bits = Wand(image, eConnexity4, seeds, 0.0F, CV_16SC1);
    cv::Mat const wide = Wand(image, eConnexity4, seeds, 0.0F);
    for (int const zone : {1, 255, 256, 32767, 32768, 65534, 65535, 65536, 65537, 65600})
    {
        SCOPED_TRACE(zone);
        int const wrapped = zone % 65536;
        EXPECT_EQ(narrow.at<ushort>(0, zone - 1), wrapped);
        EXPECT_EQ(bits.at<short>(0, zone - 1), wrapped > 32767 ? wrapped - 65536 : wrapped);
        EXPECT_EQ(wide.at<int>(0, zone - 1), zone);
    }
}

TEST(SeededWand, LabelsOfSeveralChannels_TakeTheFirstElementsOfEachRow)
{
    cv::Mat const image = Draw<uchar>({
        "1199",
        "9999",
    });
    cv::Mat const labels = Wand(image, eConnexity4, {{1, 0}, {3, 1}}, 0.0F, CV_16SC3);
    cv::Mat const elements = labels.reshape(1);
    ExpectDrawn(elements, {"1122........", "2222........"});
}

TEST(SeededWand, DeltaOfAnIntegerImage_IsCutAndKeepsTheLowBits)
{
    EXPECT_TRUE(Reaches<uchar>(10, 12, 2.9F));
    EXPECT_FALSE(Reaches<uchar>(10, 13, 2.9F));
    EXPECT_TRUE(Reaches<uchar>(10, 54, 300.0F)) << "300 is 44";
    EXPECT_FALSE(Reaches<uchar>(10, 55, 300.0F)) << "300 is 44";
    EXPECT_TRUE(Reaches<uchar>(10, 10, 256.0F));
    EXPECT_FALSE(Reaches<uchar>(10, 11, 256.0F)) << "256 is 0";
    EXPECT_TRUE(Reaches<uchar>(0, 255, -1.0F)) << "-1 is 255";
    EXPECT_TRUE(Reaches<uchar>(3, 3, -0.9F)) << "-0.9 is 0";
    EXPECT_FALSE(Reaches<uchar>(3, 4, -0.9F)) << "-0.9 is 0";
    EXPECT_TRUE(Reaches<ushort>(0, 5, 65541.0F)) << "65541 is 5";
    EXPECT_FALSE(Reaches<ushort>(0, 6, 65541.0F)) << "65541 is 5";
    EXPECT_TRUE(Reaches<ushort>(0, 65535, -1.0F)) << "-1 is 65535";
    EXPECT_FALSE(Reaches<short>(7, 7, 40000.0F)) << "40000 is -25536";
    EXPECT_FALSE(Reaches<short>(7, 7, -1.0F));
    EXPECT_TRUE(Reaches<short>(-32768, -1, 32767.0F));
    EXPECT_FALSE(Reaches<short>(-32768, 0, 32767.0F));
    EXPECT_TRUE(Reaches<int>(0, 70000, 70000.0F));
    EXPECT_FALSE(Reaches<int>(7, 7, -1.0F));
}

TEST(SeededWand, DeltaThatNoIntHolds_CountsAsTheSmallest)
{
    for (float const delta : {2147483648.0F, -2147484000.0F, 1e10F, -1e10F, 3e38F, kInfinity, -kInfinity, kNaN})
    {
        SCOPED_TRACE(delta);
        // Its low bits are 0 in 8 and 16 bits; in 32 bits it is below every difference.
        EXPECT_TRUE(Reaches<uchar>(9, 9, delta));
        EXPECT_FALSE(Reaches<uchar>(9, 10, delta));
        EXPECT_TRUE(Reaches<ushort>(9, 9, delta));
        EXPECT_FALSE(Reaches<ushort>(9, 10, delta));
        EXPECT_TRUE(Reaches<short>(9, 9, delta));
        EXPECT_FALSE(Reaches<short>(9, 10, delta));
        EXPECT_FALSE(Reaches<int>(9, 9, delta));
        EXPECT_FALSE(Reaches<int>(9, 10, delta));
    }
}

TEST(SeededWand, DifferencesOfIntBeyondItsRange_ReadNegativeAndPass)
{
    int const least = std::numeric_limits<int>::min();
    int const most = std::numeric_limits<int>::max();
    EXPECT_TRUE(Reaches<int>(least, most, 0.0F)) << "the difference is -1";
    EXPECT_TRUE(Reaches<int>(most, -1, 0.0F)) << "the difference is -2147483648";
    EXPECT_FALSE(Reaches<int>(most, 0, 1e9F));
    EXPECT_TRUE(Reaches<int>(most, -1, kInfinity)) << "the smallest int is at most the smallest int";
}

TEST(SeededWand, DeltaOfAFloatingPointImage_IsTakenAsItIs)
{
    EXPECT_TRUE(Reaches<float>(0.0F, 0.1F, 0.1F));
    EXPECT_FALSE(Reaches<float>(0.0F, std::nextafter(0.1F, 1.0F), 0.1F));
    // 0.1F is 0.100000001490116...: a double sees the digits behind the tenth.
    EXPECT_TRUE(Reaches<double>(0.0, 0.10000000149, 0.1F));
    EXPECT_FALSE(Reaches<double>(0.0, 0.1000000015, 0.1F));
    EXPECT_FALSE(Reaches<float>(2.0F, 2.0F, -0.5F));
    EXPECT_FALSE(Reaches<double>(2.0, 2.0, -0.5F));
    EXPECT_TRUE(Reaches<float>(0.0F, -0.0F, 0.0F));
    EXPECT_TRUE(Reaches<float>(-3e38F, 3e38F, kInfinity)) << "a difference beyond the range is an infinity";
    EXPECT_FALSE(Reaches<float>(-3e38F, 3e38F, 3e38F));
    EXPECT_FALSE(Reaches<float>(2.0F, 2.0F, kNaN));
    EXPECT_FALSE(Reaches<double>(2.0, 2.0, kNaN));
}

TEST(SeededWand, NaNAndInfinities_JoinNothingThatIsLikeThem)
{
    EXPECT_FALSE(Reaches<float>(kNaN, kNaN, kInfinity));
    EXPECT_FALSE(Reaches<float>(1.0F, kNaN, kInfinity));
    EXPECT_FALSE(Reaches<double>(static_cast<double>(kNaN), 1.0, kInfinity));
    EXPECT_FALSE(Reaches<float>(kInfinity, kInfinity, kInfinity)) << "their difference is NaN";
    EXPECT_TRUE(Reaches<float>(kInfinity, 1.0F, kInfinity));
    EXPECT_TRUE(Reaches<float>(kInfinity, -kInfinity, kInfinity));
}

TEST(SeededWand, SeedOnANaN_IsAZoneOfItsOwn)
{
    cv::Mat image = Draw<float>({"111"});
    image.at<float>(0, 1) = kNaN;
    ExpectDrawn(Wand(image, eConnexity4, {{0, 0}, {1, 0}}, 5.0F), {"12."});
}

TEST(SeededWand, ImagesWithoutPixels_AreDone)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(5, 0), cv::Size(0, 5)})
    {
        SCOPED_TRACE(size);
        cv::Mat const image(size.height, size.width, CV_32FC1);
        cv::Mat out(size.height, size.width, CV_8UC1);
        EXPECT_TRUE(MagicWand(image, eConnexity8Wrapped, {{0, 0}}, 1.0F, out));
        EXPECT_TRUE(MagicWand(image, image, eConnexity8Wrapped, {{0, 0}}, 1.0F, 1.0F, out));
        EXPECT_EQ(out.size(), size);
        EXPECT_EQ(out.type(), CV_8UC1);
    }
}

} // namespace

} // namespace morvane::algorithm
