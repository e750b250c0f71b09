// The geodesic measures of more zones, and longer ones, than 16 bits count.
#include <morvane/connexity/GeodesicMeasures.h>

#include "support/ImageLiterals.h"
#include "support/Patterns.h"
#include "support/ShapeOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>

namespace morvane::connexity
{

namespace
{

/// Pixels apart from each other, in every other column and row.
struct Grid
{
    int columns;
    int rows;

    [[nodiscard]] cv::Mat1b Draw() const
    {
        cv::Mat1b image(2 * rows, 2 * columns, uchar{0});
        for (int y = 0; y < image.rows; y += 2)
        {
            for (int x = 0; x < image.cols; x += 2)
            {
                image(y, x) = 1;
            }
        }
        return image;
    }

    /// Where the zone that is met after so many others lies.
    [[nodiscard]] cv::Point Place(int before) const { return {2 * (before % columns), 2 * (before / columns)}; }
};

constexpr Grid kGrid{257, 258};
static_assert(kGrid.columns * kGrid.rows > 65536 + 2);

TEST(GeodesicMeasureLimits, ZonesOfMoreThan15Bits_AreLeftOut)
{
    cv::Mat const image = kGrid.Draw();
    cv::Mat out;
    ASSERT_TRUE(LabelFlatZonesNoZeroWithGeodesicDiameter(image, out));
    cv::Mat1d const diameters = out;
    EXPECT_EQ(diameters(kGrid.Place(0)), 1.0);
    EXPECT_EQ(diameters(kGrid.Place(32766)), 1.0);
    // From 32768 on, numbers are negative, up to 65536, which is 0.
    EXPECT_EQ(diameters(kGrid.Place(32767)), 0.0);
    EXPECT_EQ(diameters(kGrid.Place(65534)), 0.0);
    EXPECT_EQ(diameters(kGrid.Place(65535)), 0.0);
    // The numbers begin again, and the zones of one number are measured together: the path ends in one of them.
    EXPECT_EQ(diameters(kGrid.Place(65536)), 1.0);
    ASSERT_TRUE(LabelFlatZonesNoZeroWithGeodesicElongation(image, out));
    cv::Mat1d const elongations = out;
    EXPECT_EQ(elongations(kGrid.Place(0)), 1.0 * 3.141598 * 1.0 / (2.0 * 4.0));
    EXPECT_EQ(elongations(kGrid.Place(65536)), 1.0 * 3.141598 * 1.0 / (2.0 * 4.0));
    EXPECT_EQ(elongations(kGrid.Place(32766)), 1.0 * 3.141598 * 1.0 / (1.0 * 4.0));
    EXPECT_EQ(elongations(kGrid.Place(65535)), 0.0);
}

TEST(GeodesicMeasureLimits, ZonesWhoseNumbersRepeat_MatchTheSteps)
{
    cv::Mat const image = kGrid.Draw();
    cv::Mat out;
    ASSERT_TRUE(GeodesicExtremitiesOnFlatZonesNoZero(image, out));
    // Of two zones of one number, which is as near to the middle decides.
    ASSERT_TRUE(tests::EqualImages(out, tests::OracleExtremities(image, true)));
    ASSERT_TRUE(GeodesicExtremityOnFlatZonesNoZero(image, out));
    ASSERT_TRUE(tests::EqualImages(out, tests::OracleExtremities(image, false)));
    ASSERT_TRUE(LabelFlatZonesNoZeroWithGeodesicElongation(image, out));
    ASSERT_TRUE(tests::EqualImages(out, tests::OraclePathMeasure(image, tests::PathMeasure::Elongation)));
    ASSERT_TRUE(LabelFlatZonesNoZeroWithStandardElongation(image, out));
    ASSERT_TRUE(tests::EqualImages(out, tests::OracleStandardElongation(image)));
}

TEST(GeodesicMeasureLimits, NegativeNumbersErodeTheStandardElongationAway)
{
    // The first row is a zone for each pixel; the corner touches the zone after them.
    for (int const before : {32766, 32767, 32768, 40000, 65534, 65535, 65536})
    {
        SCOPED_TRACE(before);
        cv::Mat1b image(2, before, uchar{3});
        for (int x = 0; x < before; ++x)
        {
            image(0, x) = static_cast<uchar>(1 + x % 2);
        }
        cv::Mat out;
        ASSERT_TRUE(LabelFlatZonesNoZeroWithStandardElongation(image, out));
        EXPECT_TRUE(tests::EqualImages(out, tests::OracleStandardElongation(image)));
        // Up to 32767 it is greater than 1, and the same from 65537 on, where numbers begin again.
        EXPECT_EQ(out.at<double>(0, 0) > 0.0, before < 32767 || before > 65535);
        // The contour is that of both rows.
        EXPECT_EQ(out.at<double>(1, 0) > 0.0, before > 65535);
    }
}

TEST(GeodesicMeasureLimits, ZoneLongerThan16BitsCount_EndsOutside)
{
    cv::Mat1b const spiral = tests::Spiral({368, 368});
    cv::Mat out;
    ASSERT_TRUE(GeodesicExtremitiesOnFlatZonesNoZero(spiral, out));
    // The first pixel that is not on the spiral seems to be farther than all that are.
    cv::Mat1b expected(spiral.size(), uchar{0});
    ASSERT_EQ(spiral(1, 0), 0);
    expected(1, 0) = 255;
    EXPECT_TRUE(tests::EqualImages(out, expected));
    EXPECT_TRUE(tests::EqualImages(out, tests::OracleExtremities(spiral, true)));
    ASSERT_TRUE(LabelFlatZonesNoZeroWithGeodesicDiameter(spiral, out));
    EXPECT_TRUE(tests::EqualImages(out, tests::OraclePathMeasure(spiral, tests::PathMeasure::Diameter)));
    EXPECT_EQ(out.at<double>(0, 0), 1.0);
    ASSERT_TRUE(LabelFlatZonesNoZeroWithGeodesicTortuosity(spiral, out));
    EXPECT_EQ(out.at<double>(0, 0), 1.0);
}

TEST(GeodesicMeasureLimits, LineLongerThan16BitsCount_EndsAtTheirLimit)
{
    cv::Mat const line(1, 70000, CV_8UC1, cv::Scalar(4));
    cv::Mat out;
    ASSERT_TRUE(LabelFlatZonesNoZeroWithGeodesicDiameter(line, out));
    EXPECT_TRUE(tests::EqualImages(out, cv::Mat(1, 70000, CV_64FC1, cv::Scalar(65535))));
    ASSERT_TRUE(LabelFlatZonesNoZeroWithGeodesicTortuosity(line, out));
    EXPECT_TRUE(tests::EqualImages(out, cv::Mat(1, 70000, CV_64FC1, cv::Scalar(65535.0 / 69999.0))));
    ASSERT_TRUE(GeodesicExtremitiesOnFlatZonesNoZero(line, out));
    EXPECT_EQ(cv::countNonZero(out), 2);
    EXPECT_EQ(out.at<uchar>(0, 0), 255);
    EXPECT_EQ(out.at<uchar>(0, 69999), 255);
}

TEST(GeodesicMeasureLimits, BarLongerThan16BitsCount_EndsOneBeforeTheirLimit)
{
    // A line ends with its last pixel, before the counting has seen that nothing more is reached.
    for (int const length : {65533, 65534, 65535, 65536, 70000})
    {
        cv::Mat const bar(2, length, CV_8UC1, cv::Scalar(4));
        cv::Mat out;
        ASSERT_TRUE(LabelFlatZonesNoZeroWithGeodesicDiameter(bar, out));
        EXPECT_TRUE(tests::EqualImages(out, cv::Mat(2, length, CV_64FC1, cv::Scalar(std::min(length, 65534)))));
    }
}

} // namespace

} // namespace morvane::connexity
