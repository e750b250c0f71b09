// Bounding rectangles and closed shapes.
#include <morvane/features/ShapeDescriptors.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/ShapeOracle.h"
#include "support/SkeletonOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <limits>
#include <tuple>
#include <vector>

namespace morvane::features
{

namespace
{

using tests::Draw;
using tests::Random;
using Boxes = std::vector<cv::Rect>;

/// What nobody writes.
Boxes const kBefore{{7, 8, 9, 10}, {1, 1, 1, 1}};

Boxes Sorted(Boxes boxes)
{
    std::sort(boxes.begin(), boxes.end(), [](cv::Rect const & one, cv::Rect const & other) {
        return std::tie(one.y, one.x, one.height, one.width) < std::tie(other.y, other.x, other.height, other.width);
    });
    return boxes;
}

Boxes BoxesOf(cv::Mat const & image)
{
    Boxes boxes = kBefore;
    EXPECT_TRUE(BoundingRectangles(image, boxes));
    return boxes;
}

cv::Rect WidestOf(cv::Mat const & image, cv::Rect rectangle = {})
{
    EXPECT_TRUE(MaximalBoundingRectangle(image, rectangle));
    return rectangle;
}

TEST(BoundingRectangles, AreThoseOfTheOuterContours)
{
    cv::Mat const image = Draw<uchar>({
        "11......",
        "11..999.",
        "....9.9.",
        "1...999.",
        ".1......",
        "......55",
    });
    EXPECT_EQ(Sorted(BoxesOf(image)), Sorted({{0, 0, 2, 2}, {4, 1, 3, 3}, {0, 3, 2, 2}, {6, 5, 2, 1}}));
}

TEST(BoundingRectangles, OfWhatLiesInAHole_AreNotThere)
{
    cv::Mat const image = Draw<uchar>({
        "1111111",
        "1.....1",
        "1.333.1",
        "1.....1",
        "1111111",
    });
    EXPECT_EQ(BoxesOf(image), (Boxes{{0, 0, 7, 5}}));
    // A hole that opens is none: diagonal neighbours do not open it.
    EXPECT_EQ(
        Sorted(BoxesOf(Draw<uchar>({"1.111", "1...1", "1.3.1", "1...1", "11111"}))),
        Sorted({{0, 0, 5, 5}, {2, 2, 1, 1}}));
    EXPECT_EQ(BoxesOf(Draw<uchar>({".1111", "1...1", "1.3.1", "1...1", "11111"})), (Boxes{{0, 0, 5, 5}}));
}

TEST(BoundingRectangles, ComeInTheOrderOfTheContours)
{
    Random random(7400);
    for (int round = 0; round < 40; ++round)
    {
        cv::Mat1b const shape = tests::RandomShape(random, {1 + random.Below(50), 1 + random.Below(50)});
        cv::Mat framed;
        cv::copyMakeBorder(shape, framed, 1, 1, 1, 1, cv::BORDER_CONSTANT, 0);
        std::vector<std::vector<cv::Point>> contours;
        cv::findContours(framed, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE, cv::Point(-1, -1));
        if (contours.empty()) continue;
        Boxes expected;
        for (std::vector<cv::Point> const & contour : contours)
        {
            expected.push_back(cv::boundingRect(contour));
        }
        ASSERT_EQ(BoxesOf(shape), expected) << "round " << round;
    }
}

TEST(BoundingRectangles, MatchFloodedShapes)
{
    Random random(7401);
    for (int round = 0; round < 200; ++round)
    {
        cv::Mat1b const shape = tests::RandomShape(random, {1 + random.Below(50), 1 + random.Below(50)});
        Boxes const expected = tests::OracleOuterBoxes(shape);
        if (expected.empty()) continue;
        ASSERT_EQ(Sorted(BoxesOf(shape)), Sorted(expected)) << "round " << round;
    }
}

TEST(BoundingRectangles, OfAnEmptyShape_AreLeftAsTheyWere)
{
    for (int const depth : tests::kDepths)
    {
        Boxes boxes = kBefore;
        EXPECT_FALSE(BoundingRectangles(cv::Mat(5, 6, depth, cv::Scalar(0)), boxes));
        EXPECT_EQ(boxes, kBefore);
    }
}

TEST(BoundingShapes, TakeEveryPixelThatDoesNotEqualZero)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (double const value : {1e-300, -1e-300, nan, -1.0, 1e300})
    {
        cv::Mat1d image(4, 5, 0.0);
        image(1, 2) = value;
        image(0, 0) = -0.0;
        EXPECT_EQ(BoxesOf(image), (Boxes{{2, 1, 1, 1}})) << value;
        EXPECT_EQ(WidestOf(image), cv::Rect(2, 1, 1, 1)) << value;
        cv::Mat closed;
        ASSERT_TRUE(BoundingConvexHulls(image, closed));
        // Nothing lies farther from the border than half an element.
        tests::ExpectEqualImages(closed, cv::Mat(4, 5, CV_8UC1, cv::Scalar(255)));
    }
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = Draw({".....", "..1..", "...9.", "....."}, depth);
        EXPECT_EQ(BoxesOf(image), (Boxes{{2, 1, 2, 2}}));
        EXPECT_EQ(WidestOf(image), cv::Rect(2, 1, 2, 2));
    }
    for (int const depth : {CV_16S, CV_32S, CV_32F, CV_64F})
    {
        // All low bits of an element may be 0.
        EXPECT_EQ(BoxesOf(cv::Mat(2, 3, depth, cv::Scalar(-512))), (Boxes{{0, 0, 3, 2}}));
    }
}

TEST(MaximalBoundingRectangle, IsTheBoxAroundAllParts)
{
    cv::Mat const image = Draw<uchar>({".......", ".1.....", "....22.", ".......", "..3...."});
    EXPECT_EQ(WidestOf(image), cv::Rect(1, 1, 5, 4));
    EXPECT_EQ(WidestOf(Draw<uchar>({"1....", ".....", "....1"})), cv::Rect(0, 0, 5, 3));
    EXPECT_EQ(WidestOf(Draw<uchar>({"1"})), cv::Rect(0, 0, 1, 1));
}

TEST(MaximalBoundingRectangle, WidensWhatIsPassed)
{
    cv::Mat const image = Draw<uchar>({".....", "..11.", "....."});
    EXPECT_EQ(WidestOf(image, {0, 0, 1, 1}), cv::Rect(0, 0, 4, 2));
    EXPECT_EQ(WidestOf(image, {-10, 5, 3, 2}), cv::Rect(-10, 1, 14, 6));
    EXPECT_EQ(WidestOf(image, {0, 0, 100, 50}), cv::Rect(0, 0, 100, 50));
    EXPECT_EQ(WidestOf(image, {3, 1, 1, 1}), cv::Rect(2, 1, 2, 1));
}

TEST(MaximalBoundingRectangle, ReplacesARectangleWithoutPixels)
{
    cv::Mat const image = Draw<uchar>({".....", "..11.", "....."});
    for (cv::Rect const & empty : {cv::Rect(), cv::Rect(9, 9, 0, 5), cv::Rect(9, 9, 5, 0), cv::Rect(9, 9, -3, 4)})
    {
        EXPECT_EQ(WidestOf(image, empty), cv::Rect(2, 1, 2, 1));
    }
    // After the first part it is not empty any more.
    EXPECT_EQ(WidestOf(Draw<uchar>({"1...2"}), {9, 9, 0, 0}), cv::Rect(0, 0, 5, 1));
}

TEST(MaximalBoundingRectangle, WithoutAShape_IsAsItWas)
{
    for (cv::Rect const & before : {cv::Rect(), cv::Rect(3, 4, 5, 6), cv::Rect(3, 4, -5, 6)})
    {
        EXPECT_EQ(WidestOf(cv::Mat(5, 6, CV_8UC1, cv::Scalar(0)), before), before);
        EXPECT_EQ(WidestOf(cv::Mat(5, 6, CV_32FC1, cv::Scalar(0)), before), before);
    }
}

TEST(MaximalBoundingRectangle, MatchesTheBoxOfThePixels)
{
    Random random(7402);
    for (int round = 0; round < 100; ++round)
    {
        int const depth = tests::kDepths[static_cast<std::size_t>(round % 6)];
        double const emptyShare = 1.0 - random.Unit() * random.Unit() * 0.3;
        cv::Mat const image =
            tests::RandomImage(random, {1 + random.Below(30), 1 + random.Below(30)}, depth, {emptyShare, 0.1, 3});
        cv::Rect expected(5, 6, 3, 2);
        for (int y = 0; y < image.rows; ++y)
        {
            for (int x = 0; x < image.cols; ++x)
            {
                if (tests::ElementAt(image, y, x) != 0.0) expected |= cv::Rect(x, y, 1, 1);
            }
        }
        ASSERT_EQ(WidestOf(image, {5, 6, 3, 2}), expected);
    }
}

TEST(BoundingConvexHulls, IsTheClosedShape)
{
    Random random(7403);
    for (int round = 0; round < 40; ++round)
    {
        cv::Mat1b shape = tests::RandomShape(random, {1 + random.Below(150), 1 + random.Below(150)});
        // Some parts far from each other, of several values.
        if (round % 2 == 0) shape &= tests::RandomShape(random, shape.size());
        if (round % 3 == 0) shape /= 2;
        if (cv::countNonZero(shape) == 0) continue;
        cv::Mat closed;
        ASSERT_TRUE(BoundingConvexHulls(shape, closed));
        ASSERT_TRUE(tests::EqualImages(closed, tests::OracleClosed(shape))) << "round " << round;
    }
}

TEST(BoundingConvexHulls, FillsGapsOfSixtyPixels)
{
    // Half an element is 5 pixels, six times: two pixels join when there are no more than 60 between them.
    for (int const gap : {1, 59, 60, 61, 100})
    {
        cv::Mat1b shape(80, 70 + gap + 70, uchar{0});
        shape(40, 69) = 255;
        shape(40, 69 + gap + 1) = 255;
        cv::Mat1b expected = shape.clone();
        if (gap <= 60) expected.row(40).colRange(69, 69 + gap + 2).setTo(255);
        cv::Mat closed;
        ASSERT_TRUE(BoundingConvexHulls(shape, closed));
        EXPECT_TRUE(tests::EqualImages(closed, expected)) << gap;
    }
}

TEST(BoundingConvexHulls, FillsWhatLiesNoFartherFromTheBorder)
{
    for (int const above : {29, 30, 31})
    {
        cv::Mat1b shape(100, 100, uchar{0});
        shape(above, 50) = 255;
        cv::Mat1b expected = shape.clone();
        // From there on the element never leaves the image.
        if (above <= 30) expected.col(50).rowRange(0, above).setTo(255);
        cv::Mat closed;
        ASSERT_TRUE(BoundingConvexHulls(shape, closed));
        EXPECT_TRUE(tests::EqualImages(closed, expected)) << above;
    }
}

TEST(BoundingConvexHulls, OfOnePart_IsNotItsHull)
{
    // A bay that is wider than the gaps stays, and so does the value.
    cv::Mat1b shape(200, 200, uchar{0});
    shape.colRange(0, 10).setTo(77);
    shape.rowRange(190, 200).setTo(77);
    cv::Mat closed;
    ASSERT_TRUE(BoundingConvexHulls(shape, closed));
    EXPECT_TRUE(tests::EqualImages(closed, shape));
}

TEST(BoundingConvexHulls, WithoutAShape_LeavesTheOutput)
{
    cv::Mat out(2, 2, CV_16SC1, cv::Scalar(5));
    tests::Snapshot const before(out);
    EXPECT_TRUE(BoundingConvexHulls(cv::Mat(9, 9, CV_8UC1, cv::Scalar(0)), out));
    EXPECT_TRUE(BoundingConvexHulls(cv::Mat(9, 9, CV_64FC1, cv::Scalar(0)), out));
    EXPECT_TRUE(before.IsUntouched());
    cv::Mat none;
    EXPECT_TRUE(BoundingConvexHulls(cv::Mat(9, 9, CV_8UC1, cv::Scalar(0)), none));
    EXPECT_TRUE(none.empty());
}

TEST(BoundingConvexHulls, ReplacesAnOutputOfAnotherTypeOrSize)
{
    cv::Mat const shape = Draw<uchar>({".....", "..9..", "....."});
    for (cv::Mat const & before : {cv::Mat(3, 5, CV_32FC1), cv::Mat(9, 9, CV_8UC1), cv::Mat(3, 5, CV_8UC3)})
    {
        cv::Mat out = before;
        ASSERT_TRUE(BoundingConvexHulls(shape, out));
        EXPECT_TRUE(tests::EqualImages(out, cv::Mat(3, 5, CV_8UC1, cv::Scalar(9))));
    }
}

TEST(BoundingShapes, OfViews_DoNotSeeWhatLiesAround)
{
    Random random(7404);
    for (int const depth : tests::kDepths)
    {
        for (int round = 0; round < 8; ++round)
        {
            cv::Mat parent;
            tests::RandomShape(random, {60, 50}).convertTo(parent, depth);
            parent.rowRange(0, 9).setTo(255);
            parent.colRange(40, 60).setTo(255);
            cv::Mat const view = parent(cv::Rect(3, 9, 37, 30));
            cv::Mat1b shape(view.size(), uchar{0});
            shape.setTo(255, view != 0);
            if (cv::countNonZero(shape) == 0) continue;
            EXPECT_EQ(Sorted(BoxesOf(view)), Sorted(tests::OracleOuterBoxes(shape)));
            EXPECT_EQ(WidestOf(view), WidestOf(shape));
            tests::FramedImage out(cv::Mat(shape.size(), CV_8UC1, cv::Scalar(9)));
            ASSERT_TRUE(BoundingConvexHulls(view, out.View()));
            EXPECT_TRUE(tests::EqualImages(out.View(), tests::OracleClosed(shape)));
            EXPECT_TRUE(out.IsFrameUntouched());
        }
    }
}

TEST(BoundingShapes, OfWhatHasNoShape_AreNotThere)
{
    std::array const sides{2, 3, 4};
    std::vector<cv::Mat> images{cv::Mat(), cv::Mat(0, 5, CV_8UC1), cv::Mat(5, 0, CV_32FC1)};
    images.emplace_back(3, sides.data(), CV_8UC1, cv::Scalar(1));
    for (int const type : {CV_8UC2, CV_8UC3, CV_16SC4, CV_64FC2, CV_8SC1, CV_16FC1})
    {
        images.emplace_back(4, 5, type);
        tests::FillBytes(images.back(), 1);
    }
    for (cv::Mat const & image : images)
    {
        SCOPED_TRACE(cv::typeToString(image.type()));
        Boxes boxes = kBefore;
        EXPECT_FALSE(BoundingRectangles(image, boxes));
        EXPECT_EQ(boxes, kBefore);
        EXPECT_EQ(WidestOf(image, {1, 2, 3, 4}), cv::Rect(1, 2, 3, 4));
        cv::Mat out(4, 5, CV_8UC1, cv::Scalar(5));
        tests::Snapshot const before(out);
        EXPECT_TRUE(BoundingConvexHulls(image, out));
        EXPECT_TRUE(before.IsUntouched());
    }
}

} // namespace

} // namespace morvane::features
