#include <morvane/connexity/Conditions.h>

#include "support/AllTypes.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>

namespace morvane::connexity
{

namespace
{

cv::Point const kFrom(1, 2);
cv::Point const kTo(2, 2);
cv::Point const kSeed(0, 0);

template <class Condition, class Value>
bool Connects(Condition & condition, Value const & from, Value const & to, Value const & seed)
{
    return condition.IsConnected(kFrom, from, kTo, to, kSeed, seed);
}

template <class T>
class ScalarCondition : public ::testing::Test
{};
using Elements = ::testing::Types<uchar, ushort, short, int, float, double>;
TYPED_TEST_SUITE(ScalarCondition, Elements);

TYPED_TEST(ScalarCondition, AlwaysConnected_AllowsEveryStep)
{
    using T = TypeParam;
    AlwaysConnected<T> condition;
    T const low = std::numeric_limits<T>::lowest();
    T const high = std::numeric_limits<T>::max();
    EXPECT_TRUE(Connects<AlwaysConnected<T>>(condition, T{0}, T{0}, T{0}));
    EXPECT_TRUE(Connects<AlwaysConnected<T>>(condition, low, high, T{1}));
    EXPECT_TRUE(condition.IsConnected({-5, -5}, T{1}, {100, 100}, T{2}, {7, 7}, T{3}));
    if constexpr (std::is_floating_point_v<T>)
    {
        T const nan = std::numeric_limits<T>::quiet_NaN();
        EXPECT_TRUE(Connects<AlwaysConnected<T>>(condition, nan, nan, nan));
    }
}

TYPED_TEST(ScalarCondition, EqualConnected_ComparesFromWithToAndNothingElse)
{
    using T = TypeParam;
    EqualConnected<T> condition;
    T const low = std::numeric_limits<T>::lowest();
    T const high = std::numeric_limits<T>::max();
    EXPECT_TRUE(Connects<EqualConnected<T>>(condition, T{5}, T{5}, T{9}));
    EXPECT_FALSE(Connects<EqualConnected<T>>(condition, T{5}, T{6}, T{5}));
    EXPECT_FALSE(Connects<EqualConnected<T>>(condition, T{5}, T{6}, T{6}));
    EXPECT_TRUE(Connects<EqualConnected<T>>(condition, T{0}, T{0}, T{1})) << "zero is a value like any other";
    EXPECT_TRUE(Connects<EqualConnected<T>>(condition, low, low, high));
    EXPECT_TRUE(Connects<EqualConnected<T>>(condition, high, high, low));
    EXPECT_FALSE(Connects<EqualConnected<T>>(condition, low, high, low));
}

TYPED_TEST(ScalarCondition, EqualConnected_TellsNeighbouringValuesApart)
{
    using T = TypeParam;
    EqualConnected<T> condition;
    T const high = std::numeric_limits<T>::max();
    T below = high;
    if constexpr (std::is_floating_point_v<T>)
    {
        below = std::nextafter(high, T{0});
    }
    else
    {
        below = static_cast<T>(high - 1);
    }
    EXPECT_FALSE(Connects<EqualConnected<T>>(condition, high, below, high));
    if constexpr (sizeof(T) > 1)
    {
        EXPECT_FALSE(Connects<EqualConnected<T>>(condition, static_cast<T>(256), T{0}, T{0}));
    }
}

TYPED_TEST(ScalarCondition, IsReachedThroughItsBase)
{
    using T = TypeParam;
    std::unique_ptr<AlwaysConnected<T>> const condition = std::make_unique<EqualConnected<T>>();
    EXPECT_FALSE(Connects<AlwaysConnected<T>>(*condition, T{1}, T{2}, T{1}));
    EXPECT_TRUE(Connects<AlwaysConnected<T>>(*condition, T{2}, T{2}, T{1}));
    static_assert(std::has_virtual_destructor_v<AlwaysConnected<T>>);
}

TYPED_TEST(ScalarCondition, ResetAndAddLeaveTheAnswersAlone)
{
    using T = TypeParam;
    EqualConnected<T> equal;
    AlwaysConnected<T> always;
    for (AlwaysConnected<T> * const condition : {static_cast<AlwaysConnected<T> *>(&equal), &always})
    {
        bool const before = Connects<AlwaysConnected<T>>(*condition, T{1}, T{2}, T{1});
        condition->Reset();
        condition->Add(kSeed, T{2});
        condition->Add(kFrom, T{1});
        EXPECT_EQ((Connects<AlwaysConnected<T>>(*condition, T{1}, T{2}, T{1})), before);
    }
    static_assert(sizeof(AlwaysConnected<T>) == sizeof(void *), "no data member beside the virtual table");
    static_assert(sizeof(EqualConnected<T>) == sizeof(void *), "no data member beside the virtual table");
}

TEST(EqualConnected, NaNEqualsNothingAndBothZerosAreEqual)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    double const infinity = std::numeric_limits<double>::infinity();
    EqualConnected<float> single;
    EqualConnected<double> precise;
    EXPECT_FALSE(Connects(single, nan, nan, nan));
    EXPECT_FALSE(Connects(single, nan, 1.0F, 1.0F));
    EXPECT_TRUE(Connects(single, 0.0F, -0.0F, 1.0F));
    EXPECT_FALSE(Connects(single, 0.0F, std::numeric_limits<float>::denorm_min(), 0.0F)) << "no tolerance";
    EXPECT_TRUE(Connects(precise, infinity, infinity, 0.0));
    EXPECT_FALSE(Connects(precise, infinity, -infinity, infinity));
    EXPECT_FALSE(Connects(precise, 1.0, std::nextafter(1.0, 2.0), 1.0)) << "compared in double, not in float";
}

template <class T, int N>
void ExpectComparesEveryChannel()
{
    SCOPED_TRACE(cv::typeToString(CV_MAKETYPE(cv::DataType<T>::depth, N)));
    EqualConnected_MultiChannel<T, N> equal;
    AlwaysConnected_MultiChannel<T, N> always;
    AlwaysConnected_MultiChannel<T, N> & base = equal;
    cv::Vec<T, N> pixel;
    for (int channel = 0; channel < N; ++channel)
    {
        pixel[channel] = static_cast<T>(channel + 1);
    }
    cv::Vec<T, N> const seed = cv::Vec<T, N>::all(0);
    EXPECT_TRUE(Connects(equal, pixel, pixel, seed));
    EXPECT_TRUE(Connects(base, seed, seed, pixel));
    for (int channel = 0; channel < N; ++channel)
    {
        cv::Vec<T, N> other = pixel;
        other[channel] = static_cast<T>(other[channel] + 1);
        EXPECT_FALSE(Connects(equal, pixel, other, pixel)) << "channel " << channel;
        EXPECT_FALSE(Connects(base, other, pixel, pixel)) << "channel " << channel;
        EXPECT_TRUE(Connects(always, pixel, other, seed)) << "channel " << channel;
        if constexpr (std::is_floating_point_v<T>)
        {
            other = pixel;
            other[channel] = std::numeric_limits<T>::quiet_NaN();
            EXPECT_FALSE(Connects(equal, other, other, other)) << "NaN in channel " << channel;
            EXPECT_TRUE(Connects(always, other, other, other)) << "NaN in channel " << channel;
        }
    }
    base.Reset();
    base.Add(kSeed, seed);
    EXPECT_TRUE(Connects(equal, pixel, pixel, seed));
    static_assert(std::has_virtual_destructor_v<AlwaysConnected_MultiChannel<T, N>>);
    static_assert(std::is_base_of_v<AlwaysConnected_MultiChannel<T, N>, EqualConnected_MultiChannel<T, N>>);
}

TEST(EqualConnectedMultiChannel, ComparesEveryChannelOfEveryType)
{
    tests::ForEachElement([]<class T> {
        ExpectComparesEveryChannel<T, 2>();
        ExpectComparesEveryChannel<T, 3>();
        ExpectComparesEveryChannel<T, 4>();
    });
}

TEST(EqualConnectedMultiChannel, SwappedChannelsAreUnequal)
{
    EqualConnected_MultiChannel<uchar, 2> condition;
    EXPECT_FALSE(Connects(condition, cv::Vec2b(1, 2), cv::Vec2b(2, 1), cv::Vec2b(1, 2)));
}

/// A condition with an argument.
class WithinReach : public AlwaysConnected<int>
{
public:
    explicit WithinReach(int reach)
        : m_reach(reach)
    {}

    bool IsConnected(cv::Point const &, int from, cv::Point const &, int to, cv::Point const &, int) override
    {
        return std::abs(from - to) <= m_reach;
    }

private:
    int m_reach;
};

TEST(Exactly, AnswersAsTheConditionItPins)
{
    Exactly<WithinReach> pinned(3);
    EXPECT_TRUE(Connects(pinned, 1, 4, 0));
    EXPECT_FALSE(Connects(pinned, 1, 5, 0));
    AlwaysConnected<int> & base = pinned;
    EXPECT_FALSE(Connects(base, 1, 5, 0));
    static_assert(std::is_final_v<Exactly<WithinReach>>);
}

} // namespace

} // namespace morvane::connexity
