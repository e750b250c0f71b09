#include "geodesy/GeodesicFlood.h"

#include "common/BitImage.h"
#include "common/Dispatch.h"
#include "common/PaddedGrid.h"
#include "common/Prefetch.h"
#include "geodesy/GeodesicSteps.h"

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace morvane::geodesy::distance_internals
{

using common::BitImage;
using common::Neighbourhood;
using common::PaddedGrid;

namespace
{

/// What is known of an element of the plane, as bits.
enum State : uchar
{
    kClosed = 0, ///< outside the mask
    kOpen = 1,   ///< inside the mask, not reached
    kInside = 2, ///< inside the mask
    kSeed = 4,   ///< a pixel of the marker outside the mask
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
        BitImage seeds(1, mask.cols);
        for (int y = 0; y < mask.rows; ++y)
        {
            Index const start = grid.RowStart(y);
            uchar const found = SetStates(marker.ptr<T>(y), mask.ptr<T>(y), m_states.data() + start, mask.cols);
            m_startsOutside = m_startsOutside || (found & kSeed) != 0;
            common::FillBits(mask.cols, seeds.Row(0), [isSeed = marker.ptr<T>(y), isRegion = mask.ptr<T>(y)](int x) {
                return (isSeed[x] != 0) & (isRegion[x] != 0);
            });
            for (int word = 0; word < seeds.WordsPerRow(); ++word)
            {
                Index const first = start + static_cast<Index>(word) * BitImage::kWordBits;
                common::ForEachBit(
                    seeds.Row(0)[word], [&](int bit) { m_reached[m_count++] = first + static_cast<Index>(bit); });
            }
        }
        Spread(grid);
    }

    [[nodiscard]] bool StartsInside() const { return m_count > 0; }
    [[nodiscard]] bool StartsOutside() const { return m_startsOutside; }
    [[nodiscard]] std::size_t Deepest() const { return m_levels.size() - 1; }
    [[nodiscard]] uchar const * States() const { return m_states.data(); }

    /// Calls @p visit with the elements of each distance, as the first and the end, and the distance.
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
    /// The states of one row. @return all of them, as bits
    template <class T>
    static uchar SetStates(T const * marker, T const * mask, uchar * __restrict states, int cols)
    {
        uchar found = 0;
        for (int x = 0; x < cols; ++x)
        {
            uchar const whenSeed = mask[x] != 0 ? kInside : kSeed;
            uchar const otherwise = mask[x] != 0 ? kInside | kOpen : kClosed;
            states[x] = marker[x] != 0 ? whenSeed : otherwise;
            found = static_cast<uchar>(found | states[x]);
        }
        return found;
    }

    void Spread(PaddedGrid<Index> const & grid)
    {
        std::vector<Index> const & steps = grid.Steps();
        if (steps.size() == 8) return SpreadBy(FirstOf<8>(steps));
        if (steps.size() == 4) return SpreadBy(FirstOf<4>(steps));
        // A single pixel has nowhere to spread.
        if (steps.empty()) return m_levels.push_back(m_count);
        SpreadBy(steps);
    }

    template <std::size_t kCount>
    static std::array<Index, kCount> FirstOf(std::vector<Index> const & steps)
    {
        std::array<Index, kCount> first{};
        std::copy_n(steps.begin(), kCount, first.begin());
        return first;
    }

    static constexpr std::size_t kAhead = 16;

    /// @param steps a copy: the stores of bytes below could else change it, for all that the compiler knows
    template <class Steps>
    void SpreadBy(Steps const steps)
    {
        Index * __restrict const reached = m_reached.get();
        uchar * __restrict const states = m_states.data();
        std::size_t count = m_count;
        std::size_t front = 0;
        do
        {
            m_levels.push_back(count);
            for (std::size_t const end = count; front < end; ++front)
            {
                // The memory of a pixel to come: those that wait lie along a front that no processor foresees.
                Index const ahead = reached[std::min(front + kAhead, end - 1)];
                common::Prefetch(states + static_cast<Index>(ahead + steps.front()));
                common::Prefetch(states + static_cast<Index>(ahead + steps.back()));
                Index const element = reached[front];
                for (Index const step : steps)
                {
                    // Without a branch, as which neighbours are open cannot be predicted.
                    Index const neighbour = element + step;
                    uchar const state = states[neighbour];
                    reached[count] = neighbour;
                    count += state & kOpen;
                    states[neighbour] = static_cast<uchar>(state & ~kOpen);
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
    Counts<T> const counts(steps, flood.StartsInside(), flood.StartsOutside());

    std::vector<T> values(grid.Total());
    flood.ForEachReached([&](Index const * first, Index const * end, std::size_t distance) {
        // Without a marker nothing is reached, and no number stands for it.
        if (first == end) return;
        T const value = counts.Reached(distance);
        for (; first != end; ++first)
        {
            values[*first] = value;
        }
    });
    T const outside = counts.Outside();
    T const unreached = counts.Unreached();
    for (int y = 0; y < out.rows; ++y)
    {
        T * __restrict const row = out.ptr<T>(y);
        uchar const * const states = flood.States() + grid.RowStart(y);
        T const * const reached = values.data() + grid.RowStart(y);
        for (int x = 0; x < out.cols; ++x)
        {
            T const other = states[x] == kSeed ? outside : unreached;
            row[x] = (states[x] & (kInside | kOpen)) == kInside ? reached[x] : other;
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
