// What the operators that grow zones refuse, the accumulator partitions among them, and that their output is left alone
// then.
#include "support/AllTypes.h"
#include "support/GrowingOracle.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

namespace morvane::tests
{

namespace
{

constexpr std::array kEveryDepth{CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F};
cv::Size const kSize(5, 4);

template <class Depths>
bool IsAmong(Depths const & depths, int depth)
{
    return std::find(depths.begin(), depths.end(), depth) != depths.end();
}

/// An image of any type, the same number everywhere.
cv::Mat Even(cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    FillBytes(image, 0x01);
    return image;
}

GrowthInput InputOf(cv::Mat const & image, cv::Mat const & second)
{
    GrowthInput input;
    input.image = image;
    input.second = second;
    input.seeds = {{0, 0}, {2, 1}};
    input.delta1 = 2.0;
    input.delta2 = 2.0;
    return input;
}

/// Expects false, and that the header and the bytes of the output stay.
void ExpectRefusal(GrowthUnderTest const & growth, GrowthInput const & input, cv::Mat out)
{
    SCOPED_TRACE(
        std::string(growth.name) + ": " + Case(input.image.type(), input.image.size(), input.connexity) + ", second " +
        Case(input.second.type(), input.second.size(), 0) + ", out " + Case(out.type(), out.size(), 0));
    cv::Mat const header = out;
    Snapshot const before(out);
    EXPECT_FALSE(growth.call(input, out));
    EXPECT_EQ(out.type(), header.type());
    EXPECT_EQ(out.rows, header.rows);
    EXPECT_EQ(out.cols, header.cols);
    EXPECT_TRUE(before.IsUntouched());
}

TEST(RegionGrowingRefusal, EveryTypeOutsideTheTable_IsRefused)
{
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        for (int const depth : kEveryDepth)
        {
            for (int const outDepth : kEveryDepth)
            {
                for (int const channels : {1, 2, 3, 4, 5})
                {
                    if (channels == 1 && IsAmong(kDepths, depth) && IsAmong(kLabelDepths, outDepth)) continue;
                    cv::Mat const image = Even(kSize, CV_MAKETYPE(depth, channels));
                    cv::Mat const plain = Even(kSize, CV_8UC1);
                    ExpectRefusal(growth, InputOf(image, plain), DirtyLabels(kSize, outDepth));
                    if (growth.images == 2) ExpectRefusal(growth, InputOf(plain, image), DirtyLabels(kSize, outDepth));
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST(RegionGrowingRefusal, EveryTypeOfTheTable_IsWrittenTo)
{
    // So that the refusals above are not those of everything. In a constant image the first zone is all of it, or as
    // much as the budget holds.
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        for (int const depth : kDepths)
        {
            for (int const depth2 : kDepths)
            {
                for (int const outDepth : kLabelDepths)
                {
                    for (int const channels : {1, 2, 7})
                    {
                        GrowthInput const input = InputOf(Draw({"..", ".."}, depth), Draw({"11", "11"}, depth2));
                        FramedImage framed(DirtyLabels({2, 2}, CV_MAKETYPE(outDepth, channels)));
                        cv::Mat & out = framed.View();
                        SCOPED_TRACE(std::string(growth.name) + ", " + Case(out.type(), out.size(), 0));
                        ASSERT_TRUE(growth.call(input, out));
                        cv::Mat expected(2, 2 * channels, outDepth, cv::Scalar(0));
                        expected.colRange(0, 2).setTo(1);
                        ASSERT_TRUE(EqualImages(out.reshape(1), expected));
                        ASSERT_TRUE(framed.IsFrameUntouched());
                    }
                }
            }
        }
    }
}

TEST(RegionGrowingRefusal, SizesThatDiffer_AreRefused)
{
    cv::Mat const image = Even(kSize, CV_32FC1);
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        for (cv::Size const size : {cv::Size(4, 4), cv::Size(5, 5), cv::Size(4, 5), cv::Size(10, 2), cv::Size(5, 0)})
        {
            cv::Mat const other = Even(size, CV_32FC1);
            ExpectRefusal(growth, InputOf(image, image), DirtyLabels(size, CV_32SC1));
            ExpectRefusal(growth, InputOf(other, image), DirtyLabels(kSize, CV_32SC1));
            if (growth.images < 2) continue;
            ExpectRefusal(growth, InputOf(other, other), DirtyLabels(kSize, CV_32SC1));
            ExpectRefusal(growth, InputOf(other, image), DirtyLabels(kSize, CV_32SC1));
            if (size.height == kSize.height) continue;
            ExpectRefusal(growth, InputOf(image, other), DirtyLabels(kSize, CV_32SC1));
            ExpectRefusal(growth, InputOf(other, image), DirtyLabels(size, CV_32SC1));
        }
        cv::Mat const none;
        ExpectRefusal(growth, InputOf(image, image), none);
        ExpectRefusal(growth, InputOf(none, image), DirtyLabels(kSize, CV_32SC1));
        if (growth.images == 2) ExpectRefusal(growth, InputOf(image, none), DirtyLabels(kSize, CV_32SC1));
    }
}

TEST(RegionGrowingRefusal, WidthOfTheSecondImage_IsNotCompared)
{
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        if (growth.images < 2) continue;
        for (int const width : {0, 1, 4, 6, 100})
        {
            cv::Mat out = DirtyLabels(kSize, CV_32SC1);
            GrowthInput const input = InputOf(Even(kSize, CV_8UC1), Even({width, kSize.height}, CV_8UC1));
            EXPECT_TRUE(growth.call(input, out)) << growth.name << ", " << width;
        }
    }
}

TEST(RegionGrowingRefusal, NoSeeds_AreRefused)
{
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        GrowthInput input = InputOf(Even(kSize, CV_8UC1), Even(kSize, CV_8UC1));
        input.seeds.clear();
        cv::Mat out = DirtyLabels(kSize, CV_32SC1);
        if (growth.takesSeeds)
        {
            ExpectRefusal(growth, input, out);
        }
        else
        {
            EXPECT_TRUE(growth.call(input, out)) << growth.name;
        }
        input.image = cv::Mat();
        input.second = cv::Mat();
        if (growth.takesSeeds) ExpectRefusal(growth, input, cv::Mat());
    }
}

TEST(RegionGrowingRefusal, SeedsThatAllLieOutside_GiveAnImageOf0)
{
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        if (!growth.takesSeeds) continue;
        GrowthInput input = InputOf(Even(kSize, CV_8UC1), Even(kSize, CV_8UC1));
        input.seeds = {{-1, 0}, {0, kSize.height}};
        ExpectDrawn(Grown(growth, input), {".....", ".....", ".....", "....."});
    }
}

TEST(RegionGrowingRefusal, MoreThanTwoDimensions_AreRefused)
{
    std::array const sizes{2, 3, 4};
    cv::Mat const solid(3, sizes.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat const flat = Even(kSize, CV_8UC1);
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        cv::Mat out(3, sizes.data(), CV_32SC1, cv::Scalar(2));
        EXPECT_FALSE(growth.call(InputOf(solid, solid), out)) << growth.name;
        EXPECT_FALSE(growth.call(InputOf(flat, flat), out)) << growth.name;
        EXPECT_EQ(cv::sum(out)[0], 48.0) << growth.name;
        cv::Mat flatOut = DirtyLabels(kSize, CV_32SC1);
        Snapshot const before(flatOut);
        EXPECT_FALSE(growth.call(InputOf(solid, flat), flatOut)) << growth.name;
        if (growth.images == 2)
        {
            EXPECT_FALSE(growth.call(InputOf(flat, solid), flatOut)) << growth.name;
        }
        EXPECT_TRUE(before.IsUntouched()) << growth.name;
    }
}

} // namespace

} // namespace morvane::tests
