// LabelFlatZonesWithGraph, which labels as LabelFlatZones does.
#include <morvane/connexity/ZoneGraph.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Labels.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/StepOracle.h"

#include <gtest/gtest.h>

#include <limits>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::ExpectDrawn;
using tests::Random;

cv::Mat ZonesOf(cv::Mat const & image, int connexity, int type = CV_32SC1)
{
    return tests::Written(image.size(), type, [&](cv::Mat & labels) {
        return LabelFlatZonesWithGraph(image, tests::Shape(connexity), labels);
    });
}

TEST(LabelFlatZonesWithGraph, LabelsZonesOfEqualValuesAndTheBackgroundToo)
{
    cv::Mat const image = Draw<ushort>({"..5", "5.5", "553"});
    ExpectDrawn(ZonesOf(image, eConnexity4), {"112", "312", "334"});
    ExpectDrawn(ZonesOf(image, eConnexity8), {"112", "212", "223"});
    ExpectDrawn(ZonesOf(Draw<uchar>({"...", "..."}), eConnexity4), {"111", "111"});
    ExpectDrawn(ZonesOf(Draw<uchar>({"1221"}), eConnexity4Wrapped), {"1221"});
    ExpectDrawn(ZonesOf(Draw<uchar>({"1221"}), eConnexity4), {"1223"});
}

TEST(LabelFlatZonesWithGraph, GivesNaNPixelsTheirOwnZone)
{
    cv::Mat image = Draw<double>({"111"});
    image.at<double>(0, 0) = image.at<double>(0, 1) = std::numeric_limits<double>::quiet_NaN();
    ExpectDrawn(ZonesOf(image, eConnexity4), {"123"});
}

TEST(LabelFlatZonesWithGraph, ManyZonesWrapAtTheLimitOfTheLabels)
{
    cv::Mat const row = tests::RowOfZones(300, CV_16UC1);
    cv::Mat const labels = ZonesOf(row, eConnexity8, CV_8UC1);
    for (int x = 0; x < 300; ++x)
    {
        ASSERT_EQ(labels.at<uchar>(x), (x + 1) % 256);
    }
    cv::Mat const wide = ZonesOf(tests::RowOfZones(70000, CV_32SC1), eConnexity4, CV_16SC1);
    EXPECT_EQ(wide.at<short>(39999), -25536);
    EXPECT_EQ(wide.at<short>(65535), 0);
    EXPECT_EQ(wide.at<short>(65536), 1);
}

TEST(LabelFlatZonesWithGraph, MatchesThePlainFloodAndLabelFlatZones)
{
    Random random(910);
    for (int const depth : tests::kDepths)
    {
        for (int number = -1; number <= tests::kConnexityCount; ++number)
        {
            for (int round = 0; round < 2; ++round)
            {
                cv::Size const size = tests::RandomFamilySize(random);
                cv::Mat const image = tests::RandomImage(random, size, depth);
                SCOPED_TRACE(tests::Case(depth, size, number));
                auto const call = [&](tests::Images const & images, cv::Mat & labels) {
                    return LabelFlatZonesWithGraph(images.front(), tests::Shape(number), labels);
                };
                auto const zones = tests::OracleZones(tests::EveryPixel(size), number, tests::EqualSteps(image));
                tests::ExpectZones(random, call, {image}, zones);
                cv::Mat flat = tests::DirtyLabels(size, CV_16UC1);
                ASSERT_TRUE(LabelFlatZones(image, tests::Shape(number), flat));
                ASSERT_TRUE(tests::EqualImages(ZonesOf(image, number, CV_16UC1), flat));
            }
        }
    }
}

TEST(LabelFlatZonesWithGraph, ImageMayBeItsOwnLabelImage)
{
    for (int const depth : tests::kLabelDepths)
    {
        cv::Mat const image = Draw({"2115", "1331", "1331", "2115"}, depth);
        cv::Mat const expected = ZonesOf(image, eConnexity8, depth);
        cv::Mat both = image.clone();
        EXPECT_TRUE(LabelFlatZonesWithGraph(both, eConnexity8, both));
        EXPECT_TRUE(tests::EqualImages(both, expected));
    }
}

TEST(LabelFlatZonesWithGraph, EmptyImagesHaveNoZone)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 5), cv::Size(5, 0)})
    {
        cv::Mat labels(size.height, size.width, CV_16UC1);
        EXPECT_TRUE(LabelFlatZonesWithGraph(cv::Mat(size.height, size.width, CV_32FC1), eConnexity8, labels));
        EXPECT_EQ(labels.size(), size);
    }
}

} // namespace

} // namespace morvane::connexity
