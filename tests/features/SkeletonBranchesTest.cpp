// How skeletons are cut into branches.
#include <morvane/features/Skeleton.h>

#include "support/AllTypes.h"
#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"
#include "support/SkeletonOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <array>
#include <vector>

namespace morvane::features
{

namespace
{

using skeleton_internals::FindAdaptedKernelForImageProcessing;
using skeleton_internals::FindMainSegmentUntilBifurcation;
using skeleton_internals::SplitSkeletonBySegments;
using tests::Drawing;
using tests::EqualImages;
using tests::Random;

/// 255 where something is drawn.
cv::Mat Draw(Drawing const & drawing)
{
    return tests::Draw<uchar>(drawing) * 255;
}

cv::Mat Branches(cv::Mat const & skeleton)
{
    cv::Mat labels(skeleton.size(), CV_32SC1, cv::Scalar(0));
    EXPECT_TRUE(SplitSkeletonBySegments(skeleton, labels));
    return labels;
}

cv::Mat MainSegment(cv::Mat const & zone, cv::Mat const & seed)
{
    cv::Mat out(zone.size(), zone.type(), cv::Scalar(0));
    EXPECT_TRUE(FindMainSegmentUntilBifurcation(zone, seed, out));
    return out;
}

TEST(FindMainSegmentUntilBifurcation, OfALine_IsTheLine)
{
    cv::Mat const line = Draw({".......", ".11111.", "......."});
    tests::ExpectEqualImages(MainSegment(line, Draw({".......", ".1.....", "......."})), line);
    tests::ExpectEqualImages(MainSegment(Draw({"1"}), Draw({"1"})), Draw({"1"}));
}

TEST(FindMainSegmentUntilBifurcation, EndsOneStepAfterTheRestFellApart)
{
    cv::Mat const zone = Draw({"1.....1", ".1...1.", "..1.1..", "...1...", "...1...", "...1..."});
    tests::ExpectEqualImages(
        MainSegment(zone, Draw({"1......", ".......", ".......", ".......", ".......", "......."})),
        Draw({"1......", ".1.....", "..1.1..", "...1...", "...1...", "......."}));
    tests::ExpectEqualImages(
        MainSegment(zone, Draw({".......", ".......", ".......", ".......", ".......", "...1..."})),
        Draw({".......", ".......", "..1.1..", "...1...", "...1...", "...1..."}));
    // A seed in the middle of a line leaves two parts at once.
    tests::ExpectEqualImages(MainSegment(Draw({"1111111"}), Draw({"...1..."})), Draw({"..111.."}));
}

TEST(FindMainSegmentUntilBifurcation, OfALoop_IsTheLoop)
{
    cv::Mat const loop = Draw({".111.", "1...1", "1...1", ".111."});
    tests::ExpectEqualImages(MainSegment(loop, Draw({"..1..", ".....", ".....", "....."})), loop);
}

TEST(FindMainSegmentUntilBifurcation, WhereNothingMoreIsReached_Ends)
{
    // What is left, in one piece for ever, is not connected with the seed, or the seed lies outside.
    tests::ExpectEqualImages(MainSegment(Draw({"1..11"}), Draw({"1...."})), Draw({"1...."}));
    tests::ExpectEqualImages(MainSegment(Draw({"11.11"}), Draw({"11..."})), Draw({"11..."}));
    tests::ExpectEqualImages(MainSegment(Draw({"111...."}), Draw({"......1"})), Draw({"......."}));
    // Two pieces from the beginning: one step is all.
    tests::ExpectEqualImages(MainSegment(Draw({"1111..11"}), Draw({"1......."})), Draw({"11......"}));
}

TEST(FindMainSegmentUntilBifurcation, MatchesDilations)
{
    Random random(7340);
    for (int round = 0; round < 150; ++round)
    {
        cv::Mat1b const shape = tests::RandomShape(random, {1 + random.Below(25), 1 + random.Below(25)});
        cv::Mat labels;
        int const parts = cv::connectedComponents(shape, labels, 8);
        if (parts < 2) continue;
        cv::Mat const zone = labels == 1 + random.Below(parts - 1);
        std::vector<cv::Point> pixels;
        cv::findNonZero(zone, pixels);
        cv::Mat seed(zone.size(), CV_8UC1, cv::Scalar(0));
        seed.at<uchar>(pixels[static_cast<std::size_t>(random.Below(static_cast<int>(pixels.size())))]) = 255;
        for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32F, CV_64F})
        {
            cv::Mat typedZone;
            cv::Mat typedSeed;
            zone.convertTo(typedZone, depth);
            seed.convertTo(typedSeed, depth);
            cv::Mat const expected = tests::OracleMainSegment(typedZone, typedSeed);
            tests::FramedImage out(cv::Mat(zone.size(), depth, cv::Scalar(3)));
            ASSERT_TRUE(FindMainSegmentUntilBifurcation(typedZone, typedSeed, out.View()));
            ASSERT_TRUE(EqualImages(out.View(), expected));
            ASSERT_TRUE(out.IsFrameUntouched());
        }
    }
}

TEST(FindMainSegmentUntilBifurcation, RefusesWithTheOutputUntouched)
{
    cv::Mat const zone = Draw({"111", "..1"});
    cv::Mat const seed = Draw({"1..", "..."});
    cv::Mat out(2, 3, CV_8UC1, cv::Scalar(9));
    tests::Snapshot const before(out);
    EXPECT_FALSE(FindMainSegmentUntilBifurcation(cv::Mat(), seed, out));
    EXPECT_FALSE(FindMainSegmentUntilBifurcation(cv::Mat(0, 3, CV_8UC1), seed, out));
    EXPECT_FALSE(FindMainSegmentUntilBifurcation(cv::Mat(2, 3, CV_8UC3, cv::Scalar::all(1)), seed, out));
    // Seeds of another type or size.
    EXPECT_FALSE(FindMainSegmentUntilBifurcation(zone, cv::Mat(2, 3, CV_16SC1, cv::Scalar(1)), out));
    EXPECT_FALSE(FindMainSegmentUntilBifurcation(zone, cv::Mat(3, 2, CV_8UC1, cv::Scalar(1)), out));
    EXPECT_FALSE(FindMainSegmentUntilBifurcation(zone, cv::Mat(), out));
    std::array const sides{2, 3, 4};
    EXPECT_FALSE(FindMainSegmentUntilBifurcation(cv::Mat(3, sides.data(), CV_8UC1, cv::Scalar(1)), seed, out));
    for (int const depth : tests::kUndilatedDepths)
    {
        cv::Mat const image(2, 3, depth, cv::Scalar(1));
        EXPECT_THROW(static_cast<void>(FindMainSegmentUntilBifurcation(image, image, out)), cv::Exception) << depth;
    }
    EXPECT_TRUE(before.IsUntouched());
}

TEST(FindAdaptedKernelForImageProcessing, TellsWhetherThereIsAnImage)
{
    for (int const depth : tests::kDepths)
    {
        EXPECT_TRUE(FindAdaptedKernelForImageProcessing(cv::Mat(3, 4, depth, cv::Scalar(1)), cv::Mat(), 3));
        EXPECT_TRUE(FindAdaptedKernelForImageProcessing(cv::Mat(3, 4, depth, cv::Scalar(0)), cv::Mat(), -5));
        cv::Mat const several(3, 4, CV_MAKETYPE(depth, 3), cv::Scalar::all(1));
        EXPECT_FALSE(FindAdaptedKernelForImageProcessing(several, several, 3));
    }
    EXPECT_FALSE(FindAdaptedKernelForImageProcessing(cv::Mat(), cv::Mat(3, 4, CV_8UC1), 3));
    EXPECT_FALSE(FindAdaptedKernelForImageProcessing(cv::Mat(0, 4, CV_8UC1), cv::Mat(3, 4, CV_8UC1), 3));
    std::array const sides{2, 3, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    EXPECT_FALSE(FindAdaptedKernelForImageProcessing(volume, volume, 3));
}

TEST(SplitSkeletonBySegments, OfALine_IsOneBranch)
{
    tests::ExpectDrawn(Branches(Draw({".......", ".11111.", "......."})), {".......", ".11111.", "......."});
    tests::ExpectDrawn(Branches(Draw({"1...", ".1..", "..1.", "..1."})), {"1...", ".1..", "..1.", "..1."});
    tests::ExpectDrawn(Branches(Draw({"1"})), {"1"});
    tests::ExpectDrawn(Branches(Draw({"..."})), {"..."});
}

TEST(SplitSkeletonBySegments, OfAY_IsThreeBranches)
{
    // The first begins at the upper right end, as the longest path does. It goes one step beyond the fork: with two ways
    // there, to the two pixels after it.
    tests::ExpectDrawn(
        Branches(Draw({
            "1.....1",
            ".1...1.",
            "..1.1..",
            "...1...",
            "...1...",
            "...1...",
            "...1...",
        })),
        {
            "1.....2",
            ".1...2.",
            "..2.2..",
            "...2...",
            "...2...",
            "...3...",
            "...3...",
        });
}

TEST(SplitSkeletonBySegments, OfALoop_IsOneBranch)
{
    Drawing const loop{".111.", "1...1", "1...1", ".111."};
    tests::ExpectDrawn(Branches(Draw(loop)), loop);
}

TEST(SplitSkeletonBySegments, OfSeveralPieces_NumbersInRasterOrder)
{
    tests::ExpectDrawn(Branches(Draw({"11..1", "....1", ".11..", "....1"})), {"11..2", "....2", ".33..", "....4"});
    // Values of their own are pieces of their own.
    tests::ExpectDrawn(Branches(tests::Draw<int>({"11223", "....3"})), {"11223", "....3"});
}

TEST(SplitSkeletonBySegments, OfACross_CutsTheRestAgain)
{
    // The longest path goes up from the lower end. One step before the crossing, the pixels beside it are reached together
    // with it; one step later three ways are left, and the branch takes one more pixel of each.
    tests::ExpectDrawn(
        Branches(Draw({
            "....1....",
            "....1....",
            "....1....",
            "....1....",
            "111111111",
            "....1....",
            "....1....",
            "....1....",
            "....1....",
        })),
        {
            "....1....",
            "....1....",
            "....1....",
            "....2....",
            "332222244",
            "....2....",
            "....2....",
            "....2....",
            "....2....",
        });
}

/// Random lines of one pixel, as they come out of thinning or are drawn.
cv::Mat1b RandomSkeleton(Random & random, cv::Size size)
{
    cv::Mat1b const shape = tests::RandomShape(random, size);
    if (random.Chance(0.2)) return shape;
    cv::Mat1b skeleton;
    thinning(shape, skeleton, random.Chance(0.5) ? ThinningZhangSuen : ThinningGuoHall, 0);
    return skeleton;
}

TEST(SplitSkeletonBySegments, MatchesTheSteps)
{
    Random random(7341);
    for (int round = 0; round < 150; ++round)
    {
        cv::Mat1b const skeleton = RandomSkeleton(random, {1 + random.Below(40), 1 + random.Below(40)});
        ASSERT_TRUE(EqualImages(Branches(skeleton), tests::OracleBranches(skeleton))) << "round " << round;
    }
}

TEST(SplitSkeletonBySegments, MatchesTheStepsOnAllDepths)
{
    Random random(7342);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 15; ++round)
        {
            cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
            cv::Mat const image = tests::RandomImage(random, size, depth, {0.7 * random.Unit(), 0.1, 2});
            cv::Mat const expected = tests::OracleBranches(image);
            ASSERT_TRUE(EqualImages(Branches(image), expected)) << tests::Case(depth, size, 3);
            // In views, whose surroundings do not count.
            tests::FramedImage frame(image);
            tests::FramedImage labels(cv::Mat(size, CV_32SC1, cv::Scalar(0)));
            ASSERT_TRUE(SplitSkeletonBySegments(frame.View(), labels.View()));
            ASSERT_TRUE(EqualImages(labels.View(), expected));
            ASSERT_TRUE(labels.IsFrameUntouched());
        }
    }
}

TEST(SplitSkeletonBySegments, MatchesTheStepsOnPatterns)
{
    for (cv::Size const size : {cv::Size(1, 9), cv::Size(9, 1), cv::Size(2, 7), cv::Size(24, 17)})
    {
        for (tests::Pattern const & pattern : tests::AllPatterns(size))
        {
            ASSERT_TRUE(EqualImages(Branches(pattern.mask), tests::OracleBranches(pattern.mask))) << pattern.name;
        }
    }
}

TEST(SplitSkeletonBySegments, LabelsAllPixelsOnce_AndBranchesHangTogether)
{
    Random random(7343);
    for (int round = 0; round < 25; ++round)
    {
        cv::Mat1b const skeleton = RandomSkeleton(random, {30 + random.Below(60), 30 + random.Below(60)});
        cv::Mat const labels = Branches(skeleton);
        ASSERT_TRUE(EqualImages(labels != 0, skeleton != 0));
        double largest = 0.0;
        cv::minMaxLoc(labels, nullptr, &largest);
        for (int label = 1; label <= static_cast<int>(largest); ++label)
        {
            cv::Mat parts;
            ASSERT_EQ(cv::connectedComponents(labels == label, parts, 8), 2) << label;
        }
    }
}

TEST(SplitSkeletonBySegments, OfALineThatIsLongerThan16BitsCount_IsOneBranch)
{
    cv::Mat const spiral = tests::Spiral({368, 368});
    cv::Mat expected;
    spiral.convertTo(expected, CV_32S);
    EXPECT_TRUE(EqualImages(Branches(spiral), expected));
    EXPECT_TRUE(
        EqualImages(Branches(cv::Mat(1, 70000, CV_8UC1, cv::Scalar(1))), cv::Mat(1, 70000, CV_32SC1, cv::Scalar(1))));
}

TEST(SplitSkeletonBySegments, RefusesWithTheLabelsUntouched)
{
    std::array const sides{2, 3, 4};
    cv::Mat const skeleton = Draw({"1..", "1.."});
    std::vector<cv::Mat> images{
        cv::Mat(), cv::Mat(0, 3, CV_8UC1), cv::Mat(3, 2, CV_8UC1, cv::Scalar(1)),
        cv::Mat(3, sides.data(), CV_8UC1, cv::Scalar(1))};
    for (int const depth : tests::kRefusedDepths)
    {
        images.emplace_back(2, 3, depth);
        tests::FillBytes(images.back(), 1);
    }
    for (cv::Mat const & image : images)
    {
        cv::Mat labels(2, 3, CV_32SC1, cv::Scalar(0));
        tests::Snapshot const before(labels);
        EXPECT_FALSE(SplitSkeletonBySegments(image, labels));
        EXPECT_TRUE(before.IsUntouched());
    }
    for (int const type : {CV_8UC1, CV_16SC1, CV_32FC1, CV_32SC2})
    {
        cv::Mat labels(2, 3, type, cv::Scalar::all(0));
        tests::Snapshot const before(labels);
        EXPECT_FALSE(SplitSkeletonBySegments(skeleton, labels)) << type;
        EXPECT_TRUE(before.IsUntouched());
    }
    cv::Mat none;
    EXPECT_FALSE(SplitSkeletonBySegments(skeleton, none));
    EXPECT_TRUE(none.empty());
}

} // namespace

} // namespace morvane::features
