/// @file
/// Zones that grow over pixels of similar values: the order of growth makes no difference, so that all neighbours of a pixel
/// are compared at once.
#pragma once

#include <morvane/connexity/Connexity.h>

#include "common/PaddedGrid.h"
#include "connexity/NearValues.h"
#include "connexity/ZonePlane.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvane::connexity::growth_internals
{

/// What a candidate for a zone is compared with.
enum class Reference
{
    Neighbour, ///< the pixel from which it is reached: DeltaConnected
    Seed,      ///< the first pixel of the zone: DeltaConnectedSeed
};

/// The steps to the neighbours in fours. What the last lacks are steps to the element itself, which is near nothing once it
/// is taken.
template <class Index>
std::vector<FourSteps<Index>> InFours(std::vector<Index> const & steps)
{
    std::vector<FourSteps<Index>> fours((steps.size() + 3) / 4);
    for (std::size_t index = 0; index < steps.size(); ++index)
    {
        fours[index / 4][index % 4] = steps[index];
    }
    return fours;
}

/// In place of a second plane: every step is allowed.
struct AnyValue
{
    template <class Index>
    [[nodiscard]] int operator[](Index) const
    {
        return 0;
    }

    template <class Index>
    [[nodiscard]] unsigned Near(Index, FourSteps<Index> const &, int) const
    {
        return ~0U;
    }
};

/// A growth (see ZonePlane) over pixels that are near in one plane of values, or in two.
///
/// A pixel that is taken is removed from the first plane, so that what is near is also free.
///
/// @tparam First a BoundedPlane
/// @tparam Second another, or AnyValue
template <Reference kReference, class Index, class First, class Second>
class SimilarGrowth
{
public:
    SimilarGrowth(common::PaddedGrid<Index> const & grid, bool wrapsInX, First first, Second second)
        : m_grid(&grid)
        , m_wrapsInX(wrapsInX)
        , m_steps(grid.Steps())
        , m_fours(InFours(grid.Steps()))
        , m_first(std::move(first))
        , m_second(std::move(second))
    {}

    void Grow(Index seed, ZonePlane<Index> & zones)
    {
        Waiting const opening{seed, m_first[seed]};
        Take(seed, zones);
        while (!m_waiting.empty())
        {
            // Member by member, as they were written: what was written in two parts just now is slow to load as one.
            Waiting const from{m_waiting.back().element, m_waiting.back().value};
            m_waiting.pop_back();
            // What is near lies on the other side of the seam, or twice in a narrow image, where columns wrap.
            for (std::uint64_t near = NearNeighbours(from, opening); near != 0; near &= near - 1)
            {
                Index const element = from.element + m_steps[static_cast<std::size_t>(std::countr_zero(near))];
                Index const to = m_wrapsInX ? zones.PixelOf(element) : element;
                if (!m_wrapsInX || zones.IsFree(to)) Take(to, zones);
            }
        }
    }

private:
    using Value = std::remove_cvref_t<decltype(std::declval<First const &>()[0])>;

    /// A pixel whose neighbours have not been looked at, with the value that it had.
    struct Waiting
    {
        Index element;
        Value value;
    };

    void Take(Index element, ZonePlane<Index> & zones)
    {
        m_waiting.push_back({element, m_first[element]});
        zones.Take(element);
        m_first.Remove(element);
        if (m_wrapsInX)
        {
            m_grid->VisitDoubles(element, [this](Index twin) { m_first.Remove(twin); });
        }
    }

    /// Bit i is set where neighbour i may join.
    [[nodiscard]] std::uint64_t NearNeighbours(Waiting const & from, Waiting const & opening) const
    {
        Waiting const & reference = kReference == Reference::Seed ? opening : from;
        auto const second = m_second[reference.element];
        std::uint64_t near = 0;
        unsigned shift = 0;
        for (FourSteps<Index> const & steps : m_fours)
        {
            unsigned const mask =
                m_first.Near(from.element, steps, reference.value) & m_second.Near(from.element, steps, second);
            near |= std::uint64_t{mask} << shift;
            shift += 4;
        }
        return near;
    }

    common::PaddedGrid<Index> const * m_grid;
    bool m_wrapsInX;
    std::vector<Index> m_steps;
    std::vector<FourSteps<Index>> m_fours;
    First m_first;
    Second m_second;
    std::vector<Waiting> m_waiting;
};

/// Calls @p leaf with the BoundedPlane of an image of one channel.
template <class Index, class Leaf>
bool VisitBoundedPlane(
    cv::Mat const & image, common::PaddedGrid<Index> const & grid, bool wrapsInX, double delta, Leaf const & leaf)
{
    return common::VisitElement(image, [&]<class T> {
        return leaf(BoundedPlane<Exact<T>, std::same_as<T, int>, Index>::template Of<T>(image, grid, wrapsInX, delta));
    });
}

} // namespace morvane::connexity::growth_internals
