/// @file
/// The loops that turn labels and values into tables.
#pragma once

#include <morvane/common/Conversions.h>
#include <morvane/common/PixelTypes.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace morvane::connexity::measure_internals
{

/// The element of the table that belongs to values of type @p T.
template <class T>
using TableElement = std::conditional_t<std::is_floating_point_v<T>, T, int>;

/// Adds with wrap-around for integers.
template <class E>
E Plus(E one, E other)
{
    if constexpr (std::floating_point<E>)
    {
        return one + other;
    }
    else
    {
        return common::WrapTo<E>(static_cast<unsigned>(one) + static_cast<unsigned>(other));
    }
}

/// Multiplies and cuts to the type of the factors.
template <class T>
T Times(T one, T other)
{
    if constexpr (std::floating_point<T>)
    {
        return one * other;
    }
    else
    {
        return common::WrapTo<T>(static_cast<unsigned>(one) * static_cast<unsigned>(other));
    }
}

/// A sum; its order counts for floating-point numbers.
struct Sum
{
    static constexpr double kStart = 0.0;

    template <class E>
    static E Merge(E entry, E value)
    {
        return Plus(entry, value);
    }
};

/// The largest value; NaN and equal values replace the entry.
struct Largest
{
    static constexpr double kStart = -2147483647.0;

    template <class E>
    static E Merge(E entry, E value)
    {
        return entry > value ? entry : value;
    }
};

/// The smallest value; NaN and equal values replace the entry.
struct Smallest
{
    static constexpr double kStart = 2147483647.0;

    template <class E>
    static E Merge(E entry, E value)
    {
        return entry < value ? entry : value;
    }
};

/// A label image made ready: `CV_32S`, none of them negative, and the number of rows of its tables.
struct Labels
{
    cv::Mat image;
    int rows = 0;
};

/// The labels made ready; none when the type is refused. @throws cv::Exception when the number of rows is negative
[[nodiscard]] std::optional<Labels> PrepareLabels(cv::Mat const & labels);

/// Where sizes differ, brings values into the size of the labels: pixel n of one, in raster order, meets pixel n of the
/// others, and labels without a value become 0.
void MatchSizes(cv::Mat & labels, cv::Mat & values, cv::Mat & others);

/// How many tables are filled side by side: a zone's pixels then do not wait for each other's entries.
constexpr std::size_t kLanes = 4;

/// Fills a table: `entry[label] = merge(entry[label], value(y, x))` for each pixel with a label, in raster order.
///
/// @param labels made ready
/// @param mayReorder whether the order of merging is free: several tables are then filled side by side
/// @param valueOfRow gives for a row y a function from x to a value
/// @param stride of the table's elements: its number of channels
template <class Merge, class E, class ValueOfRow>
void FillTable(Labels const & labels, bool mayReorder, E * table, std::size_t stride, ValueOfRow const & valueOfRow)
{
    auto const rows = static_cast<std::size_t>(labels.rows);
    // Several tables pay while they are small beside the image.
    std::size_t const lanes = mayReorder && rows * kLanes * 4 <= labels.image.total() ? kLanes : 1;
    std::vector<E> entries(rows * lanes, static_cast<E>(Merge::kStart));
    std::array<E *, kLanes> lane;
    for (std::size_t index = 0; index < kLanes; ++index)
    {
        lane[index] = entries.data() + (lanes == 1 ? 0 : index * rows);
    }
    for (int y = 0; y < labels.image.rows; ++y)
    {
        int const * const row = labels.image.ptr<int>(y);
        auto const valueAt = valueOfRow(y);
        int x = 0;
        for (; labels.image.cols - x >= static_cast<int>(kLanes); x += static_cast<int>(kLanes))
        {
            for (std::size_t index = 0; index < kLanes; ++index)
            {
                int const place = x + static_cast<int>(index);
                E & entry = lane[index][row[place]];
                entry = Merge::template Merge<E>(entry, valueAt(place));
            }
        }
        for (; x < labels.image.cols; ++x)
        {
            E & entry = lane[0][row[x]];
            entry = Merge::template Merge<E>(entry, valueAt(x));
        }
    }
    // Row 0 has taken in what belongs to no zone.
    for (std::size_t label = 1; label < rows; ++label)
    {
        E entry = lane[0][label];
        for (std::size_t index = 1; index < lanes; ++index)
        {
            entry = Merge::template Merge<E>(entry, lane[index][label]);
        }
        table[label * stride] = entry;
    }
}

/// Tells whether a floating-point image holds a value for which the order of maxima counts: NaN, or a zero with a sign.
template <std::floating_point T>
bool HoldsOrderedValue(cv::Mat const & values)
{
    // Looked at as integers, so that the loop compiles to SIMD: a NaN lies beyond infinity.
    using Bits = std::conditional_t<sizeof(T) == 4, std::int32_t, std::int64_t>;
    constexpr auto kInfinity = std::bit_cast<Bits>(std::numeric_limits<T>::infinity());
    constexpr Bits kNegativeZero = std::numeric_limits<Bits>::min();
    for (int y = 0; y < values.rows; ++y)
    {
        auto const * const row = values.ptr<Bits>(y);
        Bits found = 0;
        for (std::ptrdiff_t x = 0; x < std::ptrdiff_t{values.cols} * values.channels(); ++x)
        {
            Bits const bits = row[x];
            found |= static_cast<Bits>(bits == kNegativeZero) | static_cast<Bits>((bits & ~kNegativeZero) > kInfinity);
        }
        if (found != 0) return true;
    }
    return false;
}

/// May values of this type be merged in any order?
template <class Merge, class T>
bool MayReorder(cv::Mat const & values)
{
    if constexpr (!std::floating_point<T>)
    {
        return true;
    }
    else if constexpr (std::same_as<Merge, Sum>)
    {
        return false;
    }
    else
    {
        return !HoldsOrderedValue<T>(values);
    }
}

} // namespace morvane::connexity::measure_internals
