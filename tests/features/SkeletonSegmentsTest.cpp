// Branches replaced by straight segments.
#include <morvane/features/Skeleton.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/SkeletonOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

namespace morvane::features
{

namespace
{

using skeleton_internals::SimplifyMultiLabeledSegments;
using skeleton_internals::SplitSkeletonBySegments;
using tests::Draw;
using tests::EqualImages;
using tests::Random;

double const kInfinity = std::numeric_limits<double>::infinity();
double const kNaN = std::numeric_limits<double>::quiet_NaN();

/// The outputs of one call.
struct Segments
{
    cv::Mat drawn;
    SegmentMap ends;
};

Segments Extract(cv::Mat const & skeleton, double tolerance, SegmentMap ends = {})
{
    Segments segments{{}, std::move(ends)};
    EXPECT_TRUE(ExtractSegmentsFromSkeleton(skeleton, tolerance, segments.drawn, segments.ends));
    return segments;
}

/// The segments by the steps.
Segments OracleExtract(cv::Mat const & skeleton, double tolerance, SegmentMap ends = {})
{
    Segments segments{cv::Mat(skeleton.size(), CV_32SC1, cv::Scalar(0)), std::move(ends)};
    tests::OracleSegments(tests::OracleBranches(skeleton), tolerance, segments.drawn, segments.ends);
    return segments;
}

TEST(ExtractSegments, OfALine_AreOne)
{
    Segments const lying = Extract(Draw<uchar>({".......", ".99999.", "......."}), 1.0);
    EXPECT_EQ(lying.ends, (SegmentMap{{1, {{1, 1}, {5, 1}}}}));
    tests::ExpectDrawn(lying.drawn, {".......", ".11111.", "......."});
    EXPECT_EQ(lying.drawn.type(), CV_32SC1);
    EXPECT_EQ(Extract(Draw<uchar>({"...", ".9.", ".9.", ".9."}), 0.0).ends, (SegmentMap{{1, {{1, 1}, {1, 3}}}}));
    EXPECT_EQ(Extract(Draw<uchar>({"9..", ".9.", "..9"}), 0.0).ends, (SegmentMap{{1, {{0, 0}, {2, 2}}}}));
    // Ends come in raster order.
    EXPECT_EQ(Extract(Draw<uchar>({"..9", ".9.", "9.."}), 0.0).ends, (SegmentMap{{1, {{2, 0}, {0, 2}}}}));
    EXPECT_EQ(Extract(Draw<uchar>({"99"}), 0.0).ends, (SegmentMap{{1, {{0, 0}, {1, 0}}}}));
}

TEST(ExtractSegments, OfPixels_AreNone)
{
    Segments const segments = Extract(Draw<uchar>({"9...", "..9.", "...."}), 0.0);
    EXPECT_TRUE(segments.ends.empty());
    tests::ExpectDrawn(segments.drawn, {"....", "....", "...."});
}

TEST(ExtractSegments, OfAPixelDiagonallyBesideOthers_AreThoseOfALine)
{
    EXPECT_EQ(Extract(Draw<uchar>({"9...", ".9..", "...9"}), 0.0).ends, (SegmentMap{{1, {{0, 0}, {1, 1}}}}));
}

TEST(ExtractSegments, OfABend_AreTwoUnlessItIsNear)
{
    // The way has no corner pixel. Of the pixels beside the corner, the left one is farther from the straight line: 25 of
    // the root of 61.
    cv::Mat const bend = Draw<uchar>({
        "999999.",
        "......9",
        "......9",
        "......9",
        "......9",
        "......9",
    });
    Segments const apart = Extract(bend, 3.2);
    // The second segment is drawn over the end of the first.
    EXPECT_EQ(apart.ends, (SegmentMap{{1, {{0, 0}, {4, 0}}}, {2, {{5, 0}, {6, 5}}}}));
    tests::ExpectDrawn(
        apart.drawn, {
                         "111112.",
                         ".....2.",
                         ".....2.",
                         "......2",
                         "......2",
                         "......2",
                     });
    EXPECT_EQ(Extract(bend, 3.21).ends, (SegmentMap{{1, {{0, 0}, {6, 5}}}}));
}

TEST(ExtractSegments, OfAY_AreThreeBranchesWithItsThreeEnds)
{
    for (int const arm : {3, 5, 12})
    {
        int const side = 2 * arm + 5;
        cv::Point const fork(side / 2, side / 2);
        std::array const tips{fork + cv::Point(-arm, -arm), fork + cv::Point(arm, -arm), fork + cv::Point(0, arm + 1)};
        cv::Mat1b skeleton(side, side, uchar{0});
        for (cv::Point const & tip : tips)
        {
            cv::line(skeleton, fork, tip, cv::Scalar(255), 1, 8);
        }
        cv::Mat labels(skeleton.size(), CV_32SC1, cv::Scalar(0));
        ASSERT_TRUE(SplitSkeletonBySegments(skeleton, labels));
        double branches = 0.0;
        cv::minMaxLoc(labels, nullptr, &branches);
        EXPECT_EQ(branches, 3.0);
        for (double const tolerance : {1.5, kInfinity})
        {
            Segments const segments = Extract(skeleton, tolerance);
            EXPECT_EQ(segments.ends.size(), 3U);
            for (cv::Point const & tip : tips)
            {
                EXPECT_TRUE(std::any_of(segments.ends.begin(), segments.ends.end(), [&](auto const & entry) {
                    return entry.second.first == tip || entry.second.second == tip;
                })) << tip;
            }
        }
    }
}

TEST(ExtractSegments, MatchTheSteps)
{
    Random random(7350);
    int several = 0;
    for (int round = 0; round < 150; ++round)
    {
        cv::Mat1b skeleton = tests::RandomShape(random, {1 + random.Below(45), 1 + random.Below(45)});
        if (round % 5 != 0) thinning(skeleton, skeleton, ThinningGuoHall, 0);
        std::array const tolerances{0.0, 1.0, 1.5, 10.0, kInfinity};
        for (double const tolerance : tolerances)
        {
            Segments const actual = Extract(skeleton, tolerance);
            Segments const expected = OracleExtract(skeleton, tolerance);
            ASSERT_TRUE(EqualImages(actual.drawn, expected.drawn)) << "round " << round << ", " << tolerance;
            ASSERT_EQ(actual.ends, expected.ends) << "round " << round << ", " << tolerance;
            several += expected.ends.size() > 3 ? 1 : 0;
        }
    }
    EXPECT_GT(several, 100);
}

TEST(ExtractSegments, MatchTheStepsOnAllDepths)
{
    Random random(7351);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 10; ++round)
        {
            cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
            cv::Mat const image = tests::RandomImage(random, size, depth, {0.7 * random.Unit(), 0.1, 2});
            tests::FramedImage frame(image);
            Segments const actual = Extract(frame.View(), 1.0);
            Segments const expected = OracleExtract(image, 1.0);
            ASSERT_TRUE(EqualImages(actual.drawn, expected.drawn)) << tests::Case(depth, size, 3);
            ASSERT_EQ(actual.ends, expected.ends) << tests::Case(depth, size, 3);
        }
    }
}

TEST(ExtractSegments, OfSeveralChannels_MatchTheSteps)
{
    // Where one channel alone changes, the line is cut.
    cv::Mat image(1, 7, CV_8UC2, cv::Scalar(1, 0));
    image.colRange(3, 7).setTo(cv::Scalar(1, 9));
    EXPECT_EQ(Extract(image, 0.0).ends, (SegmentMap{{1, {{0, 0}, {2, 0}}}, {2, {{3, 0}, {6, 0}}}}));
    Random random(7355);
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {2, 3, 4})
        {
            cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
            int const type = CV_MAKETYPE(depth, channels);
            cv::Mat const several = tests::RandomImage(random, size, type, {0.7 * random.Unit(), 0.1, 1});
            Segments const actual = Extract(several, 1.0);
            Segments const expected = OracleExtract(several, 1.0);
            ASSERT_TRUE(EqualImages(actual.drawn, expected.drawn)) << tests::Case(type, size, 3);
            ASSERT_EQ(actual.ends, expected.ends) << tests::Case(type, size, 3);
        }
    }
}

TEST(ExtractSegments, GoOnFromTheLargestLabelThatIsThere)
{
    SegmentMap const before{{-4, {{9, 9}, {8, 8}}}, {7, {{1, 2}, {3, 4}}}};
    Segments const segments = Extract(Draw<uchar>({"111..", ".....", "..111"}), 1.0, before);
    EXPECT_EQ(
        segments.ends,
        (SegmentMap{{-4, {{9, 9}, {8, 8}}}, {7, {{1, 2}, {3, 4}}}, {8, {{0, 0}, {2, 0}}}, {9, {{2, 2}, {4, 2}}}}));
    tests::ExpectDrawn(segments.drawn, {"888..", ".....", "..999"});
    Random random(7352);
    for (int const last : {0, 5, 254, 255, 32766, 40000, 1000000})
    {
        cv::Mat1b const skeleton = tests::RandomShape(random, {30, 30});
        SegmentMap const some{{last, {{1, 2}, {3, 4}}}};
        Segments const actual = Extract(skeleton, 1.0, some);
        Segments const expected = OracleExtract(skeleton, 1.0, some);
        ASSERT_TRUE(EqualImages(actual.drawn, expected.drawn)) << last;
        ASSERT_EQ(actual.ends, expected.ends) << last;
    }
}

TEST(ExtractSegments, OfMoreThan255_KeepTheirLabels)
{
    // 400 bars of three pixels.
    cv::Mat1b skeleton(40, 80, uchar{0});
    for (int y = 0; y < 40; y += 2)
    {
        for (int x = 0; x < 80; x += 4)
        {
            skeleton.row(y).colRange(x, x + 3).setTo(1);
        }
    }
    Segments const segments = Extract(skeleton, 1.0);
    ASSERT_EQ(segments.ends.size(), 400U);
    for (int label = 1; label <= 400; ++label)
    {
        cv::Point const first(4 * ((label - 1) % 20), 2 * ((label - 1) / 20));
        ASSERT_EQ(segments.ends.at(label), std::pair(first, first + cv::Point(2, 0)));
        ASSERT_EQ(cv::countNonZero(segments.drawn == label), 3);
    }
}

TEST(ExtractSegments, OfOneBranchOfMoreThan255_KeepTheirLabels)
{
    // Steps of four pixels: a segment for each, and one between two of them, of which the next leaves one pixel.
    constexpr int kSteps = 600;
    cv::Mat1b skeleton(2, 4 * kSteps, uchar{0});
    for (int x = 0; x < skeleton.cols; ++x)
    {
        skeleton((x / 4) % 2, x) = 1;
    }
    Segments const segments = Extract(skeleton, 0.0);
    ASSERT_EQ(segments.ends.size(), static_cast<std::size_t>(kSteps));
    // From the right to the left. Each but the last lacks the pixel that the next begins with.
    for (int step = 0; step < kSteps; ++step)
    {
        int const y = step % 2;
        int const left = step == 0 ? 0 : 4 * step + 1;
        int const label = 2 * (kSteps - 1 - step) + 1;
        ASSERT_EQ(segments.ends.at(label), (std::pair<cv::Point, cv::Point>({left, y}, {4 * step + 3, y})));
    }
    Segments const expected = OracleExtract(skeleton, 0.0);
    EXPECT_EQ(segments.ends, expected.ends);
    EXPECT_TRUE(EqualImages(segments.drawn, expected.drawn));
}

TEST(ExtractSegments, OfLinesLongerThan16BitsCount_MatchTheSteps)
{
    // Distances along a branch are counted in 16 bits with a sign: 32766 is the last before what is outside comes in.
    for (int const length : {32764, 32765, 32766, 32767, 32770, 40000})
    {
        cv::Mat line(2, length, CV_8UC1, cv::Scalar(0));
        line.row(0).setTo(1);
        line.at<uchar>(1, length / 3) = 1;
        cv::Mat labels;
        line.convertTo(labels, CV_32S);
        Segments actual{cv::Mat(line.size(), CV_32SC1, cv::Scalar(0)), {}};
        Segments expected{actual.drawn.clone(), {}};
        ASSERT_TRUE(SimplifyMultiLabeledSegments(labels, 0.5, actual.drawn, actual.ends));
        tests::OracleSegments(labels, 0.5, expected.drawn, expected.ends);
        EXPECT_EQ(actual.ends, expected.ends) << length;
        EXPECT_TRUE(EqualImages(actual.drawn, expected.drawn)) << length;
    }
}

TEST(ExtractSegments, OfANaNTolerance_AreNone)
{
    Segments const segments = Extract(Draw<uchar>({"11111", "....1"}), kNaN, {{3, {{1, 1}, {2, 2}}}});
    EXPECT_EQ(segments.ends, (SegmentMap{{3, {{1, 1}, {2, 2}}}}));
    tests::ExpectDrawn(segments.drawn, {".....", "....."});
}

TEST(ExtractSegments, ReplaceWhatWasDrawn)
{
    for (cv::Mat const & before : {cv::Mat(), cv::Mat(1, 3, CV_32SC1, cv::Scalar(5)), cv::Mat(9, 9, CV_8UC3)})
    {
        cv::Mat drawn = before;
        SegmentMap ends;
        ASSERT_TRUE(ExtractSegmentsFromSkeleton(Draw<uchar>({"11."}), 1.0, drawn, ends));
        tests::ExpectEqualImages(drawn, tests::DrawLabels({"11."}));
    }
}

TEST(ExtractSegmentsRefusals, EmptyImages_LeaveTheOutputs)
{
    std::array const sides{2, 3, 4};
    for (cv::Mat const & image :
         {cv::Mat(), cv::Mat(0, 4, CV_8UC1), cv::Mat(4, 0, CV_8UC1), cv::Mat(3, sides.data(), CV_8UC1, cv::Scalar(1))})
    {
        cv::Mat drawn(2, 3, CV_8UC1, cv::Scalar(5));
        tests::Snapshot const before(drawn);
        SegmentMap ends{{3, {{1, 1}, {2, 2}}}};
        EXPECT_FALSE(ExtractSegmentsFromSkeleton(image, 1.0, drawn, ends));
        EXPECT_TRUE(before.IsUntouched());
        EXPECT_EQ(ends.size(), 1U);
    }
}

TEST(ExtractSegmentsRefusals, TypesThatAreNotLabelled_LeaveTheOutputs)
{
    for (int const type : {CV_8SC1, CV_16FC1, CV_8SC3, CV_8UC(5), CV_64FC(5)})
    {
        cv::Mat image(2, 3, type);
        tests::FillBytes(image, 1);
        cv::Mat drawn(2, 3, CV_32SC1, cv::Scalar(5));
        tests::Snapshot const before(drawn);
        SegmentMap ends{{3, {{1, 1}, {2, 2}}}};
        EXPECT_FALSE(ExtractSegmentsFromSkeleton(image, 1.0, drawn, ends));
        EXPECT_TRUE(before.IsUntouched());
        cv::Mat none;
        EXPECT_FALSE(ExtractSegmentsFromSkeleton(image, 1.0, none, ends));
        EXPECT_EQ(none.data, nullptr);
        EXPECT_EQ(ends, (SegmentMap{{3, {{1, 1}, {2, 2}}}}));
    }
}

} // namespace

} // namespace morvane::features
