// GeodesicDistance on drawn images.
#include <morvane/geodesy/GeodesicOperators.h>

#include "support/AllTypes.h"
#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <limits>

namespace morvane::geodesy
{

namespace
{

using tests::Draw;
using tests::ExpectDrawn;
using tests::kDilatedDepths;
using tests::Row;

/// The distances in an image that the operator makes.
cv::Mat Distances(cv::Mat const & marker, cv::Mat const & mask, int shape)
{
    cv::Mat out;
    EXPECT_TRUE(GeodesicDistance(marker, mask, shape, out));
    EXPECT_EQ(out.type(), mask.type());
    return out;
}

TEST(GeodesicDistance, CountsStepsWithinTheMaskFromOneOn)
{
    for (int const depth : kDilatedDepths)
    {
        cv::Mat const marker = Draw({".....", "1....", "....."}, depth);
        cv::Mat const mask = Draw({"11111", "1...1", "11111"}, depth);
        ExpectDrawn(Distances(marker, mask, cv::MORPH_RECT), {"22345", "1...5", "22345"});
        ExpectDrawn(Distances(marker, mask, cv::MORPH_CROSS), {"23456", "1...7", "23456"});
    }
}

TEST(GeodesicDistance, PixelsThatAreNeverReachedHoldZero)
{
    for (int const depth : kDilatedDepths)
    {
        cv::Mat const marker = Draw({"1......", "......."}, depth);
        cv::Mat const mask = Draw({"111.111", "...1111"}, depth);
        ExpectDrawn(Distances(marker, mask, cv::MORPH_CROSS), {"123....", "......."});
        ExpectDrawn(Distances(marker, mask, cv::MORPH_RECT), {"123.567", "...4567"});
    }
}

TEST(GeodesicDistance, NearestOfSeveralMarkersCounts)
{
    cv::Mat const marker = Draw<ushort>({"1.......1", "....1...."});
    cv::Mat const mask = Draw<ushort>({"111111111", "....1...."});
    ExpectDrawn(Distances(marker, mask, cv::MORPH_CROSS), {"123323321", "....1...."});
}

TEST(GeodesicDistance, PathsNeverLeaveTheImage)
{
    cv::Mat const marker = Draw<uchar>({"1..", "...", "..."});
    cv::Mat const mask = Draw<uchar>({"1.1", "1.1", "1.1"});
    ExpectDrawn(Distances(marker, mask, cv::MORPH_RECT), {"1..", "2..", "3.."});
}

TEST(GeodesicDistance, AnyValueButZeroCounts)
{
    cv::Mat const marker = Draw<uchar>({"9...", "...5"});
    cv::Mat const mask = Draw<uchar>({"z831", "...2"});
    ExpectDrawn(Distances(marker, mask, cv::MORPH_CROSS), {"1232", "...1"});
    ExpectDrawn(Distances(Row<short>({-1, 0, 0}), Row<short>({256, -256, -32768}), cv::MORPH_RECT), {"123"});
}

TEST(GeodesicDistance, NaNInfinitiesAndTheSmallestNumbersAreNotZero)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const infinity = std::numeric_limits<float>::infinity();
    float const least = std::numeric_limits<float>::denorm_min();
    cv::Mat const mask = Row<float>({nan, -infinity, least, -least, 1e-11F, -0.0F, 1.0F});
    for (float const seed : {nan, infinity, -infinity, least, 1e-11F, -2.0F})
    {
        cv::Mat const marker = Row<float>({seed, 0, 0, -0.0F, 0, 0, 0});
        ExpectDrawn(Distances(marker, mask, cv::MORPH_RECT), {"12345.."});
    }
    ExpectDrawn(Distances(Row<double>({-0.0, 1e-300, 0.0}), Row<double>({1.0, 1e-300, 1.0}), cv::MORPH_RECT), {"212"});
}

TEST(GeodesicDistance, MarkerOutsideTheMaskHoldsTheLargestValueAndStartsNoPath)
{
    for (int const depth : kDilatedDepths)
    {
        cv::Mat const marker = Draw({"11....."}, depth);
        cv::Mat const mask = Draw({".1111.."}, depth);
        ExpectDrawn(Distances(marker, mask, cv::MORPH_RECT), {"51234.."});
        // Beside a path that ends at once, as its clearing is counted as a change.
        ExpectDrawn(Distances(Draw({"1.1..."}, depth), Draw({"1..1.1"}, depth), cv::MORPH_RECT), {"1.3..."});
    }
}

TEST(GeodesicDistance, MarkerThatLiesWhollyOutsideTheMaskHoldsOne)
{
    for (int const depth : kDilatedDepths)
    {
        ExpectDrawn(Distances(Draw({"1..1"}, depth), Draw({".11."}, depth), cv::MORPH_RECT), {"1..1"});
        ExpectDrawn(Distances(Draw({"1..1"}, depth), Draw({"...."}, depth), cv::MORPH_RECT), {"1..1"});
    }
}

TEST(GeodesicDistance, WithoutAnyMarkerAllIsZero)
{
    for (int const depth : kDilatedDepths)
    {
        for (int const shape : tests::kElementShapes)
        {
            cv::Mat const none(3, 4, depth, cv::Scalar(0));
            ExpectDrawn(Distances(none, Draw({"1111", "1..1", "1111"}, depth), shape), {"....", "....", "...."});
            ExpectDrawn(Distances(none, none, shape), {"....", "....", "...."});
        }
    }
}

TEST(GeodesicDistance, MarkerThatFillsTheMaskHoldsOneEverywhere)
{
    for (int const depth : kDilatedDepths)
    {
        cv::Mat const mask = Draw({"1111", "1..1"}, depth);
        ExpectDrawn(Distances(mask, mask, cv::MORPH_RECT), {"1111", "1..1"});
    }
}

TEST(GeodesicDistance, OfOnePixelIsOneWhereItIsMarked)
{
    for (int const depth : tests::kDepths)
    {
        // No element is made for it, so that every shape will do.
        for (int const shape : {0, 1, 2, 7, -1})
        {
            ExpectDrawn(Distances(Draw({"5"}, depth), Draw({"1"}, depth), shape), {"1"});
            ExpectDrawn(Distances(Draw({"."}, depth), Draw({"1"}, depth), shape), {"."});
            ExpectDrawn(Distances(Draw({"5"}, depth), Draw({"."}, depth), shape), {"1"});
            ExpectDrawn(Distances(Draw({"."}, depth), Draw({"."}, depth), shape), {"."});
        }
    }
}

TEST(GeodesicDistance, OfTwoPixelsCountsOneStep)
{
    for (int const depth : kDilatedDepths)
    {
        auto const expect = [&](char const * marker, char const * mask, char const * expected) {
            ExpectDrawn(Distances(Draw({marker}, depth), Draw({mask}, depth), cv::MORPH_RECT), {expected});
            cv::Mat const column = Distances(Draw({marker}, depth).t(), Draw({mask}, depth).t(), cv::MORPH_CROSS);
            ExpectDrawn(column.t(), {expected});
        };
        expect("1.", "11", "12");
        expect(".1", "11", "21");
        expect("11", "11", "11");
        expect("11", "1.", "12");
        expect("1.", "1.", "1.");
        expect("1.", ".1", "1.");
        expect("..", "11", "..");
    }
}

TEST(GeodesicDistance, WritesIntoAnImageOfTheCaller)
{
    cv::Mat out(1, 4, CV_16SC1, cv::Scalar(-7));
    uchar const * const place = out.data;
    EXPECT_TRUE(GeodesicDistance(Draw<short>({".1.."}), Draw<short>({"111."}), cv::MORPH_CROSS, out));
    EXPECT_EQ(out.data, place);
    ExpectDrawn(out, {"212."});
}

TEST(GeodesicDistance, OutMayBeTheMarkerOrTheMask)
{
    for (int const depth : kDilatedDepths)
    {
        cv::Mat const marker = Draw({"11.....", "......."}, depth);
        cv::Mat const mask = Draw({".1111..", "....1.1"}, depth);
        cv::Mat out = marker.clone();
        EXPECT_TRUE(GeodesicDistance(out, mask, cv::MORPH_CROSS, out));
        ExpectDrawn(out, {"61234..", "....5.."});
        out = mask.clone();
        EXPECT_TRUE(GeodesicDistance(marker, out, cv::MORPH_CROSS, out));
        ExpectDrawn(out, {"61234..", "....5.."});
        out = mask.clone();
        EXPECT_TRUE(GeodesicDistance(out, out, cv::MORPH_CROSS, out));
        ExpectDrawn(out, {".1111..", "....1.1"});
    }
}

} // namespace

} // namespace morvane::geodesy
