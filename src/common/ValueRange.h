/// @file
/// The least and the greatest value of an image.
#pragma once

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cstddef>

namespace morvane::common
{

/// From the least to the greatest value.
template <class T>
struct ValueRange
{
    T low;
    T high;
};

/// Widens a range by all elements of an image, whatever its channels, or by those that differ from 0. NaN has no effect.
///
/// A loop of our own: that of OpenCV takes two to twenty times as long, as it looks for the places as well.
template <class T, bool SkipZero = false>
[[nodiscard]] ValueRange<T> WidenedBy(cv::Mat const & image, ValueRange<T> const & range)
{
    // Side by side, so that the loop compiles to SIMD for floating-point numbers, too.
    constexpr int kLanes = 128 / sizeof(T);
    std::array<T, kLanes> low;
    std::array<T, kLanes> high;
    low.fill(range.low);
    high.fill(range.high);
    auto const widen = [&](std::size_t lane, T value) {
        bool const counts = !SkipZero || value != 0;
        low[lane] = counts && value < low[lane] ? value : low[lane];
        high[lane] = counts && value > high[lane] ? value : high[lane];
    };
    std::ptrdiff_t const count = std::ptrdiff_t{image.cols} * image.channels();
    for (int y = 0; y < image.rows; ++y)
    {
        T const * const row = image.ptr<T>(y);
        std::ptrdiff_t x = 0;
        for (; x + kLanes <= count; x += kLanes)
        {
            for (std::size_t lane = 0; lane < kLanes; ++lane)
            {
                widen(lane, row[static_cast<std::size_t>(x) + lane]);
            }
        }
        for (; x < count; ++x)
        {
            widen(0, row[x]);
        }
    }
    for (std::size_t lane = 1; lane < kLanes; ++lane)
    {
        low[0] = std::min(low[0], low[lane]);
        high[0] = std::max(high[0], high[lane]);
    }
    return {low[0], high[0]};
}

} // namespace morvane::common
