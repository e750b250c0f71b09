/// @file
/// Which of four values side by side differ from another by at most a bound: the delta conditions, four questions at once.
#pragma once

#include <morvane/common/Conversions.h>
#include <morvane/common/PixelTypes.h>

#include "common/PaddedGrid.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace morvane::connexity::growth_internals
{

/// The floating-point type in which the values of an image, and their differences, are exact.
template <class T>
using Exact = std::conditional_t<std::same_as<T, int> || std::same_as<T, double>, double, float>;

/// Bit i is set where `|v_i - centre| <= bound`, i from 0 to 3. A NaN is near nothing.
///
/// Four values, not the address of four: those that were written just now are much slower to load as one.
///
/// @tparam kWraps the values are those of an `int` image, in which a difference of more than 2147483647 reads as negative,
///         so that it passes
template <bool kWraps>
[[nodiscard]] inline unsigned NearValues(float v0, float v1, float v2, float v3, float centre, float bound)
{
    static_assert(!kWraps, "an int does not fit into a float");
#if defined(__SSE2__)
    __m128 const difference = _mm_sub_ps(_mm_set_ps(v3, v2, v1, v0), _mm_set1_ps(centre));
    __m128 const distance = _mm_andnot_ps(_mm_set1_ps(-0.0F), difference);
    return static_cast<unsigned>(_mm_movemask_ps(_mm_cmple_ps(distance, _mm_set1_ps(bound))));
#else
    auto const near = [=](float value) {
        return static_cast<unsigned>(std::abs(value - centre) <= bound);
    };
    return near(v0) | near(v1) << 1U | near(v2) << 2U | near(v3) << 3U;
#endif
}

/// @copydoc NearValues(float, float, float, float, float, float)
template <bool kWraps>
[[nodiscard]] inline unsigned NearValues(double v0, double v1, double v2, double v3, double centre, double bound)
{
    constexpr double kLargestInt = 2147483647.0;
    constexpr double kWidthOfInt = 4294967296.0;
#if defined(__SSE2__)
    auto const near = [=](__m128d pair) {
        __m128d distance = _mm_andnot_pd(_mm_set1_pd(-0.0), _mm_sub_pd(pair, _mm_set1_pd(centre)));
        if constexpr (kWraps)
        {
            __m128d const isWrapped = _mm_cmpgt_pd(distance, _mm_set1_pd(kLargestInt));
            distance = _mm_sub_pd(distance, _mm_and_pd(isWrapped, _mm_set1_pd(kWidthOfInt)));
        }
        return static_cast<unsigned>(_mm_movemask_pd(_mm_cmple_pd(distance, _mm_set1_pd(bound))));
    };
    return near(_mm_set_pd(v1, v0)) | near(_mm_set_pd(v3, v2)) << 2U;
#else
    auto const near = [=](double value) {
        double distance = std::abs(value - centre);
        if (kWraps && distance > kLargestInt) distance -= kWidthOfInt;
        return static_cast<unsigned>(distance <= bound);
    };
    return near(v0) | near(v1) << 1U | near(v2) << 2U | near(v3) << 3U;
#endif
}

/// Steps to four neighbours.
template <class Index>
using FourSteps = std::array<Index, 4>;

/// The values of an image on a padded plane, and the bound of their differences.
///
/// @tparam Value float or double
/// @tparam kWrapsAround the image is one of `int`, see NearValues()
template <class Value, bool kWrapsAround, class Index>
class BoundedPlane
{
public:
    template <common::Element T>
    static BoundedPlane Of(cv::Mat const & image, common::PaddedGrid<Index> const & grid, bool wrapsInX, double delta)
    {
        BoundedPlane plane;
        plane.m_bound = static_cast<Value>(common::TruncateTo<T>(delta));
        plane.m_values.assign(grid.Total(), kNone);
        auto const margin = static_cast<std::ptrdiff_t>(grid.Margin());
        std::ptrdiff_t const columns = image.cols;
        for (int y = 0; y < image.rows; ++y)
        {
            T const * const pixels = image.ptr<T>(y);
            Value * const row = plane.m_values.data() + grid.RowStart(y);
            std::transform(pixels, pixels + columns, row, [](T value) { return static_cast<Value>(value); });
            if (!wrapsInX) continue;
            for (std::ptrdiff_t x = 0; x < std::min(margin, columns); ++x)
            {
                row[columns + x] = row[x];
                row[-1 - x] = row[columns - 1 - x];
            }
        }
        return plane;
    }

    [[nodiscard]] Value operator[](Index element) const { return m_values[element]; }

    /// From now on the element is near nothing.
    void Remove(Index element) { m_values[element] = kNone; }

    /// Bit i is set where the element at @p from plus step i is near @p centre, i from 0 to 3.
    [[nodiscard]] unsigned Near(Index from, FourSteps<Index> const & steps, Value centre) const
    {
        auto const at = [&](Index step) {
            return m_values[static_cast<Index>(from + step)];
        };
        return NearValues<kWrapsAround>(at(steps[0]), at(steps[1]), at(steps[2]), at(steps[3]), centre, m_bound);
    }

private:
    static constexpr Value kNone = std::numeric_limits<Value>::quiet_NaN();

    std::vector<Value> m_values;
    Value m_bound = 0;
};

} // namespace morvane::connexity::growth_internals
