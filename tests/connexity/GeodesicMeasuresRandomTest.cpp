// The geodesic measures against the steps they are made of, on random images.
#include <morvane/connexity/GeodesicMeasures.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"
#include "support/ShapeOracle.h"
#include "support/SkeletonOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <functional>
#include <string>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::EqualImages;
using tests::PathMeasure;
using tests::Random;

/// An operator, and what it should give.
struct Operator
{
    char const * name;
    bool (*call)(cv::Mat const & image, cv::Mat & out);
    std::function<cv::Mat(cv::Mat const & image)> oracle;
};

std::vector<Operator> const kOperators{
    {"extremities", GeodesicExtremitiesOnFlatZonesNoZero,
     [](cv::Mat const & image) {
         return tests::OracleExtremities(image, true);
     }},
    {"extremity", GeodesicExtremityOnFlatZonesNoZero,
     [](cv::Mat const & image) {
         return tests::OracleExtremities(image, false);
     }},
    {"diameter", LabelFlatZonesNoZeroWithGeodesicDiameter,
     [](cv::Mat const & image) {
         return tests::OraclePathMeasure(image, PathMeasure::Diameter);
     }},
    {"elongation", LabelFlatZonesNoZeroWithGeodesicElongation,
     [](cv::Mat const & image) {
         return tests::OraclePathMeasure(image, PathMeasure::Elongation);
     }},
    {"tortuosity", LabelFlatZonesNoZeroWithGeodesicTortuosity,
     [](cv::Mat const & image) {
         return tests::OraclePathMeasure(image, PathMeasure::Tortuosity);
     }},
};

/// Compares all operators with their steps.
void ExpectSteps(cv::Mat const & image)
{
    for (Operator const & op : kOperators)
    {
        SCOPED_TRACE(std::string(op.name) + ", " + tests::Case(image.type(), image.size(), eConnexity8));
        cv::Mat out;
        ASSERT_TRUE(op.call(image, out));
        ASSERT_TRUE(EqualImages(out, op.oracle(image)));
    }
}

TEST(GeodesicMeasuresRandom, MatchTheStepsOnAllTypes)
{
    Random random(2110);
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int round = 0; round < 12; ++round)
            {
                cv::Size const size(1 + random.Below(24), 1 + random.Below(24));
                double const emptyShare = 0.6 * random.Unit();
                ExpectSteps(tests::RandomImage(
                    random, size, CV_MAKETYPE(depth, channels), {emptyShare, 0.1, 1 + random.Below(3)}));
                if (HasFailure()) return;
            }
        }
    }
}

TEST(GeodesicMeasuresRandom, MatchTheStepsOnShapes)
{
    Random random(2111);
    for (int round = 0; round < 60; ++round)
    {
        cv::Mat image = tests::RandomShape(random, {1 + random.Below(70), 1 + random.Below(70)});
        // Values of their own cut the shapes in two.
        if (round % 2 == 0) image.colRange(image.cols / 2, image.cols) /= 2;
        ExpectSteps(image);
        if (HasFailure()) FAIL() << "round " << round;
    }
}

TEST(GeodesicMeasuresRandom, MatchTheStepsOnPatterns)
{
    for (cv::Size const size : {cv::Size(1, 1), cv::Size(1, 20), cv::Size(20, 1), cv::Size(2, 9), cv::Size(70, 33)})
    {
        for (tests::Pattern const & pattern : tests::AllPatterns(size))
        {
            SCOPED_TRACE(pattern.name);
            ExpectSteps(pattern.mask);
            if (HasFailure()) return;
        }
    }
}

TEST(GeodesicMeasuresRandom, OfViews_DoNotSeeWhatLiesAround)
{
    Random random(2112);
    for (int round = 0; round < 60; ++round)
    {
        int const type = CV_MAKETYPE(tests::kDepths[static_cast<std::size_t>(round % 6)], 1 + round % 4);
        cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
        // Around the view, zones would go on.
        cv::Mat const parent = tests::RandomImage(random, size + cv::Size(5, 5), type, {0.2, 0.0, 2});
        cv::Mat const view = parent(cv::Rect({2, 3}, size));
        for (Operator const & op : kOperators)
        {
            // What stood in the output before is not written to.
            tests::FramedImage outFrame(cv::Mat(size, CV_64FC1, cv::Scalar(5)));
            cv::Mat out = outFrame.View();
            ASSERT_TRUE(op.call(view, out));
            ASSERT_TRUE(EqualImages(out, op.oracle(view.clone()))) << op.name;
            ASSERT_NE(out.data, outFrame.View().data);
            ASSERT_TRUE(EqualImages(outFrame.View(), cv::Mat(size, CV_64FC1, cv::Scalar(5))));
            ASSERT_TRUE(outFrame.IsFrameUntouched());
        }
    }
}

TEST(GeodesicMeasuresRandom, OverTheImageItself_AreTheSame)
{
    Random random(2113);
    for (int const type : {CV_8UC1, CV_64FC1, CV_16SC3})
    {
        cv::Mat const image = tests::RandomImage(random, {17, 13}, type, {0.3, 0.0, 2});
        for (Operator const & op : kOperators)
        {
            cv::Mat both = image.clone();
            cv::Mat const header = both;
            ASSERT_TRUE(op.call(both, both));
            EXPECT_TRUE(EqualImages(both, op.oracle(image))) << op.name;
            EXPECT_TRUE(EqualImages(header, image)) << op.name;
        }
    }
}

TEST(GeodesicMeasuresRandom, MorePixelsInPlace_DoNotChangeTheOtherZones)
{
    Random random(2114);
    for (int round = 0; round < 40; ++round)
    {
        cv::Mat1b const shape = tests::RandomShape(random, {40, 30});
        cv::Mat1b wide(30, 90, uchar{0});
        shape.copyTo(wide.colRange(0, 40));
        tests::RandomShape(random, {49, 30}).copyTo(wide.colRange(41, 90));
        for (Operator const & op : kOperators)
        {
            cv::Mat alone;
            cv::Mat together;
            ASSERT_TRUE(op.call(shape, alone));
            ASSERT_TRUE(op.call(wide, together));
            ASSERT_TRUE(EqualImages(together.colRange(0, 40), alone)) << op.name;
        }
    }
}

} // namespace

} // namespace morvane::connexity
