// Coarse parts of an image, the list of zones without the small ones, and the largest zone of each part.
#include <morvane/connexity/QuasiFlatZones.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/QuasiFlatOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <limits>
#include <string>
#include <vector>

namespace morvane::quasi_flat_internals
{

namespace
{

using tests::Draw;
using tests::DrawLabels;
using tests::EqualImages;
using tests::EqualRegions;
using tests::Random;
using tests::Region;
using tests::Snapshot;

/// The parts as `CV_32S`.
cv::Mat PartsOf(cv::Mat const & image)
{
    cv::Mat parts;
    EXPECT_TRUE(BuildCoarsePartition(image, parts));
    parts.convertTo(parts, CV_32S);
    return parts;
}

TEST(BuildCoarsePartition, OfAnImageWithoutHoles_IsOnePart)
{
    for (int const depth : tests::kDepths)
    {
        for (cv::Size const size :
             {cv::Size(1, 1), cv::Size(3, 2), cv::Size(10, 10), cv::Size(37, 1), cv::Size(25, 41)})
        {
            EXPECT_TRUE(
                EqualImages(PartsOf(cv::Mat(size, depth, cv::Scalar(7))), cv::Mat(size, CV_32SC1, cv::Scalar(1))));
        }
    }
}

TEST(BuildCoarsePartition, GrowsThePartsOfAnImageUntilTheyMeet)
{
    // 10 pixels a side: the thumbnail is the image.
    cv::Mat const image = Draw<float>(
        {"33........", //
         "3.........", //
         "..........", //
         ".......5..", //
         "..........", //
         "..........", //
         "..........", //
         "..........", //
         "8.........", //
         ".........."});
    cv::Mat const expected = DrawLabels(
        {"1111222222", //
         "1111222222", //
         "1111222222", //
         "1111222222", //
         "1111222222", //
         "3333222222", //
         "3333222222", //
         "3333322222", //
         "3333332222", //
         "3333333222"});
    // By hand, pass after pass; where two meet in one pass, the higher number is there.
    EXPECT_TRUE(EqualImages(PartsOf(image), expected));
}

TEST(BuildCoarsePartition, ReachesAsFarAsItIsAllowedTo)
{
    // Blocks of 120 pixels; what is measured in the middle of the first is seen until the middle of the second.
    cv::Mat row(1, 1200, CV_8UC1, cv::Scalar(0));
    row.colRange(59, 61).setTo(cv::Scalar(1));
    cv::Mat const parts = PartsOf(row);
    constexpr int kSeen = 180;
    constexpr int kPasses = 501;
    EXPECT_EQ(cv::countNonZero(parts), kSeen + kPasses);
    EXPECT_EQ(parts.at<int>(0, kSeen + kPasses - 1), 1);
    EXPECT_EQ(parts.at<int>(0, kSeen + kPasses), 0);
    EXPECT_TRUE(EqualImages(PartsOf(row.t()), parts.t()));
}

TEST(BuildCoarsePartition, FillsAGapOfTwiceItsReach)
{
    // Both ends are seen 120 * 1.5 pixels far; they meet in a gap of 840, the higher number where both arrive at once.
    cv::Mat row(1, 1200, CV_8UC1, cv::Scalar(0));
    row.colRange(59, 61).setTo(cv::Scalar(1));
    row.colRange(1139, 1141).setTo(cv::Scalar(1));
    cv::Mat const parts = PartsOf(row);
    EXPECT_EQ(cv::countNonZero(parts), 1200);
    EXPECT_EQ(cv::countNonZero(parts == 2), 600);
    // In one of 1440 more than twice 501 pixels lie between the ends.
    cv::Mat longer(1, 1600, CV_8UC1, cv::Scalar(0));
    longer.colRange(79, 81).setTo(cv::Scalar(1));
    longer.colRange(1519, 1521).setTo(cv::Scalar(1));
    EXPECT_EQ(cv::countNonZero(PartsOf(longer)), 2 * (240 + 501));
}

TEST(BuildCoarsePartition, WithoutAPart_IsFalseAndLeavesTheOutput)
{
    cv::Mat out(2, 2, CV_8UC1, cv::Scalar(9));
    Snapshot const before(out);
    EXPECT_FALSE(BuildCoarsePartition(cv::Mat(), out));
    EXPECT_FALSE(BuildCoarsePartition(cv::Mat(0, 4, CV_32FC1), out));
    EXPECT_FALSE(BuildCoarsePartition(cv::Mat(4, 0, CV_32FC1), out));
    EXPECT_FALSE(BuildCoarsePartition(cv::Mat(4, 4, CV_32FC2, cv::Scalar::all(1)), out));
    for (int const depth : tests::kDepths)
    {
        EXPECT_FALSE(BuildCoarsePartition(cv::Mat::zeros(30, 20, depth), out));
    }
    // A measured pixel that the thumbnail does not see.
    cv::Mat unseen = cv::Mat::zeros(100, 100, CV_8U);
    unseen.at<uchar>(0, 0) = 1;
    EXPECT_FALSE(BuildCoarsePartition(unseen, out));
    EXPECT_TRUE(before.IsUntouched());
}

TEST(BuildCoarsePartition, TakesAnythingBut0AsMeasured)
{
    cv::Mat image(1, 10, CV_32FC1, cv::Scalar(0));
    image.at<float>(0, 2) = -3.0F;
    EXPECT_TRUE(EqualImages(PartsOf(image), cv::Mat(1, 10, CV_32SC1, cv::Scalar(1))));
    image.at<float>(0, 7) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(EqualImages(PartsOf(image), DrawLabels({"1111122222"})));
    image.at<float>(0, 2) = 1e-20F;
    EXPECT_TRUE(EqualImages(PartsOf(image), DrawLabels({"1111122222"})));
}

TEST(BuildCoarsePartition, IsWhatItsStepsSay)
{
    Random random(4201);
    int several = 0;
    for (int trial = 0; trial < 300; ++trial)
    {
        cv::Size const size(1 + random.Below(90), 1 + random.Below(90));
        int const depth = tests::kDepths[static_cast<std::size_t>(random.Below(6))];
        cv::Mat zones = tests::RandomZones(random, size, 6);
        cv::Mat image;
        zones.convertTo(image, depth);
        SCOPED_TRACE(tests::Case(depth, size, trial));
        cv::Mat expected;
        bool const answer = tests::OracleCoarsePartition(image, expected);
        tests::FramedImage source(image);
        cv::Mat out;
        ASSERT_EQ(BuildCoarsePartition(source.View(), out), answer);
        if (!answer) continue;
        out.convertTo(out, CV_32S);
        expected.convertTo(expected, CV_32S);
        ASSERT_TRUE(EqualImages(out, expected));
        double parts = 0.0;
        cv::minMaxLoc(expected, nullptr, &parts);
        several += parts > 1.0 ? 1 : 0;
    }
    EXPECT_GT(several, 100);
}

TEST(BuildCoarsePartition, OfLargeImages_IsWhatItsStepsSay)
{
    Random random(4202);
    for (cv::Size const size : {cv::Size(1700, 3), cv::Size(2, 1300), cv::Size(1100, 40)})
    {
        cv::Mat image = cv::Mat::zeros(size, CV_8U);
        for (int i = 0; i < 3; ++i)
        {
            int const x = random.Below(size.width);
            int const y = random.Below(size.height);
            image(cv::Rect(x, y, size.width / 8 + 1, size.height / 8 + 1) & cv::Rect({0, 0}, size)).setTo(1);
        }
        cv::Mat expected;
        ASSERT_TRUE(tests::OracleCoarsePartition(image, expected));
        expected.convertTo(expected, CV_32S);
        EXPECT_TRUE(EqualImages(PartsOf(image), expected));
    }
}

TEST(RemoveSmallRegions, ClearsZonesAndAreasThatAreTheirNumbers)
{
    cv::Mat labels = DrawLabels(
        {"1122", //
         "1133", //
         "4433"});
    // The zone of number 2 has 2 pixels, of number 4, too: the areas of zone 2 are 2 and go, those of zone 4 stay.
    cv::Mat areas = DrawLabels(
        {"4422", //
         "4444", //
         "2244"});
    std::vector<RegionInfo> regions{
        Region(1, 4, -1, {0, 0, 2, 2}), Region(2, 2, -1, {2, 0, 2, 1}), Region(3, 5, 7, {2, 1, 2, 2}),
        Region(4, 2, -1, {0, 2, 2, 1})};
    EXPECT_TRUE(RemoveSmallRegions(areas, labels, 3, regions));
    EXPECT_TRUE(EqualImages(
        labels, DrawLabels(
                    {"11..", //
                     "1133", //
                     "..33"})));
    EXPECT_TRUE(EqualImages(
        areas, DrawLabels(
                   {"44..", //
                    "4444", //
                    "2244"})));
    EXPECT_TRUE(EqualRegions(regions, {Region(3, 5, 7, {2, 1, 2, 2}), Region(1, 4, -1, {0, 0, 2, 2})}));
}

TEST(RemoveSmallRegions, KeepsTheZonesAboveTheLimit)
{
    for (int const limit : {5, 6})
    {
        cv::Mat labels = DrawLabels({"111111"});
        cv::Mat areas = DrawLabels({"666661"});
        std::vector<RegionInfo> regions{Region(1, 6, -1, {0, 0, 6, 1})};
        EXPECT_TRUE(RemoveSmallRegions(areas, labels, limit, regions));
        EXPECT_EQ(regions.size(), limit == 5 ? 1U : 0U);
        EXPECT_TRUE(EqualImages(labels, DrawLabels({limit == 5 ? "111111" : "......"})));
        EXPECT_TRUE(EqualImages(areas, DrawLabels({limit == 5 ? "666661" : "66666."})));
    }
}

TEST(RemoveSmallRegions, ClearsOnlyInsideTheBox)
{
    cv::Mat labels = DrawLabels({"121212", "121212"});
    cv::Mat areas = DrawLabels({"212121", "212121"});
    std::vector<RegionInfo> regions{Region(1, 1, -1, {1, 0, 3, 1}), Region(2, 1, -1, {2, 1, 4, 1}), Region(9, 0)};
    EXPECT_TRUE(RemoveSmallRegions(areas, labels, 1, regions));
    EXPECT_TRUE(EqualImages(labels, DrawLabels({"12.212", "121.1."})));
    EXPECT_TRUE(EqualImages(areas, DrawLabels({"2.2.21", "21.1.1"})));
    EXPECT_TRUE(regions.empty());
}

TEST(RemoveSmallRegions, SortsByArea_EqualsAsTheyCome)
{
    cv::Mat labels = DrawLabels({"1"});
    cv::Mat areas = DrawLabels({"1"});
    std::vector<RegionInfo> regions{Region(5, 7), Region(2, 9), Region(8, 7), Region(3, 1), Region(1, 7), Region(4, 9)};
    EXPECT_TRUE(RemoveSmallRegions(areas, labels, 1, regions));
    EXPECT_TRUE(EqualRegions(regions, {Region(2, 9), Region(4, 9), Region(5, 7), Region(8, 7), Region(1, 7)}));
}

TEST(RemoveSmallRegions, OfRefusedArguments_IsFalseAndChangesNothing)
{
    auto const expectRefused = [](cv::Mat areas, cv::Mat labels, std::vector<RegionInfo> const & regions) {
        Snapshot const areasBefore(areas);
        Snapshot const labelsBefore(labels);
        std::vector<RegionInfo> list = regions;
        EXPECT_FALSE(RemoveSmallRegions(areas, labels, 100, list));
        EXPECT_TRUE(areasBefore.IsUntouched());
        EXPECT_TRUE(labelsBefore.IsUntouched());
        EXPECT_TRUE(EqualRegions(list, regions));
    };
    std::vector<RegionInfo> const regions{Region(1, 3, -1, {0, 0, 2, 1})};
    cv::Mat const image = DrawLabels({"11"});
    expectRefused(image.clone(), image.clone(), {});
    expectRefused(cv::Mat(), image.clone(), regions);
    expectRefused(image.clone(), cv::Mat(), regions);
    expectRefused(cv::Mat(), cv::Mat(), regions);
    expectRefused(DrawLabels({"111"}), image.clone(), regions);
    expectRefused(Draw<float>({"11"}), image.clone(), regions);
    expectRefused(image.clone(), Draw<uchar>({"11"}), regions);
}

TEST(RemoveSmallRegions, IsWhatItsStepsSay)
{
    Random random(4203);
    for (int trial = 0; trial < 300; ++trial)
    {
        cv::Size const size(1 + random.Below(40), 1 + random.Below(40));
        cv::Mat const labels = tests::RandomZones(random, size, 9);
        cv::Mat const areas = tests::RandomZones(random, size, 9);
        std::vector<RegionInfo> list;
        for (int i = random.Below(12); i >= 0; --i)
        {
            cv::Rect const box(
                random.Below(size.width), random.Below(size.height), random.Below(size.width),
                random.Below(size.height));
            list.push_back(Region(random.Below(10), random.Below(6), random.Below(3), box & cv::Rect({0, 0}, size)));
        }
        int const limit = random.Below(6);
        cv::Mat expectedAreas = areas.clone();
        cv::Mat expectedLabels = labels.clone();
        std::vector<RegionInfo> expected = list;
        ASSERT_TRUE(tests::OracleRemoveSmallRegions(expectedAreas, expectedLabels, limit, expected));
        tests::ThreadCount const threads(1 + trial % 4);
        tests::FramedImage areaView(areas);
        tests::FramedImage labelView(labels);
        ASSERT_TRUE(RemoveSmallRegions(areaView.View(), labelView.View(), limit, list));
        ASSERT_TRUE(EqualImages(areaView.View(), expectedAreas)) << trial;
        ASSERT_TRUE(EqualImages(labelView.View(), expectedLabels)) << trial;
        ASSERT_TRUE(EqualRegions(list, expected)) << trial;
        ASSERT_TRUE(areaView.IsFrameUntouched());
        ASSERT_TRUE(labelView.IsFrameUntouched());
    }
}

using Indices = std::vector<int>;

TEST(SelectGroupSeeds, GivesTheLargestOfEachGroupInTheOrderOfGroups)
{
    Indices seeds{4, 4, 4};
    EXPECT_TRUE(SelectGroupSeeds(
        {Region(1, 9, 3), Region(2, 8, 1), Region(3, 20, 3), Region(4, 8, 1), Region(5, 3, 0), Region(6, 7, 1)},
        seeds));
    // Groups 0, 1 and 3; of equal ones the first.
    EXPECT_EQ(seeds, (Indices{4, 1, 2}));
}

TEST(SelectGroupSeeds, TakesAnAreaOf0ButNoneBelow)
{
    Indices seeds;
    EXPECT_TRUE(SelectGroupSeeds({Region(1, 0, 2), Region(2, -1, 1), Region(3, -5, 2)}, seeds));
    EXPECT_EQ(seeds, (Indices{0}));
}

TEST(SelectGroupSeeds, WithoutAGroup_IsFalse)
{
    Indices seeds{1, 2};
    EXPECT_FALSE(SelectGroupSeeds({}, seeds));
    seeds = {1, 2};
    EXPECT_FALSE(SelectGroupSeeds({Region(1, 5, -1), Region(2, 6, -1)}, seeds));
    EXPECT_EQ(seeds, Indices());
}

TEST(SelectGroupSeeds, PassesOverZonesWithoutAGroup)
{
    Indices seeds;
    EXPECT_TRUE(SelectGroupSeeds({Region(1, 50, -1), Region(2, 6, 4), Region(3, 9, -7)}, seeds));
    EXPECT_EQ(seeds, (Indices{1}));
}

TEST(SelectGroupSeeds, TakesGroupsOfAnyNumber)
{
    Indices seeds;
    EXPECT_TRUE(SelectGroupSeeds({Region(1, 5, std::numeric_limits<int>::max()), Region(2, 5, 0)}, seeds));
    EXPECT_EQ(seeds, (Indices{1, 0}));
}

TEST(SelectGroupSeeds, IsWhatItsStepsSay)
{
    Random random(4204);
    for (int trial = 0; trial < 300; ++trial)
    {
        std::vector<RegionInfo> regions;
        for (int i = random.Below(20); i > 0; --i)
        {
            regions.push_back(Region(i, random.Below(8) - 2, random.Below(7) - 1));
        }
        Indices expected;
        bool const answer = tests::OracleGroupSeeds(regions, expected);
        Indices seeds;
        ASSERT_EQ(SelectGroupSeeds(regions, seeds), answer);
        ASSERT_EQ(seeds, expected) << trial;
    }
}

} // namespace

} // namespace morvane::quasi_flat_internals
