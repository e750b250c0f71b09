// LabelDeltaFlatZones and LabelDeltaFlatZonesNoZero of one image against the plain walk and against their like.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Labels.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/StepOracle.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>

namespace morvane::connexity
{

namespace
{

using tests::EqualImages;
using tests::Images;
using tests::Random;
using tests::SamePartition;
using tests::Shape;

constexpr std::array kWrapped{1, 4, 8, 10, 12};

cv::Mat Delta(cv::Mat const & image, int number, double delta)
{
    return tests::Written(image.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelDeltaFlatZones(image, Shape(number), delta, labels);
    });
}

cv::Mat DeltaNoZero(cv::Mat const & image, int number, double delta)
{
    return tests::Written(image.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelDeltaFlatZonesNoZero(image, Shape(number), delta, labels);
    });
}

/// An image of small numbers without NaN and extremes.
cv::Mat Slopes(Random & random, cv::Size size, int type)
{
    return tests::RandomImage(random, size, type, {0.2, 0.0, 9});
}

void ExpectDeltaZones(Random & random, cv::Mat const & image, int number, double delta)
{
    SCOPED_TRACE(tests::Case(image.type(), image.size(), number) + ", delta " + std::to_string(delta));
    auto const steps = tests::DeltaSteps(image, delta);
    tests::ExpectZones(
        random,
        [&](Images const & images, cv::Mat & labels) {
            return LabelDeltaFlatZones(images[0], Shape(number), delta, labels);
        },
        {image}, tests::OracleZones(tests::EveryPixel(image.size()), number, steps));
    tests::ExpectZones(
        random,
        [&](Images const & images, cv::Mat & labels) {
            return LabelDeltaFlatZonesNoZero(images[0], Shape(number), delta, labels);
        },
        {image}, tests::OracleZones(tests::OracleTakesPart(image), number, steps));
}

TEST(LabelDeltaFlatZonesRandom, MatchThePlainWalkForEveryTypeAndShape)
{
    Random random(80);
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int round = 0; round < 105; ++round)
            {
                cv::Mat const image =
                    tests::GradedImage(random, tests::RandomFamilySize(random), CV_MAKETYPE(depth, channels));
                ExpectDeltaZones(random, image, round % 15 - 1, tests::RandomDelta(random));
                if (HasFailure()) return;
            }
        }
    }
}

TEST(LabelDeltaFlatZonesRandom, MatchThePlainWalkOnExtremesOfTheType)
{
    Random random(81);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 45; ++round)
        {
            cv::Mat const image =
                tests::RandomImage(random, {12, 12}, CV_MAKETYPE(depth, 1 + round % 4), {0.05, 0.9, 2});
            ExpectDeltaZones(random, image, round % 15 - 1, tests::RandomDelta(random));
            if (HasFailure()) return;
        }
    }
}

TEST(LabelDeltaFlatZonesRandom, MatchThePlainWalkOnNarrowImages)
{
    Random random(82);
    for (int round = 0; round < 20; ++round)
    {
        for (int number = 0; number < tests::kConnexityCount; ++number)
        {
            cv::Size const size(random.Below(6), random.Below(10));
            ExpectDeltaZones(random, Slopes(random, size, round % 2 == 0 ? CV_8UC1 : CV_64FC2), number, 2.0);
            if (HasFailure()) return;
        }
    }
}

TEST(LabelDeltaFlatZonesRandom, SeveralChannels_JoinUpToTheNormOfTheDifference)
{
    Random random(89);
    for (int round = 0; round < 2000; ++round)
    {
        int const type = CV_MAKETYPE(tests::kDepths[static_cast<std::size_t>(round % 6)], 2 + random.Below(3));
        cv::Mat image(1, 2, type);
        for (int element = 0; element < 2 * image.channels(); ++element)
        {
            // Whole numbers that hold in all types, with differences that do as well.
            tests::SetElement(image, 0, element % 2, element / 2, 1 + random.Below(255));
        }
        double const norm = cv::norm(image.col(0), image.col(1), cv::NORM_L2);
        SCOPED_TRACE(cv::typeToString(type) + ", norm " + std::to_string(norm));
        tests::ExpectDrawn(Delta(image, eConnexity4, norm), {"11"});
        tests::ExpectDrawn(Delta(image, eConnexity4, std::nextafter(norm, -1.0)), {"12"});
        tests::ExpectDrawn(DeltaNoZero(image, eConnexity4, norm), {"11"});
        tests::ExpectDrawn(DeltaNoZero(image, eConnexity4, std::nextafter(norm, -1.0)), {"12"});
    }
}

TEST(LabelDeltaFlatZonesRandom, DeltaZero_GivesTheFlatZonesOfFiniteImages)
{
    Random random(83);
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            int const number = random.Below(tests::kConnexityCount);
            cv::Mat const image = tests::RandomImage(random, {100, 20}, CV_MAKETYPE(depth, channels), {0.3, 0.0, 2});
            SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
            EXPECT_TRUE(
                EqualImages(Delta(image, number, 0.0), tests::Written(image.size(), CV_32SC1, [&](cv::Mat & labels) {
                                return LabelFlatZones(image, Shape(number), labels);
                            })));
            EXPECT_TRUE(EqualImages(
                DeltaNoZero(image, number, 0.0), tests::Written(image.size(), CV_32SC1, [&](cv::Mat & labels) {
                    return LabelFlatZonesNoZero(image, Shape(number), labels);
                })));
        }
    }
}

TEST(LabelDeltaFlatZonesRandom, HugeDelta_GivesTheZonesOfLabelAndTheWholeImage)
{
    Random random(84);
    for (int const depth : {CV_16U, CV_32S, CV_32F, CV_64F})
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int number = 0; number < tests::kConnexityCount; ++number)
            {
                cv::Mat const image = Slopes(random, {70, 10}, CV_MAKETYPE(depth, channels));
                SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
                EXPECT_TRUE(EqualImages(DeltaNoZero(image, number, 1000.0), tests::Labelled(image, number)));
                EXPECT_EQ(cv::countNonZero(Delta(image, number, 1000.0) != 1), 0);
            }
        }
    }
}

TEST(LabelDeltaFlatZonesRandom, LargerDelta_NeverSplitsAZone)
{
    Random random(85);
    for (int const type : {CV_32FC1, CV_64FC1, CV_32FC3, CV_64FC4, CV_16UC1, CV_8UC2})
    {
        cv::Mat const image = type == CV_16UC1 || type == CV_8UC2 ? Slopes(random, {130, 30}, type)
                                                                  : tests::GradedImage(random, {130, 30}, type);
        for (int const number : {0, 2, 8, 11})
        {
            SCOPED_TRACE(tests::Case(type, image.size(), number));
            cv::Mat finer = Delta(image, number, -1.0 / 3.0);
            cv::Mat finerNoZero = DeltaNoZero(image, number, -1.0 / 3.0);
            for (double const delta : {0.0, 0.3, 0.5, 1.0, 1.4, 1.5, 2.0, 3.0, 8.0, 30.0, 60000.0})
            {
                cv::Mat const coarser = Delta(image, number, delta);
                cv::Mat const coarserNoZero = DeltaNoZero(image, number, delta);
                EXPECT_TRUE(tests::Refines(finer, coarser)) << delta;
                EXPECT_TRUE(tests::Refines(finerNoZero, coarserNoZero)) << delta;
                EXPECT_TRUE(tests::Refines(coarserNoZero, tests::Labelled(image, number))) << delta;
                finer = coarser;
                finerNoZero = coarserNoZero;
            }
        }
    }
}

TEST(LabelDeltaFlatZonesRandom, TransposedAndFlippedImages_HaveTheSameZones)
{
    Random random(86);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        cv::Mat const image = Slopes(random, {75, 50}, CV_32FC(1 + number % 4));
        for (int const flip : {-1, 0, 1})
        {
            cv::Mat flipped;
            cv::flip(image, flipped, flip);
            cv::Mat all;
            cv::flip(Delta(flipped, number, 1.5), all, flip);
            EXPECT_TRUE(SamePartition(all, Delta(image, number, 1.5))) << "flip " << flip;
            cv::Mat measured;
            cv::flip(DeltaNoZero(flipped, number, 2.0), measured, flip);
            EXPECT_TRUE(SamePartition(measured, DeltaNoZero(image, number, 2.0))) << "flip " << flip;
        }
        // Rows never wrap, so transposing is for shapes that don't either.
        if (tests::OracleWraps(number)) continue;
        cv::Mat const transposed = image.t();
        EXPECT_TRUE(SamePartition(Delta(transposed, number, 1.5).t(), Delta(image, number, 1.5)));
        EXPECT_TRUE(SamePartition(DeltaNoZero(transposed, number, 2.0).t(), DeltaNoZero(image, number, 2.0)));
    }
}

TEST(LabelDeltaFlatZonesRandom, AddingAConstant_ChangesNoZone)
{
    Random random(87);
    for (int const type : {CV_16UC1, CV_16SC3, CV_32SC1, CV_64FC1})
    {
        for (int const number : {0, 3, 4, 10})
        {
            cv::Mat const image = Slopes(random, {130, 12}, type);
            cv::Mat const raised = image + cv::Scalar::all(1000);
            EXPECT_TRUE(EqualImages(Delta(raised, number, 2.0), Delta(image, number, 2.0))) << number;
            EXPECT_TRUE(EqualImages(DeltaNoZero(raised, number, 2.0), Delta(image, number, 2.0))) << number;
        }
    }
}

TEST(LabelDeltaFlatZonesRandom, TurningAPanorama_KeepsTheZonesOfWrappedShapes)
{
    Random random(88);
    for (int const number : kWrapped)
    {
        for (int const turn : {1, 2, 63, 64, 65, 100})
        {
            cv::Mat const image = Slopes(random, {140, 9}, CV_16SC2);
            cv::Mat const turned = tests::Turned(image, turn);
            EXPECT_TRUE(SamePartition(tests::Turned(Delta(turned, number, 2.0), 140 - turn), Delta(image, number, 2.0)))
                << number << " turned by " << turn;
            EXPECT_TRUE(SamePartition(
                tests::Turned(DeltaNoZero(turned, number, 3.0), 140 - turn), DeltaNoZero(image, number, 3.0)))
                << number << " turned by " << turn;
        }
    }
}

} // namespace

} // namespace morvane::connexity
