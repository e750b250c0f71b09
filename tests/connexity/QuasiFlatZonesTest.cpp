// The preparation of an image and its zones: the order and the sizes of the filter, holes, refusals, views.
#include <morvane/connexity/QuasiFlatZones.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/QuasiFlatOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <string>

namespace morvane
{

namespace
{

using tests::CallQuasiFlatZones;
using tests::Draw;
using tests::Drawing;
using tests::EqualImages;
using tests::ExpectDrawn;
using tests::Random;
using tests::Snapshot;
using tests::ZonePreparation;

/// Expects a prepared image and its zones, in every depth in which OpenCV filters.
void ExpectZones(ZonePreparation const & how, Drawing const & drawn, Drawing const & prepared, Drawing const & zones)
{
    for (int const depth : tests::kMorphologyDepths)
    {
        SCOPED_TRACE(cv::typeToString(depth));
        cv::Mat filtered;
        cv::Mat labels;
        EXPECT_TRUE(CallQuasiFlatZones(Draw(drawn, depth), how, filtered, labels));
        EXPECT_TRUE(EqualImages(filtered, Draw(prepared, depth)));
        EXPECT_TRUE(EqualImages(labels, tests::DrawLabels(zones)));
    }
}

TEST(ComputeQuasiFlatZones, OfASlope_IsOneZone)
{
    ExpectZones(
        {},
        {"123459", //
         "234567", //
         "...678"},
        {"123459", //
         "234567", //
         "...678"},
        {"111112", //
         "111111", //
         "...111"});
}

TEST(ComputeQuasiFlatZones, BoundsTheStepAndNotTheDistance)
{
    ZonePreparation how;
    how.delta = 2.0;
    ExpectZones(how, {"1357964.421"}, {"1357964.421"}, {"1111122.333"});
    // Of the steps, 7 to 9 is just within, 9 to 6 is not.
    how.delta = 3.0;
    ExpectZones(how, {"1357964.421"}, {"1357964.421"}, {"1111111.222"});
}

/// A peak beside a pit: what is done first wipes out one of them, and with it the other.
char const * const kPeakAndPit = "555919555";
char const * const kPeakGrown = "555999555";
char const * const kFlat = "555555555";
char const * const kThreeZones = "111222333";
char const * const kFiveZones = "111234555";
char const * const kOneZone = "111111111";

TEST(ComputeQuasiFlatZones, ClosesOrOpensFirst)
{
    ZonePreparation how;
    how.filter = true;
    how.projection = projection::ProjectionClosingFirst;
    ExpectZones(how, {kPeakAndPit}, {kPeakGrown}, {kThreeZones});
    how.projection = projection::ProjectionOpeningFirst;
    ExpectZones(how, {kPeakAndPit}, {kFlat}, {kOneZone});
}

TEST(ComputeQuasiFlatZones, OfAnotherProjection_FiltersNothing)
{
    for (int const projection : {2, -1, 256, 1000})
    {
        SCOPED_TRACE(projection);
        ZonePreparation how;
        how.filter = true;
        how.windowSize = 5;
        how.projection = projection;
        ExpectZones(how, {kPeakAndPit}, {kPeakAndPit}, {kFiveZones});
    }
}

TEST(ComputeQuasiFlatZones, FiltersByOddSquaresUpToTheWindow)
{
    ZonePreparation how;
    how.filter = true;
    for (int const none : {2, 1, 0, -1, -3})
    {
        how.windowSize = none;
        ExpectZones(how, {kPeakAndPit}, {kPeakAndPit}, {kFiveZones});
    }
    for (int const three : {3, 4})
    {
        how.windowSize = three;
        ExpectZones(how, {kPeakAndPit}, {kPeakGrown}, {kThreeZones});
    }
    // The opening by 5 takes what the closing by 3 has made.
    for (int const five : {5, 6})
    {
        how.windowSize = five;
        ExpectZones(how, {kPeakAndPit}, {kFlat}, {kOneZone});
    }
}

TEST(ComputeQuasiFlatZones, FiltersOnlyWhenAskedTo)
{
    ZonePreparation how;
    how.windowSize = 5;
    ExpectZones(how, {kPeakAndPit}, {kPeakAndPit}, {kFiveZones});
}

TEST(ComputeQuasiFlatZones, GrowsTheSquares)
{
    // Opened first, neither peak is as wide as the larger square; closed first, they are one of six pixels, which is.
    ZonePreparation how;
    how.filter = true;
    how.windowSize = 5;
    how.projection = projection::ProjectionOpeningFirst;
    ExpectZones(how, {"1119919991111"}, {"1111111111111"}, {"1111111111111"});
    how.projection = projection::ProjectionClosingFirst;
    ExpectZones(how, {"1119919991111"}, {"1119999991111"}, {"1112222223333"});
}

TEST(ComputeQuasiFlatZones, FillsHolesFirst)
{
    for (int const depth : {CV_32F, CV_64F})
    {
        ZonePreparation how;
        how.fillHoles = true;
        cv::Mat filtered;
        cv::Mat labels;
        Drawing const drawn{
            "7777777", //
            "7777777", //
            "77...77", //
            "75...77", //
            "77...77", //
            "7777777"};
        EXPECT_TRUE(CallQuasiFlatZones(Draw(drawn, depth), how, filtered, labels));
        Drawing const filled{
            "7777777", //
            "7777777", //
            "7777777", //
            "7577777", //
            "7777777", //
            "7777777"};
        EXPECT_TRUE(EqualImages(filtered, Draw(filled, depth)));
        ExpectDrawn(
            labels,
            {"1111111", //
             "1111111", //
             "1111111", //
             "1211111", //
             "1111111", //
             "1111111"});
        how.fillHoles = false;
        how.delta = 2.0;
        EXPECT_TRUE(CallQuasiFlatZones(Draw(drawn, depth), how, filtered, labels));
        EXPECT_TRUE(EqualImages(filtered, Draw(drawn, depth)));
        ExpectDrawn(
            labels,
            {"1111111", //
             "1111111", //
             "11...11", //
             "11...11", //
             "11...11", //
             "1111111"});
    }
}

TEST(ComputeQuasiFlatZones, WhenHolesCannotBeFilled_IsFalseAndLeavesTheLabels)
{
    ZonePreparation how;
    how.fillHoles = true;
    for (int const windowSize : {2, 0, -5})
    {
        how.windowSize = windowSize;
        cv::Mat filtered = tests::DirtyLabels({3, 3}, CV_32FC1);
        cv::Mat labels = tests::DirtyLabels({3, 3}, CV_32SC1);
        Snapshot const before(labels);
        Snapshot const filteredBefore(filtered);
        EXPECT_FALSE(CallQuasiFlatZones(Draw<float>({"555", "5.5", "555"}), how, filtered, labels));
        EXPECT_TRUE(before.IsUntouched());
        EXPECT_TRUE(filteredBefore.IsUntouched());
    }
    how.windowSize = 3;
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32FC3})
    {
        cv::Mat filtered;
        cv::Mat labels = tests::DirtyLabels({3, 3}, CV_32SC1);
        Snapshot const before(labels);
        EXPECT_FALSE(CallQuasiFlatZones(Draw({"555", "5.5", "555"}, type), how, filtered, labels))
            << cv::typeToString(type);
        EXPECT_TRUE(before.IsUntouched());
    }
}

TEST(ComputeQuasiFlatZones, OfARefusedDepth_IsFalseWithoutAZone)
{
    for (int const type : {CV_8SC1, CV_16FC1, CV_MAKETYPE(CV_8U, 5)})
    {
        cv::Mat image(4, 3, type);
        tests::FillBytes(image, 1);
        cv::Mat filtered;
        cv::Mat labels;
        EXPECT_FALSE(CallQuasiFlatZones(image, {}, filtered, labels)) << cv::typeToString(type);
        EXPECT_TRUE(EqualImages(labels, cv::Mat::zeros(4, 3, CV_32S)));
    }
}

TEST(ComputeQuasiFlatZones, OfAnEmptyImage_IsTrueWithoutAZone)
{
    cv::Mat filtered = tests::DirtyLabels({3, 3}, CV_32FC1);
    cv::Mat labels = tests::DirtyLabels({3, 3}, CV_32SC1);
    EXPECT_TRUE(CallQuasiFlatZones(cv::Mat(), {}, filtered, labels));
    EXPECT_TRUE(filtered.empty());
    EXPECT_TRUE(labels.empty());
}

TEST(ComputeQuasiFlatZones, OfIntegersThatOpenCVDoesNotFilter_Throws)
{
    ZonePreparation how;
    how.filter = true;
    cv::Mat filtered;
    cv::Mat labels;
    EXPECT_THROW((void)CallQuasiFlatZones(Draw<int>({"12"}), how, filtered, labels), cv::Exception);
    how.windowSize = 2;
    EXPECT_TRUE(CallQuasiFlatZones(Draw<int>({"13"}), how, filtered, labels));
    ExpectDrawn(labels, {"12"});
}

TEST(ComputeQuasiFlatZones, ReplacesLabelsOfAnySizeAndType)
{
    for (int const type : {CV_8UC1, CV_64FC3, CV_32SC1})
    {
        cv::Mat filtered(2, 9, type);
        cv::Mat labels(7, 1, type);
        EXPECT_TRUE(CallQuasiFlatZones(Draw<ushort>({"1.3", "1.3"}), {}, filtered, labels));
        EXPECT_TRUE(EqualImages(labels, tests::DrawLabels({"1.2", "1.2"})));
        EXPECT_TRUE(EqualImages(filtered, Draw<ushort>({"1.3", "1.3"})));
    }
}

/// A preparation that filters in one of all ways.
ZonePreparation RandomPreparation(Random & random, int depth)
{
    ZonePreparation how;
    how.projection = random.Below(4) - 1;
    how.delta = random.Below(4);
    how.connexity = random.Below(tests::kConnexityCount);
    how.windowSize = 2 + random.Below(6);
    how.filter = depth != CV_32S && random.Chance(0.6);
    return how;
}

TEST(ComputeQuasiFlatZones, IsWhatItsStepsSay)
{
    Random random(4101);
    for (int trial = 0; trial < 600; ++trial)
    {
        int const type = CV_MAKETYPE(tests::kDepths[static_cast<std::size_t>(random.Below(6))], 1 + random.Below(4));
        cv::Size const size = tests::RandomSize(random, 30);
        if (size.empty()) continue;
        cv::Mat const image = tests::RandomImage(random, size, type, {0.2, 0.02, 9});
        ZonePreparation const how = RandomPreparation(random, CV_MAT_DEPTH(type));
        SCOPED_TRACE(
            tests::Case(type, size, how.connexity) + ", window " + std::to_string(how.windowSize) + ", projection " +
            std::to_string(how.projection) + ", trial " + std::to_string(trial));
        cv::Mat filtered;
        cv::Mat labels;
        ASSERT_TRUE(CallQuasiFlatZones(image, how, filtered, labels));
        cv::Mat expectedFiltered;
        cv::Mat expected;
        ASSERT_TRUE(tests::OracleQuasiFlatZones(image, how, expectedFiltered, expected));
        ASSERT_TRUE(EqualImages(filtered, expectedFiltered));
        ASSERT_TRUE(EqualImages(labels, expected));
    }
}

TEST(ComputeQuasiFlatZones, SeesOnlyItsView)
{
    Random random(4102);
    for (int const depth : tests::kMorphologyDepths)
    {
        for (int trial = 0; trial < 20; ++trial)
        {
            cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
            cv::Mat const image = tests::RandomImage(random, size, depth, {0.2, 0.0, 9});
            ZonePreparation how = RandomPreparation(random, depth);
            how.filter = true;
            how.fillHoles = depth >= CV_32F && random.Chance(0.3);
            if (how.fillHoles) how.windowSize = random.Chance(0.5) ? 3 : 5;
            cv::Mat expectedFiltered;
            cv::Mat expected;
            ASSERT_TRUE(tests::OracleQuasiFlatZones(image, how, expectedFiltered, expected));
            tests::FramedImage source(image);
            tests::FramedImage target(cv::Mat(size, depth, cv::Scalar(3)));
            uchar const * const place = target.View().data;
            cv::Mat labels;
            ASSERT_TRUE(CallQuasiFlatZones(source.View(), how, target.View(), labels));
            EXPECT_EQ(target.View().data, place);
            EXPECT_TRUE(EqualImages(target.View(), expectedFiltered));
            EXPECT_TRUE(EqualImages(labels, expected));
            EXPECT_TRUE(EqualImages(source.View(), image));
            EXPECT_TRUE(source.IsFrameUntouched());
            EXPECT_TRUE(target.IsFrameUntouched());
        }
    }
}

} // namespace

} // namespace morvane
