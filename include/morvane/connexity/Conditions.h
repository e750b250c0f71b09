/// @file
/// Connection conditions: may a walk step from a pixel to its neighbour?
///
/// Conditions on one-channel images derive from AlwaysConnected, conditions on images of two to four channels from
/// AlwaysConnected_MultiChannel. The composites (see CompositeConditions.h) ask conditions on two or three images at
/// once and are given to the engine (see ConnectedZoneScan) in place of a simple one.
#pragma once

#include <morvane/common/Conversions.h>
#include <morvane/common/PixelTypes.h>
#include <morvane/connexity/CompositeConditions.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <concepts>
#include <type_traits>

namespace morvane::connexity
{

/// The root of all conditions on one-channel images: every step is allowed.
///
/// Derive from it to write a condition of one's own. A walk calls Reset() before each zone, Add() for each pixel that
/// enters the zone, the seed first, and IsConnected() for each neighbour of each pixel of the zone that lies inside the
/// image, also for neighbours that the zone already holds; a walk that passes over empty pixels does not ask about
/// them.
///
/// @tparam T element type of the walked image
template <common::Element T>
class AlwaysConnected
{
public:
    virtual ~AlwaysConnected() = default;

    /// Called once at the start of each zone, before its seed is taken.
    virtual void Reset() {}

    /// May the walk step from @p from, the pixel just taken from the queue, to its neighbour @p to?
    ///
    /// @param from position of the pixel that the walk stands on
    /// @param fromValue its value
    /// @param to position of its neighbour, inside the image
    /// @param toValue the neighbour's value
    /// @param seed position of the zone's first pixel
    /// @param seedValue its value
    [[nodiscard]] virtual bool IsConnected(
        [[maybe_unused]] cv::Point const & from, [[maybe_unused]] T fromValue, [[maybe_unused]] cv::Point const & to,
        [[maybe_unused]] T toValue, [[maybe_unused]] cv::Point const & seed, [[maybe_unused]] T seedValue)
    {
        return true;
    }

    /// Called for each pixel that enters the zone, the seed first.
    virtual void Add([[maybe_unused]] cv::Point const & point, [[maybe_unused]] T value) {}
};

/// A step is allowed between equal values. NaN equals nothing: a NaN pixel is a zone of its own.
///
/// @tparam T element type of the walked image
template <common::Element T>
class EqualConnected : public AlwaysConnected<T>
{
public:
    /// Are the two values equal?
    [[nodiscard]] static bool AreLinked(T one, T other) { return one == other; }

    /// @copydoc AlwaysConnected::IsConnected
    [[nodiscard]] bool
    IsConnected(cv::Point const &, T fromValue, cv::Point const &, T toValue, cv::Point const &, T) override
    {
        return AreLinked(fromValue, toValue);
    }
};

/// The distance between two values as the delta conditions measure it: the larger minus the smaller.
///
/// For 8- and 16-bit elements it is exact, an unsigned number of the same size. For `int` it wraps: values more than
/// 2147483647 apart read as a negative distance, which passes a bound. Floating-point types stay as they are; NaN gives
/// NaN, and so do two equal infinities.
template <common::Element T>
[[nodiscard]] inline auto Difference(T one, T other)
{
    if constexpr (std::floating_point<T>)
    {
        // The two subtractions mirror each other exactly, so that no branch is needed.
        return std::abs(one - other);
    }
    else
    {
        // Unsigned, so that the wrap-around of int is defined.
        using Unsigned = std::make_unsigned_t<T>;
        auto const larger = static_cast<Unsigned>(std::max(one, other));
        auto const smaller = static_cast<Unsigned>(std::min(one, other));
        auto const difference = static_cast<Unsigned>(larger - smaller);
        if constexpr (std::same_as<T, int>)
        {
            return common::WrapTo<int>(difference);
        }
        else
        {
            return difference;
        }
    }
}

/// A step is allowed between values that differ by at most a delta, whatever the seed: a slow ramp is one zone.
///
/// With delta 0 finite values connect as under EqualConnected. NaN never connects.
///
/// @tparam T element type of the walked image
template <common::Element T>
class DeltaConnected : public AlwaysConnected<T>
{
public:
    /// @param delta the bound, inclusive; for integer types cut to an `int` of which the low bits of @p T are kept
    ///        (see common::TruncateTo()): in `uchar`, 300.0 is 44 and -1.0 is 255, which connects everything
    explicit DeltaConnected(double delta)
        : m_delta(common::TruncateTo<T>(delta))
    {}

    /// Do the two values differ by at most the delta?
    [[nodiscard]] bool AreLinked(T one, T other) const { return Difference(one, other) <= m_delta; }

    /// @copydoc AlwaysConnected::IsConnected
    [[nodiscard]] bool
    IsConnected(cv::Point const &, T fromValue, cv::Point const &, T toValue, cv::Point const &, T) override
    {
        return AreLinked(fromValue, toValue);
    }

private:
    T m_delta;
};

/// A step is allowed to values that differ from the seed's by at most a delta: the zones depend on their seeds.
///
/// @tparam T element type of the walked image
template <common::Element T>
class DeltaConnectedSeed : public AlwaysConnected<T>
{
public:
    /// @param delta as for DeltaConnected
    explicit DeltaConnectedSeed(double delta)
        : m_delta(common::TruncateTo<T>(delta))
    {}

    /// @copydoc AlwaysConnected::IsConnected
    [[nodiscard]] bool
    IsConnected(cv::Point const &, T, cv::Point const &, T toValue, cv::Point const &, T seedValue) override
    {
        return Difference(toValue, seedValue) <= m_delta;
    }

private:
    T m_delta;
};

/// A step is allowed only across a difference greater than a delta. NaN never connects.
///
/// @tparam T element type of the walked image
template <common::Element T>
class DeltaNoConnected : public AlwaysConnected<T>
{
public:
    /// @param delta as for DeltaConnected
    explicit DeltaNoConnected(double delta)
        : m_delta(common::TruncateTo<T>(delta))
    {}

    /// @copydoc AlwaysConnected::IsConnected
    [[nodiscard]] bool
    IsConnected(cv::Point const &, T fromValue, cv::Point const &, T toValue, cv::Point const &, T) override
    {
        return Difference(fromValue, toValue) > m_delta;
    }

private:
    T m_delta;
};

/// What the values of an accumulator zone are summed in: `int` for the integer types, otherwise the type itself.
template <common::Element T>
using AccumulatedSum = std::conditional_t<std::integral<T>, int, T>;

/// A step is allowed while the neighbour's value plus the zone's sum so far is below a budget: the zones depend on the
/// order of growth.
///
/// The sum is read when the question is asked, and takes in the seed's value without one. In `int` it wraps. NaN never
/// joins, and nothing joins a NaN.
///
/// @tparam T element type of the walked image
template <common::Element T>
class AccumulatorConnected : public AlwaysConnected<T>
{
public:
    /// What is summed, and what bounds it.
    using Sum = AccumulatedSum<T>;

    /// @param budget bound of the sum, exclusive; for integer types cut to an `int` (see common::TruncateTo()), for
    ///        `float` rounded
    explicit AccumulatorConnected(double budget)
        : m_budget(common::TruncateTo<Sum>(budget))
    {}

    /// The sum becomes 0.
    void Reset() override { m_sum = 0; }

    /// @copydoc AlwaysConnected::IsConnected
    [[nodiscard]] bool IsConnected(cv::Point const &, T, cv::Point const &, T toValue, cv::Point const &, T) override
    {
        return SumWith(toValue) < m_budget;
    }

    /// The value is added to the sum.
    void Add(cv::Point const &, T value) override { m_sum = SumWith(value); }

private:
    [[nodiscard]] Sum SumWith(T value) const
    {
        if constexpr (std::integral<T>)
        {
            // Unsigned, so that the wrap-around is defined.
            return common::WrapTo<int>(static_cast<unsigned>(static_cast<int>(value)) + static_cast<unsigned>(m_sum));
        }
        else
        {
            return value + m_sum;
        }
    }

    Sum m_sum = 0;
    Sum m_budget;
};

/// The root of all conditions on images of two to four channels; AlwaysConnected with a pixel vector in place of a
/// value.
///
/// @tparam T element type of the walked image
/// @tparam N its channel count, 2, 3 or 4
template <common::Element T, int N>
requires(N >= 2 && N <= common::kMaxChannels) class AlwaysConnected_MultiChannel
{
public:
    virtual ~AlwaysConnected_MultiChannel() = default;

    /// @copydoc AlwaysConnected::Reset
    virtual void Reset() {}

    /// @copydoc AlwaysConnected::IsConnected
    [[nodiscard]] virtual bool IsConnected(
        [[maybe_unused]] cv::Point const & from, [[maybe_unused]] cv::Vec<T, N> const & fromValue,
        [[maybe_unused]] cv::Point const & to, [[maybe_unused]] cv::Vec<T, N> const & toValue,
        [[maybe_unused]] cv::Point const & seed, [[maybe_unused]] cv::Vec<T, N> const & seedValue)
    {
        return true;
    }

    /// @copydoc AlwaysConnected::Add
    virtual void Add([[maybe_unused]] cv::Point const & point, [[maybe_unused]] cv::Vec<T, N> const & value) {}
};

/// A step is allowed between pixels that are equal in every channel; a NaN in any channel equals nothing.
///
/// @tparam T element type of the walked image
/// @tparam N its channel count, 2, 3 or 4
template <common::Element T, int N>
class EqualConnected_MultiChannel : public AlwaysConnected_MultiChannel<T, N>
{
public:
    /// A pixel of the walked image.
    using Vector = cv::Vec<T, N>;

    /// Are the two pixels equal in every channel?
    [[nodiscard]] static bool AreLinked(Vector const & one, Vector const & other)
    {
        for (int channel = 0; channel < N; ++channel)
        {
            if (one[channel] != other[channel]) return false;
        }
        return true;
    }

    /// @copydoc AlwaysConnected::IsConnected
    [[nodiscard]] bool IsConnected(
        cv::Point const &, Vector const & fromValue, cv::Point const &, Vector const & toValue, cv::Point const &,
        Vector const &) override
    {
        return AreLinked(fromValue, toValue);
    }
};

/// The Euclidean distance of two pixel vectors, exactly as `cv::norm(one, other, cv::NORM_L2)` computes it.
///
/// The differences are taken in the element type (`int` wraps, `float` rounds), their squares are summed in double from
/// the first channel to the last. Where a caller's compiler is allowed to fuse multiplication and addition (GCC and
/// Clang for machines that have the instruction, without `-ffp-contract=off`), the last bit may differ in his own
/// walks.
template <common::Element T, int N>
[[nodiscard]] inline double EuclideanDistance(cv::Vec<T, N> const & one, cv::Vec<T, N> const & other)
{
    double sum = 0.0;
    for (int channel = 0; channel < N; ++channel)
    {
        T const first = one[channel];
        T const second = other[channel];
        double difference = 0.0;
        if constexpr (std::floating_point<T>)
        {
            difference = static_cast<double>(first - second);
        }
        else
        {
            // Unsigned, so that the wrap-around of int is defined.
            difference = common::WrapTo<int>(
                static_cast<unsigned>(static_cast<int>(first)) - static_cast<unsigned>(static_cast<int>(second)));
        }
        sum += difference * difference;
    }
    return std::sqrt(sum);
}

/// A step is allowed between pixels whose Euclidean distance is at most a delta; a NaN in any channel never connects.
///
/// @tparam T element type of the walked image
/// @tparam N its channel count, 2, 3 or 4
template <common::Element T, int N>
class DeltaConnected_MultiChannel : public AlwaysConnected_MultiChannel<T, N>
{
public:
    /// A pixel of the walked image.
    using Vector = cv::Vec<T, N>;

    /// @param delta the bound, inclusive, kept as a double for every element type
    explicit DeltaConnected_MultiChannel(double delta)
        : m_delta(delta)
    {}

    /// Do the two pixels lie at most the delta apart?
    [[nodiscard]] bool AreLinked(Vector const & one, Vector const & other) const
    {
        return m_delta >= EuclideanDistance(one, other);
    }

    /// @copydoc AlwaysConnected::IsConnected
    [[nodiscard]] bool IsConnected(
        cv::Point const &, Vector const & fromValue, cv::Point const &, Vector const & toValue, cv::Point const &,
        Vector const &) override
    {
        return AreLinked(fromValue, toValue);
    }

private:
    double m_delta;
};

/// The same condition with its dynamic type pinned: nothing can derive from it, so a walk over it calls and inlines the
/// operations directly instead of going through the virtual table.
///
/// @tparam C a condition
template <class C>
class Exactly final : public C
{
public:
    using C::C;
};

} // namespace morvane::connexity
