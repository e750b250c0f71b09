/// @file
/// Neighbour offsets laid over an image of a given size: the one place that knows how a neighbour is reached.
///
/// Public because the traversal engine, a template that callers instantiate, walks through it.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace morvane::common
{

/// An ordered list of neighbour offsets over an image of known size, with or without wrap in x.
///
/// Pixels whose neighbours all lie inside the image are called interior: there, a neighbour is the pixel's address
/// plus a constant (see LinearOffsets()), without any test. Everywhere else Neighbour() resolves one offset at a time.
class Neighbourhood
{
public:
    /// @param offsets (dx, dy) of each neighbour, in visiting order, dy growing downwards
    /// @param wrapsInX whether the first and the last column are neighbours; rows never wrap
    /// @param size of the image; may be empty
    MORVANE_EXPORT Neighbourhood(std::vector<cv::Point> offsets, bool wrapsInX, cv::Size size);

    /// The number of offsets.
    [[nodiscard]] std::size_t Count() const { return m_offsets.size(); }

    /// The offset of the neighbour @p index, below Count().
    [[nodiscard]] cv::Point Offset(std::size_t index) const { return m_offsets[index]; }

    /// Whether the first and the last column are neighbours.
    [[nodiscard]] bool WrapsInX() const { return m_wrapsInX; }

    /// How many columns the offsets reach to either side, at the most.
    [[nodiscard]] MORVANE_EXPORT int Reach() const;

    /// Tells whether all neighbours of @p pixel lie inside the image without a wrap.
    [[nodiscard]] bool IsInterior(cv::Point pixel) const
    {
        return pixel.x >= m_interior.x && pixel.x < m_interior.x + m_interior.width && pixel.y >= m_interior.y &&
               pixel.y < m_interior.y + m_interior.height;
    }

    /// The position of the neighbour @p index of @p pixel, none where it lies outside the image.
    ///
    /// With wrap, x moves by one image width; on an image that is narrower than the offset, a neighbour that is still
    /// outside after that is none.
    [[nodiscard]] std::optional<cv::Point> Neighbour(cv::Point pixel, std::size_t index) const
    {
        // In 64 bits, as the largest images end where an int does.
        std::int64_t const y = std::int64_t{pixel.y} + m_offsets[index].y;
        if (y < 0 || y >= m_size.height) return std::nullopt;
        std::int64_t x = std::int64_t{pixel.x} + m_offsets[index].x;
        if (x < 0 || x >= m_size.width)
        {
            if (!m_wrapsInX) return std::nullopt;
            x += x < 0 ? m_size.width : -m_size.width;
            if (x < 0 || x >= m_size.width) return std::nullopt;
        }
        return cv::Point(static_cast<int>(x), static_cast<int>(y));
    }

    /// For each offset, the distance in bytes from a pixel of @p plane to that neighbour, valid at interior pixels.
    ///
    /// @param plane a matrix of the image's size, of any type, continuous or not
    [[nodiscard]] MORVANE_EXPORT std::vector<std::ptrdiff_t> LinearOffsets(cv::Mat const & plane) const;

private:
    std::vector<cv::Point> m_offsets;
    bool m_wrapsInX;
    cv::Size m_size;
    cv::Rect m_interior;
};

} // namespace morvane::common
