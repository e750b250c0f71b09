// The operators that spread markers over zones, against their steps in plain form.
#include <morvane/connexity/Flooding.h>

#include "support/AllTypes.h"
#include "support/FloodingOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/StepOracle.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>

namespace morvane::connexity
{

namespace
{

using tests::AllSpreads;
using tests::EqualImages;
using tests::FramedImage;
using tests::Random;
using tests::Snapshot;
using tests::SpreadInput;
using tests::SpreadUnderTest;

/// Expects the answer and the markers of the plain form, in place, and that the images stay.
void ExpectPlainSpread(SpreadUnderTest const & spread, SpreadInput const & input, cv::Mat & markers)
{
    SCOPED_TRACE(
        std::string(spread.name) + ": " + tests::Case(input.image.type(), input.image.size(), input.connexity) +
        ", second " + cv::typeToString(input.second.type()) + ", deltas " + std::to_string(input.delta1) + " and " +
        std::to_string(input.delta2) + ", markers " + cv::typeToString(markers.type()));
    cv::Mat expected = tests::CopyOf(markers);
    bool const answer = tests::OracleSpread(spread, input, expected);
    uchar const * const place = markers.data;
    Snapshot const sameImage(input.image);
    Snapshot const sameSecond(input.second);
    ASSERT_EQ(spread.call(input, markers), answer);
    ASSERT_EQ(markers.data, place);
    ASSERT_TRUE(EqualImages(markers, expected));
    ASSERT_TRUE(sameImage.IsUntouched());
    ASSERT_TRUE(sameSecond.IsUntouched());
}

/// A size with pixels, in which few zones outgrow 8 bits.
cv::Size AnySize(Random & random)
{
    cv::Size const size = tests::RandomFamilySize(random);
    return {size.width + 1, size.height + 1};
}

/// An image whose neighbours are often linked, or one of single pixels.
cv::Mat AnyImage(Random & random, cv::Size size, int depth)
{
    if (random.Chance(0.3)) return tests::GradedImage(random, size, depth);
    return tests::RandomImage(random, size, depth, {0.3 * random.Unit(), 0.05, 1 + random.Below(6)});
}

double AnyDelta(Random & random)
{
    return random.Chance(0.5) ? 3.0 * random.Unit() : tests::RandomDelta(random);
}

cv::Mat AnyMarkers(Random & random, cv::Size size, int type)
{
    cv::Mat markers =
        tests::RandomMarkers(random, size, type, random.Chance(0.5) ? 0.03 : random.Unit(), 1 + random.Below(6));
    if (type == CV_32SC1 && random.Chance(0.3))
    {
        cv::Point const p(random.Below(size.width), random.Below(size.height));
        markers.at<int>(p) = random.Chance(0.5) ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }
    return markers;
}

TEST(FloodingZonesRandom, EveryDepthAndNeighbourhood_MatchesThePlainSteps)
{
    Random random(730);
    for (int const depth : tests::kDepths)
    {
        for (int number = -1; number <= tests::kConnexityCount; ++number)
        {
            for (int round = 0; round < 3; ++round)
            {
                cv::Size const size = AnySize(random);
                SpreadInput const input{AnyImage(random, size, depth), {}, number, AnyDelta(random), 0.0};
                cv::Mat const seeds = AnyMarkers(random, size, CV_32SC1);
                for (auto const & spread : AllSpreads())
                {
                    if (spread.deltas == 2) continue;
                    cv::Mat markers = seeds.clone();
                    ASSERT_NO_FATAL_FAILURE(ExpectPlainSpread(spread, input, markers));
                }
            }
        }
    }
}

TEST(FloodingZonesRandom, EveryPairOfDepths_MatchesThePlainSteps)
{
    Random random(731);
    int number = -1;
    for (int const depth1 : tests::kDepths)
    {
        for (int const depth2 : tests::kDepths)
        {
            for (int round = 0; round < 8; ++round)
            {
                cv::Size const size = AnySize(random);
                SpreadInput const input{
                    AnyImage(random, size, depth1), AnyImage(random, size, depth2), number, AnyDelta(random),
                    AnyDelta(random)};
                cv::Mat const seeds = AnyMarkers(random, size, CV_32SC1);
                for (auto const & spread : AllSpreads())
                {
                    if (spread.deltas < 2) continue;
                    cv::Mat markers = seeds.clone();
                    ASSERT_NO_FATAL_FAILURE(ExpectPlainSpread(spread, input, markers));
                }
                number = number == 13 ? -1 : number + 1;
            }
        }
    }
}

TEST(FloodingZonesRandom, GentleSlopes_MatchThePlainSteps)
{
    // Wide bounds, so that zones end at the lines of the watershed, and grey levels that make it climb.
    Random random(732);
    for (int round = 0; round < 60; ++round)
    {
        cv::Size const size(20 + random.Below(60), 10 + random.Below(30));
        auto const image = [&] {
            int const depth = tests::kDepths[static_cast<std::size_t>(random.Below(6))];
            return tests::RandomImage(random, size, depth, {0.05, 0.0, 60});
        };
        SpreadInput const input{image(), image(), round % 14, 20.0 + random.Below(50), 40.0 + random.Below(50)};
        cv::Mat const seeds = tests::RandomMarkers(random, size, CV_32SC1, 0.01, 9);
        for (auto const & spread : AllSpreads())
        {
            cv::Mat markers = seeds.clone();
            ASSERT_NO_FATAL_FAILURE(ExpectPlainSpread(spread, input, markers));
        }
    }
}

TEST(FloodingZonesRandom, MarkersOfOtherTypes_MatchThePlainSteps)
{
    Random random(733);
    for (int round = 0; round < 15; ++round)
    {
        for (int const labelDepth : tests::kLabelDepths)
        {
            for (int const channels : {1, 2, 3})
            {
                cv::Size const size = AnySize(random);
                int const depth = tests::kDepths[static_cast<std::size_t>(random.Below(6))];
                SpreadInput const input{
                    AnyImage(random, size, depth), AnyImage(random, size, CV_32FC1), random.Below(13), AnyDelta(random),
                    AnyDelta(random)};
                cv::Mat const seeds = AnyMarkers(random, size, CV_MAKETYPE(labelDepth, channels));
                for (auto const & spread : AllSpreads())
                {
                    cv::Mat markers = seeds.clone();
                    ASSERT_NO_FATAL_FAILURE(ExpectPlainSpread(spread, input, markers));
                }
            }
        }
    }
}

TEST(FloodingZonesRandom, NarrowImages_MatchThePlainSteps)
{
    Random random(734);
    for (int rows = 1; rows <= 4; ++rows)
    {
        for (int cols = 1; cols <= 4; ++cols)
        {
            for (int number = 0; number < tests::kConnexityCount; ++number)
            {
                cv::Size const size = random.Chance(0.5) ? cv::Size(cols, rows) : cv::Size(cols + 8, rows);
                SpreadInput const input{
                    AnyImage(random, size, CV_16SC1), AnyImage(random, size, CV_32FC1), number, 1.0, 2.0};
                cv::Mat const seeds = tests::RandomMarkers(random, size, CV_32SC1, 0.4, 4);
                for (auto const & spread : AllSpreads())
                {
                    cv::Mat markers = seeds.clone();
                    ASSERT_NO_FATAL_FAILURE(ExpectPlainSpread(spread, input, markers));
                }
            }
        }
    }
}

TEST(FloodingZonesRandom, ViewsWithGaps_AreReadAndWrittenInside)
{
    Random random(735);
    for (int round = 0; round < 60; ++round)
    {
        cv::Size const size = AnySize(random);
        int const depth = tests::kDepths[static_cast<std::size_t>(round % 6)];
        FramedImage image(AnyImage(random, size, depth));
        FramedImage second(AnyImage(random, size, CV_64FC1));
        // Also with an image or markers without gaps.
        bool const framedImage = round % 3 != 1;
        bool const framedMarkers = round % 3 != 2;
        SpreadInput const input{
            framedImage ? image.View() : tests::CopyOf(image.View()), second.View(), random.Below(13), AnyDelta(random),
            AnyDelta(random)};
        cv::Mat const seeds = AnyMarkers(random, size, random.Chance(0.8) ? CV_32SC1 : CV_16UC1);
        for (auto const & spread : AllSpreads())
        {
            FramedImage framed(seeds);
            cv::Mat plain = seeds.clone();
            ASSERT_NO_FATAL_FAILURE(ExpectPlainSpread(spread, input, framedMarkers ? framed.View() : plain));
            ASSERT_TRUE(framed.IsFrameUntouched());
        }
        ASSERT_TRUE(image.IsFrameUntouched());
        ASSERT_TRUE(second.IsFrameUntouched());
    }
}

} // namespace

} // namespace morvane::connexity
