/// @file
/// How the scalar delta conditions answer for two values, and the plain rule for it.
#pragma once

#include <morvane/connexity/Conditions.h>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>

namespace morvane::tests
{

/// Asks through the base, as a walk over any condition does.
template <class T>
bool Asked(connexity::AlwaysConnected<T> && condition, T from, T to, T seed)
{
    return condition.IsConnected({1, 2}, from, {2, 2}, to, {0, 0}, seed);
}

/// Do two values connect, in both orders? The seed is told to be far from both.
template <class T>
bool Near(double delta, T one, T other)
{
    T const seed = one > T{50} ? T{0} : T{100};
    bool const answer = Asked<T>(connexity::DeltaConnected<T>(delta), one, other, seed);
    EXPECT_EQ(Asked<T>(connexity::DeltaConnected<T>(delta), other, one, seed), answer) << "is not symmetric";
    EXPECT_EQ(connexity::DeltaConnected<T>(delta).AreLinked(one, other), answer);
    return answer;
}

/// Does a pixel connect to a seed, whichever of the two is larger? The pixel before is told to be far from both.
template <class T>
bool NearSeed(double delta, T to, T seed)
{
    T const from = to > T{50} ? T{0} : T{100};
    bool const answer = Asked<T>(connexity::DeltaConnectedSeed<T>(delta), from, to, seed);
    EXPECT_EQ(Asked<T>(connexity::DeltaConnectedSeed<T>(delta), from, seed, to), answer) << "is not symmetric";
    return answer;
}

/// Do two values connect that must differ, in both orders?
template <class T>
bool Far(double delta, T one, T other)
{
    bool const answer = Asked<T>(connexity::DeltaNoConnected<T>(delta), one, other, one);
    EXPECT_EQ(Asked<T>(connexity::DeltaNoConnected<T>(delta), other, one, one), answer) << "is not symmetric";
    return answer;
}

/// How the conditions answer for two values.
enum class Answer
{
    kWithin, ///< the two bounded forms connect, DeltaNoConnected does not
    kBeyond, ///< the reverse
    kNone,   ///< nothing connects
};

/// Expects that all three conditions answer so, in whichever order the two values come.
template <class T>
void ExpectAnswer(double delta, T one, T other, Answer answer)
{
    SCOPED_TRACE(::testing::Message() << "delta " << delta << ", " << +one << " and " << +other);
    EXPECT_EQ(Near<T>(delta, one, other), answer == Answer::kWithin);
    EXPECT_EQ(NearSeed<T>(delta, one, other), answer == Answer::kWithin);
    EXPECT_EQ(Far<T>(delta, one, other), answer == Answer::kBeyond);
}

/// The larger of two values less the smaller, in floating-point types in their own precision and in `int` modulo 2^32.
template <class T>
auto PlainDifference(T one, T other)
{
    if constexpr (std::is_floating_point_v<T>)
    {
        return one > other ? one - other : other - one;
    }
    else
    {
        std::int64_t const difference = std::abs(std::int64_t{one} - std::int64_t{other});
        return difference > std::numeric_limits<int>::max() ? difference - (std::int64_t{1} << 32) : difference;
    }
}

/// The answer that is right.
template <class T>
Answer PlainAnswer(T one, T other, T delta)
{
    auto const difference = PlainDifference(one, other);
    if (delta >= difference) return Answer::kWithin;
    return difference > delta ? Answer::kBeyond : Answer::kNone;
}

} // namespace morvane::tests
