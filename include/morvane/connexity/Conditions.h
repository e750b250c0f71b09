/// @file
/// Connection conditions: may a walk step from a pixel to its neighbour?
#pragma once

#include <morvane/common/PixelTypes.h>

#include <opencv2/core.hpp>

#include <concepts>

namespace morvane::connexity
{

/// The root of all conditions on one-channel images: every step is allowed.
///
/// Derive from it to write a condition of one's own. A walk (see ConnectedZoneScan) calls Reset() before each zone,
/// Add() for each pixel that enters the zone, the seed first, and IsConnected() for each neighbour of each pixel of the
/// zone, also for neighbours that the zone already holds.
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
    [[nodiscard]] bool IsConnected(
        [[maybe_unused]] cv::Point const & from, T fromValue, [[maybe_unused]] cv::Point const & to, T toValue,
        [[maybe_unused]] cv::Point const & seed, [[maybe_unused]] T seedValue) override
    {
        return fromValue == toValue;
    }
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
    [[nodiscard]] bool IsConnected(
        [[maybe_unused]] cv::Point const & from, cv::Vec<T, N> const & fromValue, [[maybe_unused]] cv::Point const & to,
        cv::Vec<T, N> const & toValue, [[maybe_unused]] cv::Point const & seed,
        [[maybe_unused]] cv::Vec<T, N> const & seedValue) override
    {
        for (int channel = 0; channel < N; ++channel)
        {
            if (fromValue[channel] != toValue[channel]) return false;
        }
        return true;
    }
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
