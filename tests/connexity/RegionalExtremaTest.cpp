// LabelMaxima and LabelMinima on drawn images.
#include <morvane/connexity/RegionalExtrema.h>

#include "support/AllTypes.h"
#include "support/ExtremaOracle.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::ExpectDrawn;
using tests::Extremum;
using tests::Maxima;
using tests::Minima;
using tests::PointsOfExtrema;
using tests::Row;

TEST(LabelExtrema, AreFlatZonesThatNoNeighbourExceeds)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = Draw({"11111", "13312", "13111", "11112"}, depth);
        ExpectDrawn(Maxima(image, eConnexity4), {".....", ".11.2", ".1...", "....3"});
        ExpectDrawn(Minima(image, eConnexity4), {"11111", "1..1.", "1.111", "1111."});
    }
}

TEST(LabelExtrema, ConstantImageIsOneMaximumAndOneMinimum)
{
    for (int const depth : tests::kDepths)
    {
        for (int number = 0; number < tests::kConnexityCount; ++number)
        {
            for (int const value : {0, 7})
            {
                cv::Mat const image(4, 70, depth, cv::Scalar(value));
                cv::Mat const one(4, 70, CV_32SC1, cv::Scalar(1));
                EXPECT_TRUE(tests::EqualImages(Maxima(image, number), one)) << number;
                EXPECT_TRUE(tests::EqualImages(Minima(image, number), one)) << number;
            }
        }
    }
}

TEST(LabelExtrema, ZeroIsAValueLikeTheOthers)
{
    cv::Mat const image = Draw<short>({"..2", ".22", "222"});
    ExpectDrawn(Minima(image, eConnexity4), {"11.", "1..", "..."});
    ExpectDrawn(Maxima(image, eConnexity4), {"..1", ".11", "111"});
    cv::Mat const below = Row<short>({-1, 0, -1, -2});
    ExpectDrawn(Maxima(below, eConnexity4), {".1.."});
    ExpectDrawn(Minima(below, eConnexity4), {"1..2"});
}

TEST(LabelExtrema, PlateauOnTheBorderIsJudgedByItsInnerNeighboursAlone)
{
    cv::Mat const image = Draw<uchar>({"55552", "52222", "52322", "52222"});
    ExpectDrawn(Maxima(image, eConnexity8), {"1111.", "1....", "1.2..", "1...."});
    ExpectDrawn(Minima(image, eConnexity4), {"....1", ".1111", ".1.11", ".1111"});
}

TEST(LabelExtrema, OneHigherNeighbourAtTheFarEndSpoilsAPlateau)
{
    ExpectDrawn(
        Maxima(
            Draw<uchar>({
                "555555555",
                "111111115",
                "555555515",
                "511111515",
                "515561515",
                "515111515",
                "515555515",
                "511111115",
                "555555555",
            }),
            eConnexity4),
        {
            ".........",
            ".........",
            ".........",
            ".........",
            "....1....",
            ".........",
            ".........",
            ".........",
            ".........",
        });
}

TEST(LabelExtrema, WindingPlateauIsOneZone)
{
    ExpectDrawn(
        Maxima(
            Draw<uchar>({
                "55555",
                "11115",
                "55515",
                "51115",
                "55555",
            }),
            eConnexity8),
        {
            "11111",
            "....1",
            "111.1",
            "1...1",
            "11111",
        });
}

TEST(LabelExtrema, SecondDifferenceDoesNotRedeemAPlateau)
{
    // The first neighbour that is met is higher, the last one is lower.
    ExpectDrawn(Maxima(Row<uchar>({6, 5, 5, 4}), eConnexity4), {"1..."});
    ExpectDrawn(Maxima(Row<uchar>({4, 5, 5, 6}), eConnexity4), {"...1"});
    ExpectDrawn(Minima(Row<uchar>({6, 5, 5, 4}), eConnexity4), {"...1"});
    ExpectDrawn(Minima(Row<uchar>({4, 5, 5, 6}), eConnexity4), {"1..."});
}

TEST(LabelExtrema, CountInRasterOrderOfFirstPixelsAndOthersConsumeNoLabel)
{
    cv::Mat const image = Draw<ushort>({"...7..5", ".3.78.5", ".39....", "3....6."});
    ExpectDrawn(Maxima(image, eConnexity4), {"......1", "....2.1", "..3....", "4....5."});
    // Over the corner, more of them touch a higher one.
    ExpectDrawn(Maxima(image, eConnexity8), {"......1", "....2.1", "..3....", ".....4."});
}

TEST(LabelExtrema, ReachAsFarAsTheNeighbourhood)
{
    cv::Mat const axes = Draw<uchar>({"5.6", "...", "..."});
    ExpectDrawn(Maxima(axes, eConnexity8), {"1.2", "...", "..."});
    ExpectDrawn(Maxima(axes, eConnexity12), {"..1", "...", "..."});
}

TEST(LabelExtrema, PlateausOfFarNeighboursAreOne)
{
    cv::Mat const image = Draw<uchar>({"5151", "1111", "6111"});
    // With steps of two, both fives are one zone, which touches the six two rows below.
    ExpectDrawn(Maxima(image, eConnexity12Interleaved), {"....", "....", "1..."});
    ExpectDrawn(Maxima(image, eConnexity8), {"1.2.", "....", "3..."});
    ExpectDrawn(Minima(image, eConnexity24Interleaved), {".1.1", "1111", ".111"});
}

TEST(LabelExtrema, PlateauAcrossTheSeamIsOneZone)
{
    cv::Mat const image = Draw<uchar>({"51115", "11111", "31113", "31114"});
    ExpectDrawn(Maxima(image, eConnexity4), {"1...2", ".....", "3....", "3...4"});
    ExpectDrawn(Maxima(image, eConnexity4Wrapped), {"1...1", ".....", ".....", "....2"});
    ExpectDrawn(Minima(image, eConnexity4Wrapped), {".111.", "11111", ".111.", ".111."});
    cv::Mat const pits = Draw<uchar>({"15551", "55555", "35552"});
    ExpectDrawn(Minima(pits, eConnexity8), {"1...2", ".....", "3...4"});
    ExpectDrawn(Minima(pits, eConnexity8Wrapped), {"1...1", ".....", "....2"});
}

TEST(LabelExtrema, SeamIsCrossedDiagonallyAndByStepsOfTwo)
{
    cv::Mat const diagonal = Draw<uchar>({"51111", "11116", "11111"});
    ExpectDrawn(Maxima(diagonal, eConnexity4Wrapped), {"1....", "....2", "....."});
    ExpectDrawn(Maxima(diagonal, eConnexity8Wrapped), {".....", "....1", "....."});
    cv::Mat const apart = Draw<uchar>({"511161"});
    ExpectDrawn(Maxima(apart, eConnexity8Wrapped), {"1...2."});
    ExpectDrawn(Maxima(apart, eConnexity12InterleavedWrapped), {"....1."});
    ExpectDrawn(Maxima(apart, eConnexity12Interleaved), {"1...2."});
}

TEST(LabelExtrema, TopAndBottomNeverMeet)
{
    cv::Mat const image = Draw<uchar>({"5", "1", "6"});
    for (int const number : {eConnexity4Wrapped, eConnexity8Wrapped})
    {
        ExpectDrawn(Maxima(image, number), {"1", ".", "2"});
    }
}

TEST(LabelExtrema, OneColumnThatIsItsOwnNeighbourIsJudgedByTheOthers)
{
    // With the wrap, the pixel beside is the pixel itself, or out of reach.
    cv::Mat const image = Draw<uchar>({"5", "5", "1", "4"});
    for (int const number : {1, 4, 8, 10, 12})
    {
        bool const reachesTwo = number > 4;
        ExpectDrawn(Maxima(image, number), {"1", "1", ".", reachesTwo ? "." : "2"});
    }
}

template <class T>
void ExpectNaNKeepsNeighboursFromBeingExtrema()
{
    T const nan = std::numeric_limits<T>::quiet_NaN();
    cv::Mat const image = Row<T>({1, 3, 3, nan, 2, 1, 5, 1, nan, nan, 0, 4});
    ExpectDrawn(Maxima(image, eConnexity4), {"......1....2"});
    ExpectDrawn(Minima(image, eConnexity4), {"1....2......"});
}

TEST(LabelExtrema, NaNIsNoneAndKeepsItsNeighboursFromBeingOne)
{
    ExpectNaNKeepsNeighboursFromBeingExtrema<float>();
    ExpectNaNKeepsNeighboursFromBeingExtrema<double>();
}

TEST(LabelExtrema, NaNWithoutAnyNeighbourIsOne)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat const image = Row<float>({nan});
    for (int const number : {0, 2, 3, 5, 6, 7, 9, 11})
    {
        ExpectDrawn(Maxima(image, number), {"1"});
        ExpectDrawn(Minima(image, number), {"1"});
    }
    // Beside itself, it has one, to which it is not equal.
    for (int const number : {1, 4, 8, 10, 12})
    {
        ExpectDrawn(Maxima(image, number), {"."});
        ExpectDrawn(Minima(image, number), {"."});
    }
}

TEST(LabelExtrema, NaNSpoilsAcrossTheSeam)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    cv::Mat const image = Row<double>({5, 5, 1, nan});
    ExpectDrawn(Maxima(image, eConnexity8), {"11.."});
    ExpectDrawn(Maxima(image, eConnexity8Wrapped), {"...."});
}

TEST(LabelExtrema, InfinitiesAndBothZerosAreOrdinaryValues)
{
    float const infinity = std::numeric_limits<float>::infinity();
    cv::Mat const image = Row<float>({infinity, infinity, 3e38F, -0.0F, 0.0F, -infinity, 0.0F, -0.0F});
    ExpectDrawn(Maxima(image, eConnexity4), {"11....22"});
    ExpectDrawn(Minima(image, eConnexity4), {".....1.."});
}

TEST(LabelExtrema, NeighbouringNumbersOfEveryTypeDiffer)
{
    ExpectDrawn(Maxima(Row<int>({2147483646, 2147483647, 2147483646}), eConnexity4), {".1."});
    ExpectDrawn(Minima(Row<int>({-2147483647, -2147483647 - 1, -2147483647}), eConnexity4), {".1."});
    ExpectDrawn(Maxima(Row<int>({-2147483647 - 1, 2147483647}), eConnexity4), {".1"});
    ExpectDrawn(Maxima(Row<short>({-32768, 32767, 0}), eConnexity4), {".1."});
    ExpectDrawn(Maxima(Row<ushort>({65534, 65535, 255}), eConnexity4), {".1."});
    ExpectDrawn(Maxima(Row<uchar>({127, 128, 255}), eConnexity4), {"..1"});
    ExpectDrawn(Maxima(Row<double>({1.0, std::nextafter(1.0, 2.0), 1.0}), eConnexity4), {".1."});
    ExpectDrawn(Minima(Row<float>({0.0F, std::numeric_limits<float>::denorm_min(), 0.0F}), eConnexity4), {"1.2"});
}

TEST(LabelExtrema, WithoutNeighboursEveryPixelIsOne)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    cv::Mat const image = Row<double>({4, 4, nan, nan, 1, 9});
    for (int const number : tests::kStrangeConnexities)
    {
        ExpectDrawn(Maxima(image, number), {"123456"});
        ExpectDrawn(Minima(image, number), {"123456"});
    }
}

TEST(LabelExtrema, ListPixelsInTheOrderOfTheFlood)
{
    cv::Mat const image = Draw<uchar>({"1.33", "1..3", "11.."});
    PointsOfExtrema points;
    ASSERT_TRUE(LabelMaxima(image, eConnexity4, points));
    EXPECT_EQ(points, (PointsOfExtrema{{1, {{0, 0}, {0, 1}, {0, 2}, {1, 2}}}, {2, {{2, 0}, {3, 0}, {3, 1}}}}));
    cv::Mat const block = Draw<uchar>({"222", "272", "222"});
    ASSERT_TRUE(LabelMinima(block, eConnexity8, points));
    EXPECT_EQ(points, (PointsOfExtrema{{1, {{0, 0}, {0, 1}, {1, 0}, {0, 2}, {1, 2}, {2, 1}, {2, 0}, {2, 2}}}}));
    // The other order of the same eight neighbours.
    ASSERT_TRUE(LabelMinima(block, eConnexity8AxesFirst, points));
    EXPECT_EQ(points, (PointsOfExtrema{{1, {{0, 0}, {1, 0}, {0, 1}, {2, 0}, {2, 1}, {0, 2}, {1, 2}, {2, 2}}}}));
}

TEST(LabelExtrema, ListIsClearedFirst)
{
    PointsOfExtrema points{{-3, {{1, 1}}}, {1, {{7, 7}}}, {9, {}}};
    ASSERT_TRUE(LabelMaxima(Draw<uchar>({"12"}), eConnexity4, points));
    EXPECT_EQ(points, (PointsOfExtrema{{1, {{1, 0}}}}));
}

TEST(LabelExtrema, ImageMayBeItsOwnLabelImage)
{
    for (int const depth : tests::kLabelDepths)
    {
        for (int const number : {0, 1, 4, 6, 12})
        {
            cv::Mat const image = Draw({"2115", "1331", "1331", "2115"}, depth);
            for (Extremum const kind : tests::kExtrema)
            {
                cv::Mat const expected = tests::LabelledExtrema(kind, image, number, depth);
                cv::Mat both = image.clone();
                EXPECT_TRUE(tests::CallLabel(kind, both, number, both));
                EXPECT_TRUE(tests::EqualImages(both, expected)) << number;
            }
        }
    }
}

} // namespace

} // namespace morvane::connexity
