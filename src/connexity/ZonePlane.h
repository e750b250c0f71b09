/// @file
/// Zones that grow from seeds, one after the other, over what the zones before them have left free: the plane that they share.
#pragma once

#include <morvane/common/Conversions.h>
#include <morvane/connexity/Connexity.h>

#include "common/Dispatch.h"
#include "common/PaddedGrid.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <limits>
#include <vector>

namespace morvane::connexity::growth_internals
{

/// A padded plane that holds the number of the zone of each pixel, 0 where there is none yet.
///
/// A growth is what has `Grow(seed, zones)`: it spreads from a free seed and calls Take() for each pixel of the zone.
template <class Index>
class ZonePlane
{
public:
    /// All pixels free.
    ZonePlane(common::PaddedGrid<Index> const & grid, bool wrapsInX, cv::Size size)
        : m_grid(&grid)
        , m_size(size)
        , m_zones(grid.Total(), kOutside)
    {
        Index const margin = grid.Margin();
        for (int y = 0; y < size.height; ++y)
        {
            Index * const row = m_zones.data() + grid.RowStart(y);
            std::fill_n(row, size.width, Index{0});
            if (!wrapsInX) continue;
            std::fill_n(row - margin, margin, kAcross);
            std::fill_n(row + size.width, margin, kAcross);
        }
    }

    [[nodiscard]] bool IsFree(Index element) const { return m_zones[element] == 0; }

    /// Gives a pixel to the zone that is growing.
    void Take(Index element) { m_zones[element] = m_count; }

    /// The element of the pixel that an element stands for: across the seam for one of a margin that wraps, else itself.
    [[nodiscard]] Index PixelOf(Index element) const
    {
        return m_zones[element] == kAcross ? m_grid->Across(element) : element;
    }

    /// Grows a zone from each free pixel in raster order.
    template <class Growth>
    void GrowAll(Growth & growth)
    {
        for (int y = 0; y < m_size.height; ++y)
        {
            Index const first = m_grid->RowStart(y);
            Index const last = first + static_cast<Index>(m_size.width);
            for (Index seed = first; seed != last; ++seed)
            {
                GrowFrom(seed, growth);
            }
        }
    }

    /// Grows a zone from each of the seeds that lies inside the image and is free.
    template <class Growth>
    void GrowFrom(std::vector<cv::Point> const & seeds, Growth & growth)
    {
        cv::Rect const image({}, m_size);
        for (cv::Point const & seed : seeds)
        {
            if (image.contains(seed)) GrowFrom(m_grid->RowStart(seed.y) + static_cast<Index>(seed.x), growth);
        }
    }

    /// Writes the numbers into an image of labels, in which they wrap.
    void WriteTo(cv::Mat & labels) const
    {
        // Of several channels, the labels leave some untouched.
        if (labels.channels() > 1) labels = cv::Scalar(0);
        common::VisitLabel(labels, [&]<class Label> {
            for (int y = 0; y < m_size.height; ++y)
            {
                Index const * const row = m_zones.data() + m_grid->RowStart(y);
                std::transform(row, row + m_size.width, labels.ptr<Label>(y), common::WrapTo<Label, Index>);
            }
            return true;
        });
    }

private:
    template <class Growth>
    void GrowFrom(Index seed, Growth & growth)
    {
        if (!IsFree(seed)) return;
        ++m_count;
        growth.Grow(seed, *this);
    }

    // Larger than the number of any zone, where there is a margin.
    static constexpr Index kAcross = std::numeric_limits<Index>::max();
    static constexpr Index kOutside = kAcross - 1;

    common::PaddedGrid<Index> const * m_grid;
    cv::Size m_size;
    std::vector<Index> m_zones;
    Index m_count = 0;
};

/// Prepares an empty plane of zones over an image of @p size, lets `grow(grid, zones)` fill it, and writes the zones to
/// @p labels.
///
/// @return true
template <class Grow>
bool LabelGrownZones(cv::Size size, eConnexityType type, cv::Mat & labels, Grow const & grow)
{
    common::Neighbourhood const neighbourhood = NeighbourhoodOver(Connexity(type), size);
    return common::VisitIndex(neighbourhood, size, [&]<class Index> {
        common::PaddedGrid<Index> const grid(neighbourhood, size);
        ZonePlane<Index> zones(grid, neighbourhood.WrapsInX(), size);
        grow(grid, zones);
        zones.WriteTo(labels);
        return true;
    });
}

} // namespace morvane::connexity::growth_internals
