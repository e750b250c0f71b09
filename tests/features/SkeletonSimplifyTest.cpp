// One branch, and many labelled ones, replaced by straight segments.
#include <morvane/features/Skeleton.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/SkeletonOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <array>
#include <limits>
#include <utility>
#include <vector>

namespace morvane::features
{

namespace
{

using skeleton_internals::SimplifyMultiLabeledSegments;
using skeleton_internals::SimplifySegment;
using tests::Draw;
using tests::EqualImages;
using tests::Random;

double const kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::array kTolerances{0.0, 1.0, 1.5, 10.0};

TEST(SimplifySegment, MatchesTheStepsOnAllDepths)
{
    Random random(7353);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 30; ++round)
        {
            // Drawn lines of 255, which in 8 bits is also the last label.
            cv::Mat1b shape = tests::RandomShape(random, {2 + random.Below(30), 2 + random.Below(30)});
            cv::Mat labels;
            if (cv::connectedComponents(shape, labels, 8) < 2) continue;
            cv::Mat zone;
            cv::Mat(labels == 1).convertTo(zone, depth);
            int const firstLabel = std::array{0, 3, 250, 253, 254, 300, 32766}[static_cast<std::size_t>(round % 7)];
            double const tolerance = kTolerances[static_cast<std::size_t>(round % 4)];
            SegmentMap ends;
            ASSERT_TRUE(SimplifySegment(zone, tolerance, firstLabel, ends));
            ASSERT_EQ(ends, tests::OracleSegmentsOfBranch(zone, tolerance, firstLabel))
                << cv::depthToString(depth) << ", label " << firstLabel << ", tolerance " << tolerance;
        }
    }
}

TEST(SimplifySegment, LeavesEntriesThatAreThere)
{
    SegmentMap ends{{1, {{7, 7}, {8, 8}}}, {3, {{9, 9}, {9, 9}}}};
    cv::Mat const bend = Draw<uchar>({"999999.", "......9", "......9", "......9", "......9", "......9"});
    ASSERT_TRUE(SimplifySegment(bend, 1.0, 0, ends));
    ASSERT_EQ(ends.size(), 3U);
    EXPECT_EQ(ends[1], (std::pair<cv::Point, cv::Point>({7, 7}, {8, 8})));
    EXPECT_EQ(ends[2], (std::pair<cv::Point, cv::Point>({5, 0}, {6, 5})));
    EXPECT_EQ(ends[3], (std::pair<cv::Point, cv::Point>({9, 9}, {9, 9})));
}

TEST(SimplifySegment, RefusesAZoneWithoutPixelsOrOfATypeThatIsNotLabelled)
{
    std::array const sides{2, 3, 4};
    std::vector<cv::Mat> zones{cv::Mat(), cv::Mat(0, 4, CV_8UC1), cv::Mat(3, sides.data(), CV_8UC1, cv::Scalar(1))};
    for (int const type : {CV_8SC1, CV_16FC1, CV_8UC3, CV_32SC2})
    {
        zones.emplace_back(2, 3, type);
        tests::FillBytes(zones.back(), 1);
    }
    for (cv::Mat const & zone : zones)
    {
        SegmentMap ends{{3, {{1, 1}, {2, 2}}}};
        EXPECT_FALSE(SimplifySegment(zone, 1.0, 0, ends)) << cv::typeToString(zone.type());
        EXPECT_EQ(ends, (SegmentMap{{3, {{1, 1}, {2, 2}}}}));
    }
}

TEST(SimplifyMultiLabeledSegments, PassesOverPixelsAndLabelsThatAreNotThere)
{
    cv::Mat drawn(3, 7, CV_32SC1, cv::Scalar(0));
    SegmentMap ends;
    // Label 2 is one pixel, 3 does not occur.
    ASSERT_TRUE(SimplifyMultiLabeledSegments(tests::DrawLabels({"111...2", ".......", "...4444"}), 1.0, drawn, ends));
    EXPECT_EQ(ends, (SegmentMap{{1, {{0, 0}, {2, 0}}}, {2, {{3, 2}, {6, 2}}}}));
    tests::ExpectDrawn(drawn, {"111....", ".......", "...2222"});
}

TEST(SimplifyMultiLabeledSegments, OfTheLargestLabels_TakesNoMoreThanOfOthers)
{
    constexpr int kLargest = std::numeric_limits<int>::max();
    cv::Mat1i labels(1, 5, kLargest);
    labels(2) = 0;
    labels(3) = kLargest - 1;
    labels(4) = kLargest - 1;
    labels(1) = kLargest;
    cv::Mat drawn(1, 5, CV_32SC1, cv::Scalar(0));
    SegmentMap ends;
    ASSERT_TRUE(SimplifyMultiLabeledSegments(labels, 1.0, drawn, ends));
    EXPECT_EQ(ends, (SegmentMap{{1, {{3, 0}, {4, 0}}}, {2, {{0, 0}, {1, 0}}}}));
    tests::ExpectDrawn(drawn, {"22.11"});
}

TEST(SimplifyMultiLabeledSegments, OfOtherTypesAndSizes_IsRefusedWithTheOutputsUntouched)
{
    cv::Mat drawn(1, 3, CV_32SC1, cv::Scalar(5));
    tests::Snapshot const before(drawn);
    SegmentMap ends{{3, {{1, 1}, {2, 2}}}};
    for (int const type : {CV_8UC1, CV_16SC1, CV_32FC1, CV_32SC2})
    {
        EXPECT_FALSE(SimplifyMultiLabeledSegments(cv::Mat(1, 3, type, cv::Scalar::all(1)), 1.0, drawn, ends)) << type;
    }
    EXPECT_FALSE(SimplifyMultiLabeledSegments(cv::Mat(3, 1, CV_32SC1, cv::Scalar(1)), 1.0, drawn, ends));
    EXPECT_TRUE(before.IsUntouched());
    EXPECT_EQ(ends.size(), 1U);
}

TEST(SimplifyMultiLabeledSegments, WithoutLabels_DoesNothing)
{
    cv::Mat drawn(2, 3, CV_32SC1, cv::Scalar(5));
    tests::Snapshot const before(drawn);
    SegmentMap ends{{3, {{1, 1}, {2, 2}}}};
    EXPECT_TRUE(SimplifyMultiLabeledSegments(cv::Mat(2, 3, CV_32SC1, cv::Scalar(0)), 1.0, drawn, ends));
    EXPECT_TRUE(SimplifyMultiLabeledSegments(cv::Mat(2, 3, CV_32SC1, cv::Scalar(-3)), 1.0, drawn, ends));
    EXPECT_TRUE(before.IsUntouched());
    EXPECT_FALSE(SimplifyMultiLabeledSegments(cv::Mat(), 1.0, drawn, ends));
    EXPECT_FALSE(SimplifyMultiLabeledSegments(cv::Mat(0, 3, CV_32SC1), 1.0, drawn, ends));
    EXPECT_TRUE(before.IsUntouched());
    EXPECT_EQ(ends.size(), 1U);
}

TEST(SimplifyMultiLabeledSegments, OfViews_StayInside)
{
    Random random(7354);
    for (int round = 0; round < 20; ++round)
    {
        cv::Mat1b const skeleton = tests::RandomShape(random, {25, 20});
        cv::Mat const branches = tests::OracleBranches(skeleton);
        tests::FramedImage labels(branches);
        tests::FramedImage drawn(cv::Mat(branches.size(), CV_32SC1, cv::Scalar(0)));
        SegmentMap ends;
        ASSERT_TRUE(SimplifyMultiLabeledSegments(labels.View(), 1.0, drawn.View(), ends));
        cv::Mat expected(branches.size(), CV_32SC1, cv::Scalar(0));
        SegmentMap expectedEnds;
        tests::OracleSegments(branches, 1.0, expected, expectedEnds);
        ASSERT_TRUE(EqualImages(drawn.View(), expected));
        ASSERT_EQ(ends, expectedEnds);
        ASSERT_TRUE(drawn.IsFrameUntouched());
        ASSERT_TRUE(EqualImages(labels.View(), branches));
    }
}

TEST(SimplifySegment, WhereLabelsRunOut_IsRefused)
{
    constexpr int kLargest = std::numeric_limits<int>::max() - 1;
    for (int const depth : {CV_32S, CV_32F, CV_64F})
    {
        SCOPED_TRACE(depth);
        // One step takes one label.
        cv::Mat const line = Draw({"111"}, depth);
        SegmentMap ends;
        EXPECT_FALSE(SimplifySegment(line, 0.0, kLargest, ends));
        EXPECT_FALSE(SimplifySegment(line, 0.0, kLargest + 1, ends));
        EXPECT_TRUE(ends.empty());
        ASSERT_TRUE(SimplifySegment(line, 0.0, kLargest - 1, ends));
        EXPECT_EQ(ends, (SegmentMap{{kLargest, {{0, 0}, {2, 0}}}}));
        // Two steps take two.
        cv::Mat const bend = Draw({"1...1", ".1.1.", "..1.."}, depth);
        ends.clear();
        EXPECT_FALSE(SimplifySegment(bend, 0.5, kLargest - 1, ends));
        EXPECT_TRUE(ends.empty());
        EXPECT_TRUE(SimplifySegment(bend, 0.5, kLargest - 2, ends));
        // Floats do not tell the two apart.
        EXPECT_EQ(ends.size(), depth == CV_32F ? 1U : 2U);
        EXPECT_EQ(ends.count(kLargest), 1U);
    }
    // Many branches in a row: no more labels, no more segments.
    cv::Mat drawn(1, 5, CV_32SC1, cv::Scalar(0));
    SegmentMap full{{kLargest, {{7, 7}, {8, 8}}}};
    ASSERT_TRUE(SimplifyMultiLabeledSegments(tests::DrawLabels({"11.22"}), 0.0, drawn, full));
    EXPECT_EQ(full, (SegmentMap{{kLargest, {{7, 7}, {8, 8}}}}));
    tests::ExpectDrawn(drawn, {"....."});
}

TEST(SimplifySegment, RefusesANaNTolerance)
{
    SegmentMap ends;
    EXPECT_FALSE(SimplifySegment(Draw<uchar>({"111"}), kNaN, 0, ends));
    EXPECT_TRUE(ends.empty());
}

} // namespace

} // namespace morvane::features
