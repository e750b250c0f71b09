// LabelMaxima and LabelMinima at the limits of the label types, and on images beyond two gigabytes.
#include <morvane/connexity/RegionalExtrema.h>

#include "support/AllTypes.h"
#include "support/ExtremaOracle.h"
#include "support/ImageLiterals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Maxima;
using tests::Minima;

/// Peaks of 9 so far apart that each is a maximum with any shape, @p perRow in each of @p rows rows of them.
cv::Mat Peaks(int rows, int perRow)
{
    cv::Mat image(3 * rows, 3 * perRow, CV_8UC1, cv::Scalar(4));
    for (int y = 0; y < rows; ++y)
    {
        for (int x = 0; x < perRow; ++x)
        {
            image.at<uchar>(3 * y, 3 * x) = 9;
        }
    }
    return image;
}

/// The label of the peak @p number, from 1.
double LabelOf(cv::Mat const & labels, int number, int perRow)
{
    int const index = number - 1;
    return tests::ElementAt(labels, 3 * (index / perRow), 3 * (index % perRow));
}

TEST(LabelExtremaLimits, ThreeHundredExtremaInEightBits_WrapThroughZero)
{
    cv::Mat const image = Peaks(10, 30);
    cv::Mat const pits = tests::UpsideDown(image);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        cv::Mat const labels = Maxima(image, number, CV_8UC1);
        for (int extremum = 1; extremum <= 300; ++extremum)
        {
            int const expected = extremum <= 255 ? extremum : extremum - 256;
            ASSERT_EQ(LabelOf(labels, extremum, 30), expected) << extremum << ", connexity " << number;
        }
        // Number 256 is 0, and gone.
        EXPECT_EQ(cv::countNonZero(labels), 299) << number;
        EXPECT_TRUE(tests::EqualImages(Minima(pits, number, CV_8UC1), labels)) << number;
    }
}

TEST(LabelExtremaLimits, MoreThan65536ExtremaIn16Bits_WrapThroughZeroAndIn32BitsDoNot)
{
    cv::Mat const image = Peaks(257, 257);
    for (int const number : {eConnexity4Wrapped, eConnexity8, eConnexity20})
    {
        cv::Mat const narrow = Maxima(image, number, CV_16UC1);
        cv::Mat const wide = Maxima(image, number, CV_32SC1);
        for (int const extremum : {1, 255, 256, 32768, 65535, 65536, 65537, 66049})
        {
            EXPECT_EQ(LabelOf(wide, extremum, 257), extremum) << number;
            EXPECT_EQ(LabelOf(narrow, extremum, 257), extremum <= 65535 ? extremum : extremum - 65536) << number;
        }
        EXPECT_EQ(cv::countNonZero(wide), 66049) << number;
        EXPECT_EQ(cv::countNonZero(narrow), 66048) << number;
        cv::Mat asSigned = Maxima(image, number, CV_16SC1);
        EXPECT_EQ(LabelOf(asSigned, 40000, 257), -25536) << number;
        cv::Mat const sameBits(asSigned.size(), CV_16UC1, asSigned.data, asSigned.step);
        EXPECT_TRUE(tests::EqualImages(sameBits, narrow)) << number;
    }
}

TEST(LabelExtremaLimits, ListCountsOnBeyond65536)
{
    tests::PointsOfExtrema points;
    ASSERT_TRUE(LabelMaxima(Peaks(257, 257), eConnexity8, points));
    ASSERT_EQ(points.size(), 66049U);
    EXPECT_EQ(points.begin()->first, 1);
    EXPECT_EQ(points.rbegin()->first, 66049);
    EXPECT_EQ(points[65537], (std::vector<cv::Point>{{3 * (65536 % 257), 3 * (65536 / 257)}}));
}

/// The number of pixels that are not 0, row by row, as the count of the whole overflows an int.
std::int64_t CountNonZero(cv::Mat const & image)
{
    std::int64_t count = 0;
    for (int y = 0; y < image.rows; ++y)
    {
        count += cv::countNonZero(image.row(y));
    }
    return count;
}

TEST(SlowLabelExtremaLimits, MorePixelsThan32BitsCount_AreLabelledToTheLastOne)
{
    int const side = 66000;
    int const last = side - 1;
    cv::Mat image(side, side, CV_8UC1);
    ASSERT_GT(image.total(), std::size_t{1} << 32U);
    image.setTo(1);
    image.at<uchar>(0, 0) = 3;
    image.at<uchar>(side / 2, side / 2) = 2;
    // A ridge along the bottom that the last pixel of the image spoils, and its twin that nothing does.
    image.row(last).setTo(2);
    image.at<uchar>(last, last) = 9;
    image.row(last - 2).setTo(2);
    // In place, as two such images would be large.
    ASSERT_TRUE(LabelMaxima(image, eConnexity4, image));
    EXPECT_EQ(CountNonZero(image), 1 + 1 + side + 1);
    EXPECT_EQ(image.at<uchar>(0, 0), 1);
    EXPECT_EQ(image.at<uchar>(side / 2, side / 2), 2);
    EXPECT_EQ(cv::countNonZero(image.row(last - 2) != 3), 0);
    EXPECT_EQ(image.at<uchar>(last, last), 4);
}

TEST(SlowLabelExtremaLimits, ImageBeyondTwoGigabytes_IsLabelledToItsLastPixel)
{
    cv::Mat image(16500, 16500, CV_64FC1);
    ASSERT_GT(image.total() * image.elemSize(), std::size_t{1} << 31U);
    int const last = image.rows - 1;
    image.setTo(1);
    image.at<double>(0, 0) = -2;
    image.at<double>(last, 0) = 0;
    image.at<double>(last, last) = -1;
    cv::Mat const minima = Minima(image, eConnexity8Wrapped, CV_8UC1);
    EXPECT_EQ(CountNonZero(minima), 2);
    EXPECT_EQ(minima.at<uchar>(0, 0), 1);
    EXPECT_EQ(minima.at<uchar>(last, last), 2) << "across the seam, the lower of the two";
}

TEST(SlowLabelExtremaLimits, WidestRow_IsJudgedFromItsFirstPixelToItsLast)
{
    int const last = std::numeric_limits<int>::max() - 1;
    cv::Mat image(1, std::numeric_limits<int>::max(), CV_8UC1);
    // OpenCV's own loops do not bear such a row.
    tests::FillBytes(image, 0);
    image.at<uchar>(0, 0) = 5;
    image.at<uchar>(0, 1) = 3;
    image.at<uchar>(0, 2) = 3;
    image.at<uchar>(0, last - 1) = 2;
    image.at<uchar>(0, last) = 3;
    ASSERT_TRUE(LabelMaxima(image, eConnexity4, image));
    EXPECT_EQ(std::count(image.datastart, image.dataend, uchar{0}), image.cols - 2);
    EXPECT_EQ(image.at<uchar>(0, 0), 1);
    EXPECT_EQ(image.at<uchar>(0, last), 2);
}

} // namespace

} // namespace morvane::connexity
