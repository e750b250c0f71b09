// The composites of the library's own conditions against the plain rule, over every pair of element types.
#include <morvane/connexity/Conditions.h>

#include "support/AllTypes.h"
#include "support/DeltaAnswers.h"
#include "support/RandomPixels.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Answer;
using tests::PlainAnswer;
using tests::Random;

/// Random steps along rows of pixels, each compared with the plain rule; expects that both answers come up often.
///
/// @param walked the pixels of the walked image
template <class T1, class T2, class Composite, class Rule>
void ExpectPlainSteps(Composite & composite, std::vector<T1> const & walked, Random & random, Rule const & isAllowed)
{
    int const count = static_cast<int>(walked.size());
    int allowed = 0;
    for (int round = 0; round < 1000; ++round)
    {
        // Close by, where pixels resemble each other.
        auto const from = static_cast<std::size_t>(random.Below(count - 4));
        std::size_t const to = from + static_cast<std::size_t>(random.Below(4));
        std::size_t const seed = from + static_cast<std::size_t>(random.Below(4));
        auto const at = [](std::size_t x) {
            return cv::Point(static_cast<int>(x), 0);
        };
        bool const expected = isAllowed(from, to, seed);
        ASSERT_EQ(composite.IsConnected(at(from), walked[from], at(to), walked[to], at(seed), walked[seed]), expected)
            << from << "->" << to << " of " << seed;
        allowed += expected ? 1 : 0;
    }
    EXPECT_GT(allowed, 50);
    EXPECT_LT(allowed, 950);
}

template <class T>
bool Within(T one, T other, T delta)
{
    return PlainAnswer(one, other, delta) == Answer::kWithin;
}

template <class T>
cv::Mat RowOf(std::vector<T> const & pixels)
{
    return cv::Mat(pixels, true).reshape(0, 1);
}

/// The library's pairs of conditions over a pair of element types.
template <class T1, class T2>
void ExpectPlainStepsOfPairs(Random & random)
{
    SCOPED_TRACE(cv::typeToString(cv::DataType<T1>::type) + " and " + cv::typeToString(cv::DataType<T2>::type));
    auto const a = tests::RandomPixels<T1>(random, 500);
    auto const b = tests::RandomPixels<T2>(random, 500);
    cv::Mat const second = RowOf(b);

    DeltaConnected<T1> firstDelta(2.0);
    DeltaConnected<T2> secondDelta(4.0);
    ImageConnected<T1, T2, DeltaConnected<T1>, DeltaConnected<T2>> near(second, firstDelta, secondDelta);
    ExpectPlainSteps<T1, T2>(near, a, random, [&](std::size_t from, std::size_t to, std::size_t) {
        return Within(a[from], a[to], T1{2}) && Within(b[from], b[to], T2{4});
    });
    DeltaConnectedSeed<T1> firstSeed(2.0);
    DeltaConnectedSeed<T2> secondSeed(4.0);
    ImageConnected<T1, T2, DeltaConnectedSeed<T1>, DeltaConnectedSeed<T2>> nearSeed(second, firstSeed, secondSeed);
    ExpectPlainSteps<T1, T2>(nearSeed, a, random, [&](std::size_t, std::size_t to, std::size_t seed) {
        return Within(a[seed], a[to], T1{2}) && Within(b[seed], b[to], T2{4});
    });
    EqualConnected<T1> firstEqual;
    EqualConnected<T2> secondEqual;
    ImageConnected<T1, T2, EqualConnected<T1>, EqualConnected<T2>> equal(second, firstEqual, secondEqual);
    ExpectPlainSteps<T1, T2>(equal, a, random, [&](std::size_t from, std::size_t to, std::size_t) {
        return a[from] == a[to] && b[from] == b[to];
    });
}

TEST(CompositeSteps, OnTwoImagesNeedBothConditions)
{
    Random random(81);
    tests::ForEachElement([&random]<class T1> {
        tests::ForEachElement([&random]<class T2> { ExpectPlainStepsOfPairs<T1, T2>(random); });
    });
}

TEST(CompositeSteps, InZonesStayInTheirZone)
{
    Random random(82);
    tests::ForEachElement([&random]<class T> {
        auto const a = tests::RandomPixels<T>(random, 500);
        std::vector<int> zones(a.size());
        std::generate(zones.begin(), zones.end(), [&random] { return random.Below(2); });
        cv::Mat const zoneImage = RowOf(zones);
        EqualConnected<int> sameZone;
        AlwaysConnected<T> always;
        ImageConnected<T, int, AlwaysConnected<T>, EqualConnected<int>> inZone(zoneImage, always, sameZone);
        ExpectPlainSteps<T, int>(
            inZone, a, random, [&](std::size_t from, std::size_t to, std::size_t) { return zones[from] == zones[to]; });
        DeltaConnected<T> delta(3.0);
        ImageConnected<T, int, DeltaConnected<T>, EqualConnected<int>> nearInZone(zoneImage, delta, sameZone);
        ExpectPlainSteps<T, int>(nearInZone, a, random, [&](std::size_t from, std::size_t to, std::size_t) {
            return zones[from] == zones[to] && Within(a[from], a[to], T{3});
        });
    });
}

template <class T1, class T2, int N>
void ExpectPlainStepsOfVectors(Random & random)
{
    SCOPED_TRACE(
        cv::typeToString(cv::traits::Type<cv::Vec<T1, N>>::value) + " and " +
        cv::typeToString(cv::traits::Type<cv::Vec<T2, N>>::value));
    using Condition1 = DeltaConnected_MultiChannel<T1, N>;
    using Condition2 = DeltaConnected_MultiChannel<T2, N>;
    auto const a = tests::RandomPixels<cv::Vec<T1, N>>(random, 500);
    auto const b = tests::RandomPixels<cv::Vec<T2, N>>(random, 500);
    cv::Mat const second = RowOf(b);
    Condition1 first(8.0);
    Condition2 other(11.0);
    ImageConnected_MultiChannel<T1, T2, Condition1, Condition2, N> composite(second, first, other);
    ExpectPlainSteps<cv::Vec<T1, N>, cv::Vec<T2, N>>(
        composite, a, random, [&](std::size_t from, std::size_t to, std::size_t) {
            return cv::norm(a[from], a[to], cv::NORM_L2) <= 8.0 && cv::norm(b[from], b[to], cv::NORM_L2) <= 11.0;
        });
}

TEST(CompositeSteps, OnTwoImagesOfSeveralChannelsNeedBothDistances)
{
    Random random(83);
    tests::ForEachElement([&random]<class T1> {
        tests::ForEachElement([&random]<class T2> {
            ExpectPlainStepsOfVectors<T1, T2, 2>(random);
            ExpectPlainStepsOfVectors<T1, T2, 3>(random);
            ExpectPlainStepsOfVectors<T1, T2, 4>(random);
        });
    });
}

template <class T1, class T2>
void ExpectPlainStepsOfThree(Random & random)
{
    SCOPED_TRACE(cv::typeToString(cv::DataType<T1>::type) + " and " + cv::typeToString(cv::DataType<T2>::type));
    auto const a = tests::RandomPixels<T1>(random, 500);
    auto const b = tests::RandomPixels<T2>(random, 500);
    std::vector<int> zones(a.size());
    std::generate(zones.begin(), zones.end(), [&random] { return random.Chance(0.2) ? 1 : 0; });
    cv::Mat const second = RowOf(b);
    cv::Mat const zoneImage = RowOf(zones);
    EqualConnected<int> sameZone;

    DeltaConnected<T1> first(3.0);
    DeltaConnected<T2> third(6.0);
    TwoImageConnected<T1, int, T2, DeltaConnected<T1>, EqualConnected<int>, DeltaConnected<T2>> composite(
        zoneImage, second, first, sameZone, third);
    ExpectPlainSteps<T1, T2>(composite, a, random, [&](std::size_t from, std::size_t to, std::size_t) {
        return Within(a[from], a[to], T1{3}) && zones[from] == zones[to] && Within(b[from], b[to], T2{6});
    });
}

TEST(CompositeSteps, OnThreeImagesNeedAllConditions)
{
    Random random(84);
    tests::ForEachElement([&random]<class T1> {
        tests::ForEachElement([&random]<class T2> { ExpectPlainStepsOfThree<T1, T2>(random); });
    });
}

} // namespace

} // namespace morvane::connexity
