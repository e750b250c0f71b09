// Flooding on drawn images.
#include <morvane/connexity/Flooding.h>

#include "support/AllTypes.h"
#include "support/FloodingOracle.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <string>

namespace morvane::connexity
{

namespace
{

using tests::Drawing;
using tests::DrawMarkers;
using tests::EqualImages;
using tests::Snapshot;

cv::Mat Even(cv::Size size)
{
    return {size.height, size.width, CV_8UC1, cv::Scalar(5)};
}

/// The image of a list of values, framed by pixels of another value.
cv::Mat Framed(std::initializer_list<std::initializer_list<int>> const & inside)
{
    int const height = static_cast<int>(inside.size());
    int const width = static_cast<int>(inside.begin()->size());
    cv::Mat image(height + 2, width + 2, CV_8UC1, cv::Scalar(77));
    int y = 1;
    for (auto const & row : inside)
    {
        int x = 1;
        for (int const value : row)
        {
            image.at<uchar>(y, x++) = static_cast<uchar>(value);
        }
        ++y;
    }
    return image;
}

/// Expects what a flood of drawn markers answers and writes, and that it writes in place and leaves the image.
void ExpectFlood(cv::Mat image, Drawing const & before, bool answer, Drawing const & after)
{
    cv::Mat markers = DrawMarkers(before);
    ASSERT_EQ(markers.size(), image.size());
    uchar const * const place = markers.data;
    Snapshot const sameImage(image);
    EXPECT_EQ(Flooding(image, markers), answer);
    EXPECT_EQ(markers.data, place);
    EXPECT_TRUE(EqualImages(markers, DrawMarkers(after)));
    EXPECT_TRUE(sameImage.IsUntouched());
}

/// The same, also with rows and columns exchanged.
void ExpectLineFlood(cv::Mat const & image, std::string const & before, std::string const & after)
{
    std::string const border(before.size(), '.');
    std::string const lines(before.size(), '#');
    ExpectFlood(image, {border, before, border}, true, {lines, after, lines});

    cv::Mat markers = DrawMarkers({border, before, border}).t();
    cv::Mat turned = image.t();
    EXPECT_TRUE(Flooding(turned, markers));
    EXPECT_TRUE(EqualImages(markers, DrawMarkers({lines, after, lines}).t()));
}

TEST(Flooding, NoMarkerAboveZero_DrawsTheBorderAndAnswersFalse)
{
    ExpectFlood(Even({5, 4}), {".....", ".....", ".....", "....."}, false, {"#####", "#...#", "#...#", "#####"});
}

TEST(Flooding, NegativeMarkersWithoutOthers_BecomeZero)
{
    ExpectFlood(Even({5, 4}), {".....", ".-#-.", ".#...", "....."}, false, {"#####", "#...#", "#...#", "#####"});
}

TEST(Flooding, MarkersOnTheBorder_AreLost)
{
    ExpectFlood(Even({5, 4}), {"12345", "6...7", "8...9", "-#123"}, false, {"#####", "#...#", "#...#", "#####"});
    ExpectFlood(Even({5, 4}), {"22222", "2...2", "2.1.2", "22222"}, true, {"#####", "#111#", "#111#", "#####"});
}

TEST(Flooding, MarkersEverywhereInside_StayAndAnswerFalse)
{
    ExpectFlood(Even({4, 4}), {"....", ".12.", ".31.", "...."}, false, {"####", "#12#", "#31#", "####"});
}

TEST(Flooding, OneMarker_FillsTheInside)
{
    ExpectFlood(
        Even({6, 5}), {"......", "......", "...7..", "......", "......"}, true,
        {"######", "#7777#", "#7777#", "#7777#", "######"});
}

TEST(Flooding, TwoMarkersOnAnEvenImage_AdvanceInStepToALineBetween)
{
    ExpectLineFlood(Even({7, 3}), ".1...2.", "#11#22#");
    ExpectLineFlood(Even({9, 3}), ".1.....2.", "#111#222#");
    ExpectFlood(
        Even({7, 5}), {".......", ".1...2.", ".1...2.", ".1...2.", "......."}, true,
        {"#######", "#11#22#", "#11#22#", "#11#22#", "#######"});
}

TEST(Flooding, EqualCosts_AreTakenFirstInFirstOut)
{
    // The middle pixels wait with the same cost, the left one first: it joins its marker, the other sees both.
    ExpectLineFlood(Even({6, 3}), ".1..2.", "#11#2#");
    ExpectLineFlood(Even({8, 3}), ".1....2.", "#111#22#");
}

TEST(Flooding, FrontsFromOppositeCorners_MeetOnADiagonal)
{
    ExpectFlood(
        Even({5, 5}), {".....", ".1...", ".....", "...2.", "....."}, true,
        {"#####", "#11##", "#1#2#", "##22#", "#####"});
}

/// An image in which marker 1 reaches a pixel of 20 first, then beside it one of 10 and one of 30 at the same cost. The
/// pixel that both of these touch is reached by marker 1 when the one of 10 was queued first, else it is a line.
cv::Mat TwoWaysRoundACorner()
{
    return Framed({{0, 20, 10, 30, 255}, {255, 255, 10, 20, 20}, {255, 255, 255, 20, 20}});
}

cv::Mat MarkersOfTwoWays()
{
    return DrawMarkers({".......", ".2.....", ".....1.", "....11.", "......."});
}

TEST(Flooding, NewPixels_AreQueuedLeftAndRightBeforeUpAndDown)
{
    cv::Mat const expected = DrawMarkers({"#######", "#2#111#", "##1111#", "#11111#", "#######"});
    enum Flip
    {
        UpsideDown = 0,
        LeftRight = 1,
        Both = -1
    };
    cv::Mat image = TwoWaysRoundACorner();
    cv::Mat markers = MarkersOfTwoWays();
    EXPECT_TRUE(Flooding(image, markers));
    EXPECT_TRUE(EqualImages(markers, expected));
    for (Flip const axis : {UpsideDown, LeftRight, Both})
    {
        SCOPED_TRACE(axis);
        cv::Mat flippedExpected;
        cv::flip(TwoWaysRoundACorner(), image, axis);
        cv::flip(MarkersOfTwoWays(), markers, axis);
        cv::flip(expected, flippedExpected, axis);
        EXPECT_TRUE(Flooding(image, markers));
        EXPECT_TRUE(EqualImages(markers, flippedExpected));
    }
}

TEST(Flooding, NewPixelsOfAnExchangedImage_AreNotQueuedInTheExchangedOrder)
{
    cv::Mat const expected = DrawMarkers({"#######", "#22#11#", "###111#", "#11111#", "#######"});
    cv::Mat image = TwoWaysRoundACorner().t();
    cv::Mat markers = MarkersOfTwoWays().t();
    EXPECT_TRUE(Flooding(image, markers));
    EXPECT_TRUE(EqualImages(markers, expected.t()));
}

TEST(Flooding, DarkPixelsGoFirst_NotOnlySimilarOnes)
{
    // The pixel of 199 is like the bright ones, but from the dark one it costs 199, and the bright one beside it 200.
    ExpectLineFlood(Framed({{200, 200, 199, 0, 0}}), ".1...2.", "#1#222#");
}

TEST(Flooding, CostIsTheDifferencePlusTheValueLookedFrom)
{
    // The pixel of 201 costs 201 from the dark one, and the bright one beside it 200.
    ExpectLineFlood(Framed({{200, 200, 201, 0, 0}}), ".1...2.", "#11#22#");
}

TEST(Flooding, LargestCosts_AreThoseOfBlackSeenFromWhite)
{
    // 510 each, so that the left one is first, and what it finds for 255 goes before the right one.
    ExpectLineFlood(Framed({{0, 255, 255, 255, 0}}), ".1...2.", "#111#2#");
    ExpectLineFlood(Framed({{255, 0, 255, 255, 0}}), ".1...1.", "#11111#");
}

TEST(Flooding, FirstCosts_AreSeenFromTheWaitingPixel)
{
    // The pixel of 100 sees the marker at 0 for 100 + 100 and waits; seen from the marker, it would cost 100 and go first.
    ExpectLineFlood(Framed({{0, 100, 150, 150}}), ".1..2.", "#1#22#");
}

TEST(Flooding, FirstCosts_AreTheLeastOverTheMarkedNeighbours)
{
    // The pixel of 100 costs 200 from its left and 100 from below, the one beside it 150.
    ExpectFlood(
        Framed({{200, 100, 150, 150}, {0, 100, 255, 0}}), {"......", ".1..2.", ".1122.", "......"}, true,
        {"######", "#11#2#", "#1122#", "######"});
    // The cheap neighbour first, the dear one last.
    ExpectFlood(
        Framed({{100, 100, 150, 150}, {0, 200, 150, 0}}), {"......", ".1..2.", ".1122.", "......"}, true,
        {"######", "#11#2#", "#1122#", "######"});
    // The same with the cheap neighbour above.
    ExpectFlood(
        Framed({{0, 100, 255, 0}, {200, 100, 150, 150}}), {"......", ".1122.", ".1..2.", "......"}, true,
        {"######", "#1122#", "#11#2#", "######"});
}

TEST(Flooding, CheapPixelFoundLate_IsTakenBeforeTheDearOnesThatWait)
{
    // The dark valley is found from 100 at a cost of 200, and flooded to its end before the pixel of 250.
    ExpectLineFlood(Framed({{200, 100, 0, 0, 250, 250}}), ".1....2.", "#1111#2#");
}

TEST(Flooding, LinesDoNotSpread_SoThatPixelsBehindThemAreNotReached)
{
    ExpectFlood(
        Even({5, 5}), {".....", ".1.2.", ".....", ".2.1.", "....."}, true,
        {"#####", "#1#2#", "##.##", "#2#1#", "#####"});
}

TEST(Flooding, NegativeMarkersBesideLabels_AreFlooded)
{
    ExpectLineFlood(Even({7, 3}), ".1-#-2.", "#11#22#");
    // Below and at the right they are still negative when the pixel before them is looked at.
    ExpectFlood(
        Even({5, 5}), {".....", ".---.", ".-8-.", ".###.", "....."}, true,
        {"#####", "#888#", "#888#", "#888#", "#####"});
}

TEST(Flooding, LargestAndSmallestMarkers_AreALabelAndNone)
{
    constexpr int most = std::numeric_limits<int>::max();
    cv::Mat image = Even({5, 3});
    cv::Mat markers = DrawMarkers({".....", ".....", "....."});
    markers.at<int>(1, 1) = most;
    markers.at<int>(1, 2) = std::numeric_limits<int>::min();
    EXPECT_TRUE(Flooding(image, markers));
    cv::Mat expected = DrawMarkers({"#####", "#...#", "#####"});
    expected(cv::Rect(1, 1, 3, 1)).setTo(most);
    EXPECT_TRUE(EqualImages(markers, expected));
}

TEST(Flooding, OneAndTwoRowsOrColumns_AreAllBorder)
{
    for (int const thin : {1, 2})
    {
        for (int const length : {1, 2, 3, 9})
        {
            for (cv::Size const size : {cv::Size(length, thin), cv::Size(thin, length)})
            {
                SCOPED_TRACE(tests::Case(CV_8UC1, size, 0));
                cv::Mat image = Even(size);
                cv::Mat markers(size.height, size.width, CV_32SC1, cv::Scalar(4));
                EXPECT_FALSE(Flooding(image, markers));
                EXPECT_TRUE(EqualImages(markers, cv::Mat(size.height, size.width, CV_32SC1, cv::Scalar(-1))));
            }
        }
    }
}

TEST(Flooding, ThreeRowsAndColumns_HoldOnePixel)
{
    ExpectFlood(Even({3, 3}), {"111", "1.1", "111"}, false, {"###", "#.#", "###"});
    ExpectFlood(Even({3, 3}), {"...", ".6.", "..."}, false, {"###", "#6#", "###"});
    ExpectFlood(Even({3, 3}), {"...", ".-.", "..."}, false, {"###", "#.#", "###"});
}

TEST(Flooding, ImagesWithoutPixels_AnswerFalseAndKeepTheirSize)
{
    for (cv::Size const size : {cv::Size(5, 0), cv::Size(0, 5), cv::Size(0, 0)})
    {
        SCOPED_TRACE(tests::Case(CV_8UC1, size, 0));
        cv::Mat image(size.height, size.width, CV_8UC1);
        cv::Mat markers(size.height, size.width, CV_32SC1);
        EXPECT_FALSE(Flooding(image, markers));
        EXPECT_EQ(markers.size(), size);
        EXPECT_EQ(markers.type(), CV_32SC1);
    }
}

TEST(Flooding, ImagesWithoutColumns_KeepTheirSizeWhenTheirStepsDiffer)
{
    uchar bytes[40] = {};
    cv::Mat image(5, 0, CV_8UC1, bytes, 8);
    cv::Mat markers(5, 0, CV_32SC1);
    EXPECT_FALSE(Flooding(image, markers));
    EXPECT_EQ(markers.rows, 5);
    EXPECT_EQ(markers.cols, 0);
}

TEST(Flooding, FloodedInside_HasNothingLeftToFlood)
{
    cv::Mat image = Even({9, 9});
    cv::Mat markers(9, 9, CV_32SC1, cv::Scalar(0));
    markers.at<int>(2, 2) = 3;
    ASSERT_TRUE(Flooding(image, markers));
    cv::Mat again = markers.clone();
    EXPECT_FALSE(Flooding(image, again));
    EXPECT_TRUE(EqualImages(again, markers));
}

} // namespace

} // namespace morvane::connexity
