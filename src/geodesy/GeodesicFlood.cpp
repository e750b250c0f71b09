#include "geodesy/GeodesicFlood.h"

#include "common/Dispatch.h"
#include "common/PaddedGrid.h"
#include "geodesy/GeodesicSteps.h"

#include <memory>
#include <vector>

namespace morvane::geodesy::distance_internals
{

using common::Neighbourhood;
using common::PaddedGrid;

namespace
{

/// What is known of an element of the plane.
enum State : uchar
{
    kClosed = 0, ///< outside the mask, or reached
    kOpen = 1,   ///< inside the mask, not reached
    kSeed = 2,   ///< a pixel of the marker outside the mask
};

/// The flood: reached elements in the order of their distance.
template <class Index>
class Flood
{
public:
    template <class T>
    Flood(cv::Mat const & marker, cv::Mat const & mask, PaddedGrid<Index> const & grid, std::type_identity<T>)
        : m_states(grid.Total(), kClosed)
        , m_reached(std::make_unique_for_overwrite<Index[]>(mask.total() + 1))
    {
        for (int y = 0; y < mask.rows; ++y)
        {
            T const * const isSeed = marker.ptr<T>(y);
            T const * const isRegion = mask.ptr<T>(y);
            Index const start = grid.RowStart(y);
            for (int x = 0; x < mask.cols; ++x)
            {
                Index const element = start + static_cast<Index>(x);
                bool const starts = isSeed[x] != 0;
                bool const isInside = isRegion[x] != 0;
                m_states[element] = isInside ? (starts ? kClosed : kOpen) : (starts ? kSeed : kClosed);
                m_reached[m_count] = element;
                m_count += starts && isInside ? 1 : 0;
                m_startsOutside = m_startsOutside || (starts && !isInside);
            }
        }
        Spread(grid);
    }

    [[nodiscard]] bool StartsInside() const { return m_count > 0; }
    [[nodiscard]] bool StartsOutside() const { return m_startsOutside; }
    [[nodiscard]] std::size_t Deepest() const { return m_levels.size() - 1; }
    [[nodiscard]] State StateOf(Index element) const { return static_cast<State>(m_states[element]); }

    /// Calls @p visit with each reached element and its distance.
    template <class Visit>
    void ForEachReached(Visit && visit) const
    {
        std::size_t first = 0;
        for (std::size_t distance = 0; distance < m_levels.size(); ++distance)
        {
            visit(m_reached.get() + first, m_reached.get() + m_levels[distance], distance);
            first = m_levels[distance];
        }
    }

private:
    void Spread(PaddedGrid<Index> const & grid)
    {
        Index * const reached = m_reached.get();
        uchar * const states = m_states.data();
        std::size_t count = m_count;
        std::size_t front = 0;
        do
        {
            m_levels.push_back(count);
            for (std::size_t const end = count; front < end; ++front)
            {
                for (Index const step : grid.Steps())
                {
                    // Without a branch, as which neighbours are open cannot be predicted.
                    Index const neighbour = reached[front] + step;
                    uchar const isOpen = states[neighbour] & kOpen;
                    reached[count] = neighbour;
                    count += isOpen;
                    states[neighbour] = static_cast<uchar>(states[neighbour] & ~kOpen);
                }
            }
        } while (count > m_levels.back());
        m_count = count;
    }

    std::vector<uchar> m_states;
    /// One more than there are pixels, as the next is written before it is known to be one.
    std::unique_ptr<Index[]> m_reached;
    std::size_t m_count = 0;
    bool m_startsOutside = false;
    /// For each distance, the end of its elements.
    std::vector<std::size_t> m_levels;
};

template <class T, class Index>
void WriteTyped(cv::Mat const & marker, cv::Mat const & mask, Neighbourhood const & neighbourhood, cv::Mat & out)
{
    PaddedGrid<Index> const grid(neighbourhood, mask.size());
    Flood<Index> const flood(marker, mask, grid, std::type_identity<T>());
    std::size_t const steps = CountedSteps(flood.Deepest(), flood.StartsInside(), flood.StartsOutside(), mask.total());
    Counts const counts(steps, flood.StartsInside(), flood.StartsOutside(), LimitOfCounts<T>());

    // 0 is no result of a pixel that is reached.
    std::vector<T> values(grid.Total(), T{0});
    flood.ForEachReached([&](Index const * first, Index const * end, std::size_t distance) {
        auto const value = cv::saturate_cast<T>(counts.Reached(distance));
        for (; first != end; ++first)
        {
            values[*first] = value;
        }
    });
    auto const outside = cv::saturate_cast<T>(counts.Outside());
    auto const unreached = cv::saturate_cast<T>(counts.Unreached());
    for (int y = 0; y < out.rows; ++y)
    {
        T * const row = out.ptr<T>(y);
        Index const start = grid.RowStart(y);
        for (int x = 0; x < out.cols; ++x)
        {
            Index const element = start + static_cast<Index>(x);
            T const other = flood.StateOf(element) == kSeed ? outside : unreached;
            row[x] = values[element] != 0 ? values[element] : other;
        }
    }
}

} // namespace

void WriteDistances(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out)
{
    // A single pixel is not dilated, so that its shape does not count.
    Neighbourhood const neighbourhood =
        mask.total() > 1 ? ReachOfElement(shape, {3, 3}, mask.size()) : Neighbourhood({}, false, mask.size());
    common::VisitElement(mask, [&]<class T> {
        common::VisitIndex(neighbourhood, mask.size(), [&]<class Index> {
            WriteTyped<T, Index>(marker, mask, neighbourhood, out);
            return true;
        });
        return true;
    });
}

} // namespace morvane::geodesy::distance_internals
