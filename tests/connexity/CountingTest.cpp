// CountZones, CountFlatZones and CountFlatZonesNoZero.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Labels.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"
#include "support/StepOracle.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <ostream>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::FramedImage;
using tests::Random;
using tests::Row;
using tests::Shape;

constexpr int kUnwritten = -12345;

/// The three counts of an image.
struct Counts
{
    int zones = kUnwritten;
    int flat = kUnwritten;
    int flatNoZero = kUnwritten;

    friend bool operator==(Counts const & a, Counts const & b)
    {
        return a.zones == b.zones && a.flat == b.flat && a.flatNoZero == b.flatNoZero;
    }

    friend std::ostream & operator<<(std::ostream & out, Counts const & counts)
    {
        return out << counts.zones << " zones, " << counts.flat << " flat ones, " << counts.flatNoZero << " measured";
    }
};

Counts Counted(cv::Mat const & image, int number)
{
    Counts counts;
    EXPECT_TRUE(CountZones(image, Shape(number), counts.zones));
    EXPECT_TRUE(CountFlatZones(image, Shape(number), counts.flat));
    EXPECT_TRUE(CountFlatZonesNoZero(image, Shape(number), counts.flatNoZero));
    return counts;
}

constexpr Counts Expected(int zones, int flat, int flatNoZero)
{
    return {zones, flat, flatNoZero};
}

TEST(CountZones, DrawnImages)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::typeToString(depth));
        EXPECT_EQ(Counted(Draw({"1122.2", "1....3"}, depth), eConnexity4), Expected(2, 5, 4));
        EXPECT_EQ(Counted(Draw({"55.5", "..5."}, depth), eConnexity4), Expected(3, 6, 3));
        EXPECT_EQ(Counted(Draw({"55.5", "..5."}, depth), eConnexity8), Expected(1, 2, 1));
        EXPECT_EQ(Counted(Draw({"05", "50"}, depth), eConnexity4), Expected(2, 4, 2));
        EXPECT_EQ(Counted(Draw({"5.6.5"}, depth), eConnexity12), Expected(1, 4, 3));
        EXPECT_EQ(Counted(Draw({"777", "777"}, depth), eConnexity8), Expected(1, 1, 1));
    }
}

TEST(CountZones, ImageWithoutZones_HasACountOfZero)
{
    for (int const depth : tests::kDepths)
    {
        for (int number = -1; number < tests::kConnexityCount; ++number)
        {
            SCOPED_TRACE(tests::Case(depth, {4, 3}, number));
            int const flat = number < 0 ? 12 : 1;
            EXPECT_EQ(Counted(cv::Mat(3, 4, depth, cv::Scalar(0)), number), Expected(0, flat, 0));
            for (cv::Size const size : {cv::Size(5, 0), cv::Size(0, 5), cv::Size(0, 0)})
            {
                EXPECT_EQ(Counted(cv::Mat(size.height, size.width, depth), number), Expected(0, 0, 0)) << size;
            }
        }
    }
}

TEST(CountZones, ShapeThatCrossesTheSeam_CountsOnceUnderWrappedShapes)
{
    cv::Mat const image = Draw<uchar>({"55..5", "....6"});
    EXPECT_EQ(Counted(image, eConnexity4), Expected(2, 4, 3));
    EXPECT_EQ(Counted(image, eConnexity4Wrapped), Expected(1, 3, 2));
    EXPECT_EQ(Counted(image, eConnexity8Wrapped), Expected(1, 3, 2));
}

TEST(CountZones, EmptinessDependsOnTheType)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat const single = Row<float>({1.0F, 1e-11F, 1.0F, nan, nan, -2e-10F, -1e-11F});
    EXPECT_EQ(Counted(single, eConnexity4), Expected(3, 7, 3));
    cv::Mat precise;
    single.convertTo(precise, CV_64F);
    EXPECT_EQ(Counted(precise, eConnexity4), Expected(3, 7, 3));
    EXPECT_EQ(Counted(Row<float>({1e-10F}), eConnexity4), Expected(0, 1, 0));
    EXPECT_EQ(Counted(Row<float>({std::nextafter(1e-10F, 1.0F)}), eConnexity4), Expected(1, 1, 1));
    EXPECT_EQ(Counted(Row<short>({256, 0, -256, -32768}), eConnexity4), Expected(2, 4, 3));
}

TEST(CountZones, OutsideTheTableOfShapesEveryPixelIsAZone)
{
    for (int const number : tests::kStrangeConnexities)
    {
        EXPECT_EQ(Counted(Draw<uchar>({"55.", "555"}), number), Expected(5, 6, 5)) << number;
    }
}

TEST(CountZones, MoreZonesThanSmallLabelTypesHold_AreAllCounted)
{
    EXPECT_EQ(Counted(tests::RowOfZones(300, CV_8UC1), eConnexity4), Expected(1, 300, 300));
    EXPECT_EQ(Counted(tests::RowOfZones(66000, CV_32FC1), eConnexity24InterleavedWrapped), Expected(1, 66000, 66000));
    cv::Mat const image = tests::RowOfZones(66000, CV_16UC1);
    EXPECT_EQ(Counted(image, 13), Expected(66000, 66000, 66000));
}

/// The number of zones by the labels of an operator.
template <class Operator>
int Labels(Operator const & labelling, cv::Mat const & image, int number)
{
    cv::Mat const labels =
        tests::Written(image.size(), CV_32SC1, [&](cv::Mat & out) { return labelling(image, Shape(number), out); });
    double most = 0.0;
    if (!labels.empty()) cv::minMaxLoc(labels, nullptr, &most);
    return static_cast<int>(most);
}

int ZonesOf(cv::Mat1b const & pixels, int number, tests::OracleCondition const & steps = {})
{
    return static_cast<int>(tests::OracleZones(pixels, number, steps).size());
}

TEST(CountZonesRandom, CountsAreThoseOfThePlainWalkAndOfTheLabels)
{
    using OfOne = bool (*)(cv::Mat const &, eConnexityType const &, cv::Mat &);
    OfOne const flat = LabelFlatZones;
    OfOne const flatNoZero = LabelFlatZonesNoZero;
    Random random(120);
    for (int round = 0; round < 450; ++round)
    {
        int const number = round % 15 - 1;
        int const depth = tests::kDepths[static_cast<std::size_t>(round / 15 % 6)];
        tests::Mixture const mixture{0.6 * random.Unit(), 0.4 * random.Unit(), 1 + random.Below(3)};
        cv::Size const size = random.Chance(0.2) ? cv::Size(random.Below(6), 9) : tests::RandomFamilySize(random);
        cv::Mat const image = tests::RandomImage(random, size, depth, mixture);
        SCOPED_TRACE(tests::Case(depth, size, number));
        auto const steps = tests::EqualSteps(image);
        Counts const expected{
            ZonesOf(tests::OracleTakesPart(image), number), ZonesOf(tests::EveryPixel(size), number, steps),
            ZonesOf(tests::OracleTakesPart(image), number, steps)};
        EXPECT_EQ(Counted(image, number), expected);
        Counts const labelled{
            Labels(Label, image, number), Labels(flat, image, number), Labels(flatNoZero, image, number)};
        EXPECT_EQ(labelled, expected);
        FramedImage framed(image);
        EXPECT_EQ(Counted(framed.View(), number), expected) << "in a view";
        EXPECT_TRUE(framed.IsFrameUntouched());
        EXPECT_TRUE(tests::EqualImages(framed.View(), image)) << "the image was written to";
        if (HasFailure()) return;
    }
}

void ExpectRefused(cv::Mat const & image)
{
    int count = kUnwritten;
    EXPECT_FALSE(CountZones(image, eConnexity8, count));
    EXPECT_FALSE(CountFlatZones(image, eConnexity8, count));
    EXPECT_FALSE(CountFlatZonesNoZero(image, eConnexity8, count));
    EXPECT_EQ(count, kUnwritten);
}

TEST(CountZonesRefusals, SeveralChannelsAndRefusedDepths)
{
    for (cv::Size const size : {cv::Size(3, 2), cv::Size(3, 0), cv::Size(0, 2), cv::Size(0, 0)})
    {
        for (int const channels : {2, 3, 4, 5, 257, CV_CN_MAX})
        {
            for (int const depth : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F})
            {
                SCOPED_TRACE(tests::Case(CV_MAKETYPE(depth, channels), size, eConnexity8));
                ExpectRefused(tests::DirtyLabels(size, CV_MAKETYPE(depth, channels)));
            }
        }
        for (int const depth : tests::kRefusedDepths)
        {
            SCOPED_TRACE(tests::Case(depth, size, eConnexity8));
            ExpectRefused(tests::DirtyLabels(size, depth));
        }
    }
}

TEST(CountZonesRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 3, 4};
    ExpectRefused(cv::Mat(3, sides.data(), CV_8UC1, cv::Scalar(1)));
}

} // namespace

} // namespace morvane::connexity
