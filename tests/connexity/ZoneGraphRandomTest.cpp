// The graph operators against the plain steps and against themselves, on random label images.
#include <morvane/connexity/ZoneGraph.h>

#include "support/AllTypes.h"
#include "support/GraphOracle.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/RandomLabels.h"
#include "support/Snapshot.h"
#include "support/StepOracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <numeric>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Border;
using tests::EqualGraphs;
using tests::Extracted;
using tests::FramedImage;
using tests::Joints;
using tests::JointsOf;
using tests::LabelPattern;
using tests::Random;

/// Labels of any pattern, dense or sparse, some of them negative.
cv::Mat AnyLabels(Random & random, cv::Size size)
{
    LabelPattern const pattern = tests::kLabelPatterns[static_cast<std::size_t>(random.Below(4))];
    int const largest = random.Chance(0.1) ? 20000 : 1 + random.Below(40);
    cv::Mat labels =
        tests::RandomLabels(random, size, CV_32S, pattern, {largest, 0.3 * random.Unit(), 0.2 * random.Unit()});
    if (!labels.empty() && random.Chance(0.2))
    {
        labels.at<int>(random.Below(size.height), random.Below(size.width)) = std::numeric_limits<int>::min();
    }
    return labels;
}

int AnyDepth(Random & random)
{
    return tests::kDepths[static_cast<std::size_t>(random.Below(6))];
}

/// How many edges there were without a bound, and how many of them a bound left and took away.
struct EdgesMet
{
    std::size_t all = 0;
    std::size_t kept = 0;
    std::size_t dropped = 0;
};

void ExpectPlainGraphs(cv::Mat const & image, cv::Mat const & labels, int connexity, double delta, EdgesMet & met)
{
    SCOPED_TRACE(tests::Case(image.type(), image.size(), connexity) + ", delta " + std::to_string(delta));
    tests::PlainGraph const expected = tests::OracleGraph(labels, connexity);
    ASSERT_TRUE(EqualGraphs(Extracted(labels, connexity), expected));
    met.all += expected.edges.size();
    for (Border const border : tests::kConditionalBorders)
    {
        tests::PlainGraph const some =
            tests::OracleGraph(labels, connexity, tests::DeltaQuestion(border, image, delta));
        ASSERT_TRUE(EqualGraphs(Extracted(border, image, labels, connexity, delta), some));
        met.kept += some.edges.size();
        met.dropped += expected.edges.size() - some.edges.size();
    }
}

TEST(ZoneGraphRandom, EveryDepthAndNeighbourhood_MatchesThePlainSteps)
{
    Random random(900);
    for (int const depth : tests::kDepths)
    {
        EdgesMet met;
        for (int number = -1; number <= tests::kConnexityCount; ++number)
        {
            for (int round = 0; round < 12; ++round)
            {
                cv::Size const size = tests::RandomLabelSize(random);
                cv::Mat const image = tests::GradedImage(random, size, depth);
                double const delta = tests::RandomDelta(random);
                ASSERT_NO_FATAL_FAILURE(ExpectPlainGraphs(image, AnyLabels(random, size), number, delta, met));
            }
        }
        EXPECT_GT(met.all, 1000U);
        EXPECT_GT(met.kept, 1000U);
        EXPECT_GT(met.dropped, 1000U);
    }
}

TEST(ZoneGraphRandom, SeveralChannels_MatchThePlainSteps)
{
    Random random(901);
    EdgesMet met;
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {2, 3, 4, 5, 9})
        {
            for (int round = 0; round < 10; ++round)
            {
                cv::Size const size = tests::RandomLabelSize(random);
                cv::Mat const image = tests::GradedImage(random, size, CV_MAKETYPE(depth, channels));
                double const delta = 2.0 * random.Unit();
                int const number = random.Below(tests::kConnexityCount);
                ASSERT_NO_FATAL_FAILURE(ExpectPlainGraphs(image, AnyLabels(random, size), number, delta, met));
            }
        }
    }
    EXPECT_GT(met.kept, 1000U);
    EXPECT_GT(met.dropped, 1000U);
}

TEST(ZoneGraphRandom, NarrowImages_MatchThePlainSteps)
{
    Random random(902);
    EdgesMet met;
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        for (int cols = 1; cols <= 6; ++cols)
        {
            for (int rows = 1; rows <= 6; ++rows)
            {
                for (int round = 0; round < 3; ++round)
                {
                    cv::Size const size(cols, rows);
                    cv::Mat const image = tests::GradedImage(random, size, AnyDepth(random));
                    cv::Mat const labels = tests::RandomLabels(
                        random, size, CV_32S, LabelPattern::Scattered, {2 + random.Below(12), 0.2, 0.1});
                    ASSERT_NO_FATAL_FAILURE(ExpectPlainGraphs(image, labels, number, 2.0 * random.Unit(), met));
                }
            }
        }
    }
    EXPECT_GT(met.kept, 1000U);
    EXPECT_GT(met.dropped, 1000U);
}

TEST(ZoneGraphRandom, FlatZonesOfAnImage_MatchThePlainSteps)
{
    Random random(903);
    EdgesMet met;
    for (int round = 0; round < 60; ++round)
    {
        cv::Size const size(1 + random.Below(50), 1 + random.Below(30));
        cv::Mat const image =
            tests::RandomImage(random, size, AnyDepth(random), {0.3 * random.Unit(), 0.05, 2 + random.Below(6)});
        int const number = random.Below(tests::kConnexityCount);
        cv::Mat labels(size, CV_32SC1);
        ASSERT_TRUE(LabelFlatZones(image, tests::Shape(random.Below(tests::kConnexityCount)), labels));
        ASSERT_NO_FATAL_FAILURE(ExpectPlainGraphs(image, labels, number, 3.0 * random.Unit(), met));
    }
    EXPECT_GT(met.kept, 1000U);
    EXPECT_GT(met.dropped, 1000U);
}

TEST(ZoneGraphRandom, ViewsWithGaps_AreReadInside)
{
    Random random(904);
    for (int round = 0; round < 90; ++round)
    {
        cv::Size const size = tests::RandomLabelSize(random);
        FramedImage image(tests::GradedImage(random, size, CV_MAKETYPE(AnyDepth(random), 1 + random.Below(3))));
        FramedImage labels(AnyLabels(random, size));
        bool const framedImage = round % 3 != 1;
        bool const framedLabels = round % 3 != 2;
        cv::Mat const imageCopy = tests::CopyOf(image.View());
        cv::Mat const labelCopy = tests::CopyOf(labels.View());
        int const number = random.Below(tests::kConnexityCount);
        for (Border const border : tests::kBorders)
        {
            Graph const graph = Extracted(
                border, framedImage ? image.View() : imageCopy, framedLabels ? labels.View() : labelCopy, number, 1.0);
            ASSERT_TRUE(EqualGraphs(
                graph, border == Border::Any
                           ? tests::OracleGraph(labelCopy, number)
                           : tests::OracleGraph(labelCopy, number, tests::DeltaQuestion(border, imageCopy, 1.0))));
        }
        ASSERT_TRUE(tests::EqualImages(image.View(), imageCopy));
        ASSERT_TRUE(tests::EqualImages(labels.View(), labelCopy));
    }
}

/// Labels from 1 with a number of other labels 0, and as many vertices whatever labels occur.
cv::Mat DenseLabels(Random & random, cv::Size size)
{
    cv::Mat labels = tests::RandomLabels(
        random, size, CV_32S, tests::kLabelPatterns[static_cast<std::size_t>(random.Below(3))], {30, 0.2, 0.0});
    labels.at<int>(0, 0) = 31;
    return labels;
}

TEST(ZoneGraphRandom, OtherNamesForTheZones_GiveTheSameEdgesInTheSameOrder)
{
    Random random(905);
    for (int round = 0; round < 60; ++round)
    {
        cv::Size const size(1 + random.Below(40), 1 + random.Below(20));
        cv::Mat const labels = DenseLabels(random, size);
        std::vector<int> names(32);
        std::iota(names.begin(), names.end(), 0);
        for (int index = 31; index > 1; --index)
        {
            int const other = 1 + random.Below(index);
            std::swap(names[static_cast<std::size_t>(index)], names[static_cast<std::size_t>(other)]);
        }
        cv::Mat renamed = labels.clone();
        for (int & label : cv::Mat1i(renamed))
        {
            label = names[static_cast<std::size_t>(label)];
        }
        int const number = random.Below(tests::kConnexityCount);
        Joints expected = JointsOf(Extracted(labels, number));
        for (auto & [source, target] : expected)
        {
            source = names[static_cast<std::size_t>(source)];
            target = names[static_cast<std::size_t>(target)];
        }
        ASSERT_EQ(JointsOf(Extracted(renamed, number)), expected);
    }
}

/// The edges without their order and direction.
std::set<std::pair<int, int>> SetOf(Graph const & graph)
{
    std::set<std::pair<int, int>> edges;
    for (auto const & [source, target] : JointsOf(graph))
    {
        edges.insert(std::minmax(source, target));
    }
    EXPECT_EQ(edges.size(), graph.EdgeCount()) << "an edge is there twice";
    return edges;
}

TEST(ZoneGraphRandom, FlippedTransposedAndPaddedLabels_HaveTheSameEdges)
{
    Random random(906);
    for (int round = 0; round < 65; ++round)
    {
        int const number = round % tests::kConnexityCount;
        cv::Size const size(3 + random.Below(40), 3 + random.Below(20));
        cv::Mat const labels = DenseLabels(random, size);
        auto const expected = SetOf(Extracted(labels, number));
        for (int const code : {-1, 0, 1})
        {
            cv::Mat flipped;
            cv::flip(labels, flipped, code);
            ASSERT_EQ(SetOf(Extracted(flipped, number)), expected) << number;
        }
        if (tests::OracleWraps(number)) continue;
        ASSERT_EQ(SetOf(Extracted(labels.t(), number)), expected) << number;
        cv::Mat padded(size.height + 3, size.width + 3, CV_32SC1, cv::Scalar(0));
        labels.copyTo(padded(cv::Rect(cv::Point(1, 2), size)));
        ASSERT_EQ(JointsOf(Extracted(padded, number)), JointsOf(Extracted(labels, number))) << number;
    }
}

TEST(ZoneGraphRandom, TurnedLabels_HaveTheSameEdgesWhereColumnsWrap)
{
    Random random(907);
    for (int round = 0; round < 50; ++round)
    {
        // Steps of two beyond the edge see another column than inside, so that only the ring is turned.
        int const number = round % 2 == 0 ? 1 : 4;
        cv::Size const size(3 + random.Below(40), 1 + random.Below(20));
        cv::Mat const labels = DenseLabels(random, size);
        ASSERT_EQ(
            SetOf(Extracted(tests::Turned(labels, 1 + random.Below(size.width - 1)), number)),
            SetOf(Extracted(labels, number)));
    }
}

TEST(ZoneGraphRandom, EachEdgePassesOneOfTheConditionsAndAWiderBoundKeepsAll)
{
    Random random(908);
    for (int round = 0; round < 60; ++round)
    {
        int const number = random.Below(tests::kConnexityCount);
        cv::Size const size(1 + random.Below(40), 1 + random.Below(20));
        cv::Mat const labels = DenseLabels(random, size);
        cv::Mat const image = tests::RandomImage(random, size, CV_16SC1, {0.2, 0.0, 9});
        auto const all = SetOf(Extracted(labels, number));
        auto const within = SetOf(Extracted(Border::Within, image, labels, number, 3));
        auto const wider = SetOf(Extracted(Border::Within, image, labels, number, 4));
        auto const beyond = SetOf(Extracted(Border::Beyond, image, labels, number, 3));
        std::set<std::pair<int, int>> either = within;
        either.insert(beyond.begin(), beyond.end());
        ASSERT_EQ(either, all);
        ASSERT_TRUE(std::includes(wider.begin(), wider.end(), within.begin(), within.end()));
    }
}

TEST(SlowZoneGraph, LabelsBeyondTwoGigabytes_AreReadToTheirLastPixel)
{
    constexpr int side = 23200;
    cv::Mat labels(side, side, CV_32SC1, cv::Scalar(1));
    ASSERT_GT(labels.total() * labels.elemSize(), std::size_t{1} << 31U);
    labels.row(side - 1).setTo(2);
    labels.at<int>(side - 1, side - 1) = 3;
    EXPECT_EQ(JointsOf(Extracted(labels, eConnexity4)), (Joints{{1, 2}, {1, 3}, {2, 3}}));
    cv::Mat image(side, side, CV_8UC1, cv::Scalar(5));
    image.at<uchar>(side - 1, side - 1) = 6;
    EXPECT_EQ(JointsOf(Extracted(Border::Beyond, image, labels, eConnexity4, 0)), (Joints{{1, 3}, {2, 3}}));
}

} // namespace

} // namespace morvane::connexity
