// The floods over and under a mask on images small enough to see.
#include <morvane/geodesy/Reconstruction.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvane::geodesy
{

namespace
{

using connexity::eConnexity4;
using connexity::eConnexity4Wrapped;
using connexity::eConnexity8;
using tests::Draw;
using tests::Drawing;
using tests::ExpectDrawn;
using tests::Row;

float const kNaN = std::numeric_limits<float>::quiet_NaN();

/// Floods over, in the three depths; expects the drawing, and its mirror for the flood under.
void ExpectOver(Drawing const & mask, Drawing const & marker, int connexity, Drawing const & expected)
{
    for (int const type : {CV_8UC1, CV_32SC1, CV_32FC1})
    {
        SCOPED_TRACE(tests::Case(type, {}, connexity));
        cv::Mat over;
        ASSERT_TRUE(OverBuild(Draw(mask, type), Draw(marker, type), tests::Shape(connexity), over));
        ASSERT_EQ(over.type(), type);
        ExpectDrawn(over, expected);
        cv::Mat under;
        ASSERT_TRUE(UnderBuild(100 - Draw(mask, type), 100 - Draw(marker, type), tests::Shape(connexity), under));
        tests::ExpectEqualImages(under, 100 - Draw(expected, type));
    }
}

Drawing const kHighInside = {
    ".....", ".999.", ".999.", ".999.", ".....",
};

TEST(OverBuild, FillsABasinUpToItsRim)
{
    ExpectOver(
        {
            ".....",
            ".555.",
            ".516.",
            ".575.",
            ".....",
        },
        kHighInside, eConnexity4,
        {
            ".....",
            ".555.",
            ".556.",
            ".575.",
            ".....",
        });
}

TEST(OverBuild, RunsOutAtACornerWithEightNeighboursOnly)
{
    Drawing const leaking = {
        ".....", "..55.", ".515.", ".555.", ".....",
    };
    ExpectOver(leaking, kHighInside, eConnexity8, leaking);
    ExpectOver(
        leaking, kHighInside, eConnexity4,
        {
            ".....",
            "..55.",
            ".555.",
            ".555.",
            ".....",
        });
}

TEST(OverBuild, LeavesAMinimumThatTheMaskDoesNotSupport)
{
    ExpectOver({"....."}, {"3757."}, eConnexity4, {"335.."});
}

TEST(OverBuild, CrossesTheSeamOfAWrappedShapeButNeverTopAndBottom)
{
    // The 0 of the first row runs over the seam to the right of the wall; below the second wall the 8 stays a minimum.
    Drawing const mask = {
        ".99....",
        "9999999",
        "9999999",
        ".99....",
    };
    Drawing const marker = {
        ".888888",
        "8888888",
        "8888888",
        "8888888",
    };
    Drawing const crossed = {
        ".99....",
        "9999999",
        "9999999",
        "8998888",
    };
    Drawing const stopped = {
        ".998888",
        "9999999",
        "9999999",
        "8998888",
    };
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        ExpectOver(mask, marker, number, tests::OracleWraps(number) ? crossed : stopped);
    }
}

TEST(OverBuild, WithAShapeOutsideTheTableIsTheLargerOfBoth)
{
    for (int const number : tests::kStrangeConnexities)
    {
        ExpectOver({"159", "951"}, {"555", "555"}, number, {"559", "955"});
    }
}

TEST(OverBuild, OfOnePixelIsTheLargerOfBoth)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        ExpectOver({"3"}, {"7"}, number, {"7"});
        ExpectOver({"7"}, {"3"}, number, {"7"});
    }
}

TEST(OverBuild, ReadsNegativeNumbersAndTheExtremesOfTheTypes)
{
    int const least = std::numeric_limits<int>::min();
    int const most = std::numeric_limits<int>::max();
    cv::Mat out;
    ASSERT_TRUE(
        OverBuild(Row<int>({least, -5, least, -7, -9}), Row<int>({least, most, most, most, most}), eConnexity4, out));
    tests::ExpectEqualImages(out, Row<int>({least, -5, -5, -5, -5}));
    ASSERT_TRUE(UnderBuild(Row<int>({most, 5, most, most}), Row<int>({most, least, least, least}), eConnexity4, out));
    tests::ExpectEqualImages(out, Row<int>({most, 5, 5, 5}));
    float const infinity = std::numeric_limits<float>::infinity();
    ASSERT_TRUE(OverBuild(
        Row<float>({-infinity, -0.5F, -infinity, 0.25F, infinity, 3}),
        Row<float>({-infinity, infinity, infinity, infinity, infinity, infinity}), eConnexity4, out));
    tests::ExpectEqualImages(out, Row<float>({-infinity, -0.5F, -0.5F, 0.25F, infinity, infinity}));
}

TEST(OverBuild, LevelFallsBackToTheMaskBehindANaN)
{
    // The flood passes the NaN, which then is the level: nothing is above it, so the mask is taken.
    cv::Mat out;
    ASSERT_TRUE(OverBuild(Row<float>({0, 5, kNaN, 1, 7, 2}), Row<float>({0, 9, kNaN, 9, 9, 9}), eConnexity4, out));
    EXPECT_TRUE(std::isnan(out.at<float>(0, 2)));
    out.at<float>(0, 2) = 3;
    tests::ExpectEqualImages(out, Row<float>({0, 5, 3, 1, 7, 7}));
    ASSERT_TRUE(UnderBuild(Row<float>({9, 4, kNaN, 8, 2, 7}), Row<float>({9, 0, kNaN, 0, 0, 0}), eConnexity4, out));
    EXPECT_TRUE(std::isnan(out.at<float>(0, 2)));
    out.at<float>(0, 2) = 3;
    tests::ExpectEqualImages(out, Row<float>({9, 4, 3, 8, 2, 2}));
}

TEST(OverBuild, NothingFloodsWhereNaNLeavesNoMinimum)
{
    for (int const number : {0, 1, 2, 3, 4, 11, 12})
    {
        cv::Mat const mask = (cv::Mat_<float>(2, 3) << 1, kNaN, 2, 3, 4, 1);
        cv::Mat const marker = (cv::Mat_<float>(2, 3) << 6, kNaN, 5, 7, 8, 9);
        cv::Mat const expected = (cv::Mat_<float>(2, 3) << 6, -1, 5, 7, 8, 9);
        cv::Mat const wallOfMask(mask.size(), CV_32FC1, cv::Scalar(std::numeric_limits<double>::quiet_NaN()));
        cv::Mat out;
        ASSERT_TRUE(OverBuild(wallOfMask, wallOfMask, tests::Shape(number), out));
        EXPECT_EQ(cv::countNonZero(out == out), 0) << number;
        if (number < 2 || number > 4) continue;
        // Every pixel touches the NaN.
        ASSERT_TRUE(OverBuild(mask, marker, tests::Shape(number), out));
        EXPECT_TRUE(std::isnan(out.at<float>(0, 1)));
        out.at<float>(0, 1) = -1;
        tests::ExpectEqualImages(out, expected);
    }
}

TEST(OverBuild, NegativeZeroOfTheMaskIsTheLevelThatFloodsOn)
{
    // 0 is not strictly above -0: the mask's own zero is taken, and floods the pixel behind it.
    cv::Mat out;
    ASSERT_TRUE(OverBuild(Row<float>({0, -0.0F, -1}), Row<float>({0, 5, 5}), eConnexity4, out));
    tests::ExpectEqualImages(out, Row<float>({0, -0.0F, -0.0F}));
    ASSERT_TRUE(UnderBuild(Row<float>({-0.0F, 0, 1}), Row<float>({-0.0F, -5, -5}), eConnexity4, out));
    tests::ExpectEqualImages(out, Row<float>({-0.0F, 0, 0}));
}

TEST(OverBuild, AllocatesAnOutputOfAnotherTypeOrSizeAnewAndWritesOneThatFitsInPlace)
{
    cv::Mat const mask = Draw<uchar>({"151"});
    cv::Mat const marker = Draw<uchar>({"199"});
    cv::Mat out(4, 4, CV_64FC3, cv::Scalar::all(7));
    ASSERT_TRUE(OverBuild(mask, marker, eConnexity4, out));
    ExpectDrawn(out, {"155"});
    EXPECT_EQ(out.type(), CV_8UC1);
    uchar const * const place = out.data;
    ASSERT_TRUE(UnderBuild(mask, marker, eConnexity4Wrapped, out));
    ExpectDrawn(out, {"151"});
    EXPECT_EQ(out.data, place);
}

} // namespace

} // namespace morvane::geodesy
