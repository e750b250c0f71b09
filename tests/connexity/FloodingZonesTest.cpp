// FloodingNoZero, FloodingDelta and FloodingDeltaNoZero on drawn images.
#include <morvane/connexity/Flooding.h>

#include "support/AllTypes.h"
#include "support/FloodingOracle.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace morvane::connexity
{

namespace
{

using tests::AllSpreads;
using tests::Draw;
using tests::Drawing;
using tests::DrawMarkers;
using tests::EqualImages;
using tests::Row;
using tests::SpreadInput;
using tests::SpreadUnderTest;

/// Expects that @p spread gives these markers, in place.
void ExpectSpread(
    SpreadUnderTest const & spread, SpreadInput const & input, cv::Mat const & before, cv::Mat const & after,
    bool answer = true)
{
    SCOPED_TRACE(spread.name);
    cv::Mat markers = tests::CopyOf(before);
    uchar const * const place = markers.data;
    EXPECT_EQ(spread.call(input, markers), answer);
    EXPECT_EQ(markers.data, place);
    EXPECT_TRUE(EqualImages(markers, after));
}

/// The same of every operator, with deltas of 0 and a second image without edges.
void ExpectSpreads(cv::Mat const & image, Drawing const & before, Drawing const & after)
{
    cv::Mat const even(image.rows, image.cols, CV_16UC1, cv::Scalar(3));
    for (auto const & spread : AllSpreads())
    {
        ExpectSpread(spread, {image, even}, DrawMarkers(before), DrawMarkers(after));
    }
}

TEST(FloodingZones, ZoneInOneBasin_GetsItsMarker)
{
    cv::Mat const image = Draw<uchar>({"22222", "22222", "22222", "22222"});
    ExpectSpreads(image, {".....", ".....", "..6..", "....."}, {"66666", "66666", "66666", "66666"});
}

TEST(FloodingZones, WatershedLine_IsAZoneOfItsOwnWithoutAMarker)
{
    cv::Mat const image = Draw<uchar>({"2222222", "2222222", "2222222"});
    ExpectSpreads(image, {".......", ".1...2.", "......."}, {"111.222", "111.222", "111.222"});
}

TEST(FloodingZones, MarkerAtTheBorderEndOfALine_FillsTheLine)
{
    // The border has the basin of the pixel beside it: here the line.
    cv::Mat const image = Draw<uchar>({"2222222", "2222222", "2222222"});
    ExpectSpreads(image, {"...9...", ".1...2.", "......."}, {"1119222", "1119222", "1119222"});
}

TEST(FloodingZones, MarkersOnTheBorder_CountWhereTheyAreTheHighest)
{
    cv::Mat const image = Draw<uchar>({"2222222", "2222222", "2222222"});
    ExpectSpreads(image, {"9......", ".1...4.", "......3"}, {"999.444", "999.444", "999.444"});
}

TEST(FloodingZones, MarkersOnTheBorderAlone_LeaveOneBasin)
{
    cv::Mat const image = Draw<ushort>({"22222", "22222", "22222"});
    ExpectSpreads(image, {"1....", "....8", "..3.."}, {"88888", "88888", "88888"});
}

TEST(FloodingZones, WithoutMarkers_EverythingIsZero)
{
    cv::Mat const image = Draw<short>({"2233", "2233", "4455"});
    ExpectSpreads(image, {"....", "....", "...."}, {"....", "....", "...."});
}

TEST(FloodingZones, ZonesThatHoldNegativeMarkersAlone_KeepTheHighest)
{
    cv::Mat image = Draw<uchar>({"1111", "1331", "1111"});
    cv::Mat markers = DrawMarkers({"...4", "....", "...."});
    markers.at<int>(1, 1) = -7;
    markers.at<int>(1, 2) = -5;
    cv::Mat expected = DrawMarkers({"4444", "4..4", "4444"});
    expected(cv::Rect(1, 1, 2, 1)).setTo(-5);
    SpreadInput const input{image, image, eConnexity4, 0.0, 0.0};
    for (auto const & spread : AllSpreads())
    {
        if (spread.deltas > 0) ExpectSpread(spread, input, markers, expected);
    }
    // Without a bound the zones are those of the measured pixels: here the outer ring is not.
    image.setTo(0, image == 1);
    expected.setTo(0, image == 0);
    ExpectSpread(AllSpreads()[0], input, markers, expected);
}

TEST(FloodingZones, SmallestMarkerOfAll_ReadsAsOneMore)
{
    // The search for the highest starts at -2147483647.
    cv::Mat const image = Row<uchar>({3, 0, 3});
    int const least = std::numeric_limits<int>::min();
    ExpectSpread(AllSpreads()[0], {image, {}}, Row<int>({least, least, 5}), Row<int>({least + 1, 0, 5}));
    ExpectSpread(AllSpreads()[1], {image, {}}, Row<int>({least, least, 5}), Row<int>({least + 1, least + 1, 5}));
}

TEST(FloodingZones, EmptyPixels_AreZeroWithNoZeroAlsoWhereAMarkerStood)
{
    cv::Mat const image = Draw<uchar>({"..22", ".222", "...."});
    cv::Mat const before = DrawMarkers({"7...", "..5.", "8..."});
    SpreadInput const input{image, image, eConnexity4, 0.0, 0.0};
    for (auto const & spread : AllSpreads())
    {
        cv::Mat const after =
            spread.noZero ? DrawMarkers({"..55", ".555", "...."}) : DrawMarkers({"8855", "8555", "8888"});
        ExpectSpread(spread, input, before, after);
    }
}

TEST(FloodingZones, WhatCountsAsEmptyInFloats_IsZeroWithNoZero)
{
    cv::Mat const image = Row<float>({4, 1e-11F, 4, 1e-10F, 4, std::nextafter(1e-10F, 1.0F), 4});
    ExpectSpread(AllSpreads()[0], {image, {}}, Row<int>({1, 2, 3, 4, 0, 0, 6}), Row<int>({1, 0, 3, 0, 6, 6, 6}));
}

TEST(FloodingNoZero, ValuesDoNotSplitZones)
{
    cv::Mat const image = Draw<int>({"19.27", "19.27", "19.77"});
    ExpectSpread(
        AllSpreads()[0], {image, {}}, DrawMarkers({".....", "4....", "....."}),
        DrawMarkers({"44...", "44...", "44..."}));
}

TEST(FloodingDelta, StepsAboveTheBound_SplitZones)
{
    cv::Mat const image = Row<uchar>({10, 12, 14, 17, 19, 0, 1});
    cv::Mat const before = Row<int>({0, 3, 0, 0, 4, 0, 9});
    ExpectSpread(AllSpreads()[1], {image, {}, eConnexity4, 2.9}, before, Row<int>({3, 3, 3, 4, 4, 9, 9}));
    ExpectSpread(AllSpreads()[1], {image, {}, eConnexity4, 3.0}, before, Row<int>({4, 4, 4, 4, 4, 9, 9}));
    ExpectSpread(AllSpreads()[3], {image, {}, eConnexity4, 2.9}, before, Row<int>({3, 3, 3, 4, 4, 0, 9}));
}

TEST(FloodingDelta, BoundOnAnIntegerImage_KeepsTheLowBitsOfItsType)
{
    cv::Mat const image = Row<uchar>({10, 54, 99, 200});
    cv::Mat const before = Row<int>({3, 0, 0, 4});
    // 300.7 is 44 in 8 bits, -1 is 255, 256 is 0.
    ExpectSpread(AllSpreads()[1], {image, {}, eConnexity4, 300.7}, before, Row<int>({3, 3, 0, 4}));
    ExpectSpread(AllSpreads()[1], {image, {}, eConnexity4, -1.0}, before, Row<int>({4, 4, 4, 4}));
    ExpectSpread(AllSpreads()[1], {image, {}, eConnexity4, 256.0}, before, before);
    cv::Mat wide;
    image.convertTo(wide, CV_16S);
    ExpectSpread(AllSpreads()[1], {wide, {}, eConnexity4, 300.7}, before, Row<int>({4, 4, 4, 4}));
    ExpectSpread(AllSpreads()[1], {wide, {}, eConnexity4, -1.0}, before, before);
}

TEST(FloodingDelta, NegativeAndNaNBoundsOnFloats_LinkNothing)
{
    cv::Mat const image = Row<double>({7, 7, 7});
    cv::Mat const before = Row<int>({3, 0, 2});
    for (double const delta : {-1.0, -1e-300, std::numeric_limits<double>::quiet_NaN()})
    {
        SCOPED_TRACE(delta);
        ExpectSpread(AllSpreads()[1], {image, {}, eConnexity4, delta}, before, before);
        ExpectSpread(AllSpreads()[3], {image, {}, eConnexity4, delta}, before, before);
        ExpectSpread(AllSpreads()[2], {image, image, eConnexity4, delta, 1.0}, before, before);
        ExpectSpread(AllSpreads()[4], {image, image, eConnexity4, 1.0, delta}, before, before);
    }
    ExpectSpread(AllSpreads()[1], {image, {}, eConnexity4, 0.0}, before, Row<int>({3, 3, 3}));
}

TEST(FloodingDelta, NaNPixels_AreZonesOfTheirOwn)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat const image = Row<float>({2, nan, nan, 2, 2});
    cv::Mat const before = Row<int>({1, 7, 0, 3, 0});
    ExpectSpread(AllSpreads()[1], {image, {}, eConnexity4, 9.0}, before, Row<int>({1, 7, 0, 3, 3}));
    ExpectSpread(AllSpreads()[3], {image, {}, eConnexity4, 9.0}, before, Row<int>({1, 0, 0, 3, 3}));
    ExpectSpread(AllSpreads()[0], {image, {}, eConnexity4}, before, Row<int>({1, 0, 0, 3, 3}));
}

TEST(FloodingDeltaOfTwo, StepsOfEitherImage_SplitZones)
{
    cv::Mat const image = Row<ushort>({5, 5, 5, 9, 9, 0, 0});
    cv::Mat const second = Row<float>({1, 1.5F, 3, 3, 3, 3, 0});
    cv::Mat const before = Row<int>({2, 0, 0, 4, 0, 0, 6});
    SpreadInput const input{image, second, eConnexity4, 1.0, 0.5};
    ExpectSpread(AllSpreads()[2], input, before, Row<int>({2, 2, 0, 4, 4, 0, 6}));
    // What is empty is asked of the first image alone.
    ExpectSpread(AllSpreads()[4], input, before, Row<int>({2, 2, 0, 4, 4, 0, 0}));
    ExpectSpread(AllSpreads()[4], {second, image, eConnexity4, 0.5, 1.0}, before, Row<int>({2, 2, 0, 4, 4, 0, 0}));
    // Each bound belongs to its image.
    ExpectSpread(AllSpreads()[2], {image, second, eConnexity4, 4.0, 0.4}, before, Row<int>({2, 0, 4, 4, 4, 0, 6}));
}

TEST(FloodingDeltaOfTwo, BasinsAreThoseOfTheFirstImage)
{
    // The line lies on the ridge of the first image, and in the middle between the markers without one.
    cv::Mat const ridge = Draw<uchar>({"119111111", "119111111", "119111111"});
    cv::Mat const even = Draw<uchar>({"111111111", "111111111", "111111111"});
    cv::Mat const before = DrawMarkers({".........", ".1...2...", "........."});
    cv::Mat const onRidge = DrawMarkers({"11.222222", "11.222222", "11.222222"});
    cv::Mat const inMiddle = DrawMarkers({"111.22222", "111.22222", "111.22222"});
    for (auto const & spread : AllSpreads())
    {
        if (spread.deltas < 2) continue;
        ExpectSpread(spread, {ridge, even, eConnexity4, 9.0, 9.0}, before, onRidge);
        ExpectSpread(spread, {even, ridge, eConnexity4, 9.0, 9.0}, before, inMiddle);
    }
}

TEST(FloodingZones, NeighbourhoodDecidesWhichPixelsAreOneZone)
{
    cv::Mat const image = Draw<uchar>({"2..2", ".2..", "..2."});
    cv::Mat const before = DrawMarkers({"3...", "....", "...."});
    ExpectSpread(AllSpreads()[0], {image, {}, eConnexity4}, before, DrawMarkers({"3...", "....", "...."}));
    ExpectSpread(AllSpreads()[0], {image, {}, eConnexity8}, before, DrawMarkers({"3...", ".3..", "..3."}));
    ExpectSpread(AllSpreads()[0], {image, {}, eConnexity4Wrapped}, before, DrawMarkers({"3..3", "....", "...."}));
    ExpectSpread(AllSpreads()[0], {image, {}, eConnexity8Wrapped}, before, DrawMarkers({"3..3", ".3..", "..3."}));
    // Outside the table every pixel is a zone.
    ExpectSpread(AllSpreads()[1], {image, {}, 13, 9.0}, before, before);
}

TEST(FloodingZones, MarkersOf8And16Bits_EndWithFalseAndTheNumbersOfTheZones)
{
    cv::Mat const image = Draw<uchar>({"22.33", "22.33", "22.34"});
    cv::Mat const even(image.size(), CV_8UC1, cv::Scalar(1));
    cv::Mat const before = DrawMarkers({".....", ".7...", "....."});
    for (int const depth : {CV_8U, CV_16U, CV_16S})
    {
        SCOPED_TRACE(cv::typeToString(depth));
        cv::Mat seeds;
        before.convertTo(seeds, depth);
        for (auto const & spread : AllSpreads())
        {
            cv::Mat const joined = Draw({"11.22", "11.22", "11.22"}, depth);
            cv::Mat const split = Draw({"11.22", "11.22", "11.23"}, depth);
            cv::Mat const full = Draw({"11233", "11233", "11234"}, depth);
            cv::Mat const & expected = !spread.noZero ? full : spread.deltas == 0 ? joined : split;
            ExpectSpread(spread, {image, even}, seeds, expected, false);
        }
    }
}

TEST(FloodingZones, MarkersOf8And16Bits_MakeTheBasinsThatSplitTheNumberedZones)
{
    cv::Mat const image = Draw<uchar>({"2222222", "2222222", "2222222"});
    for (int const depth : {CV_8U, CV_16U, CV_16S})
    {
        SCOPED_TRACE(cv::typeToString(depth));
        cv::Mat const seeds = Draw({".......", ".1...2.", "......."}, depth);
        for (auto const & spread : AllSpreads())
        {
            ExpectSpread(spread, {image, image}, seeds, Draw({"1112333", "1112333", "1112333"}, depth), false);
        }
    }
}

TEST(FloodingZones, SignedMarkersBelowZero_AreNoSeeds)
{
    // Read without their sign they would be labels far above the other.
    cv::Mat const image = Draw<uchar>({"2222222", "2222222", "2222222"});
    cv::Mat seeds = Draw({".......", ".1.....", "......."}, CV_16SC1);
    seeds.at<short>(1, 5) = -2;
    ExpectSpread(AllSpreads()[0], {image, {}}, seeds, Draw({"1111111", "1111111", "1111111"}, CV_16SC1), false);
}

TEST(FloodingZones, LargeUnsignedMarkers_AreSeeds)
{
    cv::Mat const image = Draw<uchar>({"2222222", "2222222", "2222222"});
    cv::Mat seeds = Draw({".......", ".1.....", "......."}, CV_16UC1);
    seeds.at<ushort>(1, 5) = 0xFFFE;
    ExpectSpread(AllSpreads()[0], {image, {}}, seeds, Draw({"1112333", "1112333", "1112333"}, CV_16UC1), false);
}

/// Single pixels of value 4 among empty ones.
cv::Mat Isolated(int zones)
{
    cv::Mat image(1, 2 * zones, CV_8UC1, cv::Scalar(0));
    for (int zone = 0; zone < zones; ++zone)
    {
        image.at<uchar>(0, 2 * zone) = 4;
    }
    return image;
}

/// The number of each zone of Isolated() as FloodingNoZero() leaves it.
cv::Mat NumbersOf(cv::Mat const & image, int type)
{
    return tests::OracleLabels(tests::OracleZones(tests::OracleTakesPart(image), eConnexity4), image.size(), type);
}

TEST(FloodingZones, LargestLabelOfAnUnsignedType_MakesAnEmptyTableAndFalse)
{
    for (int const zones : {254, 255, 256, 300, 65535, 65536})
    {
        SCOPED_TRACE(zones);
        cv::Mat const image = Isolated(zones);
        for (int const depth : {CV_8U, CV_16U})
        {
            cv::Mat const seeds(image.size(), depth, cv::Scalar(1));
            ExpectSpread(AllSpreads()[0], {image, {}}, seeds, NumbersOf(image, depth), false);
        }
        // 32 bits hold them all.
        cv::Mat const seeds(image.size(), CV_32SC1, cv::Scalar(6));
        cv::Mat expected(image.size(), CV_32SC1, cv::Scalar(6));
        expected.setTo(0, image == 0);
        ExpectSpread(AllSpreads()[0], {image, {}}, seeds, expected);
    }
}

TEST(FloodingZones, LargestLabelOfSigned16Bits_IsATableThatOpenCVRefuses)
{
    for (int const zones : {32767, 32768, 40000})
    {
        SCOPED_TRACE(zones);
        cv::Mat const image = Isolated(zones);
        cv::Mat markers(image.size(), CV_16SC1, cv::Scalar(1));
        EXPECT_THROW(static_cast<void>(FloodingNoZero(image, eConnexity4, markers)), cv::Exception);
        EXPECT_TRUE(EqualImages(markers, NumbersOf(image, CV_16SC1)));
    }
    cv::Mat const image = Isolated(32766);
    cv::Mat const seeds(image.size(), CV_16SC1, cv::Scalar(1));
    ExpectSpread(AllSpreads()[0], {image, {}}, seeds, NumbersOf(image, CV_16SC1), false);
}

TEST(FloodingZones, MarkersOfSeveralChannels_EndWithFalseAndTheNumbersInTheFirstElementsOfEachRow)
{
    cv::Mat const image = Draw<uchar>({"22.3", "22.3", "22.3"});
    for (int const depth : tests::kLabelDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            SCOPED_TRACE(cv::typeToString(CV_MAKETYPE(depth, channels)));
            cv::Mat const seeds(image.size(), CV_MAKETYPE(depth, channels), cv::Scalar::all(0));
            cv::Mat const expected = tests::OracleLabels(
                tests::OracleZones(tests::OracleTakesPart(image), eConnexity4), image.size(), seeds.type());
            ASSERT_EQ(tests::ElementAt(expected, 0, 3 / channels, 3 % channels), 2.0);
            ExpectSpread(AllSpreads()[0], {image, {}}, seeds, expected, false);
        }
    }
}

TEST(FloodingZones, OnePixel_KeepsItsMarker)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::typeToString(depth));
        SpreadInput input{cv::Mat(1, 1, depth, cv::Scalar(5)), cv::Mat(1, 1, depth, cv::Scalar(0))};
        for (auto const & spread : AllSpreads())
        {
            ExpectSpread(spread, input, Row<int>({8}), Row<int>({8}));
            ExpectSpread(spread, input, Row<int>({-8}), Row<int>({-8}));
        }
        std::swap(input.image, input.second);
        for (auto const & spread : AllSpreads())
        {
            ExpectSpread(spread, input, Row<int>({8}), Row<int>({spread.noZero ? 0 : 8}));
        }
    }
}

TEST(FloodingZones, OneAndTwoRowsOrColumns_AreOneBasin)
{
    cv::Mat const image = Draw<uchar>({"22.33334"});
    cv::Mat const before = DrawMarkers({"1.56...."});
    ExpectSpread(AllSpreads()[0], {image, {}}, before, DrawMarkers({"11.66666"}));
    ExpectSpread(AllSpreads()[1], {image, {}}, before, DrawMarkers({"1156666."}));
    ExpectSpread(AllSpreads()[0], {image.t(), {}}, before.t(), DrawMarkers({"11.66666"}).t());
    ExpectSpread(AllSpreads()[1], {image.t(), {}}, before.t(), DrawMarkers({"1156666."}).t());

    cv::Mat const two = Draw<uchar>({"22.33334", "22.33334"});
    cv::Mat const markers = DrawMarkers({"1.56....", "2......9"});
    cv::Mat const joined = DrawMarkers({"22.99999", "22.99999"});
    cv::Mat const split = DrawMarkers({"22566669", "22566669"});
    ExpectSpread(AllSpreads()[0], {two, {}}, markers, joined);
    ExpectSpread(AllSpreads()[1], {two, {}}, markers, split);
    ExpectSpread(AllSpreads()[0], {two.t(), {}}, markers.t(), joined.t());
    ExpectSpread(AllSpreads()[1], {two.t(), {}}, markers.t(), split.t());
}

} // namespace

} // namespace morvane::connexity
