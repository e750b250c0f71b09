// The labelling operators over two images against the plain walk and against their like.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/StepOracle.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace morvane::connexity
{

namespace
{

using tests::EqualImages;
using tests::EqualSteps;
using tests::Images;
using tests::OracleZoneList;
using tests::Random;
using tests::SamePartition;
using tests::Shape;

constexpr std::array kWrapped{1, 4, 8, 10, 12};

/// The bounds of the steps on two images, and of the areas.
struct Bounds
{
    double delta1;
    double delta2;
    int area = 0;
};

cv::Mat Flat(cv::Mat const & first, cv::Mat const & second, int number)
{
    return tests::Written(first.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelFlatZonesNoZero(first, second, Shape(number), labels);
    });
}

cv::Mat Delta(cv::Mat const & first, cv::Mat const & second, int number, Bounds bounds)
{
    return tests::Written(first.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelDeltaFlatZones(first, second, Shape(number), bounds.delta1, bounds.delta2, labels);
    });
}

cv::Mat DeltaNoZero(cv::Mat const & first, cv::Mat const & second, int number, Bounds bounds)
{
    return tests::Written(first.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelDeltaFlatZonesNoZero(first, second, Shape(number), bounds.delta1, bounds.delta2, labels);
    });
}

void ExpectFlatZones(Random & random, Images const & pair, int number)
{
    SCOPED_TRACE(tests::Case(pair[0].type(), pair[0].size(), number) + ", second " + cv::typeToString(pair[1].type()));
    auto const steps = tests::StepsOfBoth(EqualSteps(pair[0]), EqualSteps(pair[1]));
    tests::ExpectZones(
        random,
        [&](Images const & images, cv::Mat & labels) {
            return LabelFlatZonesNoZero(images[0], images[1], Shape(number), labels);
        },
        pair, tests::OracleZones(tests::OracleTakesPart(pair[0]), number, steps));
}

/// Expects that both operators without the zero test find these zones.
void ExpectAllPixelZones(Random & random, Images const & pair, int number, Bounds bounds, OracleZoneList const & zones)
{
    tests::ExpectZones(
        random,
        [&](Images const & images, cv::Mat & labels) {
            return LabelDeltaFlatZones(images[0], images[1], Shape(number), bounds.delta1, bounds.delta2, labels);
        },
        pair, zones);
    tests::ExpectZones(
        random,
        [&](Images const & images, cv::Mat & labels) {
            return LabelDeltaFlatZonesWithAreaCondition(
                images[0], images[1], Shape(number), bounds.delta1, bounds.delta2, bounds.area, labels);
        },
        pair, tests::ZonesAbove(zones, static_cast<std::uint64_t>(bounds.area)));
}

/// Expects that both operators with the zero test find these zones.
void ExpectNoZeroZones(Random & random, Images const & pair, int number, Bounds bounds, OracleZoneList const & zones)
{
    tests::ExpectZones(
        random,
        [&](Images const & images, cv::Mat & labels) {
            return LabelDeltaFlatZonesNoZero(images[0], images[1], Shape(number), bounds.delta1, bounds.delta2, labels);
        },
        pair, zones);
    tests::ExpectZones(
        random,
        [&](Images const & images, cv::Mat & labels) {
            return LabelDeltaFlatZonesNoZeroWithAreaCondition(
                images[0], images[1], Shape(number), bounds.delta1, bounds.delta2, bounds.area, labels);
        },
        pair, tests::ZonesAbove(zones, static_cast<std::uint64_t>(bounds.area)));
}

void ExpectDeltaZones(Random & random, Images const & pair, int number, Bounds bounds)
{
    SCOPED_TRACE(
        tests::Case(pair[0].type(), pair[0].size(), number) + ", second " + cv::typeToString(pair[1].type()) +
        ", deltas " + std::to_string(bounds.delta1) + " and " + std::to_string(bounds.delta2) + ", area " +
        std::to_string(bounds.area));
    auto const steps =
        tests::StepsOfBoth(tests::DeltaSteps(pair[0], bounds.delta1), tests::DeltaSteps(pair[1], bounds.delta2));
    ExpectAllPixelZones(
        random, pair, number, bounds, tests::OracleZones(tests::EveryPixel(pair[0].size()), number, steps));
    ExpectNoZeroZones(random, pair, number, bounds, tests::OracleZones(tests::OracleTakesPart(pair[0]), number, steps));
}

/// An image of few values without NaN.
cv::Mat Blotches(Random & random, cv::Size size, int type)
{
    return tests::RandomImage(random, size, type, {0.2, 0.0, 2});
}

TEST(ZonesOfTwoImagesRandom, FlatZones_MatchThePlainWalkForEveryPairOfTypes)
{
    Random random(90);
    int number = -1;
    for (int const depth1 : tests::kDepths)
    {
        for (int const depth2 : tests::kDepths)
        {
            for (int round = 0; round < 30; ++round)
            {
                cv::Size const size = tests::RandomFamilySize(random);
                tests::Mixture const mixture{0.5 * random.Unit(), 0.3 * random.Unit(), 1 + random.Below(2)};
                cv::Mat const first = tests::RandomImage(random, size, depth1, mixture);
                cv::Mat const second = tests::RandomImage(random, size, depth2, {0.3, 0.1, 1});
                ExpectFlatZones(random, {first, second}, number);
                if (HasFailure()) return;
                number = number == 13 ? -1 : number + 1;
            }
        }
    }
}

TEST(ZonesOfTwoImagesRandom, DeltaZones_MatchThePlainWalkForEveryPairOfTypesAndChannels)
{
    Random random(91);
    int number = -1;
    for (int const depth1 : tests::kDepths)
    {
        for (int const depth2 : tests::kDepths)
        {
            for (int round = 0; round < 60; ++round)
            {
                int const channels = 1 + round % 4;
                cv::Size const size = tests::RandomFamilySize(random);
                cv::Mat const first = tests::GradedImage(random, size, CV_MAKETYPE(depth1, channels));
                cv::Mat const second = tests::GradedImage(random, size, CV_MAKETYPE(depth2, channels));
                Bounds const bounds{tests::RandomDelta(random), tests::RandomDelta(random), random.Below(5)};
                ExpectDeltaZones(random, {first, second}, number, bounds);
                if (HasFailure()) return;
                number = number == 13 ? -1 : number + 1;
            }
        }
    }
}

TEST(ZonesOfTwoImagesRandom, DeltaZonesOfGentleImages_MatchThePlainWalk)
{
    // Wide bounds, so that zones are large and stop in both images.
    Random random(92);
    for (int round = 0; round < 600; ++round)
    {
        int const channels = 1 + random.Below(4);
        cv::Size const size = tests::RandomFamilySize(random);
        auto const image = [&] {
            int const depth = tests::kDepths[static_cast<std::size_t>(random.Below(6))];
            return tests::RandomImage(random, size, CV_MAKETYPE(depth, channels), {0.1, 0.02, 6});
        };
        Images const pair{image(), image()};
        Bounds const bounds{1.0 + random.Below(4), 2.0 + random.Below(4), random.Below(40)};
        ExpectDeltaZones(random, pair, round % 15 - 1, bounds);
        if (HasFailure()) return;
    }
}

TEST(ZonesOfTwoImagesRandom, NarrowImages_MatchThePlainWalk)
{
    Random random(93);
    for (int round = 0; round < 12; ++round)
    {
        for (int number = 0; number < tests::kConnexityCount; ++number)
        {
            cv::Size const size(random.Below(6), random.Below(10));
            ExpectFlatZones(random, {Blotches(random, size, CV_16SC1), Blotches(random, size, CV_8UC1)}, number);
            int const channels = 1 + round % 4;
            cv::Mat const first = Blotches(random, size, CV_32FC(channels));
            cv::Mat const second = Blotches(random, size, CV_32SC(channels));
            ExpectDeltaZones(random, {first, second}, number, {1.0, 1.0, random.Below(3)});
            if (HasFailure()) return;
        }
    }
}

TEST(ZonesOfTwoImagesRandom, SameImageTwice_HasTheZonesOfOne)
{
    Random random(94);
    for (int number = -1; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        cv::Mat const image = tests::GradedImage(random, {90, 25}, CV_64FC1);
        cv::Mat const flat = tests::Written(image.size(), CV_32SC1, [&](cv::Mat & labels) {
            return LabelFlatZonesNoZero(image, Shape(number), labels);
        });
        EXPECT_TRUE(EqualImages(Flat(image, image, number), flat));
        cv::Mat const vectors = tests::GradedImage(random, {90, 25}, CV_32FC(1 + random.Below(4)));
        cv::Mat const delta = tests::Written(vectors.size(), CV_32SC1, [&](cv::Mat & labels) {
            return LabelDeltaFlatZones(vectors, Shape(number), 1.0, labels);
        });
        EXPECT_TRUE(EqualImages(Delta(vectors, vectors, number, {1.0, 5.0}), delta)) << "the smaller bound decides";
        cv::Mat const measured = tests::Written(vectors.size(), CV_32SC1, [&](cv::Mat & labels) {
            return LabelDeltaFlatZonesNoZero(vectors, Shape(number), 1.0, labels);
        });
        EXPECT_TRUE(EqualImages(DeltaNoZero(vectors, vectors, number, {5.0, 1.0}), measured));
    }
}

TEST(ZonesOfTwoImagesRandom, ExchangedImages_HaveTheSameZonesWhereNoPixelIsEmpty)
{
    Random random(95);
    for (int number = -1; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        cv::Mat const first = tests::RandomImage(random, {130, 20}, CV_16SC1, {0.0, 0.0, 3});
        cv::Mat const second = tests::RandomImage(random, {130, 20}, CV_64FC1, {0.0, 0.0, 2});
        EXPECT_TRUE(EqualImages(Flat(first, second, number), Flat(second, first, number)));
        cv::Mat const forth = Delta(first, second, number, {1.0, 0.5});
        EXPECT_TRUE(EqualImages(Delta(second, first, number, {0.5, 1.0}), forth));
        EXPECT_TRUE(EqualImages(DeltaNoZero(first, second, number, {1.0, 0.5}), forth));
        EXPECT_TRUE(EqualImages(DeltaNoZero(second, first, number, {0.5, 1.0}), forth));
    }
}

TEST(ZonesOfTwoImagesRandom, SecondImage_OnlySplitsZones)
{
    Random random(96);
    for (int number = -1; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        cv::Mat const first = Blotches(random, {130, 20}, CV_8UC1);
        cv::Mat const second = Blotches(random, {130, 20}, CV_32FC1);
        cv::Mat const even(first.size(), CV_32SC1, cv::Scalar(0));
        cv::Mat const alone = Flat(first, even, number);
        EXPECT_TRUE(tests::Refines(Flat(first, second, number), alone));
        EXPECT_TRUE(EqualImages(DeltaNoZero(first, even, number, {0.0, 0.0}), alone));
        EXPECT_TRUE(EqualImages(DeltaNoZero(first, second, number, {0.0, 2.0}), alone))
            << "a bound that all steps meet";
        EXPECT_TRUE(tests::Refines(Delta(first, second, number, {1.0, 0.0}), Delta(first, even, number, {1.0, 0.0})));
    }
}

TEST(ZonesOfTwoImagesRandom, TurningAPanorama_KeepsTheZonesOfWrappedShapes)
{
    Random random(97);
    Bounds const bounds{1.0, 1.0};
    for (int const number : kWrapped)
    {
        for (int const turn : {1, 2, 63, 64, 65, 100})
        {
            cv::Mat const first = tests::RandomImage(random, {140, 9}, CV_16UC1, {0.2, 0.0, 4});
            cv::Mat const second = tests::RandomImage(random, {140, 9}, CV_32FC1, {0.2, 0.0, 4});
            cv::Mat const first2 = tests::Turned(first, turn);
            cv::Mat const second2 = tests::Turned(second, turn);
            auto const back = [&](cv::Mat const & labels) {
                return tests::Turned(labels, 140 - turn);
            };
            SCOPED_TRACE("shape " + std::to_string(number) + ", turned by " + std::to_string(turn));
            EXPECT_TRUE(SamePartition(back(Flat(first2, second2, number)), Flat(first, second, number)));
            EXPECT_TRUE(
                SamePartition(back(Delta(first2, second2, number, bounds)), Delta(first, second, number, bounds)));
            EXPECT_TRUE(SamePartition(
                back(DeltaNoZero(first2, second2, number, bounds)), DeltaNoZero(first, second, number, bounds)));
        }
    }
}

} // namespace

} // namespace morvane::connexity
