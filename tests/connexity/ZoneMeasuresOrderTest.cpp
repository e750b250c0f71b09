// The order in which pixels are measured: it counts for NaN, for zeros with a sign and for sums of floats, on small images
// beside their tables as on large ones.
#include <morvane/connexity/ZoneMeasures.h>

#include "connexity/ZoneTables.h"
#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/RandomLabels.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

using namespace connexity;
using measure_internals::FillTable;
using measure_internals::HoldsOrderedValue;
using measure_internals::Labels;
using measure_internals::MayReorder;

/// The label of all pixels below, and the rows of the table.
constexpr int kLabel = 9;
constexpr int kRows = 10;
/// From as many pixels on, a table of kRows rows is filled in several lanes.
constexpr int kLimit = kRows * 4 * 4;

/// Shapes below, at and above the limit, with and without pixels that are left over at the end of a row.
std::array const kSizes{cv::Size(kLimit - 1, 1), cv::Size(53, 3), cv::Size(kLimit, 1), cv::Size(16, 10),
                        cv::Size(kLimit + 1, 1), cv::Size(7, 23), cv::Size(23, 7),     cv::Size(1, kLimit + 1)};

/// The latest number that is not negative: depends on nothing but the order.
struct Latest
{
    static constexpr double kStart = -1.0;

    template <class E>
    static E Merge(E entry, E value)
    {
        return value < 0 ? entry : value;
    }
};

/// The column that a row of one zone keeps where each pixel replaces the one before.
int LatestColumn(int width, bool mayReorder)
{
    Labels const labels{cv::Mat(1, width, CV_32SC1, cv::Scalar(kLabel)), kRows};
    std::vector<int> table(kRows, -1);
    FillTable<Latest>(labels, mayReorder, table.data(), 1, [](int) {
        return [](int x) {
            return x;
        };
    });
    return table[kLabel];
}

TEST(ZoneMeasures, AreReorderedFromTheLimitOnAndOnlyWhereTheOrderIsFree)
{
    EXPECT_EQ(LatestColumn(kLimit - 1, true), kLimit - 2);
    EXPECT_EQ(LatestColumn(kLimit - 1, false), kLimit - 2);
    EXPECT_EQ(LatestColumn(kLimit + 1, false), kLimit);
    // The pixel that is left over goes to the first lane, and the last lane is merged last.
    EXPECT_EQ(LatestColumn(kLimit + 1, true), kLimit - 1);
}

template <class T>
void ExpectOrderedValuesSeen()
{
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    using Limits = std::numeric_limits<T>;
    int const depth = cv::DataType<T>::depth;
    constexpr auto kInfinity = std::bit_cast<Bits>(Limits::infinity());
    constexpr auto kSign = std::bit_cast<Bits>(T(-0.0));
    std::array const ordered{
        T(-0.0),
        Limits::quiet_NaN(),
        -Limits::quiet_NaN(),
        Limits::signaling_NaN(),
        std::bit_cast<T>(kInfinity + 1),
        std::bit_cast<T>(kInfinity + 1 + kSign)};
    for (int const channels : kMeasuredChannels)
    {
        for (int const width : {1, 3, 8, 17, 33})
        {
            cv::Mat plain(3, width, CV_MAKETYPE(depth, channels), cv::Scalar::all(0));
            plain.row(0).setTo(cv::Scalar(Limits::infinity(), -Limits::infinity(), Limits::denorm_min()));
            plain.row(1).setTo(cv::Scalar(Limits::max(), Limits::lowest(), -Limits::denorm_min()));
            EXPECT_FALSE(HoldsOrderedValue<T>(plain));
            EXPECT_FALSE(HoldsOrderedValue<T>(FramedImage(plain).View()));
            for (int element = 0; element < 3 * width * channels; ++element)
            {
                T & value = plain.ptr<T>()[element];
                T const before = value;
                for (std::size_t index = 0; index < ordered.size(); ++index)
                {
                    // Copied as bits: a signalling NaN must not be made quiet on its way.
                    std::copy_n(
                        reinterpret_cast<uchar const *>(&ordered[index]), sizeof(T), reinterpret_cast<uchar *>(&value));
                    EXPECT_TRUE(HoldsOrderedValue<T>(plain)) << "special " << index << " at element " << element;
                }
                value = before;
            }
        }
    }
}

TEST(ZoneMeasures, SeeEachNaNAndNegativeZeroAmongValues)
{
    ExpectOrderedValuesSeen<float>();
    ExpectOrderedValuesSeen<double>();
}

TEST(ZoneMeasures, SumFloatsInOrderAndIntegersInAny)
{
    using measure_internals::Largest;
    using measure_internals::Smallest;
    using measure_internals::Sum;
    cv::Mat const floats = Row<float>({1, 2});
    EXPECT_FALSE((MayReorder<Sum, float>(floats)));
    EXPECT_TRUE((MayReorder<Largest, float>(floats)));
    EXPECT_TRUE((MayReorder<Smallest, double>(Row<double>({1, 2}))));
    EXPECT_FALSE((MayReorder<Smallest, float>(Row<float>({1, -0.0F}))));
    EXPECT_TRUE((MayReorder<Sum, int>(Row<int>({1, 2}))));
    EXPECT_TRUE((MayReorder<Largest, short>(Row<short>({1, 2}))));
}

/// Checks maxima and minima of one zone that holds @p special at one place, at each place of it.
template <class T>
void CheckSpecialEverywhere(cv::Mat const & background, T special)
{
    cv::Mat const labels(background.size(), CV_16UC1, cv::Scalar(kLabel));
    cv::Mat values = background.clone();
    int const elements = static_cast<int>(values.total()) * values.channels();
    for (int element = 0; element < elements; ++element)
    {
        T & value = values.ptr<T>()[element];
        T const before = value;
        value = special;
        for (Measure const measure : {Measure::Max, Measure::Min})
        {
            cv::Mat const expected = OracleTable(measure, labels, values, values);
            ASSERT_TRUE(EqualImages(CallCompute(measure, labels, values, values), expected))
                << NameOf(measure) << " with " << special << " at element " << element << " of "
                << Case(values.type(), values.size(), 0);
        }
        value = before;
    }
}

template <class T>
void CheckSpecials(Random & random, cv::Size size, int channels)
{
    int const type = CV_MAKETYPE(cv::DataType<T>::depth, channels);
    CheckSpecialEverywhere<T>(cv::Mat(size, type, cv::Scalar::all(0)), T(-0.0));
    cv::Mat const small = RandomImage(random, size, type, {.emptyShare = 0, .specialShare = 0, .alphabet = 30});
    CheckSpecialEverywhere<T>(small, std::numeric_limits<T>::quiet_NaN());
}

TEST(ZoneMeasures, TakeNaNAndZerosInRasterOrderOnBothSidesOfTheLimit)
{
    Random random(131);
    for (cv::Size const size : kSizes)
    {
        for (int const channels : kMeasuredChannels)
        {
            CheckSpecials<float>(random, size, channels);
            CheckSpecials<double>(random, size, channels);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(ZoneMeasures, AgreeWithPlainLoopsOnBothSidesOfTheLimit)
{
    Random random(132);
    for (cv::Size const size : kSizes)
    {
        for (int const depth : kDepths)
        {
            for (int const channels : kMeasuredChannels)
            {
                cv::Mat labels = RandomLabels(random, size, CV_32S, LabelPattern::Scattered, {.largest = kLabel});
                labels.at<int>(0) = kLabel;
                cv::Mat const values = RandomValues(random, size, CV_MAKETYPE(depth, channels));
                cv::Mat const others = RandomValues(random, size, CV_MAKETYPE(depth, channels));
                for (Measure const measure : kMeasures)
                {
                    SCOPED_TRACE(NameOf(measure) + (" of " + Case(values.type(), size, 0)));
                    cv::Mat const expected = OracleTable(measure, labels, values, others);
                    ASSERT_EQ(expected.rows, kRows);
                    ASSERT_TRUE(
                        EqualImages(WithOneNaN(CallCompute(measure, labels, values, others)), WithOneNaN(expected)));
                }
            }
        }
    }
}

TEST(ZoneMeasures, MeasureEachOfThreeChannelsOnItsOwn)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat const labels = Draw<uchar>({"1212"});
    cv::Mat const values = Row<cv::Vec3f>({{9, 1, -0.0F}, {4, nan, 6}, {2, 7, 0.0F}, {5, 3, nan}});
    auto const most = static_cast<float>(kMaxStart);
    auto const least = static_cast<float>(kMinStart);
    ExpectEqualImages(ComputeMax(labels, values), Row<cv::Vec3f>({{most, most, most}, {9, 7, 0.0F}, {5, 3, nan}}).t());
    ExpectEqualImages(
        ComputeMin(labels, values), Row<cv::Vec3f>({{least, least, least}, {2, 1, 0.0F}, {4, 3, nan}}).t());
    cv::Mat const bytes = Row<cv::Vec3b>({{16, 1, 255}, {4, 15, 6}, {2, 17, 1}, {5, 3, 20}});
    ExpectEqualImages(ComputeAccumulation(labels, bytes), Row<cv::Vec3i>({{0, 0, 0}, {18, 18, 256}, {9, 18, 26}}).t());
    // The squares of 16, 17, 255 and 20 are cut to 0, 33, 1 and 144.
    ExpectEqualImages(
        ComputeSQAccumulation(labels, bytes), Row<cv::Vec3i>({{0, 0, 0}, {4, 34, 2}, {41, 234, 180}}).t());
}

} // namespace

} // namespace morvane::tests
