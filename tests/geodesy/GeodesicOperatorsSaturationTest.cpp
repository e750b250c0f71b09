// GeodesicDistance where the count of steps reaches the end of its type.
#include <morvane/geodesy/GeodesicOperators.h>

#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"
#include "support/Patterns.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace morvane::geodesy
{

namespace
{

/// The distances along a path of @p length pixels from the first pixel of a row, with @p rest pixels behind it that are
/// not in the mask.
cv::Mat AlongLine(int length, int rest, int depth)
{
    cv::Mat mask(1, length + rest, depth, cv::Scalar(0));
    mask.colRange(0, length).setTo(1);
    cv::Mat marker(1, length + rest, depth, cv::Scalar(0));
    marker.colRange(0, 1).setTo(1);
    cv::Mat out;
    EXPECT_TRUE(GeodesicDistance(marker, mask, cv::MORPH_CROSS, out));
    return out;
}

/// Expects that @p ones pixels hold 1 and each of those that follow one more, up to @p last, before the rest, which
/// holds @p unreached.
void ExpectLine(cv::Mat const & line, int length, int ones, int last, int unreached)
{
    for (int x = 0; x < line.cols; ++x)
    {
        int const inside = x < ones ? 1 : x - ones + 2;
        ASSERT_EQ(tests::ElementAt(line, 0, x), x < length ? inside : unreached) << "column " << x;
    }
    EXPECT_EQ(tests::ElementAt(line, 0, length - 1), last);
}

TEST(GeodesicDistanceSaturation, InEightBits_BeginsWithTheUnreachedPixels)
{
    // A path of n pixels takes n dilations, of which the last changes nothing, and the marker counts one more.
    ExpectLine(AlongLine(253, 2, CV_8U), 253, 1, 253, 0);
    ExpectLine(AlongLine(254, 2, CV_8U), 254, 1, 254, 255);
    ExpectLine(AlongLine(255, 2, CV_8U), 255, 2, 254, 255);
    ExpectLine(AlongLine(256, 2, CV_8U), 256, 3, 254, 255);
    ExpectLine(AlongLine(300, 2, CV_8U), 300, 47, 254, 255);
    ExpectLine(AlongLine(600, 2, CV_8U), 600, 347, 254, 255);
}

TEST(GeodesicDistanceSaturation, InEightBits_PathOverAllPixelsTakesOneDilationLess)
{
    ExpectLine(AlongLine(254, 0, CV_8U), 254, 1, 254, 0);
    ExpectLine(AlongLine(255, 0, CV_8U), 255, 1, 255, 0);
    ExpectLine(AlongLine(256, 0, CV_8U), 256, 2, 255, 0);
    ExpectLine(AlongLine(300, 0, CV_8U), 300, 46, 255, 0);
}

TEST(GeodesicDistanceSaturation, In16BitsWithSign)
{
    ExpectLine(AlongLine(32765, 1, CV_16S), 32765, 1, 32765, 0);
    ExpectLine(AlongLine(32766, 1, CV_16S), 32766, 1, 32766, 32767);
    ExpectLine(AlongLine(32767, 1, CV_16S), 32767, 2, 32766, 32767);
    ExpectLine(AlongLine(33000, 1, CV_16S), 33000, 235, 32766, 32767);
    ExpectLine(AlongLine(32767, 0, CV_16S), 32767, 1, 32767, 0);
    ExpectLine(AlongLine(32768, 0, CV_16S), 32768, 2, 32767, 0);
}

TEST(GeodesicDistanceSaturation, In16BitsWithoutSign)
{
    ExpectLine(AlongLine(65533, 1, CV_16U), 65533, 1, 65533, 0);
    ExpectLine(AlongLine(65534, 1, CV_16U), 65534, 1, 65534, 65535);
    ExpectLine(AlongLine(65535, 1, CV_16U), 65535, 2, 65534, 65535);
    ExpectLine(AlongLine(70000, 1, CV_16U), 70000, 4467, 65534, 65535);
    ExpectLine(AlongLine(65535, 0, CV_16U), 65535, 1, 65535, 0);
    ExpectLine(AlongLine(65536, 0, CV_16U), 65536, 2, 65535, 0);
}

TEST(GeodesicDistanceSaturation, WiderTypesGoOn)
{
    for (int const depth : {CV_32F, CV_64F})
    {
        ExpectLine(AlongLine(70000, 2, depth), 70000, 1, 70000, 0);
    }
}

TEST(GeodesicDistanceSaturation, MarkerOutsideTheMaskHoldsTheLargestNumber)
{
    cv::Mat mask(1, 300, CV_8U, cv::Scalar(1));
    mask.at<uchar>(0, 298) = 0;
    mask.at<uchar>(0, 299) = 0;
    cv::Mat marker(1, 300, CV_8U, cv::Scalar(0));
    marker.at<uchar>(0, 0) = 1;
    marker.at<uchar>(0, 299) = 1;
    cv::Mat out;
    ASSERT_TRUE(GeodesicDistance(marker, mask, cv::MORPH_RECT, out));
    EXPECT_EQ(out.at<uchar>(0, 299), 255);
    EXPECT_EQ(out.at<uchar>(0, 298), 255);
    EXPECT_EQ(out.at<uchar>(0, 297), 254);
    EXPECT_EQ(out.at<uchar>(0, 0), 1);
}

TEST(GeodesicDistanceSaturation, OnSpirals)
{
    struct Winding
    {
        int depth;
        int side;
        int end; ///< where the count ends
    };
    for (Winding const winding : {Winding{CV_8U, 30, 255}, {CV_16S, 264, 32767}, {CV_16U, 368, 65535}})
    {
        SCOPED_TRACE(cv::depthToString(winding.depth));
        cv::Mat mask;
        tests::Spiral({winding.side, winding.side}).convertTo(mask, winding.depth);
        cv::Mat marker(mask.size(), mask.type(), cv::Scalar(0));
        marker(cv::Rect(0, 0, 1, 1)).setTo(1);
        // Beside the marker, but not in the mask: as it is not in the first dilation.
        for (bool const startsOutside : {false, true})
        {
            if (startsOutside) marker(cv::Rect(0, 1, 1, 1)).setTo(1);
            for (int const shape : tests::kElementShapes)
            {
                ASSERT_GT(tests::OracleCountedDilations(marker, mask, shape), winding.end);
                cv::Mat out;
                ASSERT_TRUE(GeodesicDistance(marker, mask, shape, out));
                EXPECT_TRUE(tests::EqualImages(out, tests::OracleDistanceByQueue(marker, mask, shape)));
            }
        }
    }
}

} // namespace

} // namespace morvane::geodesy
