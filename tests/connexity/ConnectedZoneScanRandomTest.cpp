// The engine against the plain walk on random images: the same zones, and the same questions in the same order.
#include <morvane/connexity/ConnectedZoneScan.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/Walks.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Event;
using tests::OracleCondition;

/// A named way to make a condition over positions of an image; each call gives one with a state of its own.
struct Rule
{
    std::string name;
    std::function<OracleCondition(cv::Mat const & image)> make;
};

OracleCondition OfSteps(std::function<bool(cv::Point, cv::Point, cv::Point)> isConnected)
{
    OracleCondition condition;
    condition.isConnected = std::move(isConnected);
    return condition;
}

/// Steps are allowed while @p spend over the pixels of the zone stays within @p budget.
OracleCondition WithBudget(double budget, std::function<double(cv::Point)> const & spend)
{
    auto const spent = std::make_shared<double>(0.0);
    OracleCondition condition;
    condition.reset = [spent] {
        *spent = 0.0;
    };
    condition.add = [spent, spend](cv::Point point) {
        *spent += spend(point);
    };
    condition.isConnected = [spent, spend, budget](cv::Point, cv::Point to, cv::Point) {
        return *spent + spend(to) <= budget;
    };
    return condition;
}

bool AllEqual(cv::Mat const & image, cv::Point left, cv::Point right)
{
    for (int channel = 0; channel < image.channels(); ++channel)
    {
        if (tests::ElementAt(image, left.y, left.x, channel) != tests::ElementAt(image, right.y, right.x, channel))
        {
            return false;
        }
    }
    return true;
}

std::vector<Rule> Rules()
{
    auto const valueIn = [](cv::Mat const & image) {
        return [image](cv::Point point) {
            return tests::ElementAt(image, point.y, point.x);
        };
    };
    return {
        {"every step",
         [](cv::Mat const &) {
             return OracleCondition();
         }},
        {"equal values",
         [](cv::Mat const & image) {
             return OfSteps([image](cv::Point from, cv::Point to, cv::Point) { return AllEqual(image, from, to); });
         }},
        {"upwards only",
         [=](cv::Mat const & image) {
             auto const value = valueIn(image);
             return OfSteps([value](cv::Point from, cv::Point to, cv::Point) { return value(to) >= value(from); });
         }},
        {"near the seed's value",
         [=](cv::Mat const & image) {
             auto const value = valueIn(image);
             return OfSteps(
                 [value](cv::Point, cv::Point to, cv::Point seed) { return std::abs(value(to) - value(seed)) <= 1; });
         }},
        {"by position",
         [](cv::Mat const &) {
             return OfSteps([](cv::Point from, cv::Point to, cv::Point seed) {
                 return (from.x + 3 * from.y + 5 * to.x + to.y + seed.x) % 4 != 0;
             });
         }},
        {"at most seven pixels",
         [](cv::Mat const &) {
             return WithBudget(7.0, [](cv::Point) { return 1.0; });
         }},
        {"within a sum of values",
         [=](cv::Mat const & image) {
             auto const value = valueIn(image);
             return WithBudget(9.0, [value](cv::Point point) { return std::abs(value(point)); });
         }},
    };
}

template <class In, class Pixels>
using Scan = ConnectedZoneScan<In, tests::ZoneCollector, typename tests::RootCondition<In>::Type, Pixels>;

/// Walks with the engine; @p wholeRun through Run, otherwise seed by seed.
template <class In, class Pixels>
std::vector<Zone> Walk(cv::Mat const & image, int number, OracleCondition const & rule, bool wholeRun)
{
    tests::PositionCondition<In> condition(image, rule);
    tests::ZoneCollector collector;
    Zone zone;
    Scan<In, Pixels> scan(image, tests::Shape(number), condition, collector, zone);
    if (wholeRun)
    {
        EXPECT_TRUE(scan.Run());
    }
    else
    {
        for (int index = 0; index < image.rows * image.cols; ++index)
        {
            EXPECT_TRUE(scan.FloodFrom({index % image.cols, index / image.cols}));
        }
    }
    EXPECT_EQ(condition.WrongValues(), 0);
    return collector.zones;
}

template <class In, class Pixels>
void ExpectPlainWalk(cv::Mat const & image, cv::Mat1b const & takesPart, int number, Rule const & rule)
{
    std::vector<Event> expectedLog;
    auto const expected = tests::OracleZones(takesPart, number, Logged(rule.make(image), expectedLog));
    for (bool const wholeRun : {true, false})
    {
        std::vector<Event> log;
        auto const zones = Walk<In, Pixels>(image, number, Logged(rule.make(image), log), wholeRun);
        ASSERT_EQ(zones, expected);
        ASSERT_TRUE(log == expectedLog) << "the condition was called otherwise";
    }
}

template <class In>
void ExpectPlainWalksOnRandomImages(tests::Random & random)
{
    auto const rules = Rules();
    for (int round = 0; round < 45; ++round)
    {
        // All shapes and a number on either side of the table.
        int const number = round % 15 - 1;
        for (Rule const & rule : rules)
        {
            cv::Size const size = tests::RandomSize(random, 11);
            tests::Mixture const mixture{random.Chance(0.5) ? 0.1 : 0.5, 0.1, 1 + random.Below(3)};
            cv::Mat const plain = tests::RandomImage(random, size, cv::traits::Type<In>::value, mixture);
            tests::FramedImage framed(plain);
            cv::Mat const & image = random.Chance(0.5) ? plain : framed.View();
            SCOPED_TRACE(tests::Case(image.type(), size, number) + ", " + rule.name);
            ExpectPlainWalk<In, AllPixels>(image, cv::Mat1b(size.height, size.width, uchar{1}), number, rule);
            ExpectPlainWalk<In, NoZero>(image, tests::OracleTakesPart(image), number, rule);
            if (::testing::Test::HasFatalFailure()) return;
        }
    }
}

TEST(ConnectedZoneScanRandom, OneChannel_GivesTheZonesAndAsksTheQuestionsOfThePlainWalk)
{
    tests::Random random(20);
    tests::ForEachElement([&]<class T> { ExpectPlainWalksOnRandomImages<T>(random); });
}

TEST(ConnectedZoneScanRandom, Vectors_GiveTheZonesAndAskTheQuestionsOfThePlainWalk)
{
    tests::Random random(21);
    tests::ForEachElement([&]<class T> {
        tests::ForEachVector<T>([&]<class Vector> { ExpectPlainWalksOnRandomImages<Vector>(random); });
    });
}

TEST(ConnectedZoneScanRandom, NarrowImages_AskTheQuestionsOfThePlainWalk)
{
    tests::Random random(22);
    Rule const everyStep = Rules()[0];
    for (int cols = 1; cols <= 4; ++cols)
    {
        for (int rows = 1; rows <= 4; ++rows)
        {
            for (int number = 0; number < tests::kConnexityCount; ++number)
            {
                cv::Mat const image = tests::RandomImage(random, {cols, rows}, CV_8UC1, {0.3, 0.0, 2});
                SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
                ExpectPlainWalk<uchar, AllPixels>(image, cv::Mat1b(rows, cols, uchar{1}), number, everyStep);
                ExpectPlainWalk<uchar, NoZero>(image, tests::OracleTakesPart(image), number, everyStep);
            }
        }
    }
}

/// The conditions of the library, pinned and through their roots.
template <class In, class Equal>
void ExpectFlatZones(tests::Random & random)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        cv::Mat const image =
            tests::RandomImage(random, tests::RandomSize(random, 20), cv::traits::Type<In>::value, {0.4, 0.1, 2});
        SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
        auto const rule = OfSteps([&](cv::Point from, cv::Point to, cv::Point) { return AllEqual(image, from, to); });
        auto const expected = tests::OracleZones(tests::OracleTakesPart(image), number, rule);
        Equal viaRoot;
        ASSERT_EQ((tests::ZonesOf<In, NoZero>(image, tests::Shape(number), viaRoot)), expected);
        Exactly<Equal> pinned;
        tests::ZoneCollector collector;
        Zone zone;
        ConnectedZoneScan<In, tests::ZoneCollector, Exactly<Equal>, NoZero> scan(
            image, tests::Shape(number), pinned, collector, zone);
        scan.Run();
        ASSERT_EQ(collector.zones, expected);
    }
}

TEST(ConnectedZoneScanRandom, EqualConnected_GivesFlatZonesPinnedAndThroughItsRoot)
{
    tests::Random random(23);
    tests::ForEachElement([&]<class T> { ExpectFlatZones<T, EqualConnected<T>>(random); });
    ExpectFlatZones<cv::Vec2f, EqualConnected_MultiChannel<float, 2>>(random);
    ExpectFlatZones<cv::Vec3b, EqualConnected_MultiChannel<uchar, 3>>(random);
    ExpectFlatZones<cv::Vec4d, EqualConnected_MultiChannel<double, 4>>(random);
}

} // namespace

} // namespace morvane::connexity
