// The elongation of the inertia ellipse of contours, and which zones have one.
#include <morvane/connexity/GeodesicMeasures.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/ShapeOracle.h"
#include "support/SkeletonOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::EqualImages;
using tests::Random;

cv::Mat Elongations(cv::Mat const & image)
{
    cv::Mat out;
    EXPECT_TRUE(LabelFlatZonesNoZeroWithStandardElongation(image, out));
    return out;
}

/// Expects one number in the pixels that hold a value, and 0 elsewhere.
void ExpectOnValue(cv::Mat const & image, int value, double expected)
{
    cv::Mat1d const actual = Elongations(image);
    ASSERT_EQ(actual.size(), image.size());
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            bool const isZone = tests::ElementAt(image, y, x) == value;
            ASSERT_NEAR(actual(y, x), isZone ? expected : 0.0, 1e-12) << "row " << y << ", column " << x;
        }
    }
}

TEST(StandardElongation, OfAFullImage_IsTheSquaredRatioOfItsSides)
{
    // Between the centres of the border pixels lie 4 by 2 pixels.
    ExpectOnValue(Draw<uchar>({"77777", "77777", "77777"}), 7, 4.0);
    ExpectOnValue(Draw<uchar>({"777", "777", "777", "777", "777"}), 7, 4.0);
    ExpectOnValue(Draw<uchar>({"777", "777", "777"}), 7, 1.0);
    // Beyond the image nothing erodes: two rows are enough.
    ExpectOnValue(Draw<uchar>({"7777777", "7777777"}), 7, 36.0);
}

TEST(StandardElongation, OfContoursWithoutArea_IsOne)
{
    ExpectOnValue(Draw<uchar>({"7"}), 7, 1.0);
    ExpectOnValue(Draw<uchar>({"77777"}), 7, 1.0);
    ExpectOnValue(Draw<uchar>({"7", "7"}), 7, 1.0);
}

TEST(StandardElongation, OfAZoneWhoseContourBeginsBesideNothing_IsZero)
{
    // The contour begins at the first pixel of the zone. The erosion takes it away where an empty pixel touches it.
    ExpectOnValue(Draw<uchar>({".......", ".77777.", ".77777.", ".77777.", "......."}), 7, 0.0);
    ExpectOnValue(Draw<uchar>({".77777", "777777", "777777"}), 7, 0.0);
    // Elsewhere it may be eaten into: the corners lie 5 by 2 apart.
    ExpectOnValue(Draw<uchar>({"777777...", "777777...", "777777..."}), 7, 25.0 / 4.0);
    ExpectOnValue(Draw<uchar>({".........", "777777...", "777777...", "777777..."}), 7, 0.0);
}

TEST(StandardElongation, OfZonesNoWiderThanTwoPixels_IsZero)
{
    ExpectOnValue(Draw<uchar>({".......", ".77777.", ".77777.", "......."}), 7, 0.0);
    ExpectOnValue(Draw<uchar>({".77...7", ".77...7", ".77...."}), 7, 0.0);
    // But in a corner of the image nothing erodes from two sides.
    ExpectOnValue(Draw<uchar>({"77.....", "77.....", "77....."}), 7, 4.0);
}

TEST(StandardElongation, OfZonesThatTouch_IsThatOfTheirContourInTheZoneOfItsBeginning)
{
    // One contour around both: 6 by 2. The first pixel is deep inside the zone of the left.
    ExpectOnValue(Draw<uchar>({"7779999", "7779999", "7779999"}), 7, 9.0);
    // The first pixel touches no other zone but the left one; the erosion of numbers takes the least of what touches.
    ExpectOnValue(Draw<uchar>({"7999999", "7999999", "7999999"}), 7, 9.0);
    ExpectOnValue(Draw<uchar>({"9777777", "7777777", "7777777"}), 9, 9.0);
}

TEST(StandardElongation, OfZonesOutsideTheFirstCorner_IsZero)
{
    // Wide zones against each border and each other corner.
    cv::Mat const zeros(9, 12, CV_64FC1, cv::Scalar(0));
    for (cv::Rect const & zone :
         {cv::Rect(1, 0, 11, 9), {0, 1, 12, 8}, {4, 0, 4, 4}, {0, 4, 4, 4}, {8, 0, 4, 9}, {0, 5, 12, 4}, {3, 3, 6, 5}})
    {
        cv::Mat1b image(zeros.size(), uchar{0});
        image(zone).setTo(7);
        EXPECT_TRUE(EqualImages(Elongations(image), zeros)) << zone;
        // Beside one that lies in the corner by itself.
        image(0, 0) = 9;
        EXPECT_EQ(cv::countNonZero(Elongations(image) != 0), 0) << zone;
    }
    // Of four equal squares, the first is measured.
    ExpectOnValue(Draw<uchar>({"777.888", "777.888", ".......", "999.666", "999.666"}), 7, 4.0);
}

TEST(StandardElongation, OfACornerThatTouchesAnEmptyPixel_IsZero)
{
    ExpectOnValue(Draw<uchar>({"7.777", "77777", "77777"}), 7, 0.0);
    ExpectOnValue(Draw<uchar>({"77777", ".7777", "77777"}), 7, 0.0);
    ExpectOnValue(Draw<uchar>({"77777", "7.777", "77777"}), 7, 0.0);
    // One step further it does not matter.
    ExpectOnValue(Draw<uchar>({"77777", "77777", "77.77", "77777", "77777"}), 7, 1.0);
}

TEST(StandardElongation, WithoutZones_IsZeroEverywhere)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            cv::Mat const image(4, 7, CV_MAKETYPE(depth, channels), cv::Scalar::all(0));
            EXPECT_TRUE(EqualImages(Elongations(image), cv::Mat(4, 7, CV_64FC1, cv::Scalar(0))));
        }
    }
}

TEST(StandardElongation, HolesMakeNoDifference)
{
    ExpectOnValue(Draw<uchar>({"77777", "77777", "77..7", "77777", "77777"}), 7, 1.0);
}

TEST(StandardElongation, MatchesTheStepsOnAllTypes)
{
    Random random(2140);
    int measured = 0;
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int round = 0; round < 12; ++round)
            {
                cv::Size const size(1 + random.Below(14), 1 + random.Below(14));
                int const type = CV_MAKETYPE(depth, channels);
                // Mostly full, so that contours begin in the corner.
                cv::Mat const image = tests::RandomImage(random, size, type, {0.15 * random.Unit(), 0.05, 2});
                cv::Mat const expected = tests::OracleStandardElongation(image);
                measured += cv::countNonZero(expected) > 0 ? 1 : 0;
                ASSERT_TRUE(EqualImages(Elongations(image), expected)) << tests::Case(type, size, 3);
                tests::FramedImage frame(image);
                ASSERT_TRUE(EqualImages(Elongations(frame.View()), expected)) << "in a view";
            }
        }
    }
    EXPECT_GT(measured, 50);
}

TEST(StandardElongation, MatchesTheStepsOnShapes)
{
    Random random(2141);
    int measured = 0;
    for (int round = 0; round < 150; ++round)
    {
        cv::Mat image = tests::RandomShape(random, {3 + random.Below(50), 3 + random.Below(50)});
        // Zones against the border keep their numbers there.
        image.rowRange(0, 2).setTo(200);
        image.colRange(0, 2).setTo(100 + 100 * random.Below(2));
        cv::Mat const expected = tests::OracleStandardElongation(image);
        measured += cv::countNonZero(expected) > 0 ? 1 : 0;
        ASSERT_TRUE(EqualImages(Elongations(image), expected)) << "round " << round;
    }
    EXPECT_GT(measured, 50);
}

} // namespace

} // namespace morvane::connexity
