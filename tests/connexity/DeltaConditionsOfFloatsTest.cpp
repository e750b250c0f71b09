// The scalar delta conditions on what only floating-point types have: NaN, infinities, rounding, signs of deltas.
#include <morvane/connexity/Conditions.h>

#include "support/DeltaAnswers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvane::connexity
{

namespace
{

using tests::Answer;
using tests::Asked;
using tests::ExpectAnswer;
using tests::Near;

template <class T>
constexpr T kLowest = std::numeric_limits<T>::lowest();
template <class T>
constexpr T kHighest = std::numeric_limits<T>::max();
template <class T>
constexpr T kInfinity = std::numeric_limits<T>::infinity();
template <class T>
constexpr T kNaN = std::numeric_limits<T>::quiet_NaN();

template <class T>
class DeltaConditionOfFloats : public ::testing::Test
{};
using FloatingElements = ::testing::Types<float, double>;
TYPED_TEST_SUITE(DeltaConditionOfFloats, FloatingElements);

TYPED_TEST(DeltaConditionOfFloats, NaNNeverConnects)
{
    using T = TypeParam;
    T const nan = kNaN<T>;
    for (double const delta : {0.0, 5.0, -5.0, kInfinity<double>, -kInfinity<double>, kNaN<double>})
    {
        ExpectAnswer<T>(delta, nan, nan, Answer::kNone);
        ExpectAnswer<T>(delta, nan, T{1}, Answer::kNone);
        ExpectAnswer<T>(delta, nan, kInfinity<T>, Answer::kNone);
    }
    ExpectAnswer<T>(kNaN<double>, T{1}, T{1}, Answer::kNone);
    ExpectAnswer<T>(kNaN<double>, T{1}, kInfinity<T>, Answer::kNone);
}

TYPED_TEST(DeltaConditionOfFloats, OnlyValuesThatAreComparedMatter)
{
    using T = TypeParam;
    T const nan = kNaN<T>;
    EXPECT_TRUE(Asked<T>(DeltaConnected<T>(1.0), 1, 2, nan));
    EXPECT_TRUE(Asked<T>(DeltaConnectedSeed<T>(1.0), nan, 2, 1));
    EXPECT_TRUE(Asked<T>(DeltaNoConnected<T>(1.0), 1, 3, nan));
}

TYPED_TEST(DeltaConditionOfFloats, EqualInfinitiesHaveNoDifference)
{
    using T = TypeParam;
    T const infinity = kInfinity<T>;
    for (double const delta : {0.0, 1e30, kInfinity<double>, -1.0})
    {
        ExpectAnswer<T>(delta, infinity, infinity, Answer::kNone);
        ExpectAnswer<T>(delta, -infinity, -infinity, Answer::kNone);
    }
}

TYPED_TEST(DeltaConditionOfFloats, AnInfinityIsInfinitelyFarFromAllElse)
{
    using T = TypeParam;
    T const infinity = kInfinity<T>;
    for (T const other : {T{0}, kHighest<T>, kLowest<T>, -infinity})
    {
        ExpectAnswer<T>(1e30, infinity, other, Answer::kBeyond);
        ExpectAnswer<T>(kInfinity<double>, infinity, other, Answer::kWithin);
    }
    // So is what the element type cannot hold.
    ExpectAnswer<T>(static_cast<double>(kHighest<T>), kLowest<T>, kHighest<T>, Answer::kBeyond);
    ExpectAnswer<T>(kInfinity<double>, kLowest<T>, kHighest<T>, Answer::kWithin);
    EXPECT_TRUE(Near<float>(1e300, kLowest<float>, kHighest<float>)) << "the delta is infinite in single precision";
}

TYPED_TEST(DeltaConditionOfFloats, NegativeDeltaNeverConnects)
{
    using T = TypeParam;
    for (double const delta : {-1.0, -1e-30, -kInfinity<double>})
    {
        ExpectAnswer<T>(delta, 7, 7, Answer::kBeyond);
        ExpectAnswer<T>(delta, 0, -T{0}, Answer::kBeyond);
        ExpectAnswer<T>(delta, 1, 2, Answer::kBeyond);
    }
    ExpectAnswer<T>(-0.0, 7, 7, Answer::kWithin);
    EXPECT_TRUE(Near<float>(-1e-300, 7, 7)) << "the delta is a negative zero in single precision";
    EXPECT_FALSE(Near<double>(-1e-300, 7, 7));
}

TEST(DeltaConditions, DifferencesAreRoundedToTheElementType)
{
    // 100000003 is no number of single precision: it is rounded to 100000000.
    ExpectAnswer<float>(1e8, 1e8F, -3.0F, Answer::kWithin);
    ExpectAnswer<double>(1e8, 1e8, -3.0, Answer::kBeyond);
    // 1.1 - 1.0 is above 0.1 in either precision.
    ExpectAnswer<float>(0.1, 1.1F, 1.0F, Answer::kBeyond);
    ExpectAnswer<double>(0.1, 1.1, 1.0, Answer::kBeyond);
}

TYPED_TEST(DeltaConditionOfFloats, DeltaZeroTellsTheSmallestDifferencesApart)
{
    using T = TypeParam;
    T const least = std::numeric_limits<T>::denorm_min();
    ExpectAnswer<T>(0.0, T{0}, -T{0}, Answer::kWithin);
    ExpectAnswer<T>(0.0, T{0}, least, Answer::kBeyond);
    ExpectAnswer<T>(0.0, least, 2 * least, Answer::kBeyond);
    ExpectAnswer<T>(0.0, T{1}, std::nextafter(T{1}, T{2}), Answer::kBeyond);
    ExpectAnswer<T>(static_cast<double>(least), least, 2 * least, Answer::kWithin);
}

} // namespace

} // namespace morvane::connexity
