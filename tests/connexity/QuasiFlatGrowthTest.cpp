// The growth of the mask by zones: which enter at once, which are dropped, which stay undecided.
#include <morvane/connexity/QuasiFlatZones.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/QuasiFlatOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
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
using tests::SurfaceSearch;

bool Grow(
    cv::Mat const & labels, cv::Mat const & image, SurfaceSearch const & search, std::vector<RegionInfo> & regions,
    cv::Mat & mask)
{
    return GrowMask(labels, image, search.areaLimit, search.radius, search.pixelSize, search.slopeRatio, regions, mask);
}

/// The record of a zone, with the box that it has.
RegionInfo Record(cv::Mat const & labels, int label)
{
    cv::Mat const zone = labels == label;
    return Region(label, cv::countNonZero(zone), 1, cv::boundingRect(zone));
}

/// Zones of 10, 4, 3, 2 and 1 pixels.
cv::Mat const kZones = DrawLabels(
    {"11111.22", //
     "11111.22", //
     "........", //
     "333.44.5"});

cv::Mat MaskOf(cv::Mat const & labels, std::vector<int> const & inside)
{
    cv::Mat mask(labels.size(), CV_8UC1, cv::Scalar(0));
    for (int const label : inside)
    {
        mask.setTo(255, labels == label);
    }
    return mask;
}

std::vector<RegionInfo> AllRecords()
{
    std::vector<RegionInfo> records;
    for (int const label : {1, 2, 3, 4, 5})
    {
        records.push_back(Record(kZones, label));
    }
    return records;
}

TEST(GrowMask, TakesZonesAboveTheLimitAndLeavesTheOthersUndecided)
{
    cv::Mat const image(kZones.size(), CV_32FC1, cv::Scalar(0));
    // A zone of exactly the limit is tested. Zones of two pixels and one are dropped.
    for (int const limit : {2, 3, 4, 9, 10})
    {
        SCOPED_TRACE(limit);
        std::vector<RegionInfo> regions = AllRecords();
        cv::Mat mask = MaskOf(kZones, {});
        EXPECT_TRUE(Grow(kZones, image, {limit, 10, 1.0, 1.0}, regions, mask));
        std::vector<int> taken;
        std::vector<RegionInfo> left;
        for (RegionInfo const & record : AllRecords())
        {
            if (record.area > limit) taken.push_back(record.label);
            if (record.area <= limit && record.area > 2) left.push_back(record);
        }
        EXPECT_TRUE(EqualImages(mask, MaskOf(kZones, taken)));
        EXPECT_TRUE(EqualRegions(regions, left));
    }
}

TEST(GrowMask, DropsZonesOfTwoPixelsEvenAboveTheLimit)
{
    for (int const limit : {1, 0, -5})
    {
        std::vector<RegionInfo> regions = AllRecords();
        cv::Mat mask = MaskOf(kZones, {});
        EXPECT_TRUE(
            Grow(kZones, cv::Mat(kZones.size(), CV_32FC1, cv::Scalar(0)), {limit, 10, 1.0, 1.0}, regions, mask));
        EXPECT_TRUE(EqualImages(mask, MaskOf(kZones, {1, 2, 3})));
        EXPECT_TRUE(regions.empty());
    }
}

TEST(GrowMask, KeepsWhatTheMaskHolds)
{
    std::vector<RegionInfo> regions{Record(kZones, 2)};
    cv::Mat mask = Draw<uchar>(
        {"........", //
         ".......3", //
         "9.......", //
         "........"});
    cv::Mat expected = mask.clone();
    expected(cv::Rect(6, 0, 2, 2)).setTo(255);
    EXPECT_TRUE(Grow(kZones, cv::Mat(kZones.size(), CV_32FC1, cv::Scalar(0)), {3, 10, 1.0, 1.0}, regions, mask));
    EXPECT_TRUE(EqualImages(mask, expected));
}

TEST(GrowMask, TestsZonesThatOverlapTheMask)
{
    cv::Mat labels(9, 20, CV_32SC1, cv::Scalar(0));
    labels(cv::Rect(2, 2, 8, 5)).setTo(6);
    labels(cv::Rect(12, 2, 6, 5)).setTo(9);
    std::vector<RegionInfo> const records{Record(labels, 6), Record(labels, 9)};
    cv::Mat before(labels.size(), CV_8UC1, cv::Scalar(0));
    before(cv::Rect(1, 1, 10, 7)).setTo(1);
    SurfaceSearch const search{1000, 10, 1.0, 1.0};

    // On the ground the first zone enters, high above it is dropped; the second, outside the mask, stays.
    for (bool const isLow : {true, false})
    {
        std::vector<RegionInfo> regions = records;
        cv::Mat mask = before.clone();
        cv::Mat const image(labels.size(), CV_32FC1, cv::Scalar(isLow ? 0.5 : 1e6));
        EXPECT_TRUE(Grow(labels, image, search, regions, mask));
        cv::Mat expected = before.clone();
        if (isLow) expected.setTo(255, labels == 6);
        EXPECT_TRUE(EqualImages(mask, expected));
        EXPECT_TRUE(EqualRegions(regions, {records[1]}));
    }
}

TEST(GrowMask, LooksAgainAtUndecidedZonesWhenTheMaskHasGrown)
{
    cv::Mat labels(9, 20, CV_32SC1, cv::Scalar(0));
    labels(cv::Rect(2, 2, 8, 5)).setTo(6);
    RegionInfo const whole = Record(labels, 6);
    RegionInfo part = whole;
    part.area = 5;
    // As it is listed, the zone is undecided at first; it enters under its second record, and is decided then.
    for (double const height : {0.5, 1e6})
    {
        std::vector<RegionInfo> regions{part, whole};
        cv::Mat mask(labels.size(), CV_8UC1, cv::Scalar(0));
        EXPECT_TRUE(
            Grow(labels, cv::Mat(labels.size(), CV_32FC1, cv::Scalar(height)), {30, 9, 1.0, 1.0}, regions, mask));
        EXPECT_TRUE(regions.empty());
        EXPECT_TRUE(EqualImages(mask, MaskOf(labels, {6})));
    }
}

TEST(GrowMask, WhenATestFails_IsFalseWithWhatWasReached)
{
    for (SurfaceSearch const & search : {SurfaceSearch{4, -1, 1.0, 1.0}, SurfaceSearch{4, 10, 0.0, 1.0}})
    {
        std::vector<RegionInfo> regions{Record(kZones, 1), Record(kZones, 3), Record(kZones, 2)};
        cv::Mat mask = MaskOf(kZones, {});
        EXPECT_FALSE(Grow(kZones, cv::Mat(kZones.size(), CV_32FC1, cv::Scalar(1)), search, regions, mask));
        EXPECT_TRUE(EqualImages(mask, MaskOf(kZones, {1})));
    }
    // Nothing fails where nothing is tested.
    std::vector<RegionInfo> regions{Record(kZones, 1), Record(kZones, 4)};
    cv::Mat mask = MaskOf(kZones, {});
    EXPECT_TRUE(Grow(kZones, cv::Mat(kZones.size(), CV_32FC1, cv::Scalar(0)), {4, -1, 0.0, 1.0}, regions, mask));
    EXPECT_TRUE(EqualImages(mask, MaskOf(kZones, {1})));
    EXPECT_TRUE(regions.empty());
}

TEST(GrowMask, OfNoZones_IsTrue)
{
    std::vector<RegionInfo> regions;
    cv::Mat mask = MaskOf(kZones, {2});
    Snapshot const before(mask);
    EXPECT_TRUE(Grow(kZones, cv::Mat(kZones.size(), CV_32FC1, cv::Scalar(0)), {}, regions, mask));
    EXPECT_TRUE(before.IsUntouched());
}

TEST(GrowMask, OfRefusedArguments_IsFalseAndChangesNothing)
{
    auto const expectRefused = [](cv::Mat const & labels, cv::Mat const & image, cv::Mat mask) {
        std::vector<RegionInfo> regions = AllRecords();
        Snapshot const before(mask);
        EXPECT_FALSE(Grow(labels, image, {3, 10, 1.0, 1.0}, regions, mask));
        EXPECT_TRUE(before.IsUntouched());
        EXPECT_TRUE(EqualRegions(regions, AllRecords()));
    };
    cv::Mat const image(kZones.size(), CV_32FC1, cv::Scalar(1));
    expectRefused(kZones, image.colRange(0, 7), MaskOf(kZones, {}));
    expectRefused(kZones.rowRange(0, 3), image, MaskOf(kZones, {}));
    expectRefused(kZones, image, cv::Mat(4, 7, CV_8UC1, cv::Scalar(0)));
    expectRefused(kZones, image, cv::Mat());
    expectRefused(kZones, image, cv::Mat(4, 8, CV_32SC1, cv::Scalar(0)));
    expectRefused(kZones, image, cv::Mat(4, 8, CV_8UC2, cv::Scalar(0)));
    expectRefused(Draw<uchar>({"11111111", "........", "........", "........"}), image, MaskOf(kZones, {}));
}

TEST(GrowMask, IsWhatItsStepsSay)
{
    Random random(4303);
    int undecided = 0;
    int grown = 0;
    int failed = 0;
    for (int trial = 0; trial < 300; ++trial)
    {
        cv::Size const size =
            random.Chance(0.2) ? cv::Size(100, 100) : cv::Size(5 + random.Below(50), 5 + random.Below(50));
        cv::Mat const labels = tests::RandomZones(random, size, 8);
        std::vector<RegionInfo> regions;
        for (int i = random.Below(10); i >= 0; --i)
        {
            regions.push_back(Record(labels, 1 + random.Below(9)));
        }
        cv::Mat image = tests::RandomImage(random, size, random.Chance(0.5) ? CV_32F : CV_16S, {0.3, 0.0, 50});
        cv::Mat mask = cv::Mat(tests::RandomZones(random, size, 4) > 0);
        SurfaceSearch const search{
            random.Below(200), random.Chance(0.1) ? -1 : random.Below(12), 0.5 * (1 + random.Below(9)),
            0.5 * random.Below(9)};

        std::vector<RegionInfo> expectedRegions = regions;
        cv::Mat expected = mask.clone();
        bool const answer = tests::OracleGrowMask(labels, image, search, expectedRegions, expected);
        tests::FramedImage labelView(labels);
        tests::FramedImage imageView(image);
        tests::FramedImage maskView(mask);
        ASSERT_EQ(Grow(labelView.View(), imageView.View(), search, regions, maskView.View()), answer) << trial;
        ASSERT_TRUE(EqualImages(maskView.View(), expected)) << trial;
        ASSERT_TRUE(maskView.IsFrameUntouched());
        failed += answer ? 0 : 1;
        if (!answer) continue;
        ASSERT_TRUE(EqualRegions(regions, expectedRegions)) << trial;
        undecided += regions.empty() ? 0 : 1;
        grown += cv::countNonZero(mask != expected) > 0 ? 1 : 0;
    }
    EXPECT_GT(failed, 10);
    EXPECT_GT(undecided, 20);
    EXPECT_GT(grown, 100);
}

} // namespace

} // namespace morvane::quasi_flat_internals
