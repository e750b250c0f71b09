// LabelDeltaFlatZonesWithAreaCondition and its form for measured pixels: which zones are kept.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/StepOracle.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::EqualImages;
using tests::ExpectDrawn;
using tests::Random;
using tests::Shape;

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

/// A second image that hinders no step.
cv::Mat Even(cv::Mat const & image)
{
    return {image.rows, image.cols, CV_MAKETYPE(CV_16U, image.channels()), cv::Scalar::all(0)};
}

cv::Mat Above(cv::Mat const & image, int area, int number = eConnexity4, int type = CV_32SC1)
{
    return tests::Written(image.size(), type, [&](cv::Mat & labels) {
        return LabelDeltaFlatZonesWithAreaCondition(image, Even(image), Shape(number), 0.0, 0.0, area, labels);
    });
}

cv::Mat AboveNoZero(cv::Mat const & image, int area, int number = eConnexity4, int type = CV_32SC1)
{
    return tests::Written(image.size(), type, [&](cv::Mat & labels) {
        return LabelDeltaFlatZonesNoZeroWithAreaCondition(image, Even(image), Shape(number), 0.0, 0.0, area, labels);
    });
}

/// Expects the same labels from both operators, on an image without empty pixels.
void ExpectBoth(cv::Mat const & image, int area, Drawing const & expected, int number = eConnexity4)
{
    SCOPED_TRACE("area " + std::to_string(area));
    ExpectDrawn(Above(image, area, number), expected);
    ExpectDrawn(AboveNoZero(image, area, number), expected);
}

TEST(LabelAreaCondition, ZoneIsKeptWhenItHasMorePixels)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            SCOPED_TRACE(cv::typeToString(CV_MAKETYPE(depth, channels)));
            cv::Mat const image = Draw({"1119999"}, CV_MAKETYPE(depth, channels));
            ExpectBoth(image, 2, {"1112222"});
            ExpectBoth(image, 3, {"...1111"});
            ExpectBoth(image, 4, {"......."});
        }
    }
}

TEST(LabelAreaCondition, AreaZero_KeepsEveryZone)
{
    ExpectBoth(Draw<uchar>({"12", "34"}), 0, {"12", "34"});
    ExpectDrawn(Above(Draw<uchar>({".5", "5."}), 0), {"12", "34"});
    ExpectDrawn(AboveNoZero(Draw<uchar>({".5", "5."}), 0), {".1", "2."});
}

TEST(LabelAreaCondition, NegativeArea_DropsEveryZone)
{
    cv::Mat const image(40, 70, CV_8UC1, cv::Scalar(3));
    for (int const area : {-1, -2, -2800, kLeast + 1, kLeast})
    {
        for (int const labelDepth : tests::kLabelDepths)
        {
            SCOPED_TRACE("area " + std::to_string(area));
            EXPECT_EQ(cv::countNonZero(Above(image, area, eConnexity8, labelDepth)), 0);
            EXPECT_EQ(cv::countNonZero(AboveNoZero(image, area, eConnexity8, labelDepth)), 0);
        }
    }
}

TEST(LabelAreaCondition, ZoneOfTheWholeImage_IsKeptUpToItsLastPixel)
{
    cv::Mat const image(40, 70, CV_8UC1, cv::Scalar(3));
    EXPECT_EQ(cv::countNonZero(Above(image, 2799) == 1), 2800);
    EXPECT_EQ(cv::countNonZero(AboveNoZero(image, 2799) == 1), 2800);
    for (int const area : {2800, 2801, 65536, kMost})
    {
        EXPECT_EQ(cv::countNonZero(Above(image, area)), 0) << area;
        EXPECT_EQ(cv::countNonZero(AboveNoZero(image, area)), 0) << area;
    }
}

TEST(LabelAreaCondition, DroppedZones_ConsumeNoLabelAndAreNoRoadForOthers)
{
    ExpectBoth(Draw<uchar>({"1191199"}), 1, {"11.2233"});
    ExpectBoth(Draw<uchar>({"11511", "11611"}), 1, {"11.22", "11.22"});
    ExpectBoth(Draw<uchar>({"9111", "9225", "9225"}), 3, {"....", ".11.", ".11."});
    ExpectBoth(Draw<uchar>({"9111", "9225", "9225"}), 2, {"1222", "133.", "133."});
}

TEST(LabelAreaCondition, PixelsOfAllPartsOfAZoneCount)
{
    cv::Mat const image = Draw<uchar>({"5.5.5", "5.5.5", "55555", "6.6.."});
    // The comb has 11 pixels, in parts that meet only in its last row.
    ExpectDrawn(AboveNoZero(image, 10), {"1.1.1", "1.1.1", "11111", "....."});
    ExpectDrawn(AboveNoZero(image, 11), {".....", ".....", ".....", "....."});
    ExpectDrawn(AboveNoZero(image, 0), {"1.1.1", "1.1.1", "11111", "2.3.."});
    ExpectDrawn(AboveNoZero(image, 1, eConnexity12), {"1.1.1", "1.1.1", "11111", "2.2.."});
    ExpectDrawn(Above(image, 1), {"12131", "12131", "11111", "...44"});
    ExpectDrawn(Above(image, 2), {"1.1.1", "1.1.1", "11111", "....."});
}

TEST(LabelAreaCondition, PixelsOnBothSidesOfTheSeamCount)
{
    ExpectBoth(Draw<uchar>({"5115", "6116"}), 1, {"1221", "3223"}, eConnexity4Wrapped);
    ExpectBoth(Draw<uchar>({"5115", "6116"}), 1, {".11.", ".11."}, eConnexity4);
    ExpectBoth(Draw<uchar>({"5115", "6116"}), 2, {".11.", ".11."}, eConnexity4Wrapped);
}

TEST(LabelAreaCondition, EmptyPixelsAreAZoneOnlyWithoutNoZero)
{
    cv::Mat const image = Draw<float>({"...5", "77.5"});
    ExpectDrawn(Above(image, 2), {"111.", "..1."});
    ExpectDrawn(Above(image, 1), {"1112", "3312"});
    ExpectDrawn(AboveNoZero(image, 1), {"...1", "22.1"});
}

TEST(LabelAreaCondition, BothDeltasBoundTheZonesThatAreMeasured)
{
    cv::Mat const first = Draw<uchar>({"123489"});
    cv::Mat const second = Draw<short>({"11199."});
    auto const labels = [&](double delta1, double delta2, int area) {
        return tests::Written(first.size(), CV_8UC1, [&](cv::Mat & out) {
            return LabelDeltaFlatZonesWithAreaCondition(first, second, eConnexity4, delta1, delta2, area, out);
        });
    };
    ExpectDrawn(labels(1.0, 9.0, 3), {"1111.."});
    ExpectDrawn(labels(1.0, 9.0, 1), {"111122"});
    ExpectDrawn(labels(1.0, 1.0, 2), {"111..."});
    ExpectDrawn(labels(4.0, 8.0, 4), {"11111."});
    ExpectDrawn(labels(4.0, 9.0, 5), {"111111"});
    ExpectDrawn(labels(4.0, 9.0, 6), {"......"});
}

TEST(LabelAreaCondition, OutsideTheTableOfShapesEveryZoneHasOnePixel)
{
    for (int const number : tests::kStrangeConnexities)
    {
        SCOPED_TRACE(number);
        ExpectBoth(Draw<uchar>({"55", "55"}), 0, {"12", "34"}, number);
        ExpectBoth(Draw<uchar>({"55", "55"}), 1, {"..", ".."}, number);
    }
}

/// A row of pairs of equal pixels with a single one between each; no shape of 4 or 8 neighbours joins more.
cv::Mat PairsAndSingles(int pairs)
{
    cv::Mat row(1, 3 * pairs, CV_8UC1);
    for (int x = 0; x < row.cols; ++x)
    {
        int const value = x / 3 % 2 == 0 ? 10 : 20;
        row.at<uchar>(0, x) = static_cast<uchar>(x % 3 == 2 ? value + 5 : value);
    }
    return row;
}

TEST(LabelAreaCondition, OnlyKeptZonesCountForTheWrapOfSmallLabelTypes)
{
    cv::Mat const narrow = Above(PairsAndSingles(300), 1, eConnexity8, CV_8UC1);
    cv::Mat const measured = AboveNoZero(PairsAndSingles(300), 1, eConnexity8, CV_8UC1);
    for (int zone = 1; zone <= 300; ++zone)
    {
        int const expected = zone <= 255 ? zone : zone - 256;
        ASSERT_EQ(narrow.at<uchar>(0, 3 * zone - 3), expected);
        ASSERT_EQ(narrow.at<uchar>(0, 3 * zone - 2), expected);
        ASSERT_EQ(narrow.at<uchar>(0, 3 * zone - 1), 0);
    }
    EXPECT_TRUE(EqualImages(measured, narrow));
    cv::Mat const asSigned = Above(PairsAndSingles(40000), 1, eConnexity4, CV_16SC1);
    EXPECT_EQ(asSigned.at<short>(0, 3 * 32767 - 3), 32767);
    EXPECT_EQ(asSigned.at<short>(0, 3 * 40000 - 3), -25536);
    EXPECT_EQ(cv::countNonZero(asSigned), 80000);
}

/// The number of pixels of a zone of the image, or one beside it, so that bounds are met exactly.
int RandomArea(Random & random, tests::OracleZoneList const & zones)
{
    constexpr std::array strange{-1, kLeast, kMost, 0};
    if (zones.empty() || random.Chance(0.15)) return strange[static_cast<std::size_t>(random.Below(4))];
    auto const & zone = zones[static_cast<std::size_t>(random.Below(static_cast<int>(zones.size())))];
    return static_cast<int>(zone.size()) - random.Below(2);
}

/// The zones that are kept: none under a negative area.
tests::OracleZoneList Kept(tests::OracleZoneList const & zones, int area)
{
    if (area < 0) return {};
    return tests::ZonesAbove(zones, static_cast<std::uint64_t>(area));
}

TEST(LabelAreaConditionRandom, KeepsTheLargeZonesOfThePlainWalk)
{
    Random random(110);
    for (int round = 0; round < 720; ++round)
    {
        int const number = round % 15 - 1;
        int const type = CV_MAKETYPE(tests::kDepths[static_cast<std::size_t>(round % 6)], 1 + random.Below(4));
        cv::Mat const first = tests::GradedImage(random, tests::RandomFamilySize(random), type);
        cv::Mat const second = Even(first);
        SCOPED_TRACE(tests::Case(type, first.size(), number));
        auto const steps = tests::DeltaSteps(first, 2.0);
        auto const zones = tests::OracleZones(tests::EveryPixel(first.size()), number, steps);
        auto const measured = tests::OracleZones(tests::OracleTakesPart(first), number, steps);
        int const area = RandomArea(random, round % 2 == 0 ? zones : measured);
        tests::ExpectZones(
            random,
            [&](tests::Images const & images, cv::Mat & labels) {
                return LabelDeltaFlatZonesWithAreaCondition(
                    images[0], images[1], Shape(number), 2.0, 0.0, area, labels);
            },
            {first, second}, Kept(zones, area));
        tests::ExpectZones(
            random,
            [&](tests::Images const & images, cv::Mat & labels) {
                return LabelDeltaFlatZonesNoZeroWithAreaCondition(
                    images[0], images[1], Shape(number), 2.0, 0.0, area, labels);
            },
            {first, second}, Kept(measured, area));
        if (HasFailure()) return;
    }
}

TEST(LabelAreaConditionRandom, KeepsFewerZonesAsTheAreaGrowsAndThoseUnchanged)
{
    Random random(111);
    for (int number = -1; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        cv::Mat const image = tests::RandomImage(random, {150, 60}, CV_8UC1, {0.3, 0.0, 2});
        cv::Mat const all = tests::Written(image.size(), CV_32SC1, [&](cv::Mat & labels) {
            return LabelDeltaFlatZones(image, Even(image), Shape(number), 0.0, 0.0, labels);
        });
        EXPECT_TRUE(EqualImages(Above(image, 0, number), all));
        cv::Mat before = all;
        for (int const area : {1, 2, 3, 5, 8, 20, 100, 1000, 5000})
        {
            cv::Mat const after = Above(image, area, number);
            cv::Mat kept = before.clone();
            kept.setTo(0, after == 0);
            EXPECT_TRUE(tests::SamePartition(after, kept)) << area;
            before = after;
        }
    }
}

} // namespace

} // namespace morvane::connexity
