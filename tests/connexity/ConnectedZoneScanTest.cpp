#include <morvane/connexity/ConnectedZoneScan.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Walks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Adds;
using tests::Asks;
using tests::Draw;
using tests::Event;
using tests::OracleCondition;
using tests::PositionCondition;
using tests::Resets;
using tests::Shape;
using tests::ZonesOf;

template <class Pixels>
int CountZones(cv::Mat const & image, eConnexityType type)
{
    AlwaysConnected<uchar> condition;
    int count = 0;
    ZoneCounter counter{&count};
    Zone zone;
    ConnectedZoneScan<uchar, ZoneCounter, AlwaysConnected<uchar>, Pixels> scan(image, type, condition, counter, zone);
    EXPECT_TRUE(scan.Run());
    return count;
}

/// The label image of a walk with a condition over positions.
template <class Pixels>
cv::Mat LabelsWith(cv::Mat const & image, eConnexityType type, OracleCondition const & rule)
{
    cv::Mat labels(image.size(), CV_32SC1, cv::Scalar(0));
    PositionCondition<uchar> condition(image, rule);
    ZoneLabelWriter<int> writer{&labels};
    Zone zone;
    ConnectedZoneScan<uchar, ZoneLabelWriter<int>, AlwaysConnected<uchar>, Pixels> scan(
        image, type, condition, writer, zone);
    EXPECT_TRUE(scan.Run());
    return labels;
}

TEST(ConnectedZoneScan, FindsNoZoneInAnEmptyImage)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 5), cv::Size(5, 0)})
    {
        for (int number = -1; number <= tests::kConnexityCount; ++number)
        {
            cv::Mat const image(size.height, size.width, CV_8UC1);
            EXPECT_EQ(CountZones<AllPixels>(image, Shape(number)), 0);
            EXPECT_EQ(CountZones<NoZero>(image, Shape(number)), 0);
        }
    }
    EXPECT_EQ(CountZones<AllPixels>(cv::Mat(), eConnexity8Wrapped), 0);
}

TEST(ConnectedZoneScan, OverZeros_NoZeroFindsNothingAndAllPixelsOneFlatZone)
{
    cv::Mat const zeros = Draw<uchar>({"....", "....", "...."});
    EXPECT_EQ(CountZones<NoZero>(zeros, eConnexity4), 0);
    EqualConnected<uchar> equal;
    auto const zones = ZonesOf<uchar, AllPixels>(zeros, eConnexity4, equal);
    ASSERT_EQ(zones.size(), 1U);
    EXPECT_EQ(zones[0].size(), 12U);
}

TEST(ConnectedZoneScan, JoinsALineAcrossTheSeamOnlyWhenWrapped)
{
    cv::Mat const line = Draw<uchar>({"1111.1111"});
    EXPECT_EQ(CountZones<NoZero>(line, eConnexity4Wrapped), 1);
    EXPECT_EQ(CountZones<NoZero>(line, eConnexity4), 2);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        // Two pixels that only the seam joins.
        int const expected = tests::OracleWraps(number) ? 1 : 2;
        EXPECT_EQ(CountZones<NoZero>(Draw<uchar>({"1......1"}), Shape(number)), expected) << number;
    }
}

TEST(ConnectedZoneScan, NeverJoinsAcrossTopAndBottom)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        cv::Mat const line = Draw<uchar>({"..1..", "..1..", ".....", ".....", "..1..", "..1.."});
        EXPECT_EQ(CountZones<NoZero>(line, Shape(number)), 2) << number;
    }
}

TEST(ConnectedZoneScan, WithoutNeighboursEveryCandidateIsAZone)
{
    cv::Mat const image = Draw<uchar>({"11.2", "1..2"});
    for (int const number : tests::kStrangeConnexities)
    {
        EXPECT_EQ(CountZones<NoZero>(image, Shape(number)), 5) << number;
        EXPECT_EQ(CountZones<AllPixels>(image, Shape(number)), 8) << number;
    }
}

TEST(ConnectedZoneScan, KeepsASeedThatTheConditionRefuses)
{
    OracleCondition refusing;
    refusing.isConnected = [](cv::Point, cv::Point, cv::Point) {
        return false;
    };
    tests::ExpectDrawn(LabelsWith<NoZero>(Draw<uchar>({"11", ".1"}), eConnexity8, refusing), {"12", ".3"});
}

TEST(ConnectedZoneScan, TakesAPixelFromTheSideThatAcceptsIt)
{
    // The middle of the right column may be entered from below only.
    OracleCondition rule;
    rule.isConnected = [](cv::Point from, cv::Point to, cv::Point) {
        return to != cv::Point(1, 1) || from.y == 2;
    };
    tests::ExpectDrawn(LabelsWith<NoZero>(Draw<uchar>({"11", "11", "11"}), eConnexity4, rule), {"11", "11", "11"});
    tests::ExpectDrawn(LabelsWith<NoZero>(Draw<uchar>({"11", "11", ".."}), eConnexity4, rule), {"11", "12", ".."});
}

TEST(ConnectedZoneScan, GivesAPixelToTheFirstSeedThatReachesIt)
{
    // Steps lead to equal or greater values only: both hillsides reach the top, the first takes it.
    cv::Mat const hill = Draw<uchar>({"191"});
    cv::Mat const valley = Draw<uchar>({"912"});
    auto const climbing = [](cv::Mat const & image) {
        OracleCondition rule;
        rule.isConnected = [image](cv::Point from, cv::Point to, cv::Point) {
            return image.at<uchar>(to) >= image.at<uchar>(from);
        };
        return rule;
    };
    tests::ExpectDrawn(LabelsWith<NoZero>(hill, eConnexity4, climbing(hill)), {"112"});
    tests::ExpectDrawn(LabelsWith<NoZero>(valley, eConnexity4, climbing(valley)), {"122"});
    cv::Mat const slope = Draw<uchar>({"19", "..", "92"});
    tests::ExpectDrawn(LabelsWith<NoZero>(slope, eConnexity4, climbing(slope)), {"11", "..", "23"});
    tests::ExpectDrawn(LabelsWith<AllPixels>(slope, eConnexity4, climbing(slope)), {"11", "22", "22"});
}

TEST(ConnectedZoneScan, AsksInOrder)
{
    // One row of three, the last refused: the seed is added first, neighbours are asked left, right, also when taken.
    cv::Mat const image = Draw<uchar>({"123"});
    std::vector<Event> log;
    OracleCondition rule;
    rule.isConnected = [](cv::Point, cv::Point to, cv::Point) {
        return to.x < 2;
    };
    PositionCondition<uchar> condition(image, Logged(rule, log));
    auto const zones = ZonesOf<uchar, AllPixels>(image, eConnexity4, condition);
    cv::Point const a(0, 0);
    cv::Point const b(1, 0);
    cv::Point const c(2, 0);
    std::vector<Event> const expected{Resets(),      Adds(a),  Asks(a, b, a), Adds(b),      Asks(b, a, a),
                                      Asks(b, c, a), Resets(), Adds(c),       Asks(c, b, c)};
    EXPECT_EQ(log, expected);
    EXPECT_EQ(zones, (std::vector<Zone>{{a, b}, {c}}));
    EXPECT_EQ(condition.WrongValues(), 0);
}

TEST(ConnectedZoneScan, AsksOncePerOffsetOnImagesNarrowerThanTheShape)
{
    // Two columns that wrap: left and right are the same neighbour, asked about twice. Offsets of 2 lead back to the
    // pixel itself, which is asked about as well.
    cv::Mat const image = Draw<uchar>({"11"});
    std::vector<Event> log;
    PositionCondition<uchar> condition(image, Logged({}, log));
    cv::Point const a(0, 0);
    cv::Point const b(1, 0);
    (void)ZonesOf<uchar, NoZero>(image, eConnexity4Wrapped, condition);
    EXPECT_EQ(
        log,
        (std::vector<Event>{Resets(), Adds(a), Asks(a, b, a), Adds(b), Asks(a, b, a), Asks(b, a, a), Asks(b, a, a)}));
    log.clear();
    (void)ZonesOf<uchar, NoZero>(Draw<uchar>({"1."}), eConnexity12InterleavedWrapped, condition);
    EXPECT_EQ(log, (std::vector<Event>{Resets(), Adds(a), Asks(a, a, a), Asks(a, a, a)}));
    // One column: one wrap does not bring an offset of 2 back inside, so those neighbours are skipped.
    log.clear();
    (void)ZonesOf<uchar, NoZero>(Draw<uchar>({"1"}), eConnexity12InterleavedWrapped, condition);
    EXPECT_EQ(log, (std::vector<Event>{Resets(), Adds(a), Asks(a, a, a), Asks(a, a, a)}));
}

TEST(ConnectedZoneScan, DoesNotAskAboutEmptyNeighboursInTheNoZeroFlavour)
{
    cv::Mat const image = Draw<uchar>({".1.", ".1."});
    std::vector<Event> log;
    PositionCondition<uchar> condition(image, Logged({}, log));
    (void)ZonesOf<uchar, NoZero>(image, eConnexity8, condition);
    cv::Point const top(1, 0);
    cv::Point const below(1, 1);
    EXPECT_EQ(
        log, (std::vector<Event>{Resets(), Adds(top), Asks(top, below, top), Adds(below), Asks(below, top, top)}));
}

TEST(ConnectedZoneScan, VisitsNeighboursInTheOrderOfTheShape)
{
    cv::Mat const image(5, 5, CV_8UC1, cv::Scalar(1));
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        AlwaysConnected<uchar> condition;
        tests::ZoneCollector collector;
        Zone working;
        ConnectedZoneScan<uchar, tests::ZoneCollector, AlwaysConnected<uchar>, AllPixels> scan(
            image, Shape(number), condition, collector, working);
        cv::Point const centre(2, 2);
        EXPECT_TRUE(scan.FloodFrom(centre));
        ASSERT_EQ(collector.zones.size(), 1U);
        Zone const & zone = collector.zones[0];
        ASSERT_EQ(zone.size(), 25U) << number;
        Zone expected{centre};
        for (cv::Point const & offset : tests::OracleOffsets(number))
        {
            expected.push_back(centre + offset);
        }
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), zone.begin())) << number;
    }
}

TEST(ConnectedZoneScan, Shapes12DifferInTheOrderOfVisits)
{
    cv::Mat const image(5, 5, CV_8UC1, cv::Scalar(1));
    AlwaysConnected<uchar> condition;
    auto const ringFirst = ZonesOf<uchar, AllPixels>(image, eConnexity12, condition);
    auto const interleaved = ZonesOf<uchar, AllPixels>(image, eConnexity12Interleaved, condition);
    ASSERT_EQ(ringFirst.size(), 1U);
    ASSERT_EQ(interleaved.size(), 1U);
    EXPECT_NE(ringFirst[0], interleaved[0]);
    EXPECT_TRUE(
        std::is_permutation(ringFirst[0].begin(), ringFirst[0].end(), interleaved[0].begin(), interleaved[0].end()));
    // From the upper left corner: down, diagonal, right, then the far ones; interleaved, the far one below comes first.
    EXPECT_EQ(ringFirst[0][1], cv::Point(0, 1));
    EXPECT_EQ(interleaved[0][1], cv::Point(0, 2));
}

TEST(ConnectedZoneScan, VisitsBreadthFirst)
{
    // Two ways of different length lead to the lower right corner.
    cv::Mat const image = Draw<uchar>({"1111", "1..1", "11.1"});
    AlwaysConnected<uchar> condition;
    auto const zones = ZonesOf<uchar, NoZero>(image, eConnexity4, condition);
    ASSERT_EQ(zones.size(), 1U);
    EXPECT_EQ(zones[0], (Zone{{0, 0}, {1, 0}, {0, 1}, {2, 0}, {0, 2}, {3, 0}, {1, 2}, {3, 1}, {3, 2}}));
}

TEST(ConnectedZoneScan, FloodFromDoesNothingOnTakenAndOnEmptyPixels)
{
    cv::Mat const image = Draw<uchar>({"11.1"});
    std::vector<Event> log;
    PositionCondition<uchar> condition(image, Logged({}, log));
    tests::ZoneCollector collector;
    Zone zone;
    ConnectedZoneScan<uchar, tests::ZoneCollector, AlwaysConnected<uchar>, NoZero> scan(
        image, eConnexity4, condition, collector, zone);
    EXPECT_TRUE(scan.FloodFrom({1, 0}));
    ASSERT_EQ(collector.zones, (std::vector<Zone>{{{1, 0}, {0, 0}}}));
    log.clear();
    EXPECT_TRUE(scan.FloodFrom({0, 0}));
    EXPECT_TRUE(scan.FloodFrom({1, 0}));
    EXPECT_TRUE(scan.FloodFrom({2, 0}));
    EXPECT_EQ(collector.zones.size(), 1U);
    EXPECT_TRUE(log.empty());
    EXPECT_TRUE(scan.Run());
    EXPECT_EQ(collector.zones, (std::vector<Zone>{{{1, 0}, {0, 0}}, {{3, 0}}}));
}

TEST(ConnectedZoneScan, MarksTheSeedBeforeAddAndANeighbourAfterIt)
{
    // Add may throw, which shows what is marked by then.
    cv::Mat const image = Draw<uchar>({"11"});
    bool fails = true;
    cv::Point failing;
    OracleCondition rule;
    rule.add = [&](cv::Point point) {
        if (fails && point == failing) throw std::runtime_error("no more");
    };
    for (int const column : {0, 1})
    {
        fails = true;
        failing = {column, 0};
        PositionCondition<uchar> condition(image, rule);
        tests::ZoneCollector collector;
        Zone zone;
        ConnectedZoneScan<uchar, tests::ZoneCollector, AlwaysConnected<uchar>, NoZero> scan(
            image, eConnexity4, condition, collector, zone);
        EXPECT_THROW(scan.FloodFrom({0, 0}), std::runtime_error);
        fails = false;
        scan.Run();
        // Either way the seed is marked and the right pixel is not.
        EXPECT_EQ(collector.zones, (std::vector<Zone>{{{1, 0}}})) << column;
    }
}

TEST(ConnectedZoneScan, ClearsTheZoneItIsGivenAndLeavesTheLastOneInIt)
{
    cv::Mat const image = Draw<uchar>({"1.11"});
    AlwaysConnected<uchar> condition;
    tests::ZoneCollector collector;
    Zone zone{{7, 7}, {8, 8}};
    ConnectedZoneScan<uchar, tests::ZoneCollector, AlwaysConnected<uchar>, NoZero> scan(
        image, eConnexity4, condition, collector, zone);
    scan.Run();
    EXPECT_EQ(collector.zones, (std::vector<Zone>{{{0, 0}}, {{2, 0}, {3, 0}}}));
    EXPECT_EQ(zone, (Zone{{2, 0}, {3, 0}}));
}

TEST(ConnectedZoneScan, KeepsTheMemoryOfTheZoneFromZoneToZone)
{
    cv::Mat image(64, 64, CV_8UC1, cv::Scalar(1));
    image.row(40) = 0;
    image.col(3) = 0;
    AlwaysConnected<uchar> condition;
    struct Watch
    {
        std::vector<cv::Point const *> places;
        void operator()(Zone const & zone) { places.push_back(zone.data()); }
    } watch;
    Zone zone;
    ConnectedZoneScan<uchar, Watch, AlwaysConnected<uchar>, NoZero> scan(image, eConnexity8, condition, watch, zone);
    scan.Run();
    ASSERT_EQ(watch.places.size(), 4U);
    EXPECT_TRUE(std::equal(watch.places.begin() + 1, watch.places.end(), watch.places.begin()));
}

TEST(ConnectedZoneScan, DoesNotWriteToTheImage)
{
    cv::Mat const image = Draw<uchar>({"1.11", "22..", "1..3"});
    cv::Mat const before = image.clone();
    EXPECT_EQ(CountZones<AllPixels>(image, eConnexity8), 1);
    tests::ExpectEqualImages(image, before);
}

} // namespace

} // namespace morvane::connexity
