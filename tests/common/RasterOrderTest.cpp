// Images of different shapes meet pixel by pixel in raster order: the comparison that is never true copies them.
#include <morvane/common/ImageCompare.h>

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

namespace morvane::tests
{

namespace
{

constexpr int kNeverTrue = 6;

/// Every pixel differs from every other.
cv::Mat NumberedPixels(cv::Size size, int type)
{
    cv::Mat image(size, type);
    auto const elements = static_cast<int>(image.elemSize());
    for (int number = 0; number < size.width * size.height; ++number)
    {
        uchar * const pixel =
            image.ptr(number / size.width) + static_cast<std::ptrdiff_t>(number % size.width) * elements;
        std::memset(pixel, 1 + number, image.elemSize());
    }
    return image;
}

void ExpectSamePixels(cv::Mat const & actual, cv::Mat const & expected)
{
    int const pixels = expected.rows * expected.cols;
    ASSERT_EQ(actual.rows * actual.cols, pixels);
    for (int number = 0; number < pixels; ++number)
    {
        ASSERT_EQ(std::memcmp(PixelNumber(actual, number), PixelNumber(expected, number), expected.elemSize()), 0)
            << "pixel " << number << " of " << actual.size() << " from " << expected.size();
    }
}

/// Copies pixels through an image of the shape of @p left, from and to views with gaps between their rows.
void CheckCopy(cv::Mat const & left, cv::Mat const & from, cv::Size to)
{
    SCOPED_TRACE(testing::Message() << cv::typeToString(from.type()) << ' ' << from.size() << " to " << to);
    FramedImage framedFrom(from);
    FramedImage framedTo(cv::Mat(to, from.type(), cv::Scalar::all(0)));
    ASSERT_TRUE(common::ImageCompare(left, kNeverTrue, 0.0, cv::Scalar(0), framedFrom.View(), framedTo.View()));
    ExpectSamePixels(framedTo.View(), from);
    EXPECT_TRUE(framedTo.IsFrameUntouched());
    EXPECT_TRUE(framedFrom.IsFrameUntouched());
}

/// All shapes of so many pixels.
std::vector<cv::Size> ShapesOf(int pixels)
{
    std::vector<cv::Size> shapes;
    for (int width = 1; width <= pixels; ++width)
    {
        if (pixels % width == 0) shapes.emplace_back(width, pixels / width);
    }
    return shapes;
}

TEST(RasterOrder, IsKeptFromEachShapeToEachOther)
{
    for (int const pixels : {1, 7, 35, 24, 60})
    {
        for (cv::Size const left : ShapesOf(pixels))
        {
            for (cv::Size const from : ShapesOf(pixels))
            {
                for (cv::Size const to : ShapesOf(pixels))
                {
                    CheckCopy(cv::Mat::zeros(left, CV_8UC1), NumberedPixels(from, CV_16UC3), to);
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST(RasterOrder, IsKeptForPixelsOfAllSizes)
{
    for (int const type : {CV_8UC1, CV_8UC2, CV_8UC3, CV_16SC1, CV_32FC1, CV_32SC3, CV_64FC1, CV_64FC3, CV_64FC4})
    {
        for (cv::Size const to : {cv::Size(5, 7), cv::Size(7, 5), cv::Size(35, 1), cv::Size(1, 35)})
        {
            CheckCopy(cv::Mat::zeros(5, 7, CV_32FC1), NumberedPixels({5, 7}, type), to);
            CheckCopy(cv::Mat::zeros(7, 5, CV_32FC1), NumberedPixels({35, 1}, type), to);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(RasterOrder, ReadsBothSidesOfAComparisonByNumber)
{
    for (cv::Size const left : ShapesOf(60))
    {
        for (cv::Size const right : ShapesOf(60))
        {
            cv::Mat const numbers = NumberedPixels(left, CV_8UC1);
            cv::Mat others = NumberedPixels(right, CV_8UC1);
            others.ptr(58 / right.width)[58 % right.width] = 0;
            cv::Mat equal(right, CV_8UC1, cv::Scalar(7));
            ASSERT_TRUE(common::ImageCompare(numbers, 0, others, cv::Scalar(1), cv::Scalar(0), equal));
            EXPECT_EQ(cv::countNonZero(equal), 59);
            EXPECT_EQ(*PixelNumber(equal, 58), 0) << left << " and " << right;
        }
    }
}

} // namespace

} // namespace morvane::tests
