// The zones that hold a seed, in an image or as points.
#include <morvane/connexity/QuasiFlatZones.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/QuasiFlatOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <limits>
#include <string>
#include <vector>

namespace morvane
{

namespace
{

using tests::CallPropagation;
using tests::Draw;
using tests::Drawing;
using tests::EqualImages;
using tests::Random;
using tests::Snapshot;
using tests::SurfaceSearch;
using tests::ZonePreparation;

/// Two zones with an empty column between them, and a third that touches the second.
Drawing const kZones{
    "12.99", //
    "12.99", //
    "..455", //
    "44455"};

/// A drawn mask: 1 is 255.
cv::Mat DrawMask(Drawing const & rows)
{
    return Draw<uchar>(rows) * 255;
}

/// Expects the mask of seeds: from the form with an image, and from the long one, whose numbers are then not read.
void ExpectMask(cv::Mat const & image, cv::Mat const & seeds, cv::Mat const & expected)
{
    cv::Mat filtered;
    cv::Mat mask;
    EXPECT_TRUE(CallPropagation(image, {}, seeds, filtered, mask));
    EXPECT_TRUE(EqualImages(mask, expected));
    EXPECT_TRUE(EqualImages(filtered, image));

    double const nan = std::numeric_limits<double>::quiet_NaN();
    cv::Mat longMask;
    EXPECT_TRUE(CallPropagation(image, {}, seeds, SurfaceSearch{-1, -1, nan, nan}, filtered, longMask));
    EXPECT_TRUE(EqualImages(longMask, expected));
    EXPECT_TRUE(EqualImages(filtered, image));
}

TEST(QuasiFlatZonesPropagation, GivesTheZonesThatHoldASeed)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = Draw(kZones, depth);
        for (int const seedDepth : tests::kLabelDepths)
        {
            SCOPED_TRACE(cv::typeToString(depth) + ", seeds of " + cv::typeToString(seedDepth));
            Drawing const seeds{
                "....3", //
                ".....", //
                ".....", //
                "7...."};
            Drawing const mask{
                "...11", //
                "...11", //
                "..111", //
                "11111"};
            ExpectMask(image, Draw(seeds, seedDepth), DrawMask(mask));
        }
    }
}

TEST(QuasiFlatZonesPropagation, GivesEachZoneOnce)
{
    ExpectMask(
        Draw<uchar>(kZones),
        Draw<uchar>(
            {"8....", //
             "4....", //
             ".....", //
             "....."}),
        DrawMask(
            {"11...", //
             "11...", //
             ".....", //
             "....."}));
}

TEST(QuasiFlatZonesPropagation, WithoutASetSeed_GivesNothingButTheFilteredImage)
{
    for (int const seedDepth : {CV_8U, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_8S})
    {
        cv::Mat const seeds = cv::Mat::zeros(4, 5, seedDepth);
        ExpectMask(Draw<float>(kZones), seeds, cv::Mat::zeros(4, 5, CV_8U));
    }
}

TEST(QuasiFlatZonesPropagation, PassesOverSeedsOnEmptyPixels)
{
    Drawing const seeds{
        "..9..", //
        "..9..", //
        "99...", //
        "....."};
    ExpectMask(Draw<ushort>(kZones), Draw<ushort>(seeds), cv::Mat::zeros(4, 5, CV_8U));
}

TEST(QuasiFlatZonesPropagation, LooksAtTheLargestSeedOfAZone)
{
    cv::Mat const image = Draw<uchar>({"33.44.55.66"});
    // A negative seed beside a 0 is not seen, two negative ones are, and 0 is the largest of nothing.
    for (int const depth : {CV_16S, CV_32S})
    {
        cv::Mat seeds = Draw({"00000000000"}, depth);
        tests::SetElement(seeds, 0, 0, 0, -1);
        tests::SetElement(seeds, 0, 3, 0, -2);
        tests::SetElement(seeds, 0, 4, 0, -3);
        tests::SetElement(seeds, 0, 9, 0, -5);
        tests::SetElement(seeds, 0, 10, 0, 1);
        ExpectMask(image, seeds, DrawMask({"...11....11"}));
    }
    cv::Mat least(1, 11, CV_32SC1, cv::Scalar(0));
    least(cv::Rect(0, 0, 2, 1)).setTo(std::numeric_limits<int>::min());
    ExpectMask(image, least, DrawMask({"11........."}));
}

TEST(QuasiFlatZonesPropagation, OfFloatingSeeds_IsFalseWithoutAMask)
{
    for (int const type : {CV_32FC1, CV_64FC1, CV_8SC1})
    {
        cv::Mat seeds(4, 5, type, cv::Scalar(1));
        for (bool const isLong : {false, true})
        {
            cv::Mat filtered;
            cv::Mat mask = tests::DirtyLabels({2, 2}, CV_16UC1);
            cv::Mat const image = Draw<float>(kZones);
            EXPECT_FALSE(
                isLong ? CallPropagation(image, {}, seeds, SurfaceSearch{}, filtered, mask)
                       : CallPropagation(image, {}, seeds, filtered, mask));
            EXPECT_TRUE(EqualImages(mask, cv::Mat::zeros(4, 5, CV_8U)));
            EXPECT_TRUE(EqualImages(filtered, image));
        }
    }
    cv::Mat filtered;
    cv::Mat mask;
    cv::Mat const seeds(4, 5, CV_8UC3, cv::Scalar(1));
    EXPECT_THROW((void)CallPropagation(Draw<float>(kZones), {}, seeds, filtered, mask), cv::Exception);
}

TEST(QuasiFlatZonesPropagation, WhenThereAreNoZones_IsFalseAndLeavesTheMask)
{
    ZonePreparation how;
    how.fillHoles = true;
    how.windowSize = 2;
    cv::Mat const image = Draw<float>(kZones);
    for (cv::Mat const & seeds : {cv::Mat(), cv::Mat(4, 5, CV_8UC1, cv::Scalar(1))})
    {
        cv::Mat filtered;
        cv::Mat mask = tests::DirtyLabels({5, 4}, CV_8UC1);
        Snapshot const before(mask);
        EXPECT_FALSE(CallPropagation(image, how, seeds, filtered, mask));
        EXPECT_TRUE(before.IsUntouched());
        EXPECT_FALSE(CallPropagation(image, how, seeds, SurfaceSearch{}, filtered, mask));
        EXPECT_TRUE(before.IsUntouched());
    }
    cv::Mat filtered;
    cv::Mat mask = tests::DirtyLabels({5, 4}, CV_8UC1);
    Snapshot const before(mask);
    cv::Mat signedBytes(4, 5, CV_8SC1, cv::Scalar(1));
    EXPECT_FALSE(CallPropagation(signedBytes, {}, cv::Mat(), filtered, mask));
    EXPECT_TRUE(before.IsUntouched());
}

TEST(QuasiFlatZonesPropagation, OfAnEmptyImage_GivesAnEmptyMask)
{
    cv::Mat filtered;
    cv::Mat mask = tests::DirtyLabels({2, 2}, CV_8UC1);
    EXPECT_TRUE(CallPropagation(cv::Mat(), {}, cv::Mat(), filtered, mask));
    EXPECT_TRUE(mask.empty());
}

TEST(QuasiFlatZonesPropagation, WithSeeds_TakesSeveralChannels)
{
    for (int const channels : {2, 3, 4})
    {
        Drawing const seeds{"1....", ".....", ".....", "....."};
        Drawing const mask{"1....", "1....", ".....", "....."};
        ExpectMask(Draw(kZones, CV_16SC(channels)), Draw<uchar>(seeds), DrawMask(mask));
    }
}

TEST(QuasiFlatZonesPropagation, TakesPoints)
{
    cv::Mat const image = Draw<uchar>(kZones);
    cv::Mat filtered;
    cv::Mat mask;
    // x is the column.
    std::vector<cv::Point> const points{{4, 1}, {4, 1}, {0, 1}, {2, 0}};
    EXPECT_TRUE(CallPropagation(image, {}, points, filtered, mask));
    EXPECT_TRUE(EqualImages(filtered, image));
    EXPECT_TRUE(EqualImages(
        mask, DrawMask(
                  {"11.11", //
                   "11.11", //
                   ".....", //
                   "....."})));
}

TEST(QuasiFlatZonesPropagation, PassesOverPointsOutsideTheImage)
{
    int const most = std::numeric_limits<int>::max();
    int const least = std::numeric_limits<int>::min();
    std::vector<cv::Point> points{{-1, 0},      {0, -1},        {5, 0},    {0, 4},
                                  {most, most}, {least, least}, {most, 0}, {0, least}};
    cv::Mat filtered;
    cv::Mat mask;
    EXPECT_TRUE(CallPropagation(Draw<uchar>(kZones), {}, points, filtered, mask));
    EXPECT_TRUE(EqualImages(mask, cv::Mat::zeros(4, 5, CV_8U)));
    points.emplace_back(0, 0);
    EXPECT_TRUE(CallPropagation(Draw<uchar>(kZones), {}, points, filtered, mask));
    EXPECT_TRUE(EqualImages(mask, DrawMask({"11...", "11...", ".....", "....."})));
}

TEST(QuasiFlatZonesPropagation, WithoutPoints_GivesTheMostFrequentZone)
{
    cv::Mat filtered;
    cv::Mat mask;
    EXPECT_TRUE(CallPropagation(Draw<uchar>({"3.55.7"}), {}, std::vector<cv::Point>(), filtered, mask));
    EXPECT_TRUE(EqualImages(mask, DrawMask({"..11.."})));
}

TEST(QuasiFlatZonesPropagation, OfPoints_IsTrueWhateverHappens)
{
    std::vector<cv::Point> const points{{0, 0}};
    cv::Mat filtered;
    cv::Mat mask = tests::DirtyLabels({5, 4}, CV_8UC1);
    Snapshot const before(mask);
    ZonePreparation how;
    how.fillHoles = true;
    how.windowSize = 2;
    EXPECT_TRUE(CallPropagation(Draw<float>(kZones), how, points, filtered, mask));
    EXPECT_TRUE(before.IsUntouched());
    how.windowSize = 3;
    EXPECT_TRUE(CallPropagation(Draw<uchar>(kZones), how, points, filtered, mask));
    EXPECT_TRUE(before.IsUntouched());
    // Without points, an image of several channels is refused after the mask was cleared.
    EXPECT_TRUE(CallPropagation(Draw<cv::Vec2b>(kZones), {}, std::vector<cv::Point>(), filtered, mask));
    EXPECT_TRUE(EqualImages(mask, cv::Mat::zeros(4, 5, CV_8U)));
    EXPECT_TRUE(CallPropagation(cv::Mat(), {}, points, filtered, mask));
    EXPECT_TRUE(mask.empty());
}

TEST(QuasiFlatZonesPropagation, IsWhatItsStepsSay)
{
    Random random(4103);
    int someMasks = 0;
    for (int trial = 0; trial < 600; ++trial)
    {
        int const depth = tests::kDepths[static_cast<std::size_t>(random.Below(6))];
        cv::Size const size = tests::RandomSize(random, 30);
        if (size.empty()) continue;
        cv::Mat const image = tests::RandomImage(random, size, depth, {0.3, 0.02, 9});
        ZonePreparation how;
        how.delta = random.Below(4);
        how.connexity = random.Below(tests::kConnexityCount);
        how.filter = depth != CV_32S && random.Chance(0.3);
        how.projection = random.Below(2);
        SCOPED_TRACE(tests::Case(depth, size, how.connexity) + ", trial " + std::to_string(trial));
        bool const hasSeeds = random.Chance(0.7);
        int const seedDepth = tests::kLabelDepths[static_cast<std::size_t>(random.Below(4))];
        cv::Mat const seeds =
            hasSeeds ? tests::RandomImage(random, size, seedDepth, {0.95, 0.2, 9}) : cv::Mat(size.width, 1, CV_8U);
        if (!hasSeeds && seeds.size() == size) continue;

        cv::Mat expectedFiltered;
        cv::Mat expected;
        ASSERT_TRUE(tests::OraclePropagation(image, how, seeds, expectedFiltered, expected));
        tests::FramedImage source(image);
        tests::FramedImage seedView(seeds);
        tests::FramedImage target(cv::Mat(size, depth, cv::Scalar(3)));
        cv::Mat mask;
        ASSERT_TRUE(CallPropagation(source.View(), how, seedView.View(), target.View(), mask));
        ASSERT_TRUE(EqualImages(mask, expected));
        ASSERT_TRUE(EqualImages(target.View(), expectedFiltered));
        ASSERT_TRUE(target.IsFrameUntouched());
        if (hasSeeds)
        {
            cv::Mat longMask;
            ASSERT_TRUE(CallPropagation(source.View(), how, seedView.View(), SurfaceSearch{}, target.View(), longMask));
            ASSERT_TRUE(EqualImages(longMask, expected));
        }
        int const full = cv::countNonZero(expected);
        someMasks += full > 0 && full < size.area() ? 1 : 0;
    }
    EXPECT_GT(someMasks, 200);
}

TEST(QuasiFlatZonesPropagation, OfPoints_IsThatOfTheirImage)
{
    Random random(4104);
    for (int trial = 0; trial < 100; ++trial)
    {
        cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
        cv::Mat const image = tests::RandomImage(random, size, CV_16U, {0.3, 0.0, 9});
        std::vector<cv::Point> points;
        cv::Mat seeds(size, CV_8UC1, cv::Scalar(0));
        for (int i = random.Below(4); i >= 0; --i)
        {
            points.emplace_back(random.Below(size.width), random.Below(size.height));
            seeds.at<uchar>(points.back()) = 1;
        }
        cv::Mat filtered;
        cv::Mat expected;
        ASSERT_TRUE(tests::OraclePropagation(image, {}, seeds, filtered, expected));
        cv::Mat mask;
        ASSERT_TRUE(CallPropagation(image, {}, points, filtered, mask));
        ASSERT_TRUE(EqualImages(mask, expected));
    }
}

} // namespace

} // namespace morvane
