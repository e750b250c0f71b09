#include <morvane/common/Neighbourhood.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace morvane::common
{

namespace
{

/// The pixels that no offset leads out of an image of this size; empty where the image is too small to have any.
cv::Rect InteriorOf(std::vector<cv::Point> const & offsets, cv::Size size)
{
    // In 64 bits, and no further than the image: the offsets of a caller may be any numbers.
    auto const reach = [](std::int64_t offset, int side) {
        return static_cast<int>(std::clamp<std::int64_t>(offset, 0, side));
    };
    int left = 0;
    int right = 0;
    int up = 0;
    int down = 0;
    for (cv::Point const & offset : offsets)
    {
        left = std::max(left, reach(-std::int64_t{offset.x}, size.width));
        right = std::max(right, reach(offset.x, size.width));
        up = std::max(up, reach(-std::int64_t{offset.y}, size.height));
        down = std::max(down, reach(offset.y, size.height));
    }
    return {left, up, std::max(0, size.width - left - right), std::max(0, size.height - up - down)};
}

} // namespace

Neighbourhood::Neighbourhood(std::vector<cv::Point> offsets, bool wrapsInX, cv::Size size)
    : m_offsets(std::move(offsets))
    , m_wrapsInX(wrapsInX)
    , m_size(size)
    , m_interior(InteriorOf(m_offsets, size))
{}

int Neighbourhood::Reach() const
{
    int reach = 0;
    for (cv::Point const & offset : m_offsets)
    {
        reach = std::max(reach, std::abs(offset.x));
    }
    return reach;
}

std::vector<std::ptrdiff_t> Neighbourhood::LinearOffsets(cv::Mat const & plane) const
{
    auto const rowStep = static_cast<std::ptrdiff_t>(plane.step[0]);
    auto const pixelStep = static_cast<std::ptrdiff_t>(plane.elemSize());
    std::vector<std::ptrdiff_t> bytes;
    bytes.reserve(m_offsets.size());
    for (cv::Point const & offset : m_offsets)
    {
        bytes.push_back(offset.y * rowStep + offset.x * pixelStep);
    }
    return bytes;
}

} // namespace morvane::common
