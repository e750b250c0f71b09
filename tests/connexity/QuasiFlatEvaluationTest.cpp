// The test of slope of one zone, the surface that it measures from, and the growth of the mask.
#include <morvane/connexity/QuasiFlatZones.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/QuasiFlatOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace morvane::quasi_flat_internals
{

namespace
{

using tests::EqualImages;
using tests::Random;
using tests::Snapshot;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// A row inside what is accepted, which begins with @p x 3: the distance grows by the same step from pixel to pixel.
/// The zone is the pixels 5 to 12, one of 14 points of contour each time that its outline passes: of the 3 nearest, the
/// first is pixel 5 and the others are pixel 6.
struct RowCase
{
    RowCase()
        : accepted(9, 20, CV_8UC1, cv::Scalar(7))
        , zone(9, 20, CV_8UC1, cv::Scalar(0))
        , image(9, 20, CV_32FC1, cv::Scalar(1e9))
    {
        accepted.colRange(0, 3).setTo(0);
        zone(cv::Rect(5, 4, 8, 1)).setTo(1);
        cv::distanceTransform(accepted, distance, cv::DIST_L2, 3, CV_32F);
    }

    [[nodiscard]] ResultType Evaluate(int radius = 100) const
    {
        return EvaluateRegion(accepted, zone, image, radius, pixelSize, slopeRatio);
    }
    [[nodiscard]] float & Height(int x) { return image.at<float>(4, x); }
    [[nodiscard]] float Distance(int x) const { return distance.at<float>(4, x); }

    cv::Mat accepted;
    cv::Mat zone;
    cv::Mat image;
    cv::Mat distance;
    double pixelSize = 1.0;
    double slopeRatio = 1.0;
};

TEST(EvaluateRegion, AcceptsAZoneOfWhichANearPointIsLow)
{
    for (int const x : {5, 6})
    {
        RowCase row;
        row.Height(x) = 1.0F;
        EXPECT_EQ(row.Evaluate(), ResultAccepted);
        row.Height(x) = -1.0F;
        EXPECT_EQ(row.Evaluate(), ResultAccepted);
    }
}

TEST(EvaluateRegion, RejectsAZoneOfWhichTheNearPointsAreHigh)
{
    RowCase row;
    EXPECT_EQ(row.Evaluate(), ResultRejected);
    // Beyond the nearest quarter nothing is looked at.
    for (int x = 7; x < 20; ++x)
    {
        row.Height(x) = 0.0F;
    }
    EXPECT_EQ(row.Evaluate(), ResultRejected);
    row.Height(5) = -1e9F;
    EXPECT_EQ(row.Evaluate(), ResultRejected);
}

TEST(EvaluateRegion, DemandsLessThanTheRatioAndNotAsMuch)
{
    RowCase row;
    row.Height(5) = row.Distance(5);
    EXPECT_EQ(row.Evaluate(), ResultRejected);
    row.Height(5) = std::nextafter(row.Distance(5), 0.0F);
    EXPECT_EQ(row.Evaluate(), ResultAccepted);
    // Powers of two, so that no product rounds.
    row.Height(5) = row.Distance(5) * 8.0F;
    row.pixelSize = 2.0;
    row.slopeRatio = 4.0;
    EXPECT_EQ(row.Evaluate(), ResultRejected);
    row.slopeRatio = std::nextafter(4.0, 5.0);
    EXPECT_EQ(row.Evaluate(), ResultAccepted);
    row.slopeRatio = 4.0;
    row.pixelSize = std::nextafter(2.0, 3.0);
    EXPECT_EQ(row.Evaluate(), ResultAccepted);
}

TEST(EvaluateRegion, OfARatioOf0OrBelow_AcceptsNothing)
{
    for (double const ratio : {0.0, -1.0, kNaN})
    {
        RowCase row;
        row.slopeRatio = ratio;
        row.image.setTo(0.0);
        EXPECT_EQ(row.Evaluate(), ResultRejected);
    }
}

TEST(EvaluateRegion, OfPointsBeyondTheRadius_IsUnknown)
{
    RowCase row;
    row.Height(5) = 0.0F;
    row.Height(6) = 0.0F;
    // Pixel 5 is three steps of 0.955 away, pixel 6 four.
    EXPECT_EQ(row.Evaluate(0), ResultUnknown);
    EXPECT_EQ(row.Evaluate(2), ResultUnknown);
    EXPECT_EQ(row.Evaluate(3), ResultAccepted);
    row.Height(5) = 1e9F;
    EXPECT_EQ(row.Evaluate(3), ResultRejected);
    EXPECT_EQ(row.Evaluate(4), ResultAccepted);
}

TEST(EvaluateRegion, DemandsARadiusAboveTheDistance)
{
    // Without a 0 all pixels are equally far, by a whole number in the versions of OpenCV that we know.
    RowCase row;
    row.accepted.setTo(1);
    cv::distanceTransform(row.accepted, row.distance, cv::DIST_L2, 3, CV_32F);
    row.image.setTo(0.0);
    int const whole = static_cast<int>(row.Distance(5));
    EXPECT_EQ(row.Evaluate(whole), ResultUnknown);
    EXPECT_EQ(row.Evaluate(whole + 1), ResultAccepted);
}

TEST(EvaluateRegion, OutsideWhatIsAccepted_IsUnknown)
{
    RowCase row;
    row.image.setTo(0.0);
    row.accepted.setTo(0);
    EXPECT_EQ(row.Evaluate(), ResultUnknown);
    // Where the nearest quarter is outside, the others do not help.
    row.accepted.colRange(7, 20).setTo(1);
    EXPECT_EQ(row.Evaluate(), ResultUnknown);
    row.accepted.colRange(6, 20).setTo(1);
    EXPECT_EQ(row.Evaluate(), ResultAccepted);
}

TEST(EvaluateRegion, OfFewPoints_IsUnknown)
{
    // Contours of 1, 2 and 4 points; a quarter of the last is one.
    for (int const pixels : {1, 2, 3})
    {
        RowCase row;
        row.image.setTo(0.0);
        row.zone.setTo(0);
        row.zone(cv::Rect(5, 4, pixels, 1)).setTo(255);
        EXPECT_EQ(row.Evaluate(), pixels == 3 ? ResultAccepted : ResultUnknown);
        row.Height(5) = 1e9F;
        EXPECT_EQ(row.Evaluate(), pixels == 3 ? ResultRejected : ResultUnknown);
    }
}

TEST(EvaluateRegion, LooksAtTheLongestContourOnly)
{
    RowCase row;
    // Nearer and lower than the row of 8 pixels, but shorter.
    row.zone(cv::Rect(3, 0, 5, 1)).setTo(1);
    row.image.row(0).setTo(0.0);
    EXPECT_EQ(row.Evaluate(), ResultRejected);
    row.zone(cv::Rect(8, 0, 6, 1)).setTo(1);
    EXPECT_EQ(row.Evaluate(), ResultAccepted);
}

TEST(EvaluateRegion, OfAZoneThatTouchesTheBorder_SeesItsWholeContour)
{
    RowCase row;
    row.accepted.setTo(1);
    row.accepted.col(19).setTo(0);
    row.zone.setTo(1);
    row.zone.col(19).setTo(0);
    EXPECT_EQ(row.Evaluate(), ResultRejected);
    row.Height(18) = 0.0F;
    EXPECT_EQ(row.Evaluate(), ResultAccepted);
}

TEST(EvaluateRegion, RejectsAZoneOfAlmostNothing)
{
    RowCase row;
    row.zone.setTo(0);
    EXPECT_EQ(row.Evaluate(), ResultRejected);
    // It is the sum that counts, not the pixels.
    row.zone.at<uchar>(4, 5) = 1;
    EXPECT_EQ(row.Evaluate(), ResultRejected);
    row.zone.at<uchar>(4, 5) = 2;
    EXPECT_EQ(row.Evaluate(), ResultUnknown);
    row.zone.at<uchar>(4, 5) = 1;
    row.zone.at<uchar>(4, 6) = 1;
    EXPECT_EQ(row.Evaluate(), ResultUnknown);
    // Before the radius is looked at.
    row.zone.setTo(0);
    EXPECT_EQ(row.Evaluate(-1), ResultRejected);
}

TEST(EvaluateRegion, OfRefusedArguments_IsAnError)
{
    for (double const pixelSize : {0.0, -1.0, kNaN})
    {
        RowCase row;
        row.pixelSize = pixelSize;
        EXPECT_EQ(row.Evaluate(), ResultError);
        row.zone.setTo(0);
        EXPECT_EQ(row.Evaluate(), ResultError);
    }
    EXPECT_EQ(RowCase().Evaluate(-1), ResultError);
    std::array<cv::Mat RowCase::*, 3> const images{&RowCase::accepted, &RowCase::zone, &RowCase::image};
    for (cv::Mat RowCase::*const image : images)
    {
        for (cv::Mat const & wrong : {cv::Mat(), cv::Mat(9, 19, CV_8UC1, cv::Scalar(1)), cv::Mat(0, 20, CV_8UC1)})
        {
            RowCase row;
            row.*image = wrong;
            EXPECT_EQ(row.Evaluate(), ResultError);
        }
    }
    RowCase wide;
    wide.zone.convertTo(wide.zone, CV_16U);
    EXPECT_EQ(wide.Evaluate(), ResultError);
    RowCase deep;
    deep.accepted.convertTo(deep.accepted, CV_32S);
    EXPECT_EQ(deep.Evaluate(), ResultError);
}

TEST(EvaluateRegion, MeasuresFromASurfaceThatExistsOnlyAt100By100)
{
    for (cv::Size const size : {cv::Size(100, 100), cv::Size(101, 100), cv::Size(100, 99), cv::Size(109, 109)})
    {
        cv::Mat accepted(size, CV_8UC1, cv::Scalar(1));
        accepted.colRange(0, 3).setTo(0);
        cv::Mat zone(size, CV_8UC1, cv::Scalar(0));
        zone(cv::Rect(5, 4, 8, 6)).setTo(255);
        cv::Mat const image(size, CV_32FC1, cv::Scalar(1e6));
        bool const isOnSurface = size == cv::Size(100, 100);
        EXPECT_EQ(EvaluateRegion(accepted, zone, image, 20, 1.0, 1.0), isOnSurface ? ResultAccepted : ResultRejected);
    }
}

/// A blob of full pixels, some with holes.
cv::Mat RandomBlob(Random & random, cv::Size size)
{
    cv::Mat blob;
    cv::Mat(tests::RandomZones(random, size, 3) > 0).copyTo(blob);
    return blob;
}

TEST(EvaluateRegion, IsWhatItsStepsSay)
{
    Random random(4301);
    std::map<int, int> answers;
    for (int trial = 0; trial < 800; ++trial)
    {
        bool const isSurface = random.Chance(0.2);
        cv::Size const size = isSurface ? cv::Size(100, 100) : cv::Size(1 + random.Below(50), 1 + random.Below(50));
        int const depth = tests::kMorphologyDepths[static_cast<std::size_t>(random.Below(5))];
        cv::Mat image = tests::RandomImage(random, size, depth, {0.3, 0.0, 50});
        cv::Mat const accepted = RandomBlob(random, size);
        cv::Mat zone = RandomBlob(random, size);
        if (random.Chance(0.7)) cv::bitwise_and(zone, accepted, zone);
        int const radius = random.Below(12) - (random.Chance(0.05) ? 12 : 0);
        double const pixelSize = random.Below(20) * 0.5;
        double const slopeRatio = random.Below(10) * 0.5;
        ResultType const expected = tests::OracleEvaluateRegion(accepted, zone, image, radius, pixelSize, slopeRatio);
        ++answers[expected];
        tests::FramedImage acceptedView(accepted);
        tests::FramedImage zoneView(zone);
        tests::FramedImage imageView(image);
        tests::ThreadCount const threads(1 + trial % 3);
        ASSERT_EQ(
            EvaluateRegion(acceptedView.View(), zoneView.View(), imageView.View(), radius, pixelSize, slopeRatio),
            expected)
            << trial;
    }
    for (int const answer : {ResultError, ResultAccepted, ResultRejected, ResultUnknown})
    {
        EXPECT_GT(answers[answer], 20) << answer;
    }
}

TEST(ExtendSurface, SpreadsByAPixelMoreThanTheRadius)
{
    for (int const radius : {0, 1, 7, 30})
    {
        for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32F, CV_64F})
        {
            cv::Mat source = cv::Mat::zeros(100, 100, depth);
            tests::SetElement(source, 60, 50, 0, 40);
            cv::Mat out;
            EXPECT_TRUE(ExtendSurface(source, out, radius));
            cv::Mat expected = cv::Mat::zeros(100, 100, depth);
            int const reach = radius + 1;
            expected(cv::Rect(50 - reach, 60 - reach, 2 * reach + 1, 2 * reach + 1)).setTo(cv::Scalar(40));
            EXPECT_TRUE(EqualImages(out, expected)) << radius;
        }
    }
}

TEST(ExtendSurface, OfAnotherSizeIs0)
{
    for (cv::Size const size :
         {cv::Size(99, 99), cv::Size(109, 109), cv::Size(101, 100), cv::Size(100, 101), cv::Size(100, 99),
          cv::Size(1, 1), cv::Size(7, 7), cv::Size(200, 200), cv::Size(112, 110)})
    {
        for (int const depth : {CV_8U, CV_16S, CV_32F, CV_64F})
        {
            cv::Mat out(2, 2, CV_16UC3);
            EXPECT_TRUE(ExtendSurface(cv::Mat(size, depth, cv::Scalar(5)), out, 10));
            EXPECT_TRUE(EqualImages(out, cv::Mat::zeros(size, depth))) << size;
        }
    }
}

TEST(ExtendSurface, OfRefusedArguments_IsFalseAndLeavesTheOutput)
{
    cv::Mat out(2, 2, CV_8UC1, cv::Scalar(9));
    Snapshot const before(out);
    EXPECT_FALSE(ExtendSurface(cv::Mat(), out, 5));
    EXPECT_FALSE(ExtendSurface(cv::Mat(0, 100, CV_32FC1), out, 5));
    EXPECT_FALSE(ExtendSurface(cv::Mat(100, 0, CV_32FC1), out, 5));
    EXPECT_FALSE(ExtendSurface(cv::Mat(100, 100, CV_32FC1, cv::Scalar(1)), out, -1));
    EXPECT_FALSE(ExtendSurface(cv::Mat(50, 50, CV_32FC1, cv::Scalar(1)), out, std::numeric_limits<int>::min()));
    EXPECT_TRUE(before.IsUntouched());
}

TEST(ExtendSurface, StopsWhenNothingChanges)
{
    cv::Mat const full(100, 100, CV_32FC1, cv::Scalar(3));
    cv::Mat out;
    EXPECT_TRUE(ExtendSurface(full, out, std::numeric_limits<int>::max()));
    EXPECT_TRUE(EqualImages(out, full));
}

TEST(ExtendSurface, IsWhatItsStepsSay)
{
    Random random(4302);
    for (int trial = 0; trial < 60; ++trial)
    {
        int const depth = tests::kMorphologyDepths[static_cast<std::size_t>(random.Below(5))];
        cv::Mat const source = tests::RandomImage(random, {100, 100}, depth, {random.Unit(), 0.05, 50});
        int const radius = random.Below(60);
        cv::Mat expected;
        ASSERT_TRUE(tests::OracleExtendSurface(source, expected, radius));
        tests::FramedImage view(source);
        cv::Mat out;
        ASSERT_TRUE(ExtendSurface(view.View(), out, radius));
        ASSERT_TRUE(EqualImages(out, expected)) << trial;
        ASSERT_TRUE(EqualImages(view.View(), source));
    }
}

} // namespace

} // namespace morvane::quasi_flat_internals
