// The ways by which reconstructions get to their end: sweeps with and without a queue behind them, steps with and
// without one. Each scene says which way it is for, and checks that by the plain steps.
#include "geodesy/FixedPoint.h"

#include "support/ImageLiterals.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"
#include "support/ReconstructionOracle.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <deque>

namespace morvane::tests
{

namespace
{

constexpr uchar kOpen = 3;

/// Up to this many changed pixels, a queue takes over from the steps: one part in as many as a pixel asks, and itself.
std::size_t FewIn(cv::Mat const & image, Elements const & elements)
{
    cv::Mat const element = cv::getStructuringElement(elements.shape, elements.kernelSize);
    return image.total() / static_cast<std::size_t>(cv::countNonZero(element));
}

/// Compares the dilation with its steps, and the erosion of complements.
void ExpectSteps(cv::Mat const & marker, cv::Mat const & mask, Elements const & elements)
{
    SCOPED_TRACE(Describe(Repeated::Dilate, marker, elements));
    cv::Mat expected(marker.size(), marker.type());
    OracleReconstruct(Repeated::Dilate, marker, mask, elements, expected);
    cv::Mat out;
    ASSERT_TRUE(Reconstruct(Repeated::Dilate, marker, mask, elements, out));
    EXPECT_TRUE(EqualImages(out, expected));
    cv::Mat eroded;
    ASSERT_TRUE(Reconstruct(Repeated::Erode, 255 - marker, 255 - mask, elements, eroded));
    EXPECT_TRUE(EqualImages(255 - eroded, expected));
}

/// A mask open everywhere and a marker in the first columns, 40 rows high.
struct Front
{
    explicit Front(int markedColumns)
        : mask(40, 40, CV_8UC1, cv::Scalar(kOpen))
        , marker(40, 40, CV_8UC1, cv::Scalar(0))
    {
        marker.colRange(0, markedColumns).setTo(kOpen);
    }

    cv::Mat mask;
    cv::Mat marker;
    Elements elements{cv::MORPH_RECT, {5, 5}, {}};
};

TEST(ReconstructionPaths, StepsThatChangeManyPixelsUntilNoneIsLeft)
{
    // Two columns with each step, 80 pixels; then none.
    Front const front(2);
    std::size_t const few = FewIn(front.mask, front.elements);
    for (std::size_t const changes : OracleChanges(front.marker, front.mask, front.elements))
    {
        EXPECT_TRUE(changes == 0 || changes > few) << changes;
    }
    ExpectSteps(front.marker, front.mask, front.elements);
}

TEST(ReconstructionPaths, StepsThatChangeManyPixelsBeforeFew)
{
    // The walls narrow the way to a row after some columns.
    Front front(2);
    front.mask(cv::Rect(8, 0, 4, 18)).setTo(0);
    front.mask(cv::Rect(8, 19, 4, 21)).setTo(0);
    auto const changes = OracleChanges(front.marker, front.mask, front.elements);
    std::size_t const few = FewIn(front.mask, front.elements);
    auto const isFew = [few](std::size_t count) {
        return count <= few;
    };
    auto const first = std::find_if(changes.begin(), changes.end(), isFew);
    EXPECT_GT(first - changes.begin(), 2);
    // Behind the way, more changes again: that is left to the queue.
    EXPECT_NE(std::find_if_not(first, changes.end(), isFew), changes.end());
    ExpectSteps(front.marker, front.mask, front.elements);
}

TEST(ReconstructionPaths, FirstStepThatChangesFewPixels)
{
    Front front(0);
    front.marker.at<uchar>(20, 30) = kOpen;
    auto const changes = OracleChanges(front.marker, front.mask, front.elements);
    EXPECT_LE(changes.front(), FewIn(front.mask, front.elements));
    EXPECT_GT(changes.size(), 10U);
    ExpectSteps(front.marker, front.mask, front.elements);
}

TEST(ReconstructionPaths, FirstStepThatChangesTheLastNumberThatIsFewAndTheFirstThatIsNot)
{
    // Each pixel of the first row reaches two below it: 40 in all, a fifth of the pixels.
    Elements const elements{cv::MORPH_RECT, {1, 5}, {}};
    cv::Mat const mask(10, 20, CV_8UC1, cv::Scalar(kOpen));
    cv::Mat marker(mask.size(), CV_8UC1, cv::Scalar(0));
    marker.row(0).setTo(kOpen);
    std::size_t const few = FewIn(mask, elements);
    ASSERT_EQ(OracleChanges(marker, mask, elements).front(), few);
    ExpectSteps(marker, mask, elements);
    // One of the columns starts at its second row, and reaches one pixel up as well.
    marker.at<uchar>(0, 7) = 0;
    marker.at<uchar>(1, 7) = kOpen;
    ASSERT_EQ(OracleChanges(marker, mask, elements).front(), few + 1);
    ExpectSteps(marker, mask, elements);
}

TEST(ReconstructionPaths, EveryChannelGoesItsOwnWay)
{
    Front wide(2);
    Front narrow(0);
    narrow.marker.at<uchar>(20, 30) = kOpen;
    cv::Mat marker;
    cv::Mat mask;
    cv::merge(std::vector<cv::Mat>{wide.marker, narrow.marker, wide.mask}, marker);
    cv::merge(std::vector<cv::Mat>{wide.mask, narrow.mask, narrow.mask}, mask);
    for (cv::Size const kernelSize : {cv::Size(3, 3), cv::Size(5, 5)})
    {
        Elements const elements{cv::MORPH_RECT, kernelSize, {}};
        cv::Mat expected(marker.size(), marker.type());
        OracleReconstruct(Repeated::Dilate, marker, mask, elements, expected);
        cv::Mat out;
        ASSERT_TRUE(Reconstruct(Repeated::Dilate, marker, mask, elements, out));
        EXPECT_TRUE(EqualImages(out, expected));
    }
}

/// The least bound on the way from the first pixel of a line to each other one, 0 beside the line: a plain flood.
cv::Mat LeastOnTheWay(cv::Mat1b const & mask)
{
    cv::Mat1b result(mask.rows, mask.cols, uchar{0});
    cv::Rect const inside(cv::Point(), mask.size());
    result(0, 0) = mask(0, 0);
    std::deque<cv::Point> queue{{0, 0}};
    while (!queue.empty())
    {
        cv::Point const pixel = queue.front();
        queue.pop_front();
        for (cv::Point const offset : {cv::Point(1, 0), cv::Point(-1, 0), cv::Point(0, 1), cv::Point(0, -1)})
        {
            cv::Point const next = pixel + offset;
            if (!inside.contains(next) || mask(next) == 0 || result(next) != 0) continue;
            result(next) = std::min(mask(next), result(pixel));
            queue.push_back(next);
        }
    }
    return result;
}

TEST(ReconstructionPaths, SpiralIsFollowedToItsEnd)
{
    cv::Mat1b const spiral = Spiral({200, 200});
    cv::Mat marker(spiral.size(), CV_8UC1, cv::Scalar(0));
    marker.at<uchar>(0, 0) = 150;
    for (int const shape : {cv::MORPH_RECT, cv::MORPH_CROSS})
    {
        cv::Mat out;
        ASSERT_TRUE(Reconstruct(Repeated::Dilate, marker, spiral * 200, {shape, {3, 3}, {}}, out));
        EXPECT_TRUE(EqualImages(out, spiral * 150));
        ASSERT_TRUE(Reconstruct(Repeated::Erode, 255 - marker, 255 - spiral * 200, {shape, {3, 3}, {}}, out));
        EXPECT_TRUE(EqualImages(out, 255 - spiral * 150));
    }
    // From its end outwards, too, which the sweeps meet the other way round.
    cv::Mat turned;
    cv::Mat turnedMarker;
    cv::flip(spiral, turned, -1);
    cv::flip(marker, turnedMarker, -1);
    cv::Mat out;
    ASSERT_TRUE(Reconstruct(Repeated::Dilate, turnedMarker, turned * 200, {cv::MORPH_RECT, {3, 3}, {}}, out));
    EXPECT_TRUE(EqualImages(out, turned * 150));
}

TEST(ReconstructionPaths, SpiralOfChangingHeightKeepsTheLeastOnTheWay)
{
    Random random(21);
    cv::Mat1b mask = Spiral({200, 200});
    int count = 0;
    for (uchar & height : mask)
    {
        // Heights that mostly lie above the lowest so far, so that there is something to carry to the end.
        if (height != 0) height = static_cast<uchar>(random.Chance(0.001) ? 200 - ++count : 201 + random.Below(50));
    }
    cv::Mat const expected = LeastOnTheWay(mask);
    cv::Mat marker(mask.size(), CV_8UC1, cv::Scalar(0));
    marker.at<uchar>(0, 0) = 255;
    cv::Mat out;
    ASSERT_TRUE(Reconstruct(Repeated::Dilate, marker, mask, {cv::MORPH_CROSS, {3, 3}, {}}, out));
    EXPECT_TRUE(EqualImages(out, expected));
    ASSERT_GT(count, 3);
    ASSERT_TRUE(Reconstruct(Repeated::Erode, 255 - marker, 255 - mask, {cv::MORPH_CROSS, {3, 3}, {}}, out));
    EXPECT_TRUE(EqualImages(out, 255 - expected));
}

TEST(ReconstructionPaths, LongWayOfAnElementThatIsNoneOfTheSweeps)
{
    // Pixels three apart on a line that winds: an element of 7 by 7 finds each from the one before.
    cv::Mat1b const turns = Spiral({30, 30});
    cv::Mat mask(90, 90, CV_8UC1, cv::Scalar(0));
    for (int y = 0; y < turns.rows; ++y)
    {
        for (int x = 0; x < turns.cols; ++x)
        {
            if (turns(y, x) != 0) mask.at<uchar>(3 * y, 3 * x) = static_cast<uchar>(200 + (x + y) % 50);
        }
    }
    cv::Mat marker(mask.size(), CV_8UC1, cv::Scalar(0));
    marker.at<uchar>(0, 0) = 255;
    Elements const elements{cv::MORPH_CROSS, {7, 7}, {}};
    auto const changes = OracleChanges(marker, mask, elements);
    EXPECT_GT(changes.size(), 200U);
    EXPECT_LE(changes.front(), FewIn(mask, elements));
    ExpectSteps(marker, mask, elements);
}

TEST(ReconstructionFixedPoint, IsANewImageAndLeavesItsArgumentsAlone)
{
    using geodesy::reconstruction_internals::Direction;
    using geodesy::reconstruction_internals::FixedPoint;
    cv::Mat const mask = Draw<uchar>({"957936"});
    for (cv::Size const kernelSize : {cv::Size(3, 3), cv::Size(3, 1), cv::Size(1, 1)})
    {
        // The end is the mask itself, and the mask the marker.
        cv::Mat const result = FixedPoint(mask, mask, cv::MORPH_RECT, kernelSize, Direction::Rise);
        EXPECT_NE(result.data, mask.data);
        ExpectDrawn(result, {"957936"});
        ExpectDrawn(mask, {"957936"});
    }
}

} // namespace

} // namespace morvane::tests
