// Gaps between zones: their edge cases, drawn.
#include <morvane/algorithm/WatershedSegmentation.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <limits>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::EqualImages;
using tests::ExpectDrawn;

/// Parts the zones of a drawing in all depths.
void ExpectEroded(Drawing const & drawn, Drawing const & expected)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat labels = Draw(drawn, depth);
        uchar const * const place = labels.data;
        EXPECT_TRUE(Erode3x3Segmentation(labels));
        EXPECT_EQ(labels.data, place);
        ExpectDrawn(labels, expected);
    }
}

TEST(Erode3x3Segmentation, PartsZonesThatTouch)
{
    ExpectEroded(
        {"11112222", //
         "11112222", //
         "11112222", //
         "11112222", //
         "33332222", //
         "33333333", //
         "33333333"},
        {"11112222", //
         "111..222", //
         "111..222", //
         "1....222", //
         "3......2", //
         "3333...3", //
         "33333333"});
}

TEST(Erode3x3Segmentation, LetsThinZonesDisappear)
{
    ExpectEroded(
        {"111511", //
         "111511", //
         "111511", //
         "111111", //
         "171111", //
         "111111"},
        {"111511", //
         "11...1", //
         "11...1", //
         "1.1.11", //
         "1..111", //
         "111111"});
}

TEST(Erode3x3Segmentation, DoesNotLookAtDiagonals)
{
    ExpectEroded(
        {"21113", //
         "11111", //
         "11111", //
         "11111", //
         "41115"},
        {"21113", //
         "11111", //
         "11111", //
         "11111", //
         "41115"});
}

TEST(Erode3x3Segmentation, KeepsTheFrame)
{
    ExpectEroded({"1234", "5678", "9abc", "defg"}, {"1234", "5..8", "9..c", "defg"});
}

TEST(Erode3x3Segmentation, ComparesWithNeighboursAsTheyWere)
{
    // An erosion that saw its own zeros would go on to the right and down.
    ExpectEroded(
        {"1111111", //
         "2111111", //
         "1111111", //
         "1111111"},
        {"1111111", //
         "2.11111", //
         "1111111", //
         "1111111"});
}

TEST(Erode3x3Segmentation, OfFewerThan3RowsOrColumns_ChangesNothing)
{
    ExpectEroded({"12", "34"}, {"12", "34"});
    ExpectEroded({"12345", "67891"}, {"12345", "67891"});
    ExpectEroded({"12", "34", "56", "78"}, {"12", "34", "56", "78"});
    ExpectEroded({"1234567"}, {"1234567"});
    ExpectEroded({"1", "2", "3"}, {"1", "2", "3"});
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(5, 0), cv::Size(0, 5)})
    {
        cv::Mat labels(size, CV_32SC1);
        EXPECT_TRUE(Erode3x3Segmentation(labels));
        EXPECT_EQ(labels.size(), size);
    }
    ExpectEroded({"123", "456", "789"}, {"123", "4.6", "789"});
}

TEST(Erode3x3Segmentation, EmptiesNaNAndItsNeighbours)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    for (int const depth : {CV_32F, CV_64F})
    {
        cv::Mat labels(5, 5, depth, cv::Scalar(7));
        tests::SetElement(labels, 2, 2, 0, nan);
        EXPECT_TRUE(Erode3x3Segmentation(labels));
        ExpectDrawn(
            labels,
            {"77777", //
             "77.77", //
             "7...7", //
             "77.77", //
             "77777"});
        labels.setTo(nan);
        EXPECT_TRUE(Erode3x3Segmentation(labels));
        cv::Mat expected(5, 5, depth, cv::Scalar(nan));
        expected(cv::Rect(1, 1, 3, 3)).setTo(0);
        EXPECT_TRUE(EqualImages(labels, expected));
    }
}

TEST(Erode3x3Segmentation, ComparesFloatsExactly)
{
    cv::Mat labels(3, 3, CV_32FC1, cv::Scalar(1));
    labels.at<float>(1, 2) = std::nextafter(1.0F, 2.0F);
    EXPECT_TRUE(Erode3x3Segmentation(labels));
    EXPECT_EQ(labels.at<float>(1, 1), 0.0F);
    // A negative zero equals a zero: the pixel stays, with its sign.
    labels = cv::Mat::zeros(3, 3, CV_32FC1);
    labels.at<float>(1, 1) = -0.0F;
    cv::Mat const before = labels.clone();
    EXPECT_TRUE(Erode3x3Segmentation(labels));
    EXPECT_TRUE(EqualImages(labels, before));
}

} // namespace

} // namespace morvane::algorithm
