#include <morvane/common/Conversions.h>

#include "support/AllTypes.h"
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

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kSmallestInt = std::numeric_limits<int>::min();

// Usable at compile time, also where a plain cast would not be a constant.
static_assert(TruncateTo<uchar>(300.7) == 44);
static_assert(TruncateTo<uchar>(kNaN) == 0);
static_assert(TruncateTo<int>(kInfinity) == kSmallestInt);
static_assert(TruncateTo<int>(1e300) == kSmallestInt);
static_assert(TruncateTo<int>(2147483648.0) == kSmallestInt);
static_assert(TruncateTo<int>(-2147483649.0) == kSmallestInt);
static_assert(TruncateTo<double>(-2.9) == -2.9);

/// A number and what the integer types make of it.
struct Truncated
{
    double number;
    uchar in8Bits;
    ushort in16Bits;
    short inSigned16Bits;
    int in32Bits;
};

void ExpectTruncates(Truncated const & row)
{
    SCOPED_TRACE(row.number);
    EXPECT_EQ(TruncateTo<uchar>(row.number), row.in8Bits);
    EXPECT_EQ(TruncateTo<ushort>(row.number), row.in16Bits);
    EXPECT_EQ(TruncateTo<short>(row.number), row.inSigned16Bits);
    EXPECT_EQ(TruncateTo<int>(row.number), row.in32Bits);
}

TEST(TruncateTo, CutsTowardsZeroAndKeepsTheLowBits)
{
    for (Truncated const & row : {
             Truncated{0.0, 0, 0, 0, 0},
             Truncated{-0.0, 0, 0, 0, 0},
             Truncated{0.999, 0, 0, 0, 0},
             Truncated{-0.999, 0, 0, 0, 0},
             Truncated{2.9, 2, 2, 2, 2},
             Truncated{-2.9, 254, 65534, -2, -2},
             Truncated{-1.0, 255, 65535, -1, -1},
             Truncated{255.9, 255, 255, 255, 255},
             Truncated{256.0, 0, 256, 256, 256},
             Truncated{300.7, 44, 300, 300, 300},
             Truncated{-300.7, 212, 65236, -300, -300},
             Truncated{32767.9, 255, 32767, 32767, 32767},
             Truncated{32768.0, 0, 32768, -32768, 32768},
             Truncated{40000.5, 64, 40000, -25536, 40000},
             Truncated{-32769.0, 255, 32767, 32767, -32769},
             Truncated{65535.5, 255, 65535, -1, 65535},
             Truncated{65536.0, 0, 0, 0, 65536},
             Truncated{65837.2, 45, 301, 301, 65837},
             Truncated{1e9 + 0.5, 0, 51712, -13824, 1000000000},
             Truncated{1e-300, 0, 0, 0, 0},
             Truncated{std::numeric_limits<double>::denorm_min(), 0, 0, 0, 0},
         })
    {
        ExpectTruncates(row);
    }
}

TEST(TruncateTo, ReachesBothEndsOfThe32BitRange)
{
    for (Truncated const & row : {
             Truncated{2147483646.0, 254, 65534, -2, 2147483646},
             Truncated{2147483647.0, 255, 65535, -1, 2147483647},
             Truncated{std::nextafter(2147483648.0, 0.0), 255, 65535, -1, 2147483647},
             Truncated{-2147483647.5, 1, 1, 1, -2147483647},
             Truncated{-2147483648.0, 0, 0, 0, kSmallestInt},
             Truncated{std::nextafter(-2147483649.0, 0.0), 0, 0, 0, kSmallestInt},
         })
    {
        ExpectTruncates(row);
    }
}

TEST(TruncateTo, WhatNo32BitIntegerHolds_CountsAsTheSmallestOne)
{
    // The odd ones would leave bits behind in a wider integer.
    for (double const number :
         {2147483648.0,
          2147483649.0,
          -2147483649.0,
          -2147483650.0,
          3e9,
          3000000301.0,
          -3e9,
          -3000000301.0,
          4294967297.0,
          4294967596.7,
          -4294967297.0,
          9007199254740991.0,
          1e19,
          -1e19,
          1e300,
          -1e300,
          std::numeric_limits<double>::max(),
          std::numeric_limits<double>::lowest(),
          kInfinity,
          -kInfinity,
          kNaN,
          -kNaN})
    {
        ExpectTruncates({number, 0, 0, 0, kSmallestInt});
    }
}

TEST(TruncateTo, IsTheRemainderOfTheCutNumberModuloTheRangeOfTheType)
{
    tests::Random random(21);
    auto const modulo = [](double whole, double range) {
        return whole - std::floor(whole / range) * range;
    };
    for (int round = 0; round < 20000; ++round)
    {
        // Of all magnitudes below 2^31, with and without a fraction.
        double const number = std::ldexp(2.0 * random.Unit() - 1.0, random.Below(32));
        double const whole = number < 0.0 ? std::ceil(number) : std::floor(number);
        ASSERT_EQ(TruncateTo<uchar>(number), modulo(whole, 256.0)) << number;
        ASSERT_EQ(TruncateTo<ushort>(number), modulo(whole, 65536.0)) << number;
        ASSERT_EQ(TruncateTo<short>(number), modulo(whole + 32768.0, 65536.0) - 32768.0) << number;
        ASSERT_EQ(TruncateTo<int>(number), whole) << number;
    }
}

TEST(TruncateTo, LeavesDoubleAsItIs)
{
    double const least = std::numeric_limits<double>::denorm_min();
    for (double const number :
         {0.0, 300.7, -1.0, 256.0, 2.9, -2.9, 3e9, -3e9, 1e300, -1e300, least, kInfinity, -kInfinity})
    {
        EXPECT_EQ(TruncateTo<double>(number), number);
    }
    EXPECT_TRUE(std::isnan(TruncateTo<double>(kNaN)));
    EXPECT_TRUE(std::signbit(TruncateTo<double>(-0.0)));
}

TEST(TruncateTo, RoundsToTheNearestInSinglePrecision)
{
    EXPECT_EQ(TruncateTo<float>(300.7), 300.7F);
    EXPECT_EQ(TruncateTo<float>(-1.0), -1.0F);
    EXPECT_EQ(TruncateTo<float>(2.9), 2.9F);
    EXPECT_EQ(TruncateTo<float>(-2.9), -2.9F);
    EXPECT_EQ(TruncateTo<float>(256.0), 256.0F);
    EXPECT_EQ(TruncateTo<float>(3e9), 3e9F);
    EXPECT_EQ(TruncateTo<float>(16777217.0), 16777216.0F) << "a tie goes to the even neighbour";
    EXPECT_EQ(TruncateTo<float>(16777219.0), 16777220.0F) << "a tie goes to the even neighbour";
    EXPECT_EQ(TruncateTo<float>(1e-300), 0.0F);
    EXPECT_TRUE(std::signbit(TruncateTo<float>(-1e-300)));
}

TEST(TruncateTo, BeyondSinglePrecisionIsInfinite)
{
    constexpr float kSingleInfinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(
        TruncateTo<float>(static_cast<double>(std::numeric_limits<float>::max())), std::numeric_limits<float>::max());
    EXPECT_EQ(TruncateTo<float>(1e300), kSingleInfinity);
    EXPECT_EQ(TruncateTo<float>(-1e300), -kSingleInfinity);
    EXPECT_EQ(TruncateTo<float>(kInfinity), kSingleInfinity);
    EXPECT_EQ(TruncateTo<float>(-kInfinity), -kSingleInfinity);
    EXPECT_TRUE(std::isnan(TruncateTo<float>(kNaN)));
}

TEST(TruncateTo, KeepsEveryValueOfItsOwnType)
{
    tests::ForEachElement([]<class T> {
        T const lowest = std::numeric_limits<T>::lowest();
        T const highest = std::numeric_limits<T>::max();
        for (T const value : {lowest, T{0}, T{1}, T{77}, highest})
        {
            EXPECT_EQ(TruncateTo<T>(static_cast<double>(value)), value) << cv::typeToString(cv::DataType<T>::type);
        }
        static_assert(std::is_same_v<decltype(TruncateTo<T>(0.0)), T>);
    });
}

TEST(WrapTo, KeepsTheLowBitsOfWiderIntegersOfEitherSign)
{
    std::int64_t const wide = 0x123456789ABCDEF0;
    EXPECT_EQ(WrapTo<uchar>(wide), 0xF0);
    EXPECT_EQ(WrapTo<ushort>(wide), 0xDEF0);
    EXPECT_EQ(WrapTo<short>(wide), 0xDEF0 - 0x10000);
    EXPECT_EQ(WrapTo<int>(wide), 0x9ABCDEF0 - 0x100000000);
    EXPECT_EQ(WrapTo<uchar>(-wide), 0x10);
    EXPECT_EQ(WrapTo<ushort>(-wide), 0x2110);
    EXPECT_EQ(WrapTo<short>(-wide), 0x2110);
    EXPECT_EQ(WrapTo<int>(-wide), 0x65432110);
    EXPECT_EQ(WrapTo<uchar>(std::numeric_limits<std::uint64_t>::max()), 255);
    EXPECT_EQ(WrapTo<short>(std::numeric_limits<std::uint64_t>::max()), -1);
    EXPECT_EQ(WrapTo<std::uint64_t>(-1), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(WrapTo<std::uint32_t>(std::int64_t{-1}), std::numeric_limits<std::uint32_t>::max());
}

} // namespace

} // namespace morvane::common
