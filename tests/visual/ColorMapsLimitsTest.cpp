// Maps and tables on images beyond two gigabytes.
#include <morvane/visual/ColorMaps.h>

#include "support/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace morvane::tests
{

namespace
{

/// An image of 1 with 0 at its first pixel, 2 in the middle and 3 at its last.
template <class T>
cv::Mat Marked(int side)
{
    cv::Mat image(side, side, cv::DataType<T>::depth, cv::Scalar(1));
    image.at<T>(0, 0) = T(0);
    image.at<T>(side / 2, side / 2) = T(2);
    image.at<T>(side - 1, side - 1) = T(3);
    return image;
}

/// Expects these pixels at the marks and @p other everywhere else.
template <class Pixel>
void ExpectMapped(
    cv::Mat const & image, Pixel const & first, Pixel const & middle, Pixel const & last, Pixel const & other)
{
    int const side = image.rows;
    EXPECT_EQ(image.at<Pixel>(0, 0), first);
    EXPECT_EQ(image.at<Pixel>(side / 2, side / 2), middle);
    EXPECT_EQ(image.at<Pixel>(side - 1, side - 1), last);
    std::int64_t others = 0;
    for (int y = 0; y < side; ++y)
    {
        auto const * const row = image.ptr<Pixel>(y);
        others += std::count(row, row + side, other);
    }
    EXPECT_EQ(others, std::int64_t{side} * side - 3);
}

TEST(SlowColorMapLimits, ImageBeyondTwoGigabytes_IsMappedToItsLastPixel)
{
    cv::Mat const image = Marked<float>(23200);
    ASSERT_GT(image.total() * image.elemSize(), std::size_t{1} << 31U);
    cv::Mat output(image.size(), CV_8UC1);
    ASSERT_TRUE(visual::GrayMap(image, output));
    ExpectMapped<uchar>(output, 0, 170, 255, 85);
}

TEST(SlowColorMapLimits, ColoursBeyondTwoGigabytes_AreWrittenToTheLastPixel)
{
    cv::Mat const image = Marked<uchar>(26800);
    cv::Mat output(image.size(), CV_8UC3);
    ASSERT_GT(output.total() * output.elemSize(), std::size_t{1} << 31U);
    ASSERT_TRUE(visual::ColorMap(image, output));
    // A third of 511 is 170.3, two thirds are 340.7.
    ExpectMapped<cv::Vec3b>(output, {0, 255, 0}, {0, 254 + 256 - 340, 255}, {255, 255, 255}, {0, 255, 170});
}

TEST(SlowApplyLutLimits, LabelsBeyondTwoGigabytes_AreReplacedToTheLastPixel)
{
    cv::Mat image = Marked<int>(23200);
    ASSERT_GT(image.total() * image.elemSize(), std::size_t{1} << 31U);
    ASSERT_TRUE(visual::ApplyLut(image, Row<int>({9, 80, 70, 60}).t(), image));
    ExpectMapped<int>(image, 0, 70, 60, 80);
}

} // namespace

} // namespace morvane::tests
