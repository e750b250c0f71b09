// LabelFlatZones and LabelFlatZonesNoZero of one image against the plain walk and against each other.
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

cv::Mat Flat(cv::Mat const & image, int number)
{
    return tests::Written(
        image.size(), CV_32SC1, [&](cv::Mat & labels) { return LabelFlatZones(image, Shape(number), labels); });
}

cv::Mat FlatNoZero(cv::Mat const & image, int number)
{
    return tests::Written(
        image.size(), CV_32SC1, [&](cv::Mat & labels) { return LabelFlatZonesNoZero(image, Shape(number), labels); });
}

/// An image of few values without NaN, so that equality is an equivalence.
cv::Mat Blotches(Random & random, cv::Size size, int type)
{
    return tests::RandomImage(random, size, type, {0.3, 0.0, 2});
}

void ExpectFlatZones(Random & random, cv::Mat const & image, int number)
{
    SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
    auto const steps = tests::EqualSteps(image);
    tests::ExpectZones(
        random,
        [&](Images const & images, cv::Mat & labels) { return LabelFlatZones(images[0], Shape(number), labels); },
        {image}, tests::OracleZones(tests::EveryPixel(image.size()), number, steps));
    tests::ExpectZones(
        random,
        [&](Images const & images, cv::Mat & labels) { return LabelFlatZonesNoZero(images[0], Shape(number), labels); },
        {image}, tests::OracleZones(tests::OracleTakesPart(image), number, steps));
}

TEST(LabelFlatZonesRandom, MatchThePlainWalkForEveryTypeAndShape)
{
    Random random(70);
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int round = 0; round < 60; ++round)
            {
                tests::Mixture const mixture{0.6 * random.Unit(), 0.4 * random.Unit(), 1 + random.Below(3)};
                cv::Mat const image =
                    tests::RandomImage(random, tests::RandomFamilySize(random), CV_MAKETYPE(depth, channels), mixture);
                ExpectFlatZones(random, image, round % 15 - 1);
                if (HasFailure()) return;
            }
        }
    }
}

TEST(LabelFlatZonesRandom, MatchThePlainWalkOnNarrowImages)
{
    Random random(71);
    for (int round = 0; round < 20; ++round)
    {
        for (int number = 0; number < tests::kConnexityCount; ++number)
        {
            cv::Size const size(random.Below(6), random.Below(10));
            ExpectFlatZones(random, Blotches(random, size, round % 2 == 0 ? CV_8UC1 : CV_32FC3), number);
            if (HasFailure()) return;
        }
    }
}

TEST(LabelFlatZonesRandom, FlatZonesOfLabels_AreTheLabels)
{
    Random random(72);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        cv::Mat const image = Blotches(random, {100, 40}, CV_16UC2);
        cv::Mat const labels = Flat(image, number);
        EXPECT_TRUE(EqualImages(Flat(labels, number), labels));
        EXPECT_TRUE(EqualImages(FlatNoZero(labels, number), labels)) << "no label is 0";
        cv::Mat const measured = FlatNoZero(image, number);
        EXPECT_TRUE(EqualImages(FlatNoZero(measured, number), measured));
    }
}

TEST(LabelFlatZonesRandom, NoZero_IsTheSameLessTheEmptyPixels)
{
    Random random(73);
    for (int const depth : tests::kDepths)
    {
        for (int number = 0; number < tests::kConnexityCount; ++number)
        {
            SCOPED_TRACE(tests::Case(depth, {90, 20}, number));
            cv::Mat const image = Blotches(random, {90, 20}, depth);
            cv::Mat measured = Flat(image, number);
            measured.setTo(0, tests::OracleTakesPart(image) == 0);
            EXPECT_TRUE(SamePartition(FlatNoZero(image, number), measured));
        }
    }
}

TEST(LabelFlatZonesRandom, ImageOfOneValue_HasTheZonesOfLabel)
{
    Random random(74);
    for (int number = -1; number < tests::kConnexityCount; ++number)
    {
        cv::Mat const mask = tests::RandomMask(random, {130, 20}, 0.5);
        EXPECT_TRUE(EqualImages(FlatNoZero(mask, number), tests::Labelled(mask, number))) << number;
        cv::Mat const image = Blotches(random, {130, 20}, CV_16SC1);
        EXPECT_TRUE(tests::Refines(FlatNoZero(image, number), tests::Labelled(image, number))) << number;
    }
}

TEST(LabelFlatZonesRandom, TransposedAndFlippedImages_HaveTheSameZones)
{
    Random random(75);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        cv::Mat const image = Blotches(random, {75, 50}, CV_8UC(1 + number % 4));
        for (int const flip : {-1, 0, 1})
        {
            cv::Mat flipped;
            cv::flip(image, flipped, flip);
            cv::Mat all;
            cv::flip(Flat(flipped, number), all, flip);
            EXPECT_TRUE(SamePartition(all, Flat(image, number))) << "flip " << flip;
            cv::Mat measured;
            cv::flip(FlatNoZero(flipped, number), measured, flip);
            EXPECT_TRUE(SamePartition(measured, FlatNoZero(image, number))) << "flip " << flip;
        }
        // Rows never wrap, so transposing is for shapes that don't either.
        if (tests::OracleWraps(number)) continue;
        cv::Mat const transposed = image.t();
        EXPECT_TRUE(SamePartition(Flat(transposed, number).t(), Flat(image, number)));
        EXPECT_TRUE(SamePartition(FlatNoZero(transposed, number).t(), FlatNoZero(image, number)));
    }
}

TEST(LabelFlatZonesRandom, TurningAPanorama_KeepsTheZonesOfWrappedShapes)
{
    Random random(76);
    for (int const number : kWrapped)
    {
        for (int const turn : {1, 2, 63, 64, 65, 100})
        {
            cv::Mat const image = Blotches(random, {140, 9}, CV_32FC1);
            cv::Mat const turned = tests::Turned(image, turn);
            EXPECT_TRUE(SamePartition(tests::Turned(Flat(turned, number), 140 - turn), Flat(image, number)))
                << number << " turned by " << turn;
            EXPECT_TRUE(SamePartition(tests::Turned(FlatNoZero(turned, number), 140 - turn), FlatNoZero(image, number)))
                << number << " turned by " << turn;
        }
    }
}

} // namespace

} // namespace morvane::connexity
