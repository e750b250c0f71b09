// AttributeOpening on an image beyond two gigabytes.
#include <morvane/connexity/AttributeOpening.h>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstddef>

namespace morvane::connexity
{

namespace
{

TEST(SlowAttributeOpening, ImageBeyondTwoGigabytes_IsFilteredToItsLastPixel)
{
    int const side = 23200;
    cv::Mat image(side, side, CV_32SC1, cv::Scalar(1000000));
    ASSERT_GT(image.total() * image.elemSize(), std::size_t{1} << 31U);
    // A row of peaks of two pixels, a plateau along the last rows, and a peak on it in the last corner.
    for (int x = 0; x + 1 < side; x += 4)
    {
        image.row(side / 2).colRange(x, x + 2).setTo(2000000);
    }
    image.rowRange(side - 3, side).setTo(1500000);
    image.at<int>(side - 1, side - 1) = 1600000;
    ASSERT_TRUE(AttributeOpening(image, common::eAttributeArea, eConnexity8, 3, image));
    EXPECT_EQ(cv::countNonZero(image.rowRange(0, side - 3) != 1000000), 0);
    EXPECT_EQ(cv::countNonZero(image.rowRange(side - 3, side) != 1500000), 0);
}

} // namespace

} // namespace morvane::connexity
