// The floods over and under a mask against a plain flood, on random images.
#include <morvane/geodesy/Reconstruction.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"
#include "support/ReconstructionOracle.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace morvane::tests
{

namespace
{

constexpr std::array kBuildDepths{CV_8U, CV_32S, CV_32F};

bool Build(bool over, cv::Mat const & mask, cv::Mat const & marker, int connexity, cv::Mat & out)
{
    return over ? geodesy::OverBuild(mask, marker, Shape(connexity), out)
                : geodesy::UnderBuild(mask, marker, Shape(connexity), out);
}

void ExpectFlood(bool over, cv::Mat const & mask, cv::Mat const & marker, int connexity)
{
    SCOPED_TRACE((over ? "over, " : "under, ") + Case(mask.type(), mask.size(), connexity));
    cv::Mat const expected = OracleBuild(over, mask, marker, connexity);
    cv::Mat out;
    ASSERT_TRUE(Build(over, mask, marker, connexity, out));
    ASSERT_TRUE(EqualImages(out, expected));

    FramedImage framedMask(mask);
    FramedImage framedMarker(marker);
    FramedImage framedOut(cv::Mat(mask.size(), mask.type(), cv::Scalar(77)));
    uchar const * const place = framedOut.View().data;
    ASSERT_TRUE(Build(over, framedMask.View(), framedMarker.View(), connexity, framedOut.View()));
    ASSERT_EQ(framedOut.View().data, place);
    ASSERT_TRUE(EqualImages(framedOut.View(), expected));
    ASSERT_TRUE(framedOut.IsFrameUntouched());
    ASSERT_TRUE(EqualImages(framedMask.View(), mask));
    ASSERT_TRUE(EqualImages(framedMarker.View(), marker));
}

TEST(OverBuildRandom, FloodsAsThePlainFloodInEveryShape)
{
    Random random(31);
    for (int const depth : kBuildDepths)
    {
        for (int number = -1; number <= kConnexityCount; ++number)
        {
            for (MarkerKind const kind : kMarkerKinds)
            {
                for (bool const over : {true, false})
                {
                    cv::Mat const mask = LevelImage(random, {1 + random.Below(20), 1 + random.Below(20)}, depth);
                    ExpectFlood(over, mask, RandomMarker(random, mask, kind, over), number);
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST(OverBuildRandom, ImagesNarrowerThanTheShape)
{
    Random random(32);
    for (int number = 0; number < kConnexityCount; ++number)
    {
        for (int width = 1; width <= 5; ++width)
        {
            for (int const height : {1, 2, 9})
            {
                int const depth = kBuildDepths[static_cast<std::size_t>(random.Below(3))];
                cv::Mat const mask = LevelImage(random, {width, height}, depth);
                MarkerKind const kind = random.Chance(0.5) ? MarkerKind::Sparse : MarkerKind::Crossing;
                ExpectFlood(true, mask, RandomMarker(random, mask, kind, true), number);
                ExpectFlood(false, mask, RandomMarker(random, mask, kind, false), number);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(OverBuildRandom, InfinitiesAreLevelsLikeOthers)
{
    Random random(33);
    for (int number = 0; number < kConnexityCount; ++number)
    {
        cv::Mat mask = LevelImage(random, {15, 12}, CV_32FC1);
        cv::Mat marker = RandomMarker(random, mask, MarkerKind::Crossing);
        for (int count = 0; count < 30; ++count)
        {
            float const infinity = std::numeric_limits<float>::infinity() * (random.Chance(0.5) ? 1.0F : -1.0F);
            cv::Mat & image = random.Chance(0.5) ? mask : marker;
            image.at<float>(random.Below(12), random.Below(15)) = infinity;
        }
        ExpectFlood(true, mask, marker, number);
        ExpectFlood(false, mask, marker, number);
        if (HasFatalFailure()) return;
    }
}

TEST(OverBuildRandom, ManyEqualLevelsAndFewEqualLevelsAlike)
{
    Random random(34);
    for (int const depth : kBuildDepths)
    {
        for (int const levels : {1, 2, 1000})
        {
            cv::Mat mask(24, 24, depth);
            cv::Mat marker(24, 24, depth);
            for (int index = 0; index < 24 * 24; ++index)
            {
                SetElement(mask, index / 24, index % 24, 0, random.Below(levels) % 256);
                SetElement(marker, index / 24, index % 24, 0, random.Chance(0.02) ? 0 : 255);
            }
            ExpectFlood(true, mask, marker, connexity::eConnexity4);
            ExpectFlood(false, marker, mask, connexity::eConnexity8);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(OverBuildRandom, AFloodFollowsASpiralToItsEnd)
{
    cv::Mat1b const spiral = Spiral({200, 200});
    for (int const depth : kBuildDepths)
    {
        cv::Mat line;
        spiral.convertTo(line, depth);
        // A trench of 50 in walls of 200, and a marker that is low at its mouth only.
        cv::Mat const mask = 200 - 150 * line;
        cv::Mat marker(mask.size(), depth, cv::Scalar(250));
        SetElement(marker, 0, 0, 0, 0);
        cv::Mat out;
        ASSERT_TRUE(geodesy::OverBuild(mask, marker, connexity::eConnexity4, out));
        EXPECT_TRUE(EqualImages(out, mask));
        ASSERT_TRUE(geodesy::UnderBuild(250 - mask, 250 - marker, connexity::eConnexity8, out));
        EXPECT_TRUE(EqualImages(out, 250 - mask));
    }
}

TEST(OverBuildProperties, AnImageOverItselfIsUnchanged)
{
    Random random(35);
    for (int const depth : kBuildDepths)
    {
        for (int number = -1; number <= kConnexityCount; ++number)
        {
            cv::Mat const image = LevelImage(random, {1 + random.Below(40), 1 + random.Below(40)}, depth);
            for (bool const over : {true, false})
            {
                cv::Mat out;
                ASSERT_TRUE(Build(over, image, image, number, out));
                ASSERT_TRUE(EqualImages(out, image)) << number;
            }
        }
    }
}

TEST(OverBuildProperties, UnderIsOverOfComplements)
{
    Random random(36);
    for (int number = 0; number < kConnexityCount; ++number)
    {
        cv::Mat const mask = LevelImage(random, {31, 17}, CV_8UC1);
        cv::Mat const marker = RandomMarker(random, mask, MarkerKind::Sparse, true);
        cv::Mat over;
        cv::Mat under;
        ASSERT_TRUE(geodesy::OverBuild(mask, marker, Shape(number), over));
        ASSERT_TRUE(geodesy::UnderBuild(255 - mask, 255 - marker, Shape(number), under));
        ASSERT_TRUE(EqualImages(255 - under, over)) << number;
    }
}

TEST(OverBuildProperties, IsTheReconstructionByErosionOfAMarkerWhoseMinimaTheMaskSupports)
{
    Random random(37);
    for (int const depth : {CV_8U, CV_32F})
    {
        for (auto const & [shape, number] : {std::array{0, 2}, std::array{1, 0}, std::array{0, 3}})
        {
            cv::Mat const mask = LevelImage(random, {33, 21}, depth);
            cv::Mat const marker = RandomMarker(random, mask, MarkerKind::Sparse, true);
            cv::Mat flooded;
            ASSERT_TRUE(geodesy::OverBuild(mask, marker, Shape(number), flooded));
            cv::Mat eroded(mask.size(), depth);
            OracleReconstruct(Repeated::Erode, marker, mask, {shape, {3, 3}, {}}, eroded);
            EXPECT_TRUE(EqualImages(flooded, eroded)) << number;
        }
    }
}

TEST(OverBuildProperties, ResultOfAFloodIsFloodedToItself)
{
    Random random(38);
    for (int number = 0; number < kConnexityCount; ++number)
    {
        cv::Mat const mask = LevelImage(random, {31, 17}, CV_32SC1);
        cv::Mat const marker = RandomMarker(random, mask, MarkerKind::Sparse, true);
        cv::Mat once;
        cv::Mat twice;
        ASSERT_TRUE(geodesy::OverBuild(mask, marker, Shape(number), once));
        EXPECT_EQ(cv::countNonZero(once < mask), 0);
        ASSERT_TRUE(geodesy::OverBuild(mask, once, Shape(number), twice));
        EXPECT_TRUE(EqualImages(twice, once)) << number;
    }
}

} // namespace

} // namespace morvane::tests
