// The longest path inside a set of pixels.
#include <morvane/connexity/GeodesicMeasures.h>

#include "support/ImageLiterals.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"
#include "support/ShapeOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <vector>

namespace morvane::connexity
{

namespace
{

using geodesic_internals::GeodesicPath;
using tests::Draw;
using tests::Drawing;
using tests::OraclePath;
using tests::Random;

/// The pixels of an image that are not 0, in raster order, moved by an offset.
std::vector<cv::Point> PixelsOf(cv::Mat1b const & image, cv::Point const & offset = {})
{
    std::vector<cv::Point> pixels;
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            if (image(y, x) != 0) pixels.push_back(cv::Point(x, y) + offset);
        }
    }
    return pixels;
}

void ExpectPath(std::vector<cv::Point> const & pixels, OraclePath const & expected)
{
    cv::Point first(-7, -7);
    cv::Point second(-7, -7);
    double length = -7.0;
    ASSERT_TRUE(GeodesicPath(pixels, first, second, length));
    EXPECT_EQ(first, expected.first);
    EXPECT_EQ(second, expected.second);
    EXPECT_EQ(length, expected.length);
}

void ExpectPathOf(Drawing const & drawing, OraclePath const & expected)
{
    cv::Mat const image = Draw<uchar>(drawing);
    ExpectPath(PixelsOf(image), expected);
    // Where the pixels lie makes no difference, also left of and above 0.
    cv::Point const offset(-1000, 70000);
    ExpectPath(PixelsOf(image, offset), {expected.first + offset, expected.second + offset, expected.length});
}

TEST(GeodesicPath, OfOnePixel_HasOnePixel)
{
    ExpectPathOf({"1"}, {{0, 0}, {0, 0}, 1.0});
    ExpectPathOf({"...", "..1"}, {{2, 1}, {2, 1}, 1.0});
}

TEST(GeodesicPath, OfABar_RunsAlongIt)
{
    // From the middle pixel, both ends are as far, or the first is farther: the walk goes there, to the other, and back.
    ExpectPathOf({"1111111"}, {{6, 0}, {0, 0}, 7.0});
    ExpectPathOf({"111111"}, {{5, 0}, {0, 0}, 6.0});
    ExpectPathOf({"1", "1", "1"}, {{0, 2}, {0, 0}, 3.0});
    ExpectPathOf({"11"}, {{1, 0}, {0, 0}, 2.0});
    ExpectPathOf({"1...", ".1..", "..1.", "...1"}, {{3, 3}, {0, 0}, 4.0});
    // Two pixels are as near to the middle: the upper one starts, from which the lower end is farther.
    ExpectPathOf({"...1", "..1.", ".1..", "1..."}, {{3, 0}, {0, 3}, 4.0});
}

TEST(GeodesicPath, StaysInside)
{
    ExpectPathOf({"1.....1", "1.....1", "1.....1", "1111111"}, {{6, 0}, {0, 0}, 11.0});
    // Diagonal steps cut the corners off.
    ExpectPathOf({"1111", "...1", "1111", "1...", "1111"}, {{0, 0}, {3, 4}, 10.0});
}

TEST(GeodesicPath, OfASquare_IsAsLongAsItsSide)
{
    // From the middle all of the frame is as far; the first of it is the upper left corner. From there, the last row and
    // the last column are as far: the first of these is the upper right corner, and from there it's the left column.
    ExpectPathOf({"11111", "11111", "11111", "11111", "11111"}, {{4, 0}, {0, 0}, 5.0});
}

TEST(GeodesicPath, BeginsAtThePixelNearestToTheMiddleOfTheBox)
{
    // The middle of the box, 2 right and 1 down of its corner, is empty. Of four pixels as near, the first starts: from
    // there the first that is farthest is the lower left end, and not the lower right one.
    ExpectPathOf({"..1..", ".1.1.", "1...1"}, {{4, 2}, {0, 2}, 5.0});
    // In a ring, the start decides on everything: of four pixels as near, it is the one above the middle.
    ExpectPathOf({".111.", "1...1", "1...1", "1...1", ".111."}, {{2, 0}, {2, 4}, 7.0});
}

TEST(GeodesicPath, OfTwoParts_LeavesOutTheOneThatIsFartherFromTheMiddle)
{
    ExpectPathOf({"111...", ".....1"}, {{2, 0}, {0, 0}, 3.0});
    ExpectPathOf({"1.....", ".1....", "...111"}, {{3, 2}, {5, 2}, 3.0});
}

TEST(GeodesicPath, OfTwoPixelsAsNear_BeginsAtTheFirstInTheList)
{
    // The middle, 2 right and 1 down, lies between the lower pixels of two parts.
    std::vector<cv::Point> const one{{1, 0}, {1, 1}};
    std::vector<cv::Point> const other{{3, 0}, {3, 1}};
    std::vector<cv::Point> pixels(one);
    pixels.insert(pixels.end(), other.begin(), other.end());
    ExpectPath(pixels, {{1, 1}, {1, 0}, 2.0});
    std::rotate(pixels.begin(), pixels.begin() + 2, pixels.end());
    ExpectPath(pixels, {{3, 1}, {3, 0}, 2.0});
}

TEST(GeodesicPath, OfNoPixels_IsRefusedWithNothingWritten)
{
    cv::Point first(-7, 1);
    cv::Point second(-7, 2);
    double length = -7.0;
    EXPECT_FALSE(GeodesicPath({}, first, second, length));
    EXPECT_EQ(first, cv::Point(-7, 1));
    EXPECT_EQ(second, cv::Point(-7, 2));
    EXPECT_EQ(length, -7.0);
}

TEST(GeodesicPath, MatchesThreeDistanceImages)
{
    Random random(2100);
    for (int round = 0; round < 400; ++round)
    {
        cv::Size const size(1 + random.Below(25), 1 + random.Below(25));
        // Dense ones hang together, thin ones do not.
        std::vector<cv::Point> const pixels = PixelsOf(tests::RandomMask(random, size, 0.2 + 0.8 * random.Unit()));
        if (pixels.empty()) continue;
        ExpectPath(pixels, tests::OracleGeodesicPath(pixels));
        if (HasFailure()) FAIL() << "round " << round;
    }
}

TEST(GeodesicPath, MatchesThreeDistanceImagesOnPatterns)
{
    for (cv::Size const size : {cv::Size(1, 9), cv::Size(9, 1), cv::Size(2, 7), cv::Size(31, 30), cv::Size(30, 31)})
    {
        for (tests::Pattern const & pattern : tests::AllPatterns(size))
        {
            SCOPED_TRACE(pattern.name);
            std::vector<cv::Point> const pixels = PixelsOf(pattern.mask);
            if (!pixels.empty()) ExpectPath(pixels, tests::OracleGeodesicPath(pixels));
        }
    }
}

/// The pixels that are no farther than some steps from the outer end of a spiral.
std::vector<cv::Point> BeginOfSpiral(int side, int length)
{
    cv::Mat1b spiral = tests::Spiral({side, side});
    cv::Mat1b left = spiral.clone();
    std::vector<cv::Point> front{{0, 0}};
    left(0, 0) = 0;
    for (int step = 1; step < length; ++step)
    {
        std::vector<cv::Point> next;
        for (cv::Point const & from : front)
        {
            cv::Rect const around = cv::Rect(from.x - 1, from.y - 1, 3, 3) & cv::Rect({}, spiral.size());
            for (cv::Point const & to : PixelsOf(left(around), around.tl()))
            {
                left(to) = 0;
                next.push_back(to);
            }
        }
        front = next;
    }
    spiral.setTo(0, left);
    return PixelsOf(spiral);
}

TEST(GeodesicPath, AsLongAs16BitsCount_EndsOutsideThePixels)
{
    // From 65534 on, what is not reached seems farther than the end: from there, nothing can be reached.
    for (int const length : {65532, 65533, 65534, 65535, 65536, 66000})
    {
        SCOPED_TRACE(length);
        std::vector<cv::Point> const pixels = BeginOfSpiral(368, length);
        OraclePath const expected = tests::OracleGeodesicPath(pixels);
        ASSERT_EQ(expected.length, length < 65534 ? length : 1);
        ASSERT_EQ(expected.second == cv::Point(0, 1), length >= 65534);
        ExpectPath(pixels, expected);
    }
}

TEST(GeodesicPath, OverAllPixelsOfItsBox_SaturatesOneStepLater)
{
    for (int const length : {65533, 65534, 65535, 65536, 65537, 70000})
    {
        SCOPED_TRACE(length);
        std::vector<cv::Point> const pixels = PixelsOf(cv::Mat1b(1, length, uchar{1}));
        OraclePath const expected = tests::OracleGeodesicPath(pixels);
        ASSERT_EQ(expected.length, std::min(length, 65535));
        ExpectPath(pixels, expected);
    }
}

} // namespace

} // namespace morvane::connexity
