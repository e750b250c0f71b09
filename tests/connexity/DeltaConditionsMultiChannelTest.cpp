#include <morvane/connexity/Conditions.h>

#include "support/AllTypes.h"
#include "support/RandomPixels.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <cstddef>
#include <limits>

namespace morvane::connexity
{

namespace
{

using tests::Random;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kLowestInt = std::numeric_limits<int>::min();
constexpr int kHighestInt = std::numeric_limits<int>::max();

/// Do two pixels connect, in both orders? The seed is told to be a pixel of zeros.
template <class T, int N>
bool Near(double delta, cv::Vec<T, N> const & one, cv::Vec<T, N> const & other)
{
    DeltaConnected_MultiChannel<T, N> condition(delta);
    AlwaysConnected_MultiChannel<T, N> & base = condition;
    cv::Vec<T, N> const seed = cv::Vec<T, N>::all(T{0});
    bool const answer = base.IsConnected({1, 2}, one, {2, 2}, other, {0, 0}, seed);
    EXPECT_EQ(base.IsConnected({1, 2}, other, {2, 2}, one, {0, 0}, seed), answer) << "is not symmetric";
    EXPECT_EQ(condition.AreLinked(one, other), answer);
    return answer;
}

/// Expects that two pixels connect from exactly @p distance on, or never where it is NaN.
template <class T, int N>
void ExpectDistance(cv::Vec<T, N> const & one, cv::Vec<T, N> const & other, double distance)
{
    SCOPED_TRACE(
        ::testing::Message() << cv::Mat(one).t() << " and " << cv::Mat(other).t() << ", distance " << distance);
    bool const isNumber = !std::isnan(distance);
    EXPECT_EQ((Near<T, N>(distance, one, other)), isNumber);
    EXPECT_FALSE((Near<T, N>(std::nextafter(distance, -kInfinity), one, other)));
    EXPECT_EQ((Near<T, N>(std::nextafter(distance, kInfinity), one, other)), isNumber);
    EXPECT_EQ((Near<T, N>(kInfinity, one, other)), isNumber);
    EXPECT_FALSE((Near<T, N>(kNaN, one, other)));
}

/// Calls @p test with each element type and channel count.
template <class Test>
void ForEachPixelType(Test && test)
{
    tests::ForEachElement([&]<class T> {
        test.template operator()<T, 2>();
        test.template operator()<T, 3>();
        test.template operator()<T, 4>();
    });
}

TEST(DeltaConnectedMultiChannel, BoundsTheDistanceOfTheWholePixels)
{
    EXPECT_TRUE((Near<uchar, 3>(5.0, {0, 0, 0}, {3, 4, 0})));
    EXPECT_FALSE((Near<uchar, 3>(5.0, {0, 0, 0}, {3, 4, 1})));
    // Each channel alone is within the bound.
    EXPECT_FALSE((Near<uchar, 2>(5.0, {0, 0}, {5, 5})));
    EXPECT_TRUE((Near<uchar, 2>(8.0, {0, 0}, {5, 5})));
}

TEST(DeltaConnectedMultiChannel, ConnectsAtExactlyTheDistance)
{
    ForEachPixelType([]<class T, int N> {
        auto one = cv::Vec<T, N>::all(T{7});
        auto other = one;
        one[0] = T{10};
        other[N - 1] = T{11};
        ExpectDistance<T, N>(one, other, 5.0);
        ExpectDistance<T, N>(one, one, 0.0);
    });
}

TEST(DeltaConnectedMultiChannel, EveryChannelCounts)
{
    ForEachPixelType([]<class T, int N> {
        for (int channel = 0; channel < N; ++channel)
        {
            auto const one = cv::Vec<T, N>::all(T{7});
            auto other = one;
            other[channel] = T{4};
            ExpectDistance<T, N>(one, other, 3.0);
        }
    });
}

TEST(DeltaConnectedMultiChannel, KeepsTheDeltaInDoubleForEveryElementType)
{
    ForEachPixelType([]<class T, int N> {
        auto const one = cv::Vec<T, N>::all(T{1});
        auto other = one;
        other[0] = T{2};
        other[1] = T{2};
        double const distance = std::sqrt(2.0);
        EXPECT_TRUE((Near<T, N>(distance, one, other)));
        EXPECT_FALSE((Near<T, N>(std::nextafter(distance, 0.0), one, other)));
        // Neither wrapped nor saturated nor cut.
        EXPECT_FALSE((Near<T, N>(-1.0, one, other)));
        EXPECT_FALSE((Near<T, N>(-1.0, one, one)));
        EXPECT_FALSE((Near<T, N>(-1e-300, one, one)));
        EXPECT_TRUE((Near<T, N>(-0.0, one, one)));
        EXPECT_TRUE((Near<T, N>(65536.0, one, other)));
        EXPECT_TRUE((Near<T, N>(1e300, one, other)));
        EXPECT_TRUE((Near<T, N>(1e-300, one, one)));
        EXPECT_FALSE((Near<T, N>(1.0, one, other)));
    });
}

TEST(DeltaConnectedMultiChannel, ANaNInAnyChannelNeverConnects)
{
    auto const expectNone = []<class T, int N> {
        for (int channel = 0; channel < N; ++channel)
        {
            auto const one = cv::Vec<T, N>::all(T{1});
            auto other = one;
            other[channel] = std::numeric_limits<T>::quiet_NaN();
            ExpectDistance<T, N>(one, other, kNaN);
            ExpectDistance<T, N>(other, other, kNaN);
        }
    };
    expectNone.operator()<float, 2>();
    expectNone.operator()<float, 3>();
    expectNone.operator()<float, 4>();
    expectNone.operator()<double, 2>();
    expectNone.operator()<double, 3>();
    expectNone.operator()<double, 4>();
}

TEST(DeltaConnectedMultiChannel, InfinitiesAreInfinitelyFarFromAllButThemselves)
{
    ExpectDistance<double, 2>({kInfinity, 0.0}, {0.0, 0.0}, kInfinity);
    ExpectDistance<double, 2>({kInfinity, 0.0}, {-kInfinity, 0.0}, kInfinity);
    ExpectDistance<double, 2>({kInfinity, 0.0}, {kInfinity, 0.0}, kNaN);
    ExpectDistance<double, 3>({1e200, 0.0, 0.0}, {0.0, 0.0, 0.0}, kInfinity);
    auto const infinity = std::numeric_limits<float>::infinity();
    ExpectDistance<float, 2>({0.0F, infinity}, {0.0F, 1.0F}, kInfinity);
    ExpectDistance<float, 2>({0.0F, infinity}, {0.0F, infinity}, kNaN);
    // The difference leaves single precision, while squares that do would still fit double.
    float const most = std::numeric_limits<float>::max();
    ExpectDistance<float, 2>({most, 0.0F}, {-most, 0.0F}, kInfinity);
    ExpectDistance<float, 2>({most, 0.0F}, {0.0F, 0.0F}, static_cast<double>(most));
}

TEST(DeltaConnectedMultiChannel, TinyDistancesVanish)
{
    ExpectDistance<double, 2>({1e-170, 0.0}, {0.0, 0.0}, 0.0);
    EXPECT_FALSE((Near<double, 2>(0.0, {1e-160, 0.0}, {0.0, 0.0})));
}

TEST(DeltaConnectedMultiChannel, DifferencesOf8And16BitsDoNotWrap)
{
    ExpectDistance<uchar, 2>({0, 255}, {255, 255}, 255.0);
    ExpectDistance<uchar, 4>({0, 0, 0, 0}, {255, 255, 255, 255}, 510.0);
    ExpectDistance<ushort, 4>({0, 0, 65535, 65535}, {65535, 65535, 0, 0}, 131070.0);
    ExpectDistance<short, 4>({-32768, -32768, 32767, 32767}, {32767, 32767, -32768, -32768}, 131070.0);
}

TEST(DeltaConnectedMultiChannel, DifferencesOf32BitsWrap)
{
    ExpectDistance<int, 2>({kHighestInt, 0}, {0, 0}, 2147483647.0);
    ExpectDistance<int, 2>({kHighestInt, 0}, {-1, 0}, 2147483648.0);
    ExpectDistance<int, 2>({kHighestInt, 0}, {kLowestInt, 0}, 1.0);
    ExpectDistance<int, 2>({2000000000, 5}, {-2000000000, 5}, 294967296.0);
}

TEST(DeltaConnectedMultiChannel, DifferencesOfSinglePrecisionAreRoundedBeforeTheyAreSquared)
{
    // 100000003 is no number of single precision: it is rounded to 100000000.
    ExpectDistance<float, 2>({1e8F, 0.0F}, {-3.0F, 0.0F}, 1e8);
    ExpectDistance<double, 2>({1e8, 0.0}, {-3.0, 0.0}, 100000003.0);
    // The squares are summed in double, in which 1 does not vanish beside 2^26.
    ExpectDistance<float, 2>({8192.0F, 1.0F}, {0.0F, 0.0F}, std::sqrt(67108865.0));
}

TEST(DeltaConnectedMultiChannel, SumsTheSquaresFromTheFirstChannelToTheLast)
{
    // Each small square is half a unit in the last place of the large one: it vanishes beside it, three together do not.
    double const large = 1.5;
    double const small = std::ldexp(1.0, -26);
    ExpectDistance<double, 4>({large, small, small, small}, {0.0, 0.0, 0.0, 0.0}, large);
    ExpectDistance<double, 4>({small, small, small, large}, {0.0, 0.0, 0.0, 0.0}, std::nextafter(large, 2.0));
}

TEST(DeltaConnectedMultiChannel, MatchesTheNormOfRandomPixelsBitForBit)
{
    Random random(41);
    ForEachPixelType([&random]<class T, int N> {
        auto const pixels = tests::RandomPixels<cv::Vec<T, N>>(random, 1500);
        for (std::size_t index = 1; index < pixels.size(); ++index)
        {
            auto const & one = pixels[index - 1];
            auto const & other = pixels[index];
            ExpectDistance<T, N>(one, other, cv::norm(one, other, cv::NORM_L2));
            if (::testing::Test::HasFailure()) return;
        }
    });
}

TEST(DeltaConnectedMultiChannel, DeltaZeroConnectsWhatIsEqualInEveryChannel)
{
    Random random(42);
    ForEachPixelType([&random]<class T, int N> {
        auto const pixels = tests::RandomPixels<cv::Vec<T, N>>(random, 1500);
        for (std::size_t index = 1; index < pixels.size(); ++index)
        {
            auto const & one = pixels[index - 1];
            auto const & other = pixels[index];
            // Infinite distances may be those of equal infinities, and tiny ones vanish.
            double const distance = cv::norm(one, other, cv::NORM_L2);
            if (!std::isfinite(distance) || (distance == 0.0 && one != other)) continue;
            ASSERT_EQ((Near<T, N>(0.0, one, other)), one == other);
            ASSERT_TRUE((Near<T, N>(0.0, one, one)));
        }
    });
}

TEST(DeltaConnectedMultiChannel, ResetAndAddLeaveTheAnswersAlone)
{
    DeltaConnected_MultiChannel<int, 2> condition(5.0);
    AlwaysConnected_MultiChannel<int, 2> & base = condition;
    base.Add({0, 0}, {9, 9});
    base.Reset();
    base.Add({1, 1}, {-9, 9});
    EXPECT_TRUE(base.IsConnected({1, 2}, {0, 0}, {2, 2}, {3, 4}, {0, 0}, {90, 90}));
    EXPECT_FALSE(base.IsConnected({1, 2}, {0, 0}, {2, 2}, {3, 5}, {0, 0}, {0, 0}));
}

} // namespace

} // namespace morvane::connexity
