#include <morvane/connexity/Conditions.h>

#include "support/DeltaAnswers.h"
#include "support/RandomPixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

namespace morvane::connexity
{

namespace
{

using tests::Answer;
using tests::Asked;
using tests::ExpectAnswer;
using tests::Far;
using tests::Near;
using tests::PlainAnswer;
using tests::Random;

constexpr int kLowestInt = std::numeric_limits<int>::min();
constexpr int kHighestInt = std::numeric_limits<int>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

template <class T>
class DeltaCondition : public ::testing::Test
{};
using Elements = ::testing::Types<uchar, ushort, short, int, float, double>;
TYPED_TEST_SUITE(DeltaCondition, Elements);

TYPED_TEST(DeltaCondition, BoundIsInclusive)
{
    using T = TypeParam;
    ExpectAnswer<T>(5.0, 10, 15, Answer::kWithin);
    ExpectAnswer<T>(5.0, 10, 16, Answer::kBeyond);
    ExpectAnswer<T>(5.0, 10, 10, Answer::kWithin);
    ExpectAnswer<T>(5.0, 0, 5, Answer::kWithin);
    ExpectAnswer<T>(5.0, 0, 6, Answer::kBeyond);
}

TYPED_TEST(DeltaCondition, DeltaConnected_IgnoresTheSeed)
{
    using T = TypeParam;
    EXPECT_TRUE(Asked<T>(DeltaConnected<T>(5.0), 10, 15, 100));
    EXPECT_FALSE(Asked<T>(DeltaConnected<T>(5.0), 10, 16, 10));
    EXPECT_FALSE(Asked<T>(DeltaConnected<T>(5.0), 10, 16, 16));
}

TYPED_TEST(DeltaCondition, DeltaConnectedSeed_IgnoresThePixelThatTheWalkStandsOn)
{
    using T = TypeParam;
    EXPECT_TRUE(Asked<T>(DeltaConnectedSeed<T>(5.0), 100, 15, 10));
    EXPECT_FALSE(Asked<T>(DeltaConnectedSeed<T>(5.0), 10, 16, 10));
    EXPECT_FALSE(Asked<T>(DeltaConnectedSeed<T>(5.0), 16, 16, 10));
}

TYPED_TEST(DeltaCondition, DeltaNoConnected_IgnoresTheSeed)
{
    using T = TypeParam;
    EXPECT_TRUE(Asked<T>(DeltaNoConnected<T>(5.0), 10, 16, 10));
    EXPECT_TRUE(Asked<T>(DeltaNoConnected<T>(5.0), 10, 16, 16));
    EXPECT_FALSE(Asked<T>(DeltaNoConnected<T>(5.0), 10, 15, 100));
}

TYPED_TEST(DeltaCondition, ResetAndAddLeaveTheAnswersAlone)
{
    using T = TypeParam;
    DeltaConnected<T> bounded(5.0);
    DeltaConnectedSeed<T> boundedBySeed(5.0);
    DeltaNoConnected<T> beyond(5.0);
    for (AlwaysConnected<T> * const condition :
         {static_cast<AlwaysConnected<T> *>(&bounded), static_cast<AlwaysConnected<T> *>(&boundedBySeed),
          static_cast<AlwaysConnected<T> *>(&beyond)})
    {
        bool const before = condition->IsConnected({1, 2}, 10, {2, 2}, 16, {0, 0}, 11);
        condition->Add({0, 0}, 16);
        condition->Add({1, 2}, 10);
        condition->Reset();
        EXPECT_EQ(condition->IsConnected({1, 2}, 10, {2, 2}, 16, {0, 0}, 11), before);
    }
}

/// Expects that conditions made with @p given behave as with the bound @p bound, from 0 to below the highest value.
template <class T>
void ExpectBound(double given, T bound)
{
    ExpectAnswer<T>(given, 0, bound, Answer::kWithin);
    ExpectAnswer<T>(given, 0, static_cast<T>(bound + 1), Answer::kBeyond);
}

TEST(DeltaConditions, DeltaIsCutAndWrappedToTheElementType)
{
    ExpectBound<uchar>(2.9, 2);
    ExpectBound<uchar>(0.999, 0);
    ExpectBound<uchar>(-0.999, 0);
    ExpectBound<uchar>(-2.9, 254);
    ExpectBound<uchar>(256.0, 0);
    ExpectBound<uchar>(300.0, 44);
    ExpectBound<ushort>(300.0, 300);
    ExpectBound<ushort>(65536.0, 0);
    ExpectBound<ushort>(65843.7, 307);
    ExpectBound<ushort>(-2.0, 65534);
    ExpectBound<short>(300.0, 300);
    ExpectBound<short>(65836.0, 300);
    ExpectBound<short>(-65529.2, 7);
    ExpectBound<int>(65836.0, 65836);
    ExpectBound<int>(2.9, 2);
    // Kept in double, 0.1 would be less than the nearest number of single precision.
    ExpectAnswer<float>(0.1, 0.0F, 0.1F, Answer::kWithin);
    ExpectAnswer<float>(0.1, 0.0F, std::nextafter(0.1F, 1.0F), Answer::kBeyond);
    ExpectAnswer<double>(0.1, 0.0, 0.1, Answer::kWithin);
    ExpectAnswer<double>(0.1, 0.0, static_cast<double>(0.1F), Answer::kBeyond);
}

TEST(DeltaConditions, NegativeDeltaIsLargeInUnsignedTypes)
{
    ExpectAnswer<uchar>(-1.0, 0, 255, Answer::kWithin);
    ExpectAnswer<ushort>(-1.0, 0, 65535, Answer::kWithin);
    ExpectAnswer<uchar>(-2.0, 0, 255, Answer::kBeyond);
    ExpectAnswer<uchar>(-2.0, 1, 255, Answer::kWithin);
}

TEST(DeltaConditions, NegativeDeltaOfASignedTypeIsBelowEveryDifference)
{
    for (double const delta : {-1.0, -1.9, 32768.0, 40000.0, 65535.0, -32768.0})
    {
        ExpectAnswer<short>(delta, 7, 7, Answer::kBeyond);
        ExpectAnswer<short>(delta, -32768, 32767, Answer::kBeyond);
    }
    for (double const delta : {-1.0, -1.9, -2147483648.0})
    {
        ExpectAnswer<int>(delta, 7, 7, Answer::kBeyond);
        ExpectAnswer<int>(delta, 0, kHighestInt, Answer::kBeyond);
    }
    ExpectAnswer<short>(-0.9, 7, 7, Answer::kWithin);
    ExpectAnswer<int>(-0.9, 7, 7, Answer::kWithin);
}

TEST(DeltaConditions, DeltaBeyondIntIsTheSmallestInt)
{
    for (double const delta : {2147483648.0, 3e9, -3e9, 1e300, kInfinity, -kInfinity, kNaN})
    {
        ExpectBound<uchar>(delta, 0);
        ExpectBound<ushort>(delta, 0);
        ExpectBound<short>(delta, 0);
        ExpectAnswer<int>(delta, 7, 7, Answer::kBeyond);
        // The one difference that wraps to the smallest int.
        ExpectAnswer<int>(delta, kLowestInt, 0, Answer::kWithin);
        ExpectAnswer<int>(delta, kLowestInt, 1, Answer::kBeyond);
    }
}

TEST(DeltaConditions, DifferencesOf16BitsDoNotOverflow)
{
    ExpectAnswer<short>(32767.0, -1, 32766, Answer::kWithin);
    ExpectAnswer<short>(32767.0, -1, 32767, Answer::kBeyond);
    ExpectAnswer<short>(32767.0, -32768, 32767, Answer::kBeyond);
    ExpectAnswer<short>(0.0, -32768, 32767, Answer::kBeyond);
    ExpectAnswer<ushort>(65534.0, 0, 65535, Answer::kBeyond);
    ExpectAnswer<ushort>(65535.0, 0, 65535, Answer::kWithin);
    ExpectAnswer<uchar>(254.0, 0, 255, Answer::kBeyond);
    ExpectAnswer<uchar>(255.0, 0, 255, Answer::kWithin);
}

TEST(DeltaConditions, DifferencesOf32BitsWrapAndReadAsNegative)
{
    for (double const delta : {0.0, 5.0, 2147483647.0})
    {
        ExpectAnswer<int>(delta, kLowestInt, kHighestInt, Answer::kWithin);
        ExpectAnswer<int>(delta, kLowestInt, 0, Answer::kWithin);
        ExpectAnswer<int>(delta, -1, kHighestInt, Answer::kWithin);
        ExpectAnswer<int>(delta, -2000000000, 2000000000, Answer::kWithin);
    }
    ExpectAnswer<int>(2147483646.0, 0, kHighestInt, Answer::kBeyond);
    ExpectAnswer<int>(2147483647.0, 0, kHighestInt, Answer::kWithin);
    ExpectAnswer<int>(2147483646.0, kLowestInt, -1, Answer::kBeyond);
    // The full range apart is -1.
    ExpectAnswer<int>(-1.0, kLowestInt, kHighestInt, Answer::kWithin);
    ExpectAnswer<int>(-2.0, kLowestInt, kHighestInt, Answer::kBeyond);
}

TEST(DeltaConditions, MatchThePlainDifferenceOverAllPairsOf8Bits)
{
    for (int const delta : {0, 1, 127, 128, 254, 255})
    {
        for (int one = 0; one < 256; ++one)
        {
            for (int other = 0; other <= one; ++other)
            {
                Answer const answer = one - other <= delta ? Answer::kWithin : Answer::kBeyond;
                ExpectAnswer<uchar>(delta, static_cast<uchar>(one), static_cast<uchar>(other), answer);
            }
        }
        if (HasFailure()) return;
    }
}

TYPED_TEST(DeltaCondition, MatchesThePlainDifferenceOfRandomPairs)
{
    using T = TypeParam;
    Random random(31);
    auto const values = tests::RandomPixels<T>(random, 6000);
    auto const deltas = tests::RandomPixels<T>(random, 6000);
    for (std::size_t index = 1; index < values.size(); ++index)
    {
        T const one = values[index - 1];
        T const other = values[index];
        // Among the deltas is the difference itself, exact where the two are close.
        auto const difference = common::TruncateTo<T>(static_cast<double>(one) - static_cast<double>(other));
        for (T const delta : {deltas[index], difference, T{0}})
        {
            ExpectAnswer<T>(static_cast<double>(delta), one, other, PlainAnswer(one, other, delta));
        }
        if (this->HasFailure()) return;
    }
}

TYPED_TEST(DeltaCondition, DeltaZeroConnectsWhatIsEqual)
{
    using T = TypeParam;
    Random random(32);
    auto const values = tests::RandomPixels<T>(random, 6000);
    int equalPairs = 0;
    for (std::size_t index = 1; index < values.size(); ++index)
    {
        T const one = values[index - 1];
        T const other = values[index];
        // Neither equal infinities nor int values whose difference wraps.
        auto const distance = std::abs(static_cast<double>(one) - static_cast<double>(other));
        if (std::isnan(distance) || (std::is_same_v<T, int> && distance > kHighestInt)) continue;
        bool const areEqual = EqualConnected<T>::AreLinked(one, other);
        equalPairs += areEqual ? 1 : 0;
        ASSERT_EQ(Near<T>(0.0, one, other), areEqual) << +one << " and " << +other;
        ASSERT_EQ(Far<T>(0.0, one, other), !areEqual) << +one << " and " << +other;
    }
    EXPECT_GT(equalPairs, 10);
}

} // namespace

} // namespace morvane::connexity
