#include <morvane/common/Conversions.h>

#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstdint>
#include <limits>

namespace morvane::common
{

namespace
{

static_assert(WrapTo<uchar>(255) == 255);
static_assert(WrapTo<uchar>(256) == 0);
static_assert(WrapTo<uchar>(257U) == 1);
static_assert(WrapTo<ushort>(65536) == 0);
static_assert(WrapTo<short>(32768) == -32768);
static_assert(WrapTo<short>(40000) == -25536);
static_assert(WrapTo<int>(0x80000000U) == std::numeric_limits<int>::min());

TEST(WrapTo, KeepsWhatFits)
{
    for (int value = 0; value < 256; ++value)
    {
        EXPECT_EQ(WrapTo<uchar>(value), value);
    }
    EXPECT_EQ(WrapTo<short>(-32768), -32768);
    EXPECT_EQ(WrapTo<int>(std::numeric_limits<int>::min()), std::numeric_limits<int>::min());
    EXPECT_EQ(WrapTo<std::int64_t>(-1), -1);
}

TEST(WrapTo, IsCongruentModuloTheRangeOfTheType)
{
    tests::Random random(1);
    for (int round = 0; round < 10000; ++round)
    {
        // Few bits as well as many, both signs.
        std::int64_t const value = static_cast<std::int64_t>(random.Next()) >> random.Below(64);
        auto const modulo = [value](std::int64_t range) {
            return ((value % range) + range) % range;
        };
        ASSERT_EQ(WrapTo<uchar>(value), modulo(256)) << value;
        ASSERT_EQ(WrapTo<ushort>(value), modulo(65536)) << value;
        std::int64_t const unsigned16 = modulo(65536);
        ASSERT_EQ(WrapTo<short>(value), unsigned16 > 32767 ? unsigned16 - 65536 : unsigned16) << value;
        std::int64_t const unsigned32 = modulo(std::int64_t{1} << 32);
        ASSERT_EQ(WrapTo<int>(value), unsigned32 > 0x7FFFFFFF ? unsigned32 - (std::int64_t{1} << 32) : unsigned32)
            << value;
    }
}

} // namespace

} // namespace morvane::common
