// The pyramid against the same pixel by pixel, on random images of every pair of types, and its way back.
#include <morvane/filters/Sampling.h>

#include "support/AllTypes.h"
#include "support/AnyNumbers.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/RandomImages.h"
#include "support/SamplingOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <functional>

namespace morvane::filters
{

namespace
{

using tests::Blocks;
using tests::EqualImages;
using tests::FramedImage;
using tests::Random;
using tests::Reduction;
using tests::WithOneNaN;

constexpr std::array kDetailDepths{CV_8U, CV_16U, CV_16S, CV_32S};

bool Reduce(Reduction reduction, cv::Mat const & src, cv::Mat & low, cv::Mat & high)
{
    switch (reduction)
    {
    case Reduction::Mean:
        return DownSampling(src, low, high);
    case Reduction::LogicalOr:
        return DownSamplingWithLogicalOr(src, low, high);
    case Reduction::Max:
        return DownSamplingWithMax(src, low, high);
    default:
        return DownSamplingWithMin(src, low, high);
    }
}

/// An image of the same size or larger, filled with a byte.
cv::Mat Prepared(Random & random, cv::Size size, int type)
{
    cv::Mat image(size.height + random.Below(3), size.width + random.Below(3), type);
    tests::FillBytes(image, 0x5A);
    return image;
}

/// Reduces into empty images and into views that are there.
void ExpectReduced(Random & random, Reduction reduction, cv::Mat const & src, int highDepth)
{
    int const highType = CV_MAKETYPE(highDepth, src.channels());
    SCOPED_TRACE(tests::SamplingCase(reduction, src, highType));
    Blocks const before{
        Prepared(random, {src.cols / 2, src.rows / 2}, src.type()), Prepared(random, src.size(), highType)};
    Blocks const expected = OracleDownSampling(reduction, src, before);
    FramedImage srcFrame(src);
    FramedImage low(before.low);
    FramedImage high(before.high);
    ASSERT_TRUE(Reduce(reduction, srcFrame.View(), low.View(), high.View()));
    if (before.low.empty())
    {
        EXPECT_TRUE(low.View().empty());
    }
    else
    {
        EXPECT_TRUE(EqualImages(WithOneNaN(low.View()), WithOneNaN(expected.low))) << "low";
    }
    EXPECT_TRUE(EqualImages(WithOneNaN(high.View()), WithOneNaN(expected.high))) << "high";
    EXPECT_TRUE(low.IsFrameUntouched());
    EXPECT_TRUE(high.IsFrameUntouched());
    EXPECT_TRUE(EqualImages(srcFrame.View(), src));

    if (src.depth() != highDepth) return;
    Blocks made;
    Blocks const expectedMade = OracleDownSampling(reduction, src);
    ASSERT_TRUE(Reduce(reduction, srcFrame.View(), made.low, made.high));
    EXPECT_TRUE(EqualImages(WithOneNaN(made.low), WithOneNaN(expectedMade.low))) << "low, made";
    EXPECT_TRUE(EqualImages(WithOneNaN(made.high), WithOneNaN(expectedMade.high))) << "high, made";
}

using Test = std::function<void(Reduction reduction, int depth, int highDepth)>;

/// Runs over all reductions and the depths of source and detail that they take.
void ForEachMember(Test const & test)
{
    for (Reduction const reduction : tests::kReductions)
    {
        for (int const depth : tests::kDepths)
        {
            for (int const highDepth : tests::kDepths)
            {
                if (!Serves(reduction, depth) || !Serves(reduction, highDepth)) continue;
                test(reduction, depth, highDepth);
                if (testing::Test::HasFailure()) return;
            }
        }
    }
}

TEST(DownSamplingsRandom, MatchPlainLoopsOnTheSmallestImages)
{
    Random random(620);
    ForEachMember([&](Reduction reduction, int depth, int highDepth) {
        for (int sides = 0; sides < 49; ++sides)
        {
            cv::Size const size(1 + sides % 7, 1 + sides / 7);
            int const channels = random.Chance(0.6) ? 1 : 2 + random.Below(3);
            cv::Mat const src = tests::AnyNumbers(random, size, CV_MAKETYPE(depth, channels));
            ExpectReduced(random, reduction, src, highDepth);
        }
    });
}

TEST(DownSamplingsRandom, MatchPlainLoopsAroundTheWidthsOfRegisters)
{
    Random random(621);
    ForEachMember([&](Reduction reduction, int depth, int highDepth) {
        for (int const width : {16, 32, 64, 128})
        {
            cv::Size const size(width - 3 + random.Below(7), 2 + random.Below(4));
            ExpectReduced(random, reduction, tests::AnyNumbers(random, size, depth), highDepth);
        }
        cv::Mat const colours = tests::AnyNumbers(random, {40 + random.Below(8), 5}, CV_MAKETYPE(depth, 3));
        ExpectReduced(random, reduction, colours, highDepth);
    });
}

TEST(DownSamplingsRandom, OfTwoImages_GiveTheValuesOfThree)
{
    Random random(622);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 30; ++round)
        {
            cv::Size const size(1 + random.Below(40), 1 + random.Below(9));
            cv::Mat const src = tests::AnyNumbers(random, size, CV_MAKETYPE(depth, 1 + random.Below(4)));
            cv::Mat low;
            ASSERT_TRUE(DownSamplingWithMax(src, low));
            EXPECT_TRUE(EqualImages(WithOneNaN(low), WithOneNaN(OracleDownSampling(Reduction::Max, src).low)));
            low.release();
            ASSERT_TRUE(DownSamplingWithMin(src, low));
            EXPECT_TRUE(EqualImages(WithOneNaN(low), WithOneNaN(OracleDownSampling(Reduction::Min, src).low)));
        }
    }
}

/// Joins into an empty image and into a view that is there.
void ExpectJoined(Random & random, cv::Mat const & low, cv::Mat const & high, int dstType)
{
    SCOPED_TRACE(
        cv::typeToString(low.type()) + " and " + cv::typeToString(high.type()) + " to " + cv::typeToString(dstType));
    cv::Mat const before = Prepared(random, {2 * low.cols, 2 * low.rows}, dstType);
    FramedImage lowFrame(low);
    FramedImage highFrame(high);
    FramedImage dst(before);
    ASSERT_TRUE(UpSampling(lowFrame.View(), highFrame.View(), dst.View()));
    EXPECT_TRUE(EqualImages(WithOneNaN(dst.View()), WithOneNaN(tests::OracleUpSampling(low, high, before))));
    EXPECT_TRUE(dst.IsFrameUntouched());
    if (low.type() != dstType) return;
    cv::Mat made;
    ASSERT_TRUE(UpSampling(lowFrame.View(), highFrame.View(), made));
    EXPECT_TRUE(EqualImages(WithOneNaN(made), WithOneNaN(tests::OracleUpSampling(low, high)))) << "made";
}

void ExpectJoined(Random & random, cv::Size size, int depth, int highDepth, int channels)
{
    cv::Mat const low = tests::AnyNumbers(random, size, CV_MAKETYPE(depth, channels));
    cv::Size const highSize(2 * size.width + random.Below(3), 2 * size.height + random.Below(3));
    cv::Mat const high = tests::AnyNumbers(random, highSize, CV_MAKETYPE(highDepth, channels));
    ExpectJoined(random, low, high, low.type());
    if (depth != CV_16U && depth != CV_16S) return;
    for (int const dstDepth : tests::kDepths)
    {
        ExpectJoined(random, low, high, CV_MAKETYPE(dstDepth, channels));
    }
}

TEST(UpSamplingRandom, MatchesPlainLoops)
{
    Random random(623);
    for (int const depth : tests::kDepths)
    {
        for (int const highDepth : kDetailDepths)
        {
            for (int round = 0; round < 40; ++round)
            {
                cv::Size const size(1 + random.Below(7), 1 + random.Below(4));
                ExpectJoined(random, size, depth, highDepth, random.Chance(0.6) ? 1 : 2 + random.Below(4));
            }
            for (int const width : {8, 16, 32, 64})
            {
                ExpectJoined(random, {width - 2 + random.Below(5), 2}, depth, highDepth, 1);
            }
            if (HasFailure()) return;
        }
    }
}

TEST(UpSamplingRandom, WithoutDetail_MatchesPlainLoops)
{
    Random random(624);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 40; ++round)
        {
            cv::Size const size(1 + random.Below(40), 1 + random.Below(4));
            cv::Mat const low =
                tests::RandomImage(random, size, CV_MAKETYPE(depth, 1 + random.Below(5)), {0.1, 0.5, 9});
            cv::Mat const before = Prepared(random, {2 * size.width, 2 * size.height}, low.type());
            FramedImage lowFrame(low);
            FramedImage dst(before);
            ASSERT_TRUE(UpSampling(lowFrame.View(), dst.View()));
            EXPECT_TRUE(EqualImages(dst.View(), tests::OracleRepeated(low, before)));
            EXPECT_TRUE(dst.IsFrameUntouched());
            cv::Mat made;
            ASSERT_TRUE(UpSampling(low, made));
            EXPECT_TRUE(EqualImages(made, tests::OracleRepeated(low)));
        }
    }
}

/// Goes down and up, and expects the same image.
void ExpectWayBack(Reduction reduction, cv::Mat const & image, int highDepth)
{
    int const highType = CV_MAKETYPE(highDepth, image.channels());
    SCOPED_TRACE(tests::SamplingCase(reduction, image, highType));
    Blocks blocks{{}, cv::Mat(image.size(), highType)};
    cv::Mat again;
    ASSERT_TRUE(Reduce(reduction, image, blocks.low, blocks.high));
    ASSERT_TRUE(UpSampling(blocks.low, blocks.high, again));
    EXPECT_TRUE(EqualImages(again, image));
}

cv::Size EvenSize(Random & random)
{
    return {2 + 2 * random.Below(20), 2 + 2 * random.Below(6)};
}

TEST(SamplingRandom, ComesBackFromWherePixelsAndDetailHaveTheirRoom)
{
    Random random(625);
    struct Pair
    {
        int depth;
        int highDepth;
    };
    for (Pair const pair :
         {Pair{CV_8U, CV_8U}, {CV_8U, CV_16S}, {CV_8U, CV_32S}, {CV_16U, CV_32S}, {CV_16S, CV_32S}, {CV_32S, CV_32S}})
    {
        for (Reduction const reduction : {Reduction::Mean, Reduction::Max, Reduction::Min})
        {
            for (int round = 0; round < 10; ++round)
            {
                int const type = CV_MAKETYPE(pair.depth, 1 + round % 4);
                ExpectWayBack(reduction, tests::AnyNumbers(random, EvenSize(random), type), pair.highDepth);
            }
        }
    }
}

TEST(SamplingRandom, ComesBackFromWholeFloats)
{
    Random random(626);
    for (int const depth : {CV_32F, CV_64F})
    {
        for (int const highDepth : {CV_16S, CV_32S})
        {
            for (Reduction const reduction : {Reduction::Mean, Reduction::Max, Reduction::Min})
            {
                ExpectWayBack(
                    reduction, tests::RandomImage(random, EvenSize(random), depth, {0.1, 0.0, 9000}), highDepth);
            }
        }
    }
}

TEST(SamplingRandom, AnotherExclusiveOrRestoresAMask)
{
    Random random(627);
    for (int const depth : kDetailDepths)
    {
        for (int round = 0; round < 10; ++round)
        {
            cv::Mat const image = tests::AnyNumbers(random, EvenSize(random), depth);
            Blocks blocks;
            cv::Mat repeated;
            ASSERT_TRUE(DownSamplingWithLogicalOr(image, blocks.low, blocks.high));
            ASSERT_TRUE(UpSampling(blocks.low, repeated));
            EXPECT_TRUE(EqualImages(repeated ^ blocks.high, image));
        }
    }
}

} // namespace

} // namespace morvane::filters
