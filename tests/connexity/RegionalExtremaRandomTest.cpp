// LabelMaxima and LabelMinima against the plain flood and against themselves, on random images.
#include <morvane/connexity/RegionalExtrema.h>

#include "support/AllTypes.h"
#include "support/ExtremaOracle.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Oracles.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

namespace morvane::connexity
{

namespace
{

using tests::Extremum;
using tests::LabelledExtrema;
using tests::PointsOfExtrema;
using tests::Random;

/// How many zones of more than one pixel were extrema, and how many were not.
struct Plateaus
{
    int extrema = 0;
    int others = 0;
};

int CountPlateaus(tests::OracleZoneList const & zones)
{
    return static_cast<int>(
        std::count_if(zones.begin(), zones.end(), [](auto const & zone) { return zone.size() > 1; }));
}

void ExpectExtrema(Random & random, cv::Mat const & image, int number, Plateaus & met)
{
    SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
    for (Extremum const kind : tests::kExtrema)
    {
        auto const extrema = tests::OracleExtrema(image, number, kind);
        auto const call = [&](tests::Images const & images, cv::Mat & labels) {
            return tests::CallLabel(kind, images.front(), number, labels);
        };
        tests::ExpectZones(random, call, {image}, extrema);
        PointsOfExtrema points{{1, {{-1, -1}}}};
        EXPECT_TRUE(tests::CallList(kind, image, number, points));
        EXPECT_EQ(points, tests::ByNumber(extrema));
        int const plateaus =
            CountPlateaus(tests::OracleZones(tests::EveryPixel(image.size()), number, tests::EqualSteps(image)));
        met.extrema += CountPlateaus(extrema);
        met.others += plateaus - CountPlateaus(extrema);
    }
}

TEST(LabelExtremaRandom, MatchThePlainFloodOnTerraces)
{
    Random random(80);
    for (int const depth : tests::kDepths)
    {
        Plateaus met;
        for (int round = 0; round < 75; ++round)
        {
            cv::Mat const image = tests::Terraces(random, tests::RandomSize(random, 20), depth);
            ExpectExtrema(random, image, round % 15 - 1, met);
            if (HasFailure()) return;
        }
        EXPECT_GT(met.extrema, 50);
        EXPECT_GT(met.others, 50);
    }
}

TEST(LabelExtremaRandom, MatchThePlainFloodOnScatteredValues)
{
    Random random(81);
    Plateaus met;
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 45; ++round)
        {
            tests::Mixture const mixture{0.5 * random.Unit(), 0.2 * random.Unit(), 1 + random.Below(4)};
            cv::Mat const image = tests::RandomImage(random, tests::RandomSize(random, 16), depth, mixture);
            ExpectExtrema(random, image, round % 15 - 1, met);
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(met.extrema, 50);
    EXPECT_GT(met.others, 50);
}

TEST(LabelExtremaRandom, MatchThePlainFloodOnFlatImagesAroundMultiplesOf64)
{
    Random random(82);
    Plateaus met;
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        for (int const width : {62, 63, 64, 65, 66, 127, 128, 129, 130, 193})
        {
            int const depth = tests::kDepths[static_cast<std::size_t>(random.Below(6))];
            cv::Mat image = tests::Terraces(random, {width, 1 + random.Below(4)}, depth);
            // One step at the seam or at a border of words, where bits have to be carried.
            for (int const x : {0, 1, 62, 63, 64, 65, 127, 128, width - 2, width - 1})
            {
                if (x < width && random.Chance(0.1)) tests::SetElement(image, random.Below(image.rows), x, 0, 5);
            }
            ExpectExtrema(random, image, number, met);
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(met.extrema, 50);
    EXPECT_GT(met.others, 50);
}

TEST(LabelExtremaRandom, MatchThePlainFloodOnNarrowImages)
{
    Random random(83);
    Plateaus met;
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        for (int width = 1; width <= 5; ++width)
        {
            for (int round = 0; round < 12; ++round)
            {
                int const depth = tests::kDepths[static_cast<std::size_t>(round % 6)];
                cv::Size const size(width, 1 + random.Below(6));
                tests::Mixture const mixture{0.3, 0.15, 2};
                ExpectExtrema(random, tests::RandomImage(random, size, depth, mixture), number, met);
                if (HasFailure()) return;
            }
        }
    }
    EXPECT_GT(met.extrema, 50);
    EXPECT_GT(met.others, 50);
}

TEST(LabelExtremaRandom, MatchThePlainFloodOnPatternsWithOneStep)
{
    Random random(84);
    Plateaus met;
    for (tests::Pattern const & pattern : tests::AllPatterns({70, 13}))
    {
        SCOPED_TRACE(pattern.name);
        for (int const number : {0, 1, 2, 4, 5, 10})
        {
            cv::Mat image = pattern.mask.clone();
            image.at<uchar>(random.Below(image.rows), random.Below(image.cols)) = static_cast<uchar>(random.Below(3));
            ExpectExtrema(random, image, number, met);
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(met.others, 50);
}

TEST(LabelExtremaRandom, MaximaAreTheMinimaOfTheImageUpsideDown)
{
    Random random(85);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 30; ++round)
        {
            int const number = round % 15 - 1;
            cv::Mat const image = tests::Terraces(random, tests::RandomSize(random), depth);
            cv::Mat const turned = tests::UpsideDown(image);
            ASSERT_TRUE(tests::EqualImages(tests::Maxima(image, number), tests::Minima(turned, number)));
            PointsOfExtrema maxima;
            PointsOfExtrema minima;
            ASSERT_TRUE(LabelMaxima(image, tests::Shape(number), maxima));
            ASSERT_TRUE(LabelMinima(turned, tests::Shape(number), minima));
            ASSERT_EQ(maxima, minima);
        }
    }
}

TEST(LabelExtremaRandom, FlippedAndTransposedImagesHaveTheSameExtrema)
{
    Random random(86);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 26; ++round)
        {
            int const number = round % tests::kConnexityCount;
            Extremum const kind = tests::kExtrema[static_cast<std::size_t>(random.Below(2))];
            cv::Size const size(1 + random.Below(90), 1 + random.Below(30));
            cv::Mat const image = tests::Terraces(random, size, depth);
            cv::Mat const labels = LabelledExtrema(kind, image, number);
            for (int const code : {-1, 0, 1})
            {
                cv::Mat flipped;
                cv::flip(image, flipped, code);
                cv::Mat back;
                cv::flip(LabelledExtrema(kind, flipped, number), back, code);
                ASSERT_TRUE(tests::SamePartition(back, labels)) << number;
            }
            if (tests::OracleWraps(number)) continue;
            cv::Mat const transposed = LabelledExtrema(kind, image.t(), number);
            ASSERT_TRUE(tests::SamePartition(transposed.t(), labels)) << number;
        }
    }
}

TEST(LabelExtremaRandom, TurnedImagesHaveTheSameExtremaWhereColumnsWrap)
{
    Random random(87);
    for (int const number : {1, 4, 8, 10, 12})
    {
        for (int round = 0; round < 20; ++round)
        {
            cv::Size const size(3 + random.Below(140), 1 + random.Below(10));
            cv::Mat const image = tests::Terraces(random, size, CV_16S);
            int const by = 1 + random.Below(size.width - 1);
            cv::Mat const labels = tests::Turned(tests::Maxima(image, number), by);
            ASSERT_TRUE(tests::SamePartition(tests::Maxima(tests::Turned(image, by), number), labels)) << number;
        }
    }
}

TEST(LabelExtremaRandom, ListHoldsThePixelsOfEachLabel)
{
    Random random(88);
    for (int round = 0; round < 45; ++round)
    {
        int const number = round % 15 - 1;
        cv::Mat const image = tests::Terraces(random, {80, 40}, CV_8U);
        PointsOfExtrema points;
        ASSERT_TRUE(LabelMinima(image, tests::Shape(number), points));
        cv::Mat labels(image.size(), CV_32SC1, cv::Scalar(0));
        for (auto const & [label, pixels] : points)
        {
            for (cv::Point const & pixel : pixels)
            {
                ASSERT_EQ(labels.at<int>(pixel), 0) << "listed twice";
                labels.at<int>(pixel) = label;
            }
        }
        ASSERT_TRUE(tests::EqualImages(labels, tests::Minima(image, number)));
    }
}

} // namespace

} // namespace morvane::connexity
