// The base surface of height images, found without seeds: what enters, what each failure answers, threads.
#include <morvane/connexity/QuasiFlatZones.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/QuasiFlatOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <limits>
#include <string>
#include <vector>

namespace morvane
{

namespace
{

using tests::CallPropagation;
using tests::EqualImages;
using tests::Random;
using tests::SurfaceSearch;
using tests::ZonePreparation;

cv::Mat const kNoSeeds;
cv::Rect const kBlock(15, 15, 10, 10);

/// Flat ground of 1000, with a block of 100 pixels.
cv::Mat GroundWithBlock(double height)
{
    cv::Mat image(40, 40, CV_32FC1, cv::Scalar(1000));
    image(kBlock).setTo(cv::Scalar(height));
    return image;
}

/// What a call left.
struct Outcome
{
    bool answer = false;
    cv::Mat filtered;
    cv::Mat mask;
};

Outcome Search(cv::Mat const & image, SurfaceSearch const & search, ZonePreparation const & how = {})
{
    Outcome outcome;
    outcome.mask = tests::DirtyLabels({3, 3}, CV_16SC1);
    outcome.answer = CallPropagation(image, how, kNoSeeds, search, outcome.filtered, outcome.mask);
    return outcome;
}

/// Expects an answer and a mask that is full outside a rectangle; without one, 0 everywhere.
void ExpectFullBut(Outcome const & outcome, cv::Size size, cv::Rect const & empty)
{
    EXPECT_TRUE(outcome.answer);
    cv::Mat expected(size, CV_8UC1, cv::Scalar(255));
    expected(empty).setTo(0);
    EXPECT_TRUE(EqualImages(outcome.mask, expected));
}

void ExpectNothing(Outcome const & outcome, cv::Size size, bool answer)
{
    EXPECT_EQ(outcome.answer, answer);
    EXPECT_TRUE(EqualImages(outcome.mask, cv::Mat::zeros(size, CV_8U)));
}

TEST(BaseSurface, IsTheGroundWithoutWhatStandsFarAboveIt)
{
    ExpectFullBut(Search(GroundWithBlock(6000.0), {}), {40, 40}, kBlock);
    ExpectFullBut(Search(GroundWithBlock(4900.0), {}), {40, 40}, {});
}

TEST(BaseSurface, TakesZonesOfMorePixelsThanTheLimit)
{
    ExpectFullBut(Search(GroundWithBlock(2000.0), {.areaLimit = 99}), {40, 40}, {});
    ExpectFullBut(Search(GroundWithBlock(2000.0), {.areaLimit = 100}), {40, 40}, kBlock);
}

TEST(BaseSurface, FindsBlocksInTheFilteredImage)
{
    // The opening by 3 wipes a block of 2 pixels out, so that all is one zone.
    cv::Mat image = GroundWithBlock(1000.0);
    cv::Rect const small(20, 20, 2, 2);
    image(small).setTo(3000.0);
    ExpectFullBut(Search(image, {}), {40, 40}, small);
    ZonePreparation how;
    how.filter = true;
    ExpectFullBut(Search(image, {}, how), {40, 40}, {});
}

TEST(BaseSurface, PeelsRimsThatAClosingChanges)
{
    // The notch of one pixel in the block belongs to the ground, which has the lower number: closed, it has the higher.
    cv::Mat image = GroundWithBlock(2000.0);
    image.at<float>(15, 20) = 1000.0F;
    Outcome const outcome = Search(image, {});
    ExpectFullBut(outcome, {40, 40}, {20, 15, 1, 1});
}

TEST(BaseSurface, LeavesPixelsWithoutAMeasurement)
{
    ExpectFullBut(Search(GroundWithBlock(0.0), {}), {40, 40}, kBlock);
}

TEST(BaseSurface, TakesFilledHolesThatAClosingOfTheZonesFills)
{
    ZonePreparation how;
    how.fillHoles = true;
    cv::Rect const wide(34, 34, 3, 3);
    cv::Rect const narrow(34, 34, 3, 2);
    for (cv::Rect const & hole : {wide, narrow})
    {
        cv::Mat image = GroundWithBlock(1000.0);
        image(hole).setTo(0);
        Outcome const outcome = Search(image, {}, how);
        ExpectFullBut(outcome, {40, 40}, hole == wide ? wide : cv::Rect());
        EXPECT_TRUE(EqualImages(outcome.filtered, GroundWithBlock(1000.0)));
        // Without filling there is no zone in the hole.
        ExpectFullBut(Search(image, {}), {40, 40}, hole);
    }
}

TEST(BaseSurface, OfOneZone_IsThisZoneWhateverItsSize)
{
    for (cv::Size const size : {cv::Size(1, 1), cv::Size(2, 1), cv::Size(1, 3), cv::Size(5, 5), cv::Size(100, 100)})
    {
        Outcome const outcome = Search(cv::Mat(size, CV_32FC1, cv::Scalar(7)), {.areaLimit = 1000000});
        ExpectFullBut(outcome, size, {});
    }
}

TEST(BaseSurface, WithoutAMeasuredPixel_IsTrueAndEmpty)
{
    for (int const depth : tests::kDepths)
    {
        ExpectNothing(Search(cv::Mat::zeros(20, 30, depth), {}), {30, 20}, true);
        // Nothing of the other arguments is looked at then.
        ExpectNothing(Search(cv::Mat::zeros(20, 30, depth), {0, -1, -1.0, 0.0}), {30, 20}, true);
    }
    // One that the coarse parts do not see.
    cv::Mat unseen = cv::Mat::zeros(100, 100, CV_32F);
    unseen.at<float>(0, 0) = 5.0F;
    ExpectNothing(Search(unseen, {}), {100, 100}, true);
}

TEST(BaseSurface, WhenNoZoneIsLeft_IsTrueAndEmpty)
{
    ExpectNothing(Search(GroundWithBlock(2000.0), {.areaLimit = 1500}), {40, 40}, true);
}

TEST(BaseSurface, OfArgumentsOutOfRange_IsFalseAndEmpty)
{
    cv::Mat const image = GroundWithBlock(2000.0);
    for (double const pixelSize : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()})
    {
        ExpectNothing(Search(image, {.pixelSize = pixelSize}), {40, 40}, false);
    }
    for (int const areaLimit : {0, -1})
    {
        ExpectNothing(Search(image, {.areaLimit = areaLimit}), {40, 40}, false);
    }
    // No zone is tested, so that the radius is not looked at.
    ExpectFullBut(Search(image, {.radius = -1}), {40, 40}, {});
}

TEST(BaseSurface, OfAnotherType_IsFalseAndEmpty)
{
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32SC1, CV_64FC1, CV_32FC2, CV_8UC3})
    {
        ExpectNothing(Search(cv::Mat(40, 40, type, cv::Scalar::all(9)), {}), {40, 40}, false);
    }
}

TEST(BaseSurface, OfAnImageWithoutAZone_IsFalseAndEmpty)
{
    // Not 0, but too small to hold something.
    ExpectNothing(Search(cv::Mat(40, 40, CV_32FC1, cv::Scalar(1e-12)), {}), {40, 40}, false);
}

TEST(BaseSurface, OfSeedsOfAnotherSize_IsSearchedFor)
{
    for (cv::Mat const & seeds :
         {cv::Mat(39, 40, CV_8UC1, cv::Scalar(1)), cv::Mat(40, 41, CV_32FC3), cv::Mat(0, 40, CV_8U)})
    {
        Outcome outcome;
        outcome.answer =
            CallPropagation(GroundWithBlock(6000.0), {}, seeds, SurfaceSearch{}, outcome.filtered, outcome.mask);
        ExpectFullBut(outcome, {40, 40}, kBlock);
    }
}

/// A search on a random height field.
struct RandomSearch
{
    RandomSearch(Random & random, cv::Size size)
    {
        search.pixelSize = std::array{100.0, 1000.0, 3000.0, 20.0}.at(static_cast<std::size_t>(random.Below(4)));
        search.areaLimit = 1 + random.Below(80);
        search.radius = random.Below(20) - 2;
        search.slopeRatio = random.Unit();
        image = tests::HeightField(random, size, search.pixelSize);
        how.delta = search.pixelSize * 0.5 * random.Unit();
        how.connexity = random.Below(tests::kConnexityCount);
        how.filter = random.Chance(0.4);
        how.fillHoles = random.Chance(0.3);
        how.windowSize = random.Chance(0.5) ? 3 : 5;
        how.projection = random.Below(3);
    }

    cv::Mat image;
    ZonePreparation how;
    SurfaceSearch search;
};

/// Counts what a random search led to.
struct Tally
{
    void Add(bool answer, cv::Mat const & mask)
    {
        int const full = cv::countNonZero(mask);
        empty += full == 0 ? 1 : 0;
        part += full > 0 && full < static_cast<int>(mask.total()) ? 1 : 0;
        refused += answer ? 0 : 1;
    }

    int empty = 0;
    int part = 0;
    int refused = 0;
};

void ExpectOracle(RandomSearch const & given, Tally & tally)
{
    cv::Mat expectedFiltered;
    cv::Mat expected;
    bool const answer =
        tests::OraclePropagation(given.image, given.how, kNoSeeds, given.search, expectedFiltered, expected);
    tally.Add(answer, expected);
    tests::FramedImage source(given.image);
    tests::FramedImage target(cv::Mat(given.image.size(), CV_32FC1, cv::Scalar(3)));
    cv::Mat mask;
    ASSERT_EQ(CallPropagation(source.View(), given.how, kNoSeeds, given.search, target.View(), mask), answer);
    ASSERT_TRUE(EqualImages(target.View(), expectedFiltered));
    ASSERT_TRUE(EqualImages(mask, expected));
    ASSERT_TRUE(EqualImages(source.View(), given.image));
    ASSERT_TRUE(target.IsFrameUntouched());
}

TEST(BaseSurface, IsWhatItsStepsSay)
{
    Random random(4305);
    Tally tally;
    for (int trial = 0; trial < 250; ++trial)
    {
        SCOPED_TRACE(trial);
        ExpectOracle({random, {1 + random.Below(60), 1 + random.Below(60)}}, tally);
    }
    EXPECT_GT(tally.empty, 5);
    EXPECT_GT(tally.part, 100);
}

TEST(BaseSurface, OfLargerImages_IsWhatItsStepsSay)
{
    Random random(4306);
    Tally tally;
    for (cv::Size const size : {cv::Size(100, 100), cv::Size(99, 99), cv::Size(109, 109), cv::Size(200, 150)})
    {
        for (int trial = 0; trial < 5; ++trial)
        {
            SCOPED_TRACE(cv::format("%d by %d, trial %d", size.width, size.height, trial));
            ExpectOracle({random, size}, tally);
        }
    }
    EXPECT_GT(tally.part, 10);
}

TEST(BaseSurface, OfFewLevels_IsWhatItsStepsSay)
{
    // Whole numbers: many zones of one pixel, and flat ones without a normal.
    Random random(4307);
    Tally tally;
    for (int trial = 0; trial < 150; ++trial)
    {
        SCOPED_TRACE(trial);
        RandomSearch given(random, {1 + random.Below(40), 1 + random.Below(40)});
        given.image = tests::RandomImage(random, given.image.size(), CV_32F, {0.2 * random.Unit(), 0.0, 4});
        given.search.areaLimit = 1 + random.Below(4);
        given.how.delta = random.Below(2);
        ExpectOracle(given, tally);
    }
    EXPECT_GT(tally.part, 50);
}

TEST(BaseSurface, DoesNotDependOnTheNumberOfThreads)
{
    Random random(4308);
    for (cv::Size const size : {cv::Size(67, 41), cv::Size(100, 100), cv::Size(200, 150)})
    {
        for (int trial = 0; trial < 3; ++trial)
        {
            RandomSearch const given(random, size);
            std::vector<Outcome> outcomes;
            for (int const count : {1, 2, 8})
            {
                tests::ThreadCount const threads(count);
                outcomes.push_back(Search(given.image, given.search, given.how));
            }
            for (Outcome const & outcome : outcomes)
            {
                EXPECT_EQ(outcome.answer, outcomes.front().answer);
                EXPECT_TRUE(EqualImages(outcome.mask, outcomes.front().mask));
                EXPECT_TRUE(EqualImages(outcome.filtered, outcomes.front().filtered));
            }
        }
    }
}

} // namespace

} // namespace morvane
