#include <morvane/common/PixelTypes.h>

#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace morvane::common
{

namespace
{

static_assert(Element<uchar> && Element<ushort> && Element<short> && Element<int> && Element<float> && Element<double>);
static_assert(!Element<schar> && !Element<bool> && !Element<unsigned> && !Element<std::int64_t>);
static_assert(!Element<char> && !Element<uchar const> && !Element<cv::Vec3b>);
static_assert(std::is_same_v<Pixel<short, 1>, short> && std::is_same_v<Pixel<double, 1>, double>);
static_assert(std::is_same_v<Pixel<uchar, 2>, cv::Vec<uchar, 2>> && std::is_same_v<Pixel<float, 4>, cv::Vec<float, 4>>);
static_assert(kMaxChannels == 4);

template <class T>
constexpr T kNaN = std::numeric_limits<T>::quiet_NaN();
template <class T>
constexpr T kInfinity = std::numeric_limits<T>::infinity();

template <class T>
class IntegerPixel : public ::testing::Test
{};
using Integers = ::testing::Types<uchar, ushort, short, int>;
TYPED_TEST_SUITE(IntegerPixel, Integers);

TYPED_TEST(IntegerPixel, TakesPartWhenItDiffersFromZero)
{
    using T = TypeParam;
    EXPECT_FALSE(IsNonZeroPixel(T{0}));
    for (int bit = 0; bit < static_cast<int>(sizeof(T) * 8); ++bit)
    {
        EXPECT_TRUE(IsNonZeroPixel(static_cast<T>(static_cast<T>(1U << static_cast<unsigned>(bit))))) << "bit " << bit;
    }
    EXPECT_TRUE(IsNonZeroPixel(std::numeric_limits<T>::max()));
    EXPECT_EQ(IsNonZeroPixel(std::numeric_limits<T>::min()), std::is_signed_v<T>);
    EXPECT_EQ(IsNonZeroPixel(static_cast<T>(-1)), true);
}

template <class T, int N>
void ExpectOneChannelSuffices(T value)
{
    for (int channel = 0; channel < N; ++channel)
    {
        cv::Vec<T, N> pixel = cv::Vec<T, N>::all(0);
        EXPECT_FALSE(IsNonZeroPixel(pixel)) << N << " channels";
        pixel[channel] = value;
        EXPECT_TRUE(IsNonZeroPixel(pixel)) << "channel " << channel << " of " << N;
    }
}

TYPED_TEST(IntegerPixel, OfSeveralChannelsTakesPartAsSoonAsOneDiffersFromZero)
{
    using T = TypeParam;
    for (T const value : {static_cast<T>(1), static_cast<T>(-1), std::numeric_limits<T>::max()})
    {
        ExpectOneChannelSuffices<T, 2>(value);
        ExpectOneChannelSuffices<T, 3>(value);
        ExpectOneChannelSuffices<T, 4>(value);
    }
    // Opposite values and squares that overflow an int must not cancel out.
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec<T, 2>(static_cast<T>(-1), static_cast<T>(1))));
    T const low = std::numeric_limits<T>::min();
    EXPECT_EQ(IsNonZeroPixel(cv::Vec<T, 4>(low, low, low, low)), std::is_signed_v<T>);
}

template <class T>
class FloatingPixel : public ::testing::Test
{};
using Floats = ::testing::Types<float, double>;
TYPED_TEST_SUITE(FloatingPixel, Floats);

TYPED_TEST(FloatingPixel, TakesPartAboveTheLimitInMagnitude)
{
    using T = TypeParam;
    T const limit = static_cast<T>(1e-10);
    for (T const sign : {T{1}, T{-1}})
    {
        EXPECT_FALSE(IsNonZeroPixel(sign * T{0}));
        EXPECT_FALSE(IsNonZeroPixel(sign * static_cast<T>(1e-11)));
        EXPECT_FALSE(IsNonZeroPixel(sign * std::numeric_limits<T>::denorm_min()));
        EXPECT_FALSE(IsNonZeroPixel(sign * std::numeric_limits<T>::min()));
        EXPECT_FALSE(IsNonZeroPixel(sign * limit)) << "the limit itself is empty";
        EXPECT_FALSE(IsNonZeroPixel(sign * std::nextafter(limit, T{0})));
        EXPECT_TRUE(IsNonZeroPixel(sign * std::nextafter(limit, T{1})));
        EXPECT_TRUE(IsNonZeroPixel(sign * T{1}));
        EXPECT_TRUE(IsNonZeroPixel(sign * std::numeric_limits<T>::max()));
        EXPECT_TRUE(IsNonZeroPixel(sign * kInfinity<T>));
        EXPECT_FALSE(IsNonZeroPixel(std::copysign(kNaN<T>, sign)));
    }
}

TYPED_TEST(FloatingPixel, OfSeveralChannelsTakesPartAboveTheLimitInNorm)
{
    using T = TypeParam;
    T const small = static_cast<T>(1e-11);
    T const limit = static_cast<T>(1e-10);
    T const half = static_cast<T>(0.6e-10);
    EXPECT_FALSE(IsNonZeroPixel(cv::Vec<T, 2>(0, 0)));
    EXPECT_FALSE(IsNonZeroPixel(cv::Vec<T, 2>(small, 0)));
    EXPECT_FALSE(IsNonZeroPixel(cv::Vec<T, 2>(0, -small)));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec<T, 2>(limit, limit)));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec<T, 2>(-limit, limit)));
    // Two channels of 0.6e-10 stay below the limit, three and four are above it.
    EXPECT_FALSE(IsNonZeroPixel(cv::Vec<T, 2>(half, -half)));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec<T, 3>(half, half, half)));
    EXPECT_FALSE(IsNonZeroPixel(cv::Vec<T, 4>(half, 0, half, 0)));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec<T, 4>(half, half, half, half)));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec<T, 3>(0, 0, 1)));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec<T, 4>(0, 0, 0, -1)));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec<T, 3>(std::numeric_limits<T>::max(), 0, std::numeric_limits<T>::max())));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec<T, 2>(-kInfinity<T>, kInfinity<T>)));
}

TYPED_TEST(FloatingPixel, WithANaNInAnyChannelIsEmpty)
{
    using T = TypeParam;
    for (int channel = 0; channel < 4; ++channel)
    {
        cv::Vec<T, 4> pixel(1, kInfinity<T>, std::numeric_limits<T>::max(), -5);
        pixel[channel] = kNaN<T>;
        EXPECT_FALSE(IsNonZeroPixel(pixel)) << "channel " << channel;
    }
    EXPECT_FALSE(IsNonZeroPixel(cv::Vec<T, 2>(kNaN<T>, 1)));
    EXPECT_FALSE(IsNonZeroPixel(cv::Vec<T, 3>(0, 0, kNaN<T>)));
}

TEST(FloatPixel, LimitIsSinglePrecisionForOneChannelAndDoubleForSeveral)
{
    // The float nearest to 1e-10 is a little above the double 1e-10: empty alone, not empty in the norm.
    ASSERT_GT(static_cast<double>(1e-10F), 1e-10);
    EXPECT_FALSE(IsNonZeroPixel(1e-10F));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec2f(1e-10F, 0.0F)));
    EXPECT_FALSE(IsNonZeroPixel(cv::Vec2d(1e-10, 0.0)));
}

TEST(DoublePixel, NormUnderflowsToEmptyAndOverflowsToFull)
{
    EXPECT_FALSE(IsNonZeroPixel(cv::Vec2d(1e-200, 1e-200)));
    EXPECT_TRUE(IsNonZeroPixel(cv::Vec2d(1e200, -1e200)));
}

TYPED_TEST(FloatingPixel, NormIsSummedInDoubleFromTheFirstChannelToTheLast)
{
    using T = TypeParam;
    tests::Random random(3);
    int above = 0;
    for (int round = 0; round < 20000; ++round)
    {
        // Pixels whose norm is within rounding of the limit, so that the order and the precision of the sum matter.
        cv::Vec4d direction;
        for (int channel = 0; channel < 4; ++channel)
        {
            direction[channel] = random.Unit() - 0.5;
        }
        cv::Vec<T, 4> const pixel = direction * (1e-10 / cv::norm(direction));
        auto const wide = [&pixel](int channel) {
            return static_cast<double>(pixel[channel]);
        };
        double sum = 0.0;
        sum += wide(0) * wide(0);
        sum += wide(1) * wide(1);
        sum += wide(2) * wide(2);
        sum += wide(3) * wide(3);
        bool const expected = std::sqrt(sum) > 1e-10;
        ASSERT_EQ(IsNonZeroPixel(pixel), expected) << pixel;
        above += expected ? 1 : 0;
    }
    EXPECT_GT(above, 1000);
    EXPECT_LT(above, 19000);
}

} // namespace

} // namespace morvane::common
