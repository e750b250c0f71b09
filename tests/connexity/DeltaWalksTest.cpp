// The zones that walks over the delta conditions give.
#include <morvane/connexity/ConnectedZoneScan.h>

#include "support/AllTypes.h"
#include "support/DeltaAnswers.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Walks.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <limits>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::OracleCondition;
using tests::Random;
using tests::Row;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The labels of a walk over pixels of type @p In.
template <class In, class Pixels = AllPixels>
cv::Mat
LabelsOf(cv::Mat const & image, typename tests::RootCondition<In>::Type && condition, eConnexityType type = eConnexity4)
{
    return tests::OracleLabels(tests::ZonesOf<In, Pixels>(image, type, condition), image.size(), CV_32SC1);
}

TEST(DeltaWalks, AGentleRampIsOneZoneButNotForTheSeed)
{
    cv::Mat const ramp = Row<double>({0.0, 0.4, 0.8, 1.2});
    tests::ExpectDrawn(LabelsOf<double>(ramp, DeltaConnected<double>(0.5)), {"1111"});
    tests::ExpectDrawn(LabelsOf<double>(ramp, DeltaConnectedSeed<double>(0.5)), {"1122"});
    tests::ExpectDrawn(LabelsOf<double>(ramp, DeltaNoConnected<double>(0.5)), {"1234"});
}

TEST(DeltaWalks, TheEndsOfARampMayLieAsFarApartAsTheTypeAllows)
{
    cv::Mat ramp(1, 65536, CV_16UC1);
    for (int x = 0; x < ramp.cols; ++x)
    {
        ramp.at<ushort>(x) = static_cast<ushort>(x);
    }
    DeltaConnected<ushort> bounded(1.0);
    DeltaConnectedSeed<ushort> boundedBySeed(1.0);
    EXPECT_EQ((tests::ZonesOf<ushort, AllPixels>(ramp, eConnexity4, bounded).size()), 1U);
    EXPECT_EQ((tests::ZonesOf<ushort, AllPixels>(ramp, eConnexity4, boundedBySeed).size()), 32768U);
}

TEST(DeltaConnectedSeed, APixelRefusedByOneSeedBelongsToALaterOne)
{
    cv::Mat const image = Draw<uchar>({"159", "159"});
    tests::ExpectDrawn(LabelsOf<uchar>(image, DeltaConnectedSeed<uchar>(4.0)), {"112", "112"});
    tests::ExpectDrawn(LabelsOf<uchar>(image, DeltaConnectedSeed<uchar>(3.0)), {"123", "123"});
    tests::ExpectDrawn(LabelsOf<uchar>(image, DeltaConnectedSeed<uchar>(8.0)), {"111", "111"});
}

TEST(DeltaConnectedSeed, ZonesDependOnWhichPixelComesFirst)
{
    tests::ExpectDrawn(LabelsOf<int>(Draw<int>({"357"}), DeltaConnectedSeed<int>(2.0)), {"112"});
    tests::ExpectDrawn(LabelsOf<int>(Draw<int>({"753"}), DeltaConnectedSeed<int>(2.0)), {"112"});
    tests::ExpectDrawn(LabelsOf<int>(Draw<int>({"573"}), DeltaConnectedSeed<int>(2.0)), {"111"});
    tests::ExpectDrawn(LabelsOf<int>(Draw<int>({"537"}), DeltaConnectedSeed<int>(2.0)), {"111"});
    // The seed in the first row bounds the whole zone, also where neighbours lie closer.
    tests::ExpectDrawn(
        LabelsOf<int>(Draw<int>({"5555", "3678", "3333"}), DeltaConnectedSeed<int>(2.0)), {"1111", "1112", "1111"});
}

TEST(DeltaConnectedSeed, APixelWithinTheBoundIsReachedOnlyThroughOthersThatAre)
{
    // Nothing beside the right 5 is near the left one.
    tests::ExpectDrawn(LabelsOf<uchar>(Draw<uchar>({"5.5", "9.9"}), DeltaConnectedSeed<uchar>(2.0)), {"123", "425"});
}

TEST(DeltaNoConnected, StepsOnlyAcrossLargeDifferences)
{
    cv::Mat const checkers = Draw<uchar>({"1919", "9191"});
    tests::ExpectDrawn(LabelsOf<uchar>(checkers, DeltaNoConnected<uchar>(7.0)), {"1111", "1111"});
    tests::ExpectDrawn(LabelsOf<uchar>(checkers, DeltaNoConnected<uchar>(8.0)), {"1234", "5678"});
    tests::ExpectDrawn(LabelsOf<uchar>(Draw<uchar>({"11", "11"}), DeltaNoConnected<uchar>(0.0)), {"12", "34"});
    // Equal values meet again over a third.
    tests::ExpectDrawn(LabelsOf<uchar>(Draw<uchar>({"11", "88"}), DeltaNoConnected<uchar>(5.0)), {"12", "12"});
    tests::ExpectDrawn(
        LabelsOf<uchar>(Draw<uchar>({"11", "88"}), DeltaNoConnected<uchar>(5.0), eConnexity8), {"11", "11"});
}

TEST(DeltaWalks, ANaNPixelIsAZoneOfItsOwn)
{
    cv::Mat const image = Row<double>({1.0, 1.0, kNaN, kNaN, 1.0});
    for (double const delta : {0.0, 1.0, kInfinity})
    {
        tests::ExpectDrawn(LabelsOf<double>(image, DeltaConnected<double>(delta)), {"11234"});
        tests::ExpectDrawn(LabelsOf<double>(image, DeltaConnectedSeed<double>(delta)), {"11234"});
        tests::ExpectDrawn(LabelsOf<double>(image, DeltaNoConnected<double>(delta)), {"12345"});
    }
    tests::ExpectDrawn(LabelsOf<double>(image, DeltaNoConnected<double>(-1.0)), {"11234"});
    cv::Mat const pixels = Row<cv::Vec2d>({{1.0, 1.0}, {1.0, 1.0}, {1.0, kNaN}, {1.0, kNaN}, {1.0, 1.0}});
    tests::ExpectDrawn(LabelsOf<cv::Vec2d>(pixels, DeltaConnected_MultiChannel<double, 2>(kInfinity)), {"11234"});
}

TEST(DeltaWalks, EqualInfinitiesAreZonesOfTheirOwn)
{
    cv::Mat const image = Row<double>({kInfinity, kInfinity, 5.0, 5.0});
    tests::ExpectDrawn(LabelsOf<double>(image, DeltaConnected<double>(1e300)), {"1233"});
    // With a bound that is no bound, one steps down from one of them.
    tests::ExpectDrawn(LabelsOf<double>(image, DeltaConnected<double>(kInfinity)), {"1222"});
    tests::ExpectDrawn(LabelsOf<double>(image, DeltaNoConnected<double>(1e300)), {"1223"});
}

TEST(DeltaWalks, ANegativeDeltaSplitsFloatsAndJoinsBytes)
{
    cv::Mat const bytes = Draw<uchar>({"19", "Z1"});
    tests::ExpectDrawn(LabelsOf<uchar>(bytes, DeltaConnected<uchar>(-1.0)), {"11", "11"});
    tests::ExpectDrawn(LabelsOf<uchar>(bytes, DeltaConnectedSeed<uchar>(-1.0)), {"11", "11"});
    tests::ExpectDrawn(LabelsOf<uchar>(bytes, DeltaNoConnected<uchar>(-1.0)), {"12", "34"});
    cv::Mat const floats = Draw<float>({"11", "11"});
    tests::ExpectDrawn(LabelsOf<float>(floats, DeltaConnected<float>(-1.0)), {"12", "34"});
    tests::ExpectDrawn(LabelsOf<float>(floats, DeltaConnectedSeed<float>(-1.0)), {"12", "34"});
    tests::ExpectDrawn(LabelsOf<float>(floats, DeltaNoConnected<float>(-1.0)), {"11", "11"});
}

TEST(DeltaWalks, ADeltaIsWrappedToTheElementType)
{
    cv::Mat const image = Draw<uchar>({"1347"});
    tests::ExpectDrawn(LabelsOf<uchar>(image, DeltaConnected<uchar>(2.9)), {"1112"});
    tests::ExpectDrawn(LabelsOf<uchar>(image, DeltaConnected<uchar>(256.0)), {"1234"});
    tests::ExpectDrawn(LabelsOf<uchar>(image, DeltaConnected<uchar>(257.0)), {"1223"});
    cv::Mat const apart = Row<uchar>({0, 44, 89});
    tests::ExpectDrawn(LabelsOf<uchar>(apart, DeltaConnected<uchar>(300.7)), {"112"});
    tests::ExpectDrawn(LabelsOf<uchar>(apart, DeltaConnectedSeed<uchar>(300.7)), {"112"});
    tests::ExpectDrawn(LabelsOf<uchar>(apart, DeltaNoConnected<uchar>(300.7)), {"122"});
    // 40000 is -25536 there, below every difference.
    cv::Mat const shorts = Row<short>({-32768, 7, 7, 32767});
    tests::ExpectDrawn(LabelsOf<short>(shorts, DeltaConnected<short>(40000.0)), {"1234"});
    tests::ExpectDrawn(LabelsOf<short>(shorts, DeltaConnectedSeed<short>(40000.0)), {"1234"});
    tests::ExpectDrawn(LabelsOf<short>(shorts, DeltaNoConnected<short>(40000.0)), {"1111"});
}

TEST(DeltaWalks, IntsThatAreTooFarApartConnect)
{
    cv::Mat const image = Row<int>({std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), 7, -7});
    tests::ExpectDrawn(LabelsOf<int>(image, DeltaConnected<int>(0.0)), {"1123"});
    tests::ExpectDrawn(LabelsOf<int>(image, DeltaConnectedSeed<int>(0.0)), {"1112"});
    tests::ExpectDrawn(LabelsOf<int>(image, DeltaNoConnected<int>(0.0)), {"1222"});
}

TEST(DeltaWalks, EmptyPixelsSeparateInTheNoZeroFlavour)
{
    cv::Mat const image = Draw<short>({"1.1", "1.1", "111"});
    tests::ExpectDrawn(LabelsOf<short>(image, DeltaConnected<short>(5.0)), {"111", "111", "111"});
    tests::ExpectDrawn((LabelsOf<short, NoZero>(image, DeltaConnected<short>(5.0))), {"1.1", "1.1", "111"});
    cv::Mat const apart = Draw<short>({"1.1", "9.9"});
    tests::ExpectDrawn((LabelsOf<short, NoZero>(apart, DeltaConnected<short>(5.0))), {"1.2", "3.4"});
    tests::ExpectDrawn((LabelsOf<short, NoZero>(apart, DeltaConnectedSeed<short>(9.0))), {"1.2", "1.2"});
    tests::ExpectDrawn((LabelsOf<short, NoZero>(apart, DeltaNoConnected<short>(0.0))), {"1.2", "1.2"});
}

TEST(DeltaWalks, PixelsOfSeveralChannelsConnectAsAWhole)
{
    using In = cv::Vec3b;
    using Condition = DeltaConnected_MultiChannel<uchar, 3>;
    cv::Mat const image = Row<In>({{0, 0, 0}, {3, 4, 0}, {6, 8, 0}, {9, 12, 1}});
    tests::ExpectDrawn(LabelsOf<In>(image, Condition(5.0)), {"1112"});
    tests::ExpectDrawn(LabelsOf<In>(image, Condition(4.999)), {"1234"});
    tests::ExpectDrawn(LabelsOf<In>(image, Condition(5.1)), {"1111"});
    tests::ExpectDrawn((LabelsOf<In, NoZero>(image, Condition(5.0))), {".112"});
    // Neither squares nor their sums are cut: 16^2 and 256^2 would be 0 in the element type.
    cv::Mat const bytes = Row<In>({{0, 0, 0}, {16, 0, 0}, {16, 0, 15}});
    tests::ExpectDrawn(LabelsOf<In>(bytes, Condition(15.0)), {"122"});
    cv::Mat const words = Row<cv::Vec3w>({{0, 0, 0}, {256, 0, 0}, {256, 0, 255}});
    tests::ExpectDrawn(LabelsOf<cv::Vec3w>(words, DeltaConnected_MultiChannel<ushort, 3>(255.0)), {"122"});
}

/// A walk in which the condition is called directly instead of through the virtual table.
template <class T, class Condition, class Pixels>
std::vector<Zone> ZonesOfPinned(cv::Mat const & image, eConnexityType type, double delta)
{
    Exactly<Condition> condition(delta);
    tests::ZoneCollector collector;
    Zone zone;
    ConnectedZoneScan<T, tests::ZoneCollector, Exactly<Condition>, Pixels> scan(
        image, type, condition, collector, zone);
    scan.Run();
    return collector.zones;
}

/// The condition over positions that allows a step where the values give @p answer.
template <class T>
OracleCondition PlainRule(cv::Mat const & image, T delta, tests::Answer answer, bool fromSeed)
{
    OracleCondition rule;
    rule.isConnected = [=](cv::Point from, cv::Point to, cv::Point seed) {
        return tests::PlainAnswer(image.at<T>(fromSeed ? seed : from), image.at<T>(to), delta) == answer;
    };
    return rule;
}

template <class T, class Condition>
void ExpectPlainZones(cv::Mat const & image, int number, double delta, OracleCondition const & rule)
{
    SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
    cv::Mat1b const all(image.size(), uchar{1});
    cv::Mat1b const full = tests::OracleTakesPart(image);
    auto const expected = tests::OracleZones(all, number, rule);
    auto const expectedNoZero = tests::OracleZones(full, number, rule);
    Condition condition(delta);
    EXPECT_EQ((tests::ZonesOf<T, AllPixels>(image, tests::Shape(number), condition)), expected);
    EXPECT_EQ((tests::ZonesOf<T, NoZero>(image, tests::Shape(number), condition)), expectedNoZero);
    EXPECT_EQ((ZonesOfPinned<T, Condition, AllPixels>(image, tests::Shape(number), delta)), expected);
    EXPECT_EQ((ZonesOfPinned<T, Condition, NoZero>(image, tests::Shape(number), delta)), expectedNoZero);
}

TEST(DeltaWalks, MatchThePlainWalkOnRandomImages)
{
    Random random(51);
    tests::ForEachElement([&random]<class T> {
        for (int round = 0; round < 150 && !::testing::Test::HasFailure(); ++round)
        {
            tests::FramedImage framed(tests::RandomImage(
                random, tests::RandomSize(random, 20), cv::DataType<T>::type, {random.Unit(), random.Unit() / 4.0, 9}));
            cv::Mat const & image = framed.View();
            int const number = random.Below(tests::kConnexityCount);
            auto const delta = static_cast<T>(random.Below(5));
            auto const asGiven = static_cast<double>(delta);
            auto const within = tests::Answer::kWithin;
            ExpectPlainZones<T, DeltaConnected<T>>(image, number, asGiven, PlainRule(image, delta, within, false));
            ExpectPlainZones<T, DeltaConnectedSeed<T>>(image, number, asGiven, PlainRule(image, delta, within, true));
            ExpectPlainZones<T, DeltaNoConnected<T>>(
                image, number, asGiven, PlainRule(image, delta, tests::Answer::kBeyond, false));
        }
    });
}

TEST(DeltaWalks, ZonesOfDeltaConnectedAreTheSameFromAnyCorner)
{
    Random random(52);
    tests::ForEachElement([&random]<class T> {
        for (int round = 0; round < 50; ++round)
        {
            cv::Mat const image =
                tests::RandomImage(random, {1 + random.Below(20), 1 + random.Below(20)}, cv::DataType<T>::type);
            cv::Mat turned;
            cv::rotate(image, turned, cv::ROTATE_180);
            cv::Mat labels = LabelsOf<T>(turned, DeltaConnected<T>(1.0), eConnexity8);
            cv::rotate(labels, labels, cv::ROTATE_180);
            ASSERT_TRUE(tests::SamePartition(labels, LabelsOf<T>(image, DeltaConnected<T>(1.0), eConnexity8)));
        }
    });
}

TEST(DeltaWalks, ZonesOfALargerDeltaContainThoseOfASmallerOne)
{
    Random random(53);
    tests::ForEachElement([&random]<class T> {
        cv::Mat const image = tests::RandomImage(random, {30, 30}, cv::DataType<T>::type, {0.1, 0.02, 50});
        cv::Mat finer = LabelsOf<T>(image, DeltaConnected<T>(0.0));
        for (double const delta : {1.0, 3.0, 10.0, 30.0})
        {
            cv::Mat const coarser = LabelsOf<T>(image, DeltaConnected<T>(delta));
            double finerZones = 0.0;
            double coarserZones = 0.0;
            cv::minMaxIdx(finer, nullptr, &finerZones);
            cv::minMaxIdx(coarser, nullptr, &coarserZones);
            EXPECT_LT(coarserZones, finerZones);
            for (int zone = 1; zone <= static_cast<int>(finerZones); ++zone)
            {
                double least = 0.0;
                double most = 0.0;
                cv::minMaxIdx(coarser, &least, &most, nullptr, nullptr, finer == zone);
                ASSERT_EQ(least, most) << "zone " << zone << " is torn apart by delta " << delta;
            }
            finer = coarser;
        }
    });
}

} // namespace

} // namespace morvane::connexity
