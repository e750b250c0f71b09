// Images turned inside the square that holds all their rotations.
#include <morvane/algorithm/MatchingScores.h>

#include "support/AllTypes.h"
#include "support/AnyNumbers.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/WarpingOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Random;
using tests::WarpRule;
using utils::RotateBinaryImage;
using utils::RotateImage;
using utils::RotateImageUsingOpenCVTransform;
using utils::UpdateStationPosition;

using Operator = bool (*)(cv::Mat const & image, double angle, cv::Mat & out, double & dx, double & dy);

constexpr std::array<Operator, 3> kOperators{RotateImage, RotateBinaryImage, RotateImageUsingOpenCVTransform};

/// Whole and half turns, angles that are searched, angles beyond a turn, and none at all.
constexpr std::array kAngles{
    0.0,
    90.0,
    180.0,
    270.0,
    -90.0,
    45.0,
    360.0,
    1e6,
    1e18,
    -33.3,
    0.001,
    7.0,
    123.4,
    89.999,
    -720.5,
    std::numeric_limits<double>::infinity(),
    std::numeric_limits<double>::quiet_NaN()};

constexpr double kRadians = CV_PI / 180.0;

/// An image that was turned.
cv::Mat Turned(Operator rotate, cv::Mat const & image, double angle)
{
    cv::Mat out;
    double dx = 0.0;
    double dy = 0.0;
    EXPECT_TRUE(rotate(image, angle, out, dx, dy));
    return out;
}

bool IsBinary(int type)
{
    return type == CV_8UC1 || type == CV_16UC1 || type == CV_32SC1;
}

TEST(RotateImage, MakesASquareOfAnOddSide)
{
    auto const sideOf = [](Operator rotate, int rows, int cols) {
        cv::Mat const out = Turned(rotate, cv::Mat::ones(rows, cols, CV_8UC1), 30.0);
        EXPECT_EQ(out.rows, out.cols);
        return out.rows;
    };
    for (Operator const rotate : kOperators)
    {
        EXPECT_EQ(sideOf(rotate, 3, 4), 5);
        EXPECT_EQ(sideOf(rotate, 6, 8), 11);
        // 1.41 and 2.83; 2.24.
        EXPECT_EQ(sideOf(rotate, 1, 1), 1);
        EXPECT_EQ(sideOf(rotate, 2, 2), 3);
        EXPECT_EQ(sideOf(rotate, 1, 2), 3);
        EXPECT_EQ(sideOf(rotate, 1, 7), 7);
        EXPECT_EQ(sideOf(rotate, 9, 1), 9);
        EXPECT_EQ(sideOf(rotate, 0, 0), 1);
        EXPECT_EQ(sideOf(rotate, 0, 5), 5);
        EXPECT_EQ(sideOf(rotate, 4, 0), 5);
    }
}

TEST(RotateImage, By0_PutsTheImageInTheMiddleRoundedDown)
{
    for (Operator const rotate : kOperators)
    {
        tests::ExpectDrawn(
            Turned(rotate, Draw<uchar>({"1234", "5678", "9abc"}), 0.0), {".....", "1234.", "5678.", "9abc.", "....."});
        tests::ExpectDrawn(Turned(rotate, Draw<uchar>({"12"}), 0.0), {"...", "12.", "..."});
        tests::ExpectDrawn(Turned(rotate, Draw<uchar>({"7"}), 0.0), {"7"});
    }
}

TEST(RotateImage, ByQuarterTurns_TurnsClockwise)
{
    cv::Mat const image = Draw<uchar>({"123", "4.6"});
    // The square is that of a side of 5.
    for (Operator const rotate : {RotateImage, RotateBinaryImage})
    {
        tests::ExpectDrawn(Turned(rotate, image, 0.0), {".....", ".123.", ".4.6.", ".....", "....."});
        tests::ExpectDrawn(Turned(rotate, image, 90.0), {".....", "..41.", "...2.", "..63.", "....."});
        tests::ExpectDrawn(Turned(rotate, image, 180.0), {".....", ".....", ".6.4.", ".321.", "....."});
        tests::ExpectDrawn(Turned(rotate, image, -90.0), {".....", ".36..", ".2...", ".14..", "....."});
        tests::ExpectDrawn(Turned(rotate, image, 360.0), {".....", ".123.", ".4.6.", ".....", "....."});
    }
}

TEST(RotateImage, TurnsTheOtherWayThanOpenCV)
{
    // The middle of a square about which cv::warpAffine turns is half a pixel away: a mark in the right half is below
    // the middle in one, above it in the other.
    cv::Mat image = cv::Mat::zeros(21, 21, CV_8UC1);
    image(cv::Rect(16, 9, 3, 3)).setTo(200);
    auto const isBelow = [&](Operator rotate, double angle) {
        cv::Mat const out = Turned(rotate, image, angle);
        cv::Moments const moments = cv::moments(out);
        EXPECT_GT(moments.m00, 0.0);
        return moments.m01 / moments.m00 > out.rows * 0.5 + 3.0;
    };
    EXPECT_TRUE(isBelow(RotateImage, 60.0));
    EXPECT_FALSE(isBelow(RotateImage, -60.0));
    EXPECT_FALSE(isBelow(RotateImageUsingOpenCVTransform, 60.0));
    EXPECT_TRUE(isBelow(RotateImageUsingOpenCVTransform, -60.0));
}

/// Expects the bits of what is made of the square, its matrix, and its translation.
void ExpectTurned(Operator rotate, cv::Mat const & image, double angle, cv::Mat const & expected)
{
    tests::OracleSquare const square = tests::OracleSquareOf(image, angle);
    cv::Mat out = cv::Mat::ones(3, 3, CV_64FC2);
    double dx = 77.0;
    double dy = 77.0;
    ASSERT_TRUE(rotate(image, angle, out, dx, dy));
    ASSERT_TRUE(tests::EqualImages(out, expected)) << angle;
    if (std::isfinite(angle))
    {
        ASSERT_EQ(dx, square.dx) << angle;
        ASSERT_EQ(dy, square.dy) << angle;
    }
    else
    {
        ASSERT_TRUE(std::isnan(dx) && std::isnan(dy));
    }
}

/// Expects what the three operators make, literally, of an image of one channel.
void ExpectPlainTurns(cv::Mat const & image, double angle)
{
    tests::FramedImage framed(image);
    cv::Mat const view = image.empty() ? image : framed.View();
    tests::OracleSquare const square = tests::OracleSquareOf(image, angle);
    cv::Mat const zeros = cv::Mat::zeros(square.canvas.size(), image.type());
    cv::Mat const filled = tests::OracleWarped(square.canvas, zeros, square.matrix, WarpRule::FillsEmpty);
    ASSERT_NO_FATAL_FAILURE(ExpectTurned(RotateImage, view, angle, filled));
    bool const isBinary = IsBinary(image.type());
    cv::Mat const merged =
        isBinary ? tests::OracleWarped(square.canvas, zeros, square.matrix, WarpRule::MergesBits) : zeros;
    ASSERT_NO_FATAL_FAILURE(ExpectTurned(RotateBinaryImage, view, angle, merged));
}

TEST(RotateImageRandom, HasTheBitsOfThePlainForm)
{
    Random random(81007);
    for (int const depth : tests::kDepths)
    {
        for (int repeat = 0; repeat < 8; ++repeat)
        {
            // Larger than blocks of 64 columns, now and then.
            cv::Size const size = tests::RandomSize(random, repeat == 0 ? 80 : 25);
            cv::Mat const image =
                repeat % 2 == 0 ? tests::AnyNumbers(random, size, depth) : tests::RandomImage(random, size, depth);
            for (double const angle : kAngles)
            {
                SCOPED_TRACE(tests::Case(depth, size, repeat));
                ASSERT_NO_FATAL_FAILURE(ExpectPlainTurns(image, angle));
                ASSERT_NO_FATAL_FAILURE(ExpectPlainTurns(image, random.Unit() * 720.0 - 360.0));
            }
        }
    }
}

TEST(RotateImage, OfThinAndEmptyImages_HasTheBitsOfThePlainForm)
{
    Random random(81008);
    for (cv::Size const size :
         {cv::Size(0, 0), cv::Size(0, 6), cv::Size(5, 0), cv::Size(1, 1), cv::Size(1, 2), cv::Size(9, 1),
          cv::Size(1, 30), cv::Size(2, 2), cv::Size(70, 1)})
    {
        for (int const depth : tests::kDepths)
        {
            for (double const angle : kAngles)
            {
                SCOPED_TRACE(tests::Case(depth, size, 0));
                ASSERT_NO_FATAL_FAILURE(ExpectPlainTurns(tests::AnyNumbers(random, size, depth), angle));
            }
        }
    }
}

TEST(RotateImageUsingOpenCVTransform, IsTheWarpOfTheSquare)
{
    Random random(81009);
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32FC1, CV_64FC1, CV_8UC3, CV_32FC2})
    {
        for (int repeat = 0; repeat < 4; ++repeat)
        {
            cv::Size const size = tests::RandomSize(random, 25);
            cv::Mat const image = tests::RandomImage(random, size, type, {0.3, 0.0, 60});
            for (double const angle : kAngles)
            {
                if (!std::isfinite(angle)) continue;
                SCOPED_TRACE(tests::Case(type, size, repeat));
                tests::OracleSquare const square = tests::OracleSquareOf(image, angle);
                cv::Mat expected = cv::Mat::zeros(square.canvas.size(), type);
                cv::warpAffine(
                    square.canvas, expected, square.matrix, expected.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT,
                    cv::Scalar());
                tests::FramedImage framed(image);
                cv::Mat const view = image.empty() ? image : framed.View();
                ASSERT_NO_FATAL_FAILURE(ExpectTurned(RotateImageUsingOpenCVTransform, view, angle, expected));
            }
        }
    }
    cv::Mat out;
    double dx = 0.0;
    double dy = 0.0;
    EXPECT_THROW(RotateImageUsingOpenCVTransform(Draw<int>({"12"}), 5.0, out, dx, dy), cv::Exception);
}

TEST(RotateImage, OfTypesThatAreRefused_IsTrueAndZeros)
{
    auto const expectZeros = [](Operator rotate, int type) {
        SCOPED_TRACE(cv::typeToString(type));
        cv::Mat image(3, 4, type);
        tests::FillBytes(image, 3);
        cv::Mat expected(5, 5, type);
        tests::FillBytes(expected, 0);
        cv::Mat const out = Turned(rotate, image, 30.0);
        tests::ExpectEqualImages(out, expected);
    };
    for (int const depth : tests::kRefusedDepths)
    {
        expectZeros(RotateImage, depth);
        expectZeros(RotateBinaryImage, depth);
    }
    for (int const depth : {CV_16S, CV_32F, CV_64F})
    {
        expectZeros(RotateBinaryImage, depth);
    }
    for (int const channels : {2, 3, 4})
    {
        expectZeros(RotateImage, CV_MAKETYPE(CV_8U, channels));
        expectZeros(RotateImage, CV_MAKETYPE(CV_64F, channels));
        expectZeros(RotateBinaryImage, CV_MAKETYPE(CV_16U, channels));
    }
    // More than two dimensions have no rows and columns: the diagonal of -1 and -1 is 1.
    for (std::vector<int> const & sizes : {std::vector<int>{3, 4, 2}, std::vector<int>{3, 4, 0}})
    {
        cv::Mat const cube(sizes, CV_8UC1, cv::Scalar(1));
        tests::ExpectDrawn(Turned(RotateImage, cube, 30.0), {"."});
        tests::ExpectDrawn(Turned(RotateBinaryImage, cube, 30.0), {"."});
    }
}

TEST(RotateImage, IntoAView_LeavesWhatIsAround)
{
    for (Operator const rotate : kOperators)
    {
        for (cv::Mat const & before : {cv::Mat(3, 3, CV_8UC1, cv::Scalar(9)), cv::Mat(2, 5, CV_16SC1, cv::Scalar(9))})
        {
            tests::FramedImage framed(before);
            double dx = 0.0;
            double dy = 0.0;
            cv::Mat out = framed.View();
            EXPECT_TRUE(rotate(Draw<uchar>({"12"}), 0.0, out, dx, dy));
            tests::ExpectDrawn(out, {"...", "12.", "..."});
            EXPECT_TRUE(framed.IsFrameUntouched());
        }
    }
}

TEST(RotateImage, TellsTheTranslationOfTheMatrix)
{
    // About (2.5, 2.5) by 90 degrees, (0, 2.5 + 2.5) is the translation; by 0 degrees (0, 0).
    cv::Mat out;
    double dx = 0.0;
    double dy = 0.0;
    for (Operator const rotate : kOperators)
    {
        EXPECT_TRUE(rotate(cv::Mat::ones(3, 4, CV_8UC1), 90.0, out, dx, dy));
        EXPECT_NEAR(dx, -2.5, 1e-12);
        EXPECT_NEAR(dy, 2.5, 1e-12);
        EXPECT_TRUE(rotate(cv::Mat::ones(3, 4, CV_8UC1), 0.0, out, dx, dy));
        EXPECT_EQ(dx, -2.5);
        EXPECT_EQ(dy, -2.5);
    }
}

TEST(UpdateStationPosition, TurnsAboutTheMiddleOfTheImage)
{
    // A square of 5 with the image at row 1, column 0: its middle is (2, 2.5).
    auto const updated = [](double x, double y, double angle) {
        return UpdateStationPosition({4, 3}, {x, y}, angle * kRadians);
    };
    auto const expectNear = [](cv::Point2d const & actual, cv::Point2d const & expected) {
        EXPECT_NEAR(actual.x, expected.x, 1e-12);
        EXPECT_NEAR(actual.y, expected.y, 1e-12);
    };
    EXPECT_EQ(updated(0, 0, 0), cv::Point2d(0, 1));
    EXPECT_EQ(updated(2, 1.5, 77), cv::Point2d(2, 2.5));
    expectNear(updated(4, 1.5, 90), {2, 4.5});
    expectNear(updated(4, 1.5, -90), {2, 0.5});
    expectNear(updated(4, 1.5, 180), {0, 2.5});
    expectNear(updated(2, 3, 90), {0.5, 2.5});
    // Of an image without pixels the square is that of one.
    EXPECT_EQ(UpdateStationPosition({0, 0}, {3, 4}, 0.0), cv::Point2d(3, 4));
}

TEST(UpdateStationPositionRandom, HasTheBitsOfThePlainForm)
{
    Random random(81010);
    for (int repeat = 0; repeat < 2000; ++repeat)
    {
        cv::Point const size(random.Below(300), random.Below(300));
        cv::Point2d const station(random.Unit() * 600.0 - 150.0, random.Unit() * 600.0 - 150.0);
        double const a = random.Unit() * 20.0 - 10.0;
        int side = static_cast<int>(std::floor(std::sqrt(std::pow(size.y, 2.0) + std::pow(size.x, 2.0)) + 0.5));
        if (side % 2 == 0) side += 1;
        int const ox = static_cast<int>(std::floor((side - size.x) * 0.5));
        int const oy = static_cast<int>(std::floor((side - size.y) * 0.5));
        double const cx = size.x * 0.5 + ox;
        double const cy = size.y * 0.5 + oy;
        double const dx = ox + station.x - cx;
        double const dy = oy + station.y - cy;
        cv::Point2d const expected(std::cos(a) * dx - std::sin(a) * dy + cx, std::cos(a) * dy + std::sin(a) * dx + cy);
        ASSERT_EQ(UpdateStationPosition(size, station, a), expected);
    }
}

TEST(UpdateStationPosition, IsWhereTheStationLiesInTheTurnedImage)
{
    // Every pixel tells where it comes from. The middle of an image of odd sides is that of the square.
    Random random(81011);
    for (int repeat = 0; repeat < 200; ++repeat)
    {
        cv::Size const size(9 + 2 * random.Below(20), 9 + 2 * random.Below(20));
        cv::Mat image(size, CV_32SC1);
        for (int pixel = 0; pixel < size.area(); ++pixel)
        {
            image.at<int>(pixel / size.width, pixel % size.width) = pixel + 1;
        }
        cv::Point const pixel(2 + random.Below(size.width - 4), 2 + random.Below(size.height - 4));
        double const angle = repeat % 4 == 0 ? (random.Below(9) - 4) * 90.0 : random.Unit() * 720.0 - 360.0;
        cv::Mat const out = Turned(RotateImage, image, angle);
        cv::Point2d const place =
            UpdateStationPosition({size.width, size.height}, {pixel.x + 0.5, pixel.y + 0.5}, angle * kRadians);
        cv::Point const found(static_cast<int>(std::floor(place.x)), static_cast<int>(std::floor(place.y)));
        ASSERT_TRUE(cv::Rect({0, 0}, out.size()).contains(found));
        int const value = out.at<int>(found) - 1;
        ASSERT_GE(value, 0);
        cv::Point const origin(value % size.width, value / size.width);
        // Both are rounded once by up to half a pixel's diagonal; quarter turns by nothing.
        int const limit = repeat % 4 == 0 ? 0 : 1;
        ASSERT_LE(std::abs(origin.x - pixel.x), limit) << angle << pixel << size;
        ASSERT_LE(std::abs(origin.y - pixel.y), limit) << angle << pixel << size;
    }
}

} // namespace

} // namespace morvane::algorithm
