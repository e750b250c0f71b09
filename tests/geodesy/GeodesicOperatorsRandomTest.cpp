// The geodesic operators against plain loops and counted dilations, on random images.
#include <morvane/geodesy/GeodesicOperators.h>

#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <functional>
#include <string>

namespace morvane::geodesy
{

namespace
{

using tests::EqualImages;
using tests::FramedImage;
using tests::Random;

using Call = std::function<bool(cv::Mat const & marker, cv::Mat const & mask, cv::Mat & out)>;

/// Makes the call into an empty image, into a view among views, and over the marker.
void ExpectResult(Call const & call, cv::Mat const & marker, cv::Mat const & mask, cv::Mat const & expected)
{
    cv::Mat out;
    EXPECT_TRUE(call(marker, mask, out));
    EXPECT_TRUE(EqualImages(out, expected));

    FramedImage markerFrame(marker);
    FramedImage maskFrame(mask);
    FramedImage outFrame(cv::Mat(marker.size(), marker.type(), cv::Scalar::all(99)));
    EXPECT_TRUE(call(markerFrame.View(), maskFrame.View(), outFrame.View()));
    EXPECT_TRUE(EqualImages(outFrame.View(), expected)) << "in views";
    EXPECT_TRUE(outFrame.IsFrameUntouched());
    EXPECT_TRUE(EqualImages(markerFrame.View(), marker));
    EXPECT_TRUE(EqualImages(maskFrame.View(), mask));

    EXPECT_TRUE(call(markerFrame.View(), maskFrame.View(), markerFrame.View()));
    EXPECT_TRUE(EqualImages(markerFrame.View(), expected)) << "over the marker";
    EXPECT_TRUE(markerFrame.IsFrameUntouched());
    EXPECT_TRUE(EqualImages(maskFrame.View(), mask));
    EXPECT_TRUE(maskFrame.IsFrameUntouched());
}

/// The result where the output is the mask, in a view.
cv::Mat OverMask(Call const & call, cv::Mat const & marker, cv::Mat const & mask)
{
    FramedImage frame(mask);
    EXPECT_TRUE(call(marker, frame.View(), frame.View()));
    EXPECT_TRUE(frame.IsFrameUntouched());
    return frame.View().clone();
}

cv::Size SomeSize(Random & random)
{
    cv::Size const size = tests::RandomSize(random, 24);
    return {std::max(size.width, 1), std::max(size.height, 1)};
}

TEST(GeodesicStepsRandom, MatchPlainLoops)
{
    Random random(90);
    for (int const depth : tests::kDilatedDepths)
    {
        for (int round = 0; round < 48; ++round)
        {
            int const type = CV_MAKETYPE(depth, 1 + round % 4);
            int const shape = round % 3;
            int const kernelSize = 1 + random.Below(8);
            cv::Size const size = SomeSize(random);
            cv::Mat const marker = tests::FiniteImage(random, size, type);
            cv::Mat const mask = tests::FiniteImage(random, size, type);
            SCOPED_TRACE(tests::StepCase(marker, shape) + ", kernel " + std::to_string(kernelSize));
            Call const dilate = [&](cv::Mat const & from, cv::Mat const & under, cv::Mat & out) {
                return GeoDilate(from, under, shape, out, kernelSize);
            };
            Call const erode = [&](cv::Mat const & from, cv::Mat const & above, cv::Mat & out) {
                return GeoErode(from, above, shape, out);
            };
            ExpectResult(dilate, marker, mask, tests::OracleGeoDilate(marker, mask, shape, kernelSize));
            ExpectResult(erode, marker, mask, tests::OracleGeoErode(marker, mask, shape));
            if (HasFailure()) return;
        }
    }
}

TEST(GeodesicStepsRandom, OverTheMask_TheSecondClipDoesNothing)
{
    Random random(91);
    for (int const depth : tests::kDilatedDepths)
    {
        for (int round = 0; round < 24; ++round)
        {
            int const shape = round % 3;
            cv::Size const size = SomeSize(random);
            cv::Mat const marker = tests::FiniteImage(random, size, depth);
            cv::Mat const mask = tests::FiniteImage(random, size, depth);
            SCOPED_TRACE(tests::StepCase(marker, shape));
            cv::Mat clipped;
            cv::min(marker, mask, clipped);
            cv::Mat raised;
            cv::max(marker, mask, raised);
            Call const dilate = [&](cv::Mat const & from, cv::Mat const & under, cv::Mat & out) {
                return GeoDilate(from, under, shape, out, 3);
            };
            Call const erode = [&](cv::Mat const & from, cv::Mat const & above, cv::Mat & out) {
                return GeoErode(from, above, shape, out);
            };
            cv::Mat const top(size, depth, cv::Scalar(tests::HighestOf(depth)));
            cv::Mat const bottom(size, depth, cv::Scalar(tests::LowestOf(depth)));
            ASSERT_TRUE(EqualImages(OverMask(dilate, marker, mask), tests::OracleGeoDilate(clipped, top, shape, 3)));
            ASSERT_TRUE(EqualImages(OverMask(erode, marker, mask), tests::OracleGeoErode(raised, bottom, shape)));
        }
    }
}

/// The calls of which a step is composed. Which of a NaN and a number OpenCV takes depends on how the rows lie in
/// memory, so that images have to lie alike.
void ComposeDilation(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out)
{
    cv::Mat const element = cv::getStructuringElement(shape, {3, 3});
    int const border = static_cast<int>(cv::BORDER_CONSTANT) | static_cast<int>(cv::BORDER_ISOLATED);
    cv::min(marker, mask, out);
    cv::dilate(out, out, element, {-1, -1}, 1, border, cv::morphologyDefaultBorderValue());
    cv::min(out, mask, out);
}

void ComposeErosion(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out)
{
    cv::Mat const element = cv::getStructuringElement(shape, {3, 3});
    int const border = static_cast<int>(cv::BORDER_CONSTANT) | static_cast<int>(cv::BORDER_ISOLATED);
    cv::max(marker, mask, out);
    cv::erode(out, out, element, {-1, -1}, 1, border, cv::morphologyDefaultBorderValue());
    cv::max(out, mask, out);
}

TEST(GeodesicStepsRandom, TreatNaNAndInfinitiesAsTheComposedCallsDo)
{
    Random random(92);
    for (int const depth : {CV_32F, CV_64F})
    {
        for (int round = 0; round < 30; ++round)
        {
            int const shape = round % 3;
            cv::Size const size = SomeSize(random);
            cv::Mat const marker = tests::RandomImage(random, size, depth, {0.2, 0.4, 5});
            cv::Mat const mask = tests::RandomImage(random, size, depth, {0.2, 0.4, 5});
            SCOPED_TRACE(tests::StepCase(marker, shape));
            FramedImage markerFrame(marker);
            FramedImage maskFrame(mask);
            FramedImage expected(mask);
            FramedImage out(mask);
            ComposeDilation(markerFrame.View(), maskFrame.View(), shape, expected.View());
            ASSERT_TRUE(GeoDilate(markerFrame.View(), maskFrame.View(), shape, out.View(), 3));
            ASSERT_TRUE(EqualImages(out.View(), expected.View()));
            ComposeErosion(markerFrame.View(), maskFrame.View(), shape, expected.View());
            ASSERT_TRUE(GeoErode(markerFrame.View(), maskFrame.View(), shape, out.View()));
            ASSERT_TRUE(EqualImages(out.View(), expected.View()));
            ASSERT_TRUE(out.IsFrameUntouched());
        }
    }
}

TEST(GeodesicStepsRandom, ErosionIsTheDilationUpsideDown)
{
    Random random(93);
    for (int round = 0; round < 30; ++round)
    {
        int const shape = round % 3;
        cv::Size const size = SomeSize(random);
        cv::Mat const marker = tests::FiniteImage(random, size, CV_8U);
        cv::Mat const mask = tests::FiniteImage(random, size, CV_8U);
        cv::Mat eroded;
        cv::Mat dilated;
        ASSERT_TRUE(GeoErode(marker, mask, shape, eroded));
        ASSERT_TRUE(GeoDilate(~marker, ~mask, shape, dilated, 3));
        ASSERT_TRUE(EqualImages(~dilated, eroded));
    }
}

/// A marker of a few pixels and a mask with corridors.
struct Maze
{
    cv::Mat marker;
    cv::Mat mask;
};

Maze RandomMaze(Random & random, cv::Size size, int depth)
{
    double const emptyMarker = random.Chance(0.1) ? 1.0 : 0.7 + 0.3 * random.Unit();
    double const emptyMask = 0.1 + 0.5 * random.Unit();
    return {
        tests::RandomImage(random, size, depth, {emptyMarker, 0.3, 3}),
        tests::RandomImage(random, size, depth, {emptyMask, 0.3, 3})};
}

void ExpectDistances(Maze const & maze, int shape)
{
    SCOPED_TRACE(tests::StepCase(maze.mask, shape));
    cv::Mat const expected = tests::OracleDistance(maze.marker, maze.mask, shape);
    Call const measure = [&](cv::Mat const & from, cv::Mat const & within, cv::Mat & out) {
        return GeodesicDistance(from, within, shape, out);
    };
    ExpectResult(measure, maze.marker, maze.mask, expected);
    EXPECT_TRUE(EqualImages(OverMask(measure, maze.marker, maze.mask), expected)) << "over the mask";
}

TEST(GeodesicDistanceRandom, MatchesCountedDilations)
{
    Random random(94);
    for (int const depth : tests::kDilatedDepths)
    {
        for (int round = 0; round < 60; ++round)
        {
            ExpectDistances(RandomMaze(random, SomeSize(random), depth), round % 3);
            if (HasFailure()) return;
        }
    }
}

TEST(GeodesicDistanceRandom, MatchesCountedDilationsOnTheSmallestImages)
{
    Random random(95);
    for (int const depth : tests::kDilatedDepths)
    {
        for (int round = 0; round < 120; ++round)
        {
            cv::Size const size(1 + random.Below(3), 1 + random.Below(3));
            cv::Mat const marker = tests::RandomImage(random, size, depth, {0.6, 0.2, 2});
            cv::Mat const mask = tests::RandomImage(random, size, depth, {0.4, 0.2, 2});
            ExpectDistances({marker, mask}, round % 3);
            if (HasFailure()) return;
        }
    }
}

TEST(GeodesicDistanceRandom, MatchesCountedDilationsOnPatterns)
{
    Random random(96);
    int saturated = 0;
    for (tests::Pattern const & pattern : tests::AllPatterns({50, 25}))
    {
        SCOPED_TRACE(pattern.name);
        for (int const depth : {CV_8U, CV_16U})
        {
            Maze maze;
            pattern.mask.convertTo(maze.mask, depth);
            maze.marker = cv::Mat(maze.mask.size(), depth, cv::Scalar(0));
            for (int marks = 1 + random.Below(2); marks > 0; --marks)
            {
                tests::SetElement(maze.marker, random.Below(25), random.Below(50), 0, 1);
            }
            // A corner that most patterns hold, so that the longest paths are among them.
            if (random.Chance(0.7)) tests::SetElement(maze.marker, 0, 0, 0, 1);
            int const shape = random.Below(3);
            ExpectDistances(maze, shape);
            saturated += tests::OracleCountedDilations(maze.marker, maze.mask, shape) > 254 && depth == CV_8U ? 1 : 0;
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(saturated, 0);
}

TEST(GeodesicDistanceRandom, BothOraclesAgree)
{
    Random random(97);
    for (int round = 0; round < 60; ++round)
    {
        int const depth = tests::kDilatedDepths[static_cast<std::size_t>(round % 5)];
        cv::Size const size = round % 2 == 0 ? SomeSize(random) : cv::Size(1 + random.Below(3), 1 + random.Below(2));
        Maze const maze = RandomMaze(random, size, depth);
        int const shape = round % 3;
        ASSERT_TRUE(EqualImages(
            tests::OracleDistanceByQueue(maze.marker, maze.mask, shape),
            tests::OracleDistance(maze.marker, maze.mask, shape)));
    }
    cv::Mat const spiral = tests::Spiral({31, 31});
    cv::Mat marker(31, 31, CV_8U, cv::Scalar(0));
    marker.at<uchar>(0, 0) = 1;
    marker.at<uchar>(1, 1) = 1;
    ASSERT_TRUE(EqualImages(
        tests::OracleDistanceByQueue(marker, spiral, cv::MORPH_CROSS),
        tests::OracleDistance(marker, spiral, cv::MORPH_CROSS)));
}

TEST(GeodesicDistanceRandom, TransposedImagesHaveTheSameDistances)
{
    Random random(98);
    for (int round = 0; round < 40; ++round)
    {
        Maze const maze = RandomMaze(random, {1 + random.Below(200), 1 + random.Below(60)}, CV_16U);
        int const shape = random.Below(2); // an ellipse need not be symmetric
        cv::Mat out;
        cv::Mat transposed;
        ASSERT_TRUE(GeodesicDistance(maze.marker, maze.mask, shape, out));
        ASSERT_TRUE(GeodesicDistance(maze.marker.t(), maze.mask.t(), shape, transposed));
        ASSERT_TRUE(EqualImages(transposed.t(), out));
    }
}

TEST(GeodesicDistanceRandom, FewerMarkersAreNoNearer)
{
    Random random(99);
    for (int round = 0; round < 40; ++round)
    {
        Maze maze = RandomMaze(random, SomeSize(random), CV_32F);
        // Where none lies outside the mask, 0 stands for unreached alone.
        maze.marker.setTo(0, maze.mask == 0);
        cv::Mat more;
        ASSERT_TRUE(GeodesicDistance(maze.marker, maze.mask, cv::MORPH_CROSS, more));
        cv::Mat const dropped = tests::RandomMask(random, maze.mask.size(), 0.5);
        maze.marker.setTo(0, dropped);
        cv::Mat fewer;
        ASSERT_TRUE(GeodesicDistance(maze.marker, maze.mask, cv::MORPH_CROSS, fewer));
        cv::Mat const reached = fewer != 0;
        EXPECT_EQ(cv::countNonZero((fewer < more) & reached), 0);
        EXPECT_EQ(cv::countNonZero((more == 0) & reached), 0);
    }
}

} // namespace

} // namespace morvane::geodesy
