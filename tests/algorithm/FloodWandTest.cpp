// The wands that stand on a flood fill: masks with a frame, regions of one image and of two.
#include <morvane/algorithm/RegionGrowing.h>

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::ElementAt;
using tests::EqualImages;
using tests::Random;
using tests::Row;
using tests::SetElement;
using tests::Snapshot;

/// The types that a flood fill takes.
constexpr std::array kTypes{CV_8UC1, CV_8UC3, CV_32SC1, CV_32SC3, CV_32FC1, CV_32FC3};

/// A bound in every channel.
cv::Scalar All(double delta)
{
    return cv::Scalar::all(delta);
}

/// Expects 255 where 1 is drawn, in 8 bits, and 0 elsewhere.
void ExpectMask(cv::Mat const & out, Drawing const & expected)
{
    cv::Mat const drawn = Draw(expected, CV_8UC1);
    tests::ExpectEqualImages(out, drawn * 255);
}

cv::Mat Wand(cv::Mat const & image, cv::Scalar const & delta, cv::Point seed)
{
    Snapshot const before(image);
    cv::Mat out;
    MagicWand(image, delta, seed, out);
    EXPECT_TRUE(before.IsUntouched());
    return out;
}

cv::Mat WandOfTwo(
    cv::Mat const & image1, cv::Mat const & image2, cv::Scalar const & delta1, cv::Scalar const & delta2,
    cv::Point seed)
{
    Snapshot const before1(image1);
    Snapshot const before2(image2);
    cv::Mat out(image1.size(), CV_8UC1, cv::Scalar(0x5A));
    MagicWand(image1, image2, delta1, delta2, seed, out);
    EXPECT_TRUE(before1.IsUntouched());
    EXPECT_TRUE(before2.IsUntouched());
    return out;
}

/// Are two pixels near in every channel?
bool AreNear(cv::Mat const & image, cv::Scalar const & delta, cv::Point one, cv::Point other)
{
    for (int channel = 0; channel < image.channels(); ++channel)
    {
        double const a = ElementAt(image, one.y, one.x, channel);
        double const b = ElementAt(image, other.y, other.x, channel);
        if (image.depth() == CV_32F)
        {
            float const difference = static_cast<float>(a) - static_cast<float>(b);
            if (!(std::abs(difference) <= static_cast<float>(delta[channel]))) return false;
        }
        else if (std::abs(a - b) > std::floor(delta[channel]))
        {
            return false;
        }
    }
    return true;
}

/// The region of a seed, pixel by pixel, among the pixels of a mask; with a frame.
cv::Mat PlainRegion(cv::Mat const & image, cv::Scalar const & delta, cv::Point seed, cv::Mat const & within)
{
    cv::Mat1b region(image.rows + 2, image.cols + 2, uchar{0});
    cv::Point const frame(1, 1);
    std::vector<cv::Point> work{seed};
    region(seed + frame) = 255;
    while (!work.empty())
    {
        cv::Point const p = work.back();
        work.pop_back();
        for (int dy = -1; dy <= 1; ++dy)
        {
            for (int dx = -1; dx <= 1; ++dx)
            {
                cv::Point const q(p.x + dx, p.y + dy);
                if (q.x < 0 || q.x >= image.cols || q.y < 0 || q.y >= image.rows) continue;
                if (region(q + frame) != 0 || within.at<uchar>(q + frame) == 0) continue;
                if (!AreNear(image, delta, p, q)) continue;
                region(q + frame) = 255;
                work.push_back(q);
            }
        }
    }
    return region;
}

cv::Mat PlainRegion(cv::Mat const & image, cv::Scalar const & delta, cv::Point seed)
{
    return PlainRegion(image, delta, seed, cv::Mat1b(image.rows + 2, image.cols + 2, uchar{1}));
}

TEST(FloodWand, Mask_IsTwoRowsAndColumnsLargerThanTheImage)
{
    cv::Mat const image(10, 20, CV_8UC1, cv::Scalar(3));
    cv::Mat const out = Wand(image, All(0), {7, 7});
    ASSERT_EQ(out.size(), cv::Size(22, 12));
    ASSERT_EQ(out.type(), CV_8UC1);
    cv::Mat expected(12, 22, CV_8UC1, cv::Scalar(0));
    expected(cv::Rect(1, 1, 20, 10)).setTo(255);
    tests::ExpectEqualImages(out, expected);
}

TEST(FloodWand, Pixel_StandsOneRowAndOneColumnFurtherInTheMask)
{
    cv::Mat const image = Draw<uchar>({
        "1122",
        "1322",
        "1133",
    });
    ExpectMask(Wand(image, All(0), {2, 1}), {"......", "...11.", "...11.", "......", "......"});
    ExpectMask(Wand(image, All(0), {3, 2}), {"......", "......", "..1...", "...11.", "......"});
    ExpectMask(Wand(image, All(1), {0, 0}), {"......", ".1111.", ".1111.", ".1111.", "......"});
}

TEST(FloodWand, Region_PassesCornersAndDriftsOverSmallSteps)
{
    cv::Mat const image = Draw<float>({
        "0..9.",
        "91999",
        "9924.",
        "99938",
    });
    ExpectMask(Wand(image, All(1), {0, 0}), {".......", ".111...", "..1....", "...11..", "....1..", "......."});
}

TEST(FloodWand, DeltaIsInclusiveBothUpAndDown)
{
    ExpectMask(Wand(Row<uchar>({10, 15, 10, 4}), All(5), {1, 0}), {"......", ".111..", "......"});
    ExpectMask(Wand(Row<int>({-10, -15, -10, 4}), All(5), {1, 0}), {"......", ".111..", "......"});
    ExpectMask(Wand(Row<float>({1.0F, 1.5F, 1.0F, 0.4F}), All(0.5), {1, 0}), {"......", ".111..", "......"});
}

TEST(FloodWand, EachChannel_HasItsBound)
{
    cv::Mat const image = Row<cv::Vec3b>({{1, 1, 1}, {3, 1, 1}, {3, 4, 1}, {3, 4, 5}});
    ExpectMask(Wand(image, cv::Scalar(2, 3, 4), {0, 0}), {"......", ".1111.", "......"});
    ExpectMask(Wand(image, cv::Scalar(1, 3, 4), {0, 0}), {"......", ".1....", "......"});
    ExpectMask(Wand(image, cv::Scalar(2, 2, 4), {0, 0}), {"......", ".11...", "......"});
    ExpectMask(Wand(image, cv::Scalar(2, 3, 3), {0, 0}), {"......", ".111..", "......"});
}

TEST(FloodWand, PaintOfTheFill_IsNotTakenForPixels)
{
    // A region is painted with 255 on the way, and with 128 in a second image.
    cv::Mat const image = Row<uchar>({3, 3, 255, 255, 128, 128});
    ExpectMask(Wand(image, All(5), {0, 0}), {"........", ".11.....", "........"});
    cv::Mat const even(image.size(), CV_8UC1, cv::Scalar(0));
    ExpectMask(WandOfTwo(even, image, All(5), All(5), {0, 0}), {"........", ".11.....", "........"});
    cv::Mat const block = Draw<uchar>({"333", "333"});
    cv::Mat bright = block.clone();
    bright.row(1).setTo(255);
    ExpectMask(Wand(bright, All(0), {1, 0}), {".....", ".111.", ".....", "....."});
}

TEST(FloodWand, NaN_IsARegionOfItsOwn)
{
    cv::Mat const image = Row<float>({1.0F, NAN, 1.0F, NAN, NAN});
    ExpectMask(Wand(image, All(5), {0, 0}), {".......", ".1.....", "......."});
    ExpectMask(Wand(image, All(5), {3, 0}), {".......", "....1..", "......."});
}

TEST(FloodWand, FirstAndLastColumn_AreNotJoined)
{
    ExpectMask(Wand(Draw<uchar>({"19991"}), All(0), {0, 0}), {".......", ".1.....", "......."});
    cv::Mat const image = Draw<uchar>({"19991"});
    ExpectMask(WandOfTwo(image, image, All(0), All(0), {0, 0}), {".......", ".1.....", "......."});
}

TEST(FloodWand, OutOfAnySizeAndType_BecomesTheMask)
{
    cv::Mat const image = Draw<float>({"12", "92"});
    cv::Mat const expected = Wand(image, All(1), {0, 0});
    ExpectMask(expected, {"....", ".11.", "..1.", "...."});
    for (int const type : {CV_8UC1, CV_8SC1, CV_32FC1, CV_64FC4})
    {
        for (cv::Size const size : {cv::Size(0, 0), cv::Size(2, 2), cv::Size(4, 4), cv::Size(9, 1)})
        {
            cv::Mat out(size, type, cv::Scalar::all(1));
            MagicWand(image, All(1), {0, 0}, out);
            ASSERT_TRUE(EqualImages(out, expected));
        }
    }
}

TEST(FloodWand, OutThatIsTheImage_BecomesTheMask)
{
    cv::Mat image = Draw<uchar>({"1299"});
    MagicWand(image, All(1), {0, 0}, image);
    ExpectMask(image, {"......", ".11...", "......"});
}

TEST(FloodWand, SurroundingsOfAView_AreNeitherReadNorWritten)
{
    cv::Mat const content = Draw<uchar>({"11", "19"});
    tests::FramedImage image(content);
    tests::FramedImage out(content);
    cv::Mat view = out.View();
    MagicWand(image.View(), All(200), {0, 0}, view);
    ExpectMask(view, {"....", ".11.", ".11.", "...."});
    EXPECT_TRUE(image.IsFrameUntouched());
    EXPECT_TRUE(out.IsFrameUntouched());

    cv::Mat view2 = out.View();
    MagicWand(image.View(), image.View(), All(200), All(0), {0, 0}, view2);
    ExpectMask(view2, {"....", ".11.", ".1..", "...."});
    EXPECT_TRUE(image.IsFrameUntouched());
    EXPECT_TRUE(out.IsFrameUntouched());
    EXPECT_TRUE(EqualImages(image.View(), content));
}

TEST(FloodWandOfTwo, Region_IsReachedInTheSecondImageWithinThatOfTheFirst)
{
    cv::Mat const image1 = Draw<uchar>({
        "11199",
        "99199",
        "11111",
    });
    cv::Mat const image2 = Draw<float>({
        "55555",
        "55755",
        "55555",
    });
    // In the second image alone the lower row is reached round the 7; within the region of the first it is not.
    ExpectMask(
        WandOfTwo(image1, image2, All(0), All(0), {0, 0}), {".......", ".111...", ".......", ".......", "......."});
    ExpectMask(
        WandOfTwo(image1, image2, All(0), All(2), {0, 0}), {".......", ".111...", "...1...", ".11111.", "......."});
    ExpectMask(
        WandOfTwo(image1, image2, All(8), All(0), {0, 0}), {".......", ".11111.", ".11.11.", ".11111.", "......."});
}

TEST(FloodWandOfTwo, RegionsNotSteps_AreCombined)
{
    // The step from 2 to 4 across a corner is steep in the first image, which reaches both on a longer way: the second
    // image may take it.
    cv::Mat const image1 = Draw<uchar>({
        "1zz",
        "2zz",
        "345",
    });
    cv::Mat const image2 = Draw<uchar>({
        "399",
        "399",
        "933",
    });
    cv::Mat const out = WandOfTwo(image1, image2, All(1), All(0), {0, 0});
    ExpectMask(out, {".....", ".1...", ".1...", "..11.", "....."});
}

/// A random image of few values, with those of the paint among them.
cv::Mat RandomGround(Random & random, cv::Size size, int type)
{
    constexpr std::array kValues{0.0, 1.0, 2.0, 3.0, 5.0, 8.0, 127.0, 128.0, 254.0, 255.0};
    int const used = 2 + random.Below(static_cast<int>(kValues.size()) - 1);
    double const part = CV_MAT_DEPTH(type) == CV_32F ? 0.37 : 1.0;
    cv::Mat image(size, type);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            for (int channel = 0; channel < image.channels(); ++channel)
            {
                // The further channels vary less, so that regions grow.
                double const value = kValues[static_cast<std::size_t>(random.Below(channel == 0 ? used : 2))];
                SetElement(image, y, x, channel, part * value);
            }
        }
    }
    return image;
}

cv::Scalar RandomBound(Random & random)
{
    constexpr std::array kDeltas{0.0, 0.4, 1.0, 1.1, 2.0, 2.9, 3.0, 5.0, 100.0};
    cv::Scalar bound;
    for (double & delta : bound.val)
    {
        delta = kDeltas[static_cast<std::size_t>(random.Below(static_cast<int>(kDeltas.size())))];
    }
    return bound;
}

TEST(FloodWandRandom, Regions_MatchThePlainFill)
{
    Random random(1330);
    for (int round = 0; round < 1200; ++round)
    {
        int const type = kTypes[static_cast<std::size_t>(round) % kTypes.size()];
        cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
        cv::Point const seed(random.Below(size.width), random.Below(size.height));
        cv::Scalar const delta = RandomBound(random);
        cv::Mat const image = RandomGround(random, size, type);
        SCOPED_TRACE(cv::typeToString(type) + ", round " + std::to_string(round));
        ASSERT_TRUE(EqualImages(Wand(image, delta, seed), PlainRegion(image, delta, seed)));
    }
}

TEST(FloodWandRandom, RegionsOfTwo_MatchThePlainFillWithinThePlainFill)
{
    Random random(1331);
    for (int round = 0; round < 1800; ++round)
    {
        int const type1 = kTypes[static_cast<std::size_t>(round) % kTypes.size()];
        int const type2 = kTypes[static_cast<std::size_t>(round) / kTypes.size() % kTypes.size()];
        cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
        cv::Point const seed(random.Below(size.width), random.Below(size.height));
        cv::Scalar const delta1 = RandomBound(random);
        cv::Scalar const delta2 = RandomBound(random);
        cv::Mat const image1 = RandomGround(random, size, type1);
        cv::Mat const image2 = RandomGround(random, size, type2);
        SCOPED_TRACE(cv::typeToString(type1) + ", " + cv::typeToString(type2) + ", round " + std::to_string(round));
        cv::Mat const expected = PlainRegion(image2, delta2, seed, PlainRegion(image1, delta1, seed));
        ASSERT_TRUE(EqualImages(WandOfTwo(image1, image2, delta1, delta2, seed), expected));
    }
}

} // namespace

} // namespace morvane::algorithm
