// GeodesicDistance on images beyond two gigabytes.
#include <morvane/geodesy/GeodesicOperators.h>

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

} // namespace

} // namespace morvane::geodesy
