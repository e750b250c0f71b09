/// @file
/// The geodesic distance by one breadth-first flood.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <type_traits>

namespace morvane::geodesy::distance_internals
{

/// How many dilations the distance counts: until one changes nothing, and in a cap.
///
/// @param deepest the largest distance from the marker; none is 0
/// @param startsInside whether a pixel of the marker lies in the mask
/// @param startsOutside whether a pixel of the marker lies outside it; the first dilation clears it, which is a change
/// @param pixels of the image
[[nodiscard]] constexpr std::size_t
CountedSteps(std::size_t deepest, bool startsInside, bool startsOutside, std::size_t pixels)
{
    std::size_t steps = startsInside ? deepest + 1 : 1;
    if (startsOutside && steps < 2) steps = 2;
    return steps < pixels - 1 ? steps : pixels - 1;
}

/// Where adding 1 no longer changes a number of the type.
template <class T>
[[nodiscard]] constexpr double LimitOfCounts()
{
    if constexpr (std::is_same_v<T, float>) return 16777216.0;
    if constexpr (std::is_same_v<T, double>) return 9007199254740992.0;
    return static_cast<double>(std::numeric_limits<T>::max());
}

/// What the counted steps come to in images of type @p T: sums that saturate, taken from the largest of them plus one. That
/// number is rounded to the type where it is a floating-point one.
template <class T>
class Counts
{
public:
    Counts(std::size_t steps, bool startsInside, bool startsOutside)
        : m_steps(static_cast<double>(steps))
        , m_largest(startsOutside ? 1.0 : 0.0)
    {
        if (startsInside) m_largest = Saturated(m_steps + 1.0);
        m_base = m_largest + 1.0;
        if constexpr (std::is_floating_point_v<T>) m_base = static_cast<double>(static_cast<T>(m_base));
    }

    /// The result at a pixel that is reached after @p distance steps.
    [[nodiscard]] T Reached(std::size_t distance) const
    {
        return cv::saturate_cast<T>(m_base - Saturated(m_steps + 1.0 - static_cast<double>(distance)));
    }

    /// The result at a pixel of the marker outside the mask.
    [[nodiscard]] T Outside() const { return static_cast<T>(m_base - 1.0); }

    /// The result at all other pixels: 0, unless the sum of which that is made saturates.
    [[nodiscard]] T Unreached() const
    {
        double const result = Saturated(m_base);
        return static_cast<T>(result > m_largest ? 0.0 : result);
    }

private:
    [[nodiscard]] static double Saturated(double count) { return std::min(count, LimitOfCounts<T>()); }

    double m_steps;
    double m_largest;
    double m_base;
};

/// Writes the distances. The images have one size and type, of a depth that is not refused, and pixels.
///
/// @param shape code of `cv::getStructuringElement`
void WriteDistances(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out);

} // namespace morvane::geodesy::distance_internals
