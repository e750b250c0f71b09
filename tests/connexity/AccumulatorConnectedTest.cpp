#include <morvane/connexity/AccumulatorZones.h>
#include <morvane/connexity/Conditions.h>

#include "support/AllTypes.h"
#include "support/GrowingOracle.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Walks.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>

namespace morvane::connexity
{

namespace
{

using tests::EqualImages;
using tests::Random;
using tests::Shape;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// May a neighbour of this value join? Asked through the base, as a walk over any condition does.
template <class T>
bool Takes(AlwaysConnected<T> & condition, T value)
{
    return condition.IsConnected({1, 2}, T{0}, {2, 2}, value, {0, 0}, T{0});
}

template <class T>
void Add(AlwaysConnected<T> & condition, T value)
{
    condition.Add({3, 4}, value);
}

/// May a neighbour join a zone of one pixel?
template <class T>
bool Joins(T seed, T value, double budget)
{
    AccumulatorConnected<T> condition(budget);
    condition.Reset();
    Add<T>(condition, seed);
    return Takes<T>(condition, value);
}

/// Calls @p test with a condition of budget 10 for each element type, fresh from its constructor.
template <class Test>
void ForEachCondition(Test && test)
{
    tests::ForEachElement([&]<class T> {
        SCOPED_TRACE(cv::typeToString(cv::traits::Type<T>::value));
        std::unique_ptr<AlwaysConnected<T>> const condition = std::make_unique<AccumulatorConnected<T>>(10.0);
        test.template operator()<T>(*condition);
    });
}

TEST(AccumulatorConnected, ValueAndSumMustBeBelowTheBudget)
{
    ForEachCondition([]<class T>(AlwaysConnected<T> & condition) {
        EXPECT_TRUE(Takes<T>(condition, 9)) << "the sum of a new condition is 0";
        EXPECT_FALSE(Takes<T>(condition, 10));
        Add<T>(condition, 4);
        EXPECT_TRUE(Takes<T>(condition, 5));
        EXPECT_FALSE(Takes<T>(condition, 6)) << "the budget is exclusive";
        Add<T>(condition, 5);
        EXPECT_TRUE(Takes<T>(condition, 0));
        EXPECT_FALSE(Takes<T>(condition, 1));
    });
}

TEST(AccumulatorConnected, Questions_LeaveTheSumAlone)
{
    ForEachCondition([]<class T>(AlwaysConnected<T> & condition) {
        Add<T>(condition, 4);
        for (int round = 0; round < 5; ++round)
        {
            EXPECT_TRUE(Takes<T>(condition, 5));
            EXPECT_FALSE(Takes<T>(condition, 6));
        }
    });
}

TEST(AccumulatorConnected, WhatIsAdded_IsNotAskedAbout)
{
    ForEachCondition([]<class T>(AlwaysConnected<T> & condition) {
        Add<T>(condition, 100);
        EXPECT_FALSE(Takes<T>(condition, 0)) << "a seed may use up the budget on its own";
    });
}

TEST(AccumulatorConnected, Reset_StartsTheSumAnew)
{
    ForEachCondition([]<class T>(AlwaysConnected<T> & condition) {
        Add<T>(condition, 100);
        condition.Reset();
        EXPECT_TRUE(Takes<T>(condition, 9));
        EXPECT_FALSE(Takes<T>(condition, 10));
    });
}

TEST(AccumulatorConnected, OnlyTheNeighboursValueCounts)
{
    ForEachCondition([]<class T>(AlwaysConnected<T> & condition) {
        T const far = 120;
        EXPECT_TRUE(condition.IsConnected({1, 2}, far, {2, 2}, 9, {0, 0}, far));
        EXPECT_FALSE(condition.IsConnected({1, 2}, 0, {2, 2}, 10, {0, 0}, 0));
        EXPECT_TRUE(condition.IsConnected({-7, 9}, 0, {100, -5}, 9, {3, 3}, 0));
    });
}

TEST(AccumulatorConnected, NegativeValues_LowerTheSum)
{
    auto const expect = []<class T>(T) {
        AccumulatorConnected<T> condition(10.0);
        Add<T>(condition, 6);
        EXPECT_FALSE(Takes<T>(condition, 6));
        Add<T>(condition, -3);
        EXPECT_TRUE(Takes<T>(condition, 6));
        EXPECT_FALSE(Takes<T>(condition, 7));
    };
    expect(short{});
    expect(int{});
    expect(float{});
    expect(double{});
}

TEST(AccumulatorConnected, SumsOfShortTypes_AreKeptInInt)
{
    EXPECT_TRUE((std::is_same_v<AccumulatorConnected<uchar>::Sum, int>));
    EXPECT_TRUE((std::is_same_v<AccumulatorConnected<ushort>::Sum, int>));
    EXPECT_TRUE((std::is_same_v<AccumulatorConnected<short>::Sum, int>));
    EXPECT_TRUE((std::is_same_v<AccumulatorConnected<int>::Sum, int>));
    EXPECT_TRUE((std::is_same_v<AccumulatorConnected<float>::Sum, float>));
    EXPECT_TRUE((std::is_same_v<AccumulatorConnected<double>::Sum, double>));

    EXPECT_FALSE(Joins<uchar>(200, 200, 400.0));
    EXPECT_TRUE(Joins<uchar>(200, 200, 401.0));
    EXPECT_FALSE(Joins<ushort>(60000, 60000, 120000.0));
    EXPECT_TRUE(Joins<ushort>(60000, 60000, 120001.0));
    EXPECT_FALSE(Joins<short>(30000, 30000, 60000.0));
    EXPECT_TRUE(Joins<short>(30000, 30000, 60001.0));
    EXPECT_FALSE(Joins<short>(-30000, -30000, -60000.0));
    EXPECT_TRUE(Joins<short>(-30000, -30000, -59999.0));
}

TEST(AccumulatorConnected, SumsInInt_WrapAround)
{
    // 2000000000 twice is -294967296.
    EXPECT_TRUE(Joins<int>(2000000000, 2000000000, 0.0));
    EXPECT_TRUE(Joins<int>(2000000000, 2000000000, -294967295.0));
    EXPECT_FALSE(Joins<int>(2000000000, 2000000000, -294967296.0));
    int const least = std::numeric_limits<int>::min();
    EXPECT_FALSE(Joins<int>(least, -1, 2147483647.0)) << "the sum is the largest int";
    EXPECT_TRUE(Joins<int>(least, -2, 2147483647.0));

    AccumulatorConnected<int> condition(0.0);
    Add(condition, 2000000000);
    Add(condition, 2000000000);
    EXPECT_TRUE(Takes(condition, 294967295));
    EXPECT_FALSE(Takes(condition, 294967296));
}

TEST(AccumulatorConnected, BudgetOfIntegers_IsCutToAnIntOfWhichNothingIsDropped)
{
    EXPECT_FALSE(Joins<uchar>(1, 1, 2.9));
    EXPECT_TRUE(Joins<uchar>(1, 1, 3.0));
    EXPECT_FALSE(Joins<uchar>(0, 0, 0.9));
    EXPECT_FALSE(Joins<uchar>(0, 0, -0.9));
    EXPECT_TRUE(Joins<short>(0, -1, -0.9)) << "cut towards 0";
    EXPECT_FALSE(Joins<short>(0, -1, -1.9)) << "cut towards 0";
    EXPECT_TRUE(Joins<uchar>(0, 250, 300.0));
    EXPECT_FALSE(Joins<uchar>(0, 0, -1.0));
    EXPECT_TRUE(Joins<ushort>(0, 65535, 65536.0));
    EXPECT_TRUE(Joins<short>(0, 32767, 40000.0));
    EXPECT_TRUE(Joins<int>(0, 2147483646, 2147483647.9));
    EXPECT_FALSE(Joins<int>(0, 2147483647, 2147483647.9));
}

TEST(AccumulatorConnected, BudgetThatNoIntHolds_CountsAsTheSmallest)
{
    for (double const budget : {2147483648.0, -2147483648.0, -2147483649.5, 1e10, 1e300, kInfinity, -kInfinity, kNaN})
    {
        SCOPED_TRACE(budget);
        EXPECT_FALSE(Joins<uchar>(0, 0, budget));
        EXPECT_FALSE(Joins<ushort>(0, 0, budget));
        EXPECT_FALSE(Joins<short>(-5, -32768, budget));
        EXPECT_FALSE(Joins<int>(0, std::numeric_limits<int>::min(), budget));
    }
}

TEST(AccumulatorConnected, BudgetOfFloats_IsRoundedAndThatOfDoublesIsNot)
{
    // 0.7F lies below 0.7.
    EXPECT_FALSE(Joins<float>(0.0F, 0.7F, 0.7));
    EXPECT_TRUE(Joins<double>(0.0, static_cast<double>(0.7F), 0.7));
    EXPECT_FALSE(Joins<double>(0.0, 0.7, 0.7));
    EXPECT_TRUE(Joins<float>(0.0F, 3e38F, 1e300)) << "beyond its range a float is infinite";
}

TEST(AccumulatorConnected, SumsOfFloats_AreRoundedAndThoseOfDoublesAreNot)
{
    // Beyond 16777216 a float only holds every second integer.
    AccumulatorConnected<float> single(16777218.0);
    AccumulatorConnected<double> precise(16777218.0);
    Add(single, 16777216.0F);
    Add(precise, 16777216.0);
    for (int round = 0; round < 4; ++round)
    {
        EXPECT_TRUE(Takes(single, 1.0F));
        EXPECT_EQ(Takes(precise, 1.0), round == 0);
        Add(single, 1.0F);
        Add(precise, 1.0);
    }
}

TEST(AccumulatorConnected, NaN_NeverJoinsAndNothingJoinsIt)
{
    auto const expect = []<class T>(T) {
        T const nan = std::numeric_limits<T>::quiet_NaN();
        EXPECT_FALSE(Joins<T>(1, nan, 100.0));
        EXPECT_FALSE(Joins<T>(nan, 1, 100.0));
        EXPECT_FALSE(Joins<T>(nan, -1, kInfinity));
        EXPECT_FALSE(Joins<T>(1, 1, kNaN));
        AccumulatorConnected<T> condition(10.0);
        Add<T>(condition, nan);
        condition.Reset();
        EXPECT_TRUE(Takes<T>(condition, 1)) << "the next zone starts from 0";
    };
    expect(float{});
    expect(double{});
}

TEST(AccumulatorConnected, Infinities_AreSummedAsTheyAre)
{
    auto const expect = []<class T>(T) {
        T const infinity = std::numeric_limits<T>::infinity();
        EXPECT_TRUE(Joins<T>(1, std::numeric_limits<T>::max(), kInfinity));
        EXPECT_FALSE(Joins<T>(1, infinity, kInfinity));
        EXPECT_FALSE(Joins<T>(infinity, 1, kInfinity));
        EXPECT_TRUE(Joins<T>(-infinity, 1, -1e30));
        EXPECT_FALSE(Joins<T>(-infinity, infinity, kInfinity)) << "the sum is NaN";
        EXPECT_FALSE(Joins<T>(-infinity, 1, -kInfinity));
    };
    expect(float{});
    expect(double{});
}

TEST(AccumulatorConnected, IsACondition)
{
    tests::ForEachElement([]<class T> {
        static_assert(std::is_base_of_v<AlwaysConnected<T>, AccumulatorConnected<T>>);
        static_assert(!std::is_convertible_v<double, AccumulatorConnected<T>>);
        Exactly<AccumulatorConnected<T>> pinned(10.0);
        Add<T>(pinned, 4);
        EXPECT_TRUE(pinned.IsConnected({}, 0, {}, 5, {}, 0));
        EXPECT_FALSE(pinned.IsConnected({}, 0, {}, 6, {}, 0));
    });
}

TEST(AccumulatorConnected, WalkOverTheCondition_FindsTheZonesOfTheOperator)
{
    Random random(1301);
    for (int round = 0; round < 300; ++round)
    {
        tests::ForEachElement([&]<class T> {
            int const number = round % 15 - 1;
            int const type = cv::traits::Type<T>::value;
            cv::Mat const image = tests::RandomTerrain(random, tests::RandomSize(random, 12), type);
            double const budget = tests::RandomBudget(random);
            SCOPED_TRACE(tests::Case(type, image.size(), number) + ", budget " + std::to_string(budget));
            AccumulatorConnected<T> condition(budget);
            auto const zones = tests::ZonesOf<T, AllPixels>(image, Shape(number), condition);
            ASSERT_EQ(
                zones, tests::OracleGrownZones(
                           image, number, tests::RasterSeeds(image.size()), tests::SumsBelow(image, budget),
                           tests::GrowthOrder::Oldest));
            cv::Mat const labels = tests::Written(image.size(), CV_32SC1, [&](cv::Mat & out) {
                return LabelAccumulatorZones(image, Shape(number), budget, out);
            });
            ASSERT_TRUE(EqualImages(labels, tests::OracleLabels(zones, image.size(), CV_32SC1)));
        });
        if (HasFailure()) return;
    }
}

} // namespace

} // namespace morvane::connexity
