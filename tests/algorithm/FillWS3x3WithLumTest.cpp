// Labels for the lines of a watershed: their edge cases, drawn.
#include <morvane/algorithm/WatershedSegmentation.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <limits>
#include <string>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::EqualImages;
using tests::ExpectDrawn;

/// Fills the lines of a drawing, in all depths of both images.
void ExpectFilled(Drawing const & luminance, Drawing const & labels, Drawing const & expected)
{
    for (int const depth : tests::kDepths)
    {
        for (int const labelDepth : tests::kLabelDepths)
        {
            SCOPED_TRACE(std::string(cv::depthToString(depth)) + " " + cv::depthToString(labelDepth));
            cv::Mat filled = Draw(labels, labelDepth);
            uchar const * const place = filled.data;
            EXPECT_TRUE(FillWS3x3WithLum(Draw(luminance, depth), filled));
            EXPECT_EQ(filled.data, place);
            ExpectDrawn(filled, expected);
        }
    }
}

TEST(FillWS3x3WithLum, GivesALineTheLabelOfTheNeighbourThatIsMostLikeIt)
{
    ExpectFilled(
        {"99999", //
         "22599", //
         "22899", //
         "22299"},
        {"11.22", //
         "11.22", //
         "11.22", //
         "11.22"},
        {"11122", //
         "11122", //
         "11222", //
         "11222"});
}

TEST(FillWS3x3WithLum, AtEqualDifferences_TakesTheFirstNeighbour)
{
    // Upper left, lower left, left, above, below, upper right, lower right, right.
    ExpectFilled({"555", "555", "555"}, {"146", "3.8", "257"}, {"111", "111", "111"});
    ExpectFilled({"555", "555", "555"}, {".46", "3.8", "257"}, {"222", "222", "222"});
    ExpectFilled({"555", "555", "555"}, {".46", "3.8", ".57"}, {"333", "333", "333"});
    ExpectFilled({"555", "555", "555"}, {".46", "..8", ".57"}, {"444", "444", "444"});
    ExpectFilled({"555", "555", "555"}, {"..6", "..8", ".57"}, {"555", "555", "555"});
    ExpectFilled({"555", "555", "555"}, {"..6", "..8", "..7"}, {"666", "666", "666"});
    ExpectFilled({"555", "555", "555"}, {"...", "..8", "..7"}, {"777", "777", "777"});
    ExpectFilled({"555", "555", "555"}, {"...", "..8", "..."}, {"888", "888", "888"});
    ExpectFilled({"555", "555", "555"}, {"...", "...", "..."}, {"...", "...", "..."});
    // Above and below differ by as much.
    ExpectFilled({"919", "959", "999"}, {".1.", "...", ".2."}, {"111", "111", "111"});
    ExpectFilled({"919", "959", "989"}, {".1.", "...", ".2."}, {"222", "222", "222"});
}

TEST(FillWS3x3WithLum, SeesTheLabelsThatItGaveBefore)
{
    // Raster order: a label goes far to the right and down, but one step to the left or up.
    ExpectFilled(
        {"555555", //
         "555555", //
         "555555", //
         "555555", //
         "555555"},
        {"......", //
         ".1....", //
         "......", //
         "......", //
         "......"},
        {"111111", //
         "111111", //
         "111111", //
         "111111", //
         "111111"});
    ExpectFilled(
        {"5555555", //
         "5555555", //
         "5555555", //
         "5555555", //
         "5555555", //
         "5555555"},
        {".......", //
         ".......", //
         ".......", //
         ".......", //
         "....1..", //
         "......."},
        {".......", //
         ".......", //
         ".......", //
         "...1111", //
         "..11111", //
         "..11111"});
}

TEST(FillWS3x3WithLum, CopiesTheInnerRowsAndColumnsToTheFrame)
{
    ExpectFilled(
        {"555555", "555555", "555555", "555555"}, {"abcdef", "g1234h", "i5678j", "klmnop"},
        {"112344", "112344", "556788", "556788"});
    ExpectFilled({"555", "555", "555"}, {"abc", "d9f", "ghi"}, {"999", "999", "999"});
}

TEST(FillWS3x3WithLum, SeesTheFrameAsItWas)
{
    ExpectFilled({"5555", "5555", "5555"}, {"3..4", "....", "...."}, {"3333", "3333", "3333"});
    ExpectFilled({"9555", "9599", "5558"}, {"3..4", "....", "...6"}, {"3366", "3366", "3366"});
}

TEST(FillWS3x3WithLum, OfFewerThan3RowsOrColumns_ChangesNothing)
{
    ExpectFilled({"55", "55"}, {"1.", ".2"}, {"1.", ".2"});
    ExpectFilled({"5555", "5555"}, {"1..3", ".2.."}, {"1..3", ".2.."});
    ExpectFilled({"55", "55", "55", "55"}, {"1.", ".2", "3.", "4."}, {"1.", ".2", "3.", "4."});
    ExpectFilled({"5555"}, {"1..3"}, {"1..3"});
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(5, 0), cv::Size(0, 5)})
    {
        cv::Mat labels(size, CV_32SC1);
        EXPECT_TRUE(FillWS3x3WithLum(cv::Mat(size, CV_8UC1), labels));
        EXPECT_EQ(labels.size(), size);
    }
}

TEST(FillWS3x3WithLum, TakesNegativeLabelsForNone_ButAlsoForLabels)
{
    for (int const depth : {CV_16S, CV_32S})
    {
        cv::Mat labels = Draw({".....", ".....", ".....", "....."}, depth);
        tests::SetElement(labels, 1, 1, 0, -1);
        EXPECT_TRUE(FillWS3x3WithLum(Draw<uchar>({"55555", "55555", "55555", "55555"}), labels));
        EXPECT_TRUE(EqualImages(labels, Draw({"11111", "11111", "11111", "11111"}, depth) * -1));
        // The lower left line finds the zone to its left; the others find a line that is just like them.
        cv::Mat const lines =
            (cv::Mat_<int>(4, 5) << //
                 1,
             3, 3, 3, 3,      //
             1, -1, -1, 3, 2, //
             1, -1, -1, 3, 2, //
             1, 3, 3, 3, 2);
        cv::Mat const filled =
            (cv::Mat_<int>(4, 5) << //
                 -1,
             -1, -1, 3, 3,     //
             -1, -1, -1, 3, 3, //
             1, 1, -1, 3, 3,   //
             1, 1, -1, 3, 3);
        cv::Mat expected;
        lines.convertTo(labels, depth);
        filled.convertTo(expected, depth);
        EXPECT_TRUE(FillWS3x3WithLum(Draw<uchar>({"99999", "95599", "99559", "99999"}), labels));
        EXPECT_TRUE(EqualImages(labels, expected));
    }
}

TEST(FillWS3x3WithLum, DoesNotTakeALabelAcrossADifferenceOf255)
{
    cv::Mat const labels = Draw<int>({"...", "1..", "..."});
    auto const label = [&](auto one, auto other) {
        using T = decltype(one);
        cv::Mat luminance(3, 3, cv::traits::Type<T>::value, cv::Scalar(static_cast<double>(one)));
        luminance.at<T>(1, 0) = other;
        cv::Mat filled = labels.clone();
        EXPECT_TRUE(FillWS3x3WithLum(luminance, filled));
        return filled.at<int>(1, 1);
    };
    EXPECT_EQ(label(uchar{0}, uchar{254}), 1);
    EXPECT_EQ(label(uchar{0}, uchar{255}), 0);
    EXPECT_EQ(label(uchar{255}, uchar{0}), 0);
    EXPECT_EQ(label(ushort{1000}, ushort{1254}), 1);
    EXPECT_EQ(label(ushort{1000}, ushort{1255}), 0);
    EXPECT_EQ(label(ushort{65535}, ushort{0}), 0);
    EXPECT_EQ(label(short{-100}, short{154}), 1);
    EXPECT_EQ(label(short{-100}, short{155}), 0);
    EXPECT_EQ(label(short{-32768}, short{32767}), 0);
    EXPECT_EQ(label(100000, 99746), 1);
    EXPECT_EQ(label(100000, 99745), 0);
    EXPECT_EQ(label(1000.0F, 1254.5F), 1);
    EXPECT_EQ(label(1000.0F, 1255.0F), 0);
    EXPECT_EQ(label(1000.0, 745.5), 1);
    EXPECT_EQ(label(1000.0, 745.0), 0);
}

TEST(FillWS3x3WithLum, DoesNotTakeALabelAcrossMoreThanAnIntHolds)
{
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    for (int const value : {most, least, least + 1})
    {
        cv::Mat luminance(3, 3, CV_32SC1, cv::Scalar(value));
        luminance.at<int>(1, 1) = value == most ? least : most;
        cv::Mat labels = Draw<int>({"111", "1.1", "111"});
        EXPECT_TRUE(FillWS3x3WithLum(luminance, labels));
        EXPECT_EQ(labels.at<int>(1, 1), 0);
    }
}

TEST(FillWS3x3WithLum, HoldsNaNForLikeNothing)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (float const strange : {nan, infinity, -infinity})
    {
        cv::Mat luminance(3, 3, CV_32FC1, cv::Scalar(static_cast<double>(strange)));
        auto const label = [&luminance] {
            cv::Mat labels = Draw<uchar>({"111", "1.2", "111"});
            EXPECT_TRUE(FillWS3x3WithLum(luminance, labels));
            return static_cast<int>(labels.at<uchar>(1, 1));
        };
        EXPECT_EQ(label(), 0);
        luminance.at<float>(1, 1) = 7.0F;
        EXPECT_EQ(label(), 0);
        luminance.at<float>(1, 2) = 9.0F;
        EXPECT_EQ(label(), 2);
    }
}

TEST(FillWS3x3WithLum, RoundsDifferencesInTheirType)
{
    // In single precision both neighbours differ by 1 from the pixel, in double precision the second by less.
    for (int const depth : {CV_32F, CV_64F})
    {
        cv::Mat luminance(3, 3, depth, cv::Scalar(1000));
        tests::SetElement(luminance, 1, 1, 0, -2e-8);
        tests::SetElement(luminance, 1, 0, 0, 1.0);
        tests::SetElement(luminance, 1, 2, 0, -1.0);
        cv::Mat labels = Draw<uchar>({"...", "1.2", "..."});
        EXPECT_TRUE(FillWS3x3WithLum(luminance, labels));
        EXPECT_EQ(labels.at<uchar>(1, 1), depth == CV_32F ? 1 : 2);
    }
}

TEST(FillWS3x3WithLum, OfSeveralChannels_MeansTheFirstElementsOfEachRow)
{
    cv::Mat const luminance = Draw<uchar>({"5555", "5555", "5555"});
    cv::Mat labels(3, 4, CV_32SC2, cv::Scalar(40, 41));
    // The elements of each row: 7 8 9 6, of which 8 and 9 are replaced in the middle.
    for (int y = 0; y < 3; ++y)
    {
        labels.at<cv::Vec2i>(y, 0) = {7, y == 1 ? 0 : 8};
        labels.at<cv::Vec2i>(y, 1) = {y == 1 ? -1 : 9, 6};
    }
    EXPECT_TRUE(FillWS3x3WithLum(luminance, labels));
    cv::Mat expected(3, 4, CV_32SC2, cv::Scalar(40, 41));
    for (int y = 0; y < 3; ++y)
    {
        expected.at<cv::Vec2i>(y, 0) = {7, 7};
        expected.at<cv::Vec2i>(y, 1) = {8, 8};
    }
    EXPECT_TRUE(EqualImages(labels, expected));
}

} // namespace

} // namespace morvane::algorithm
