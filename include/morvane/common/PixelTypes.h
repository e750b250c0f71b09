/// @file
/// The element types of the library, the pixel of one to four channels, and the test for an empty pixel.
#pragma once

#include <opencv2/core.hpp>

#include <cmath>
#include <concepts>
#include <type_traits>

namespace morvane::common
{

/// The element types that operators accept, in the order of their `cv::Mat` depths: `CV_8U`, `CV_16U`, `CV_16S`,
/// `CV_32S`, `CV_32F`, `CV_64F`. `CV_8S` and `CV_16F` are refused everywhere.
template <class T>
concept Element = std::same_as<T, uchar> || std::same_as<T, ushort> || std::same_as<T, short> || std::same_as<T, int> ||
    std::same_as<T, float> || std::same_as<T, double>;

/// Channel counts above this one are refused.
inline constexpr int kMaxChannels = 4;

/// A pixel of @p N channels: the element itself for one channel, `cv::Vec<T, N>` for two to four.
template <Element T, int N>
requires(N >= 1 && N <= kMaxChannels) using Pixel = std::conditional_t<N == 1, T, cv::Vec<T, N>>;

/// Magnitudes up to and including this one count as zero in floating-point pixels.
inline constexpr double kZeroTolerance = 1e-10;

/// Tells whether something was measured at a one-channel pixel.
///
/// @param value an element of one of the six accepted types
/// @return true for an integer that differs from 0 and for a `float` or `double` whose absolute value is greater
///         than 1e-10 (for `float`, the single-precision number nearest to it); false for NaN, which counts as empty.
template <Element T>
[[nodiscard]] inline bool IsNonZeroPixel(T value)
{
    if constexpr (std::floating_point<T>)
    {
        // A greater-than, so that NaN fails it.
        return std::abs(value) > static_cast<T>(kZeroTolerance);
    }
    else
    {
        return value != 0;
    }
}

/// Tells whether something was measured at a pixel of two to four channels.
///
/// @param pixel a vector of one of the six accepted element types
/// @return true when the Euclidean norm, computed in double, is greater than 1e-10: for integers, when any channel
///         differs from 0. False for a pixel with a NaN channel.
template <Element T, int N>
[[nodiscard]] inline bool IsNonZeroPixel(cv::Vec<T, N> const & pixel)
{
    if constexpr (std::floating_point<T>)
    {
        double sum = 0.0;
        for (int channel = 0; channel < N; ++channel)
        {
            double const value = pixel[channel];
            sum += value * value;
        }
        return std::sqrt(sum) > kZeroTolerance;
    }
    else
    {
        for (int channel = 0; channel < N; ++channel)
        {
            if (pixel[channel] != 0) return true;
        }
        return false;
    }
}

} // namespace morvane::common
