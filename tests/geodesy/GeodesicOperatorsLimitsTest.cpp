// GeodesicDistance on images beyond two gigabytes, and on the longest paths.
#include <morvane/geodesy/GeodesicOperators.h>

#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cstddef>
#include <cstdint>

namespace morvane::geodesy
{

namespace
{

TEST(SlowGeodesicDistanceLimits, MorePixelsThan31BitsCount_AreMeasuredToTheLastOne)
{
    int const side = 46400;
    int const last = side - 1;
    cv::Mat mask(side, side, CV_8UC1);
    ASSERT_GT(mask.total() * mask.elemSize(), std::size_t{1} << 31U);
    mask.setTo(0);
    // A path down the last column and back along the last row, and one that nothing reaches.
    mask.col(last).rowRange(last - 50, side).setTo(1);
    mask.row(last).colRange(last - 100, side).setTo(1);
    mask.row(0).setTo(1);
    cv::Mat out(side, side, CV_8UC1);
    out.setTo(0);
    out.at<uchar>(last - 50, last) = 1;
    // The marker is the output, as three such images would be large.
    ASSERT_TRUE(GeodesicDistance(out, mask, cv::MORPH_CROSS, out));
    for (int step = 0; step <= 50; ++step)
    {
        ASSERT_EQ(out.at<uchar>(last - 50 + step, last), 1 + step);
    }
    for (int step = 0; step <= 100; ++step)
    {
        ASSERT_EQ(out.at<uchar>(last, last - step), 51 + step);
    }
    std::int64_t count = 0;
    for (int y = 0; y < side; ++y)
    {
        count += cv::countNonZero(out.row(y));
    }
    EXPECT_EQ(count, 51 + 100);
}

TEST(SlowGeodesicDistanceLimits, PathLongerThanAFloatCounts_EndsAsTheSumsOfTheTypeDo)
{
    int const length = (1 << 24) + 10;
    cv::Mat mask(1, length + 2, CV_32FC1, cv::Scalar(1));
    mask.at<float>(0, length) = 0;
    cv::Mat marker(mask.size(), mask.type(), cv::Scalar(0));
    marker.at<float>(0, 0) = 1;
    cv::Mat out;
    ASSERT_TRUE(GeodesicDistance(marker, mask, cv::MORPH_CROSS, out));
    EXPECT_TRUE(tests::EqualImages(out, tests::OracleDistanceByQueue(marker, mask, cv::MORPH_CROSS)));
}

} // namespace

} // namespace morvane::geodesy
