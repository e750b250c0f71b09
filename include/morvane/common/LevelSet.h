/// @file
/// A set of levels that finds the next one above or below in a few steps, however far away it is.
///
/// Public because the level queue of the max-tree, a template that callers may instantiate, holds one.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::common
{

/// A set of numbers from 0 to below a limit, as bits: one for each number, above them one for each word that holds any,
/// and so on.
class LevelSet
{
public:
    /// What stands for no level.
    static constexpr std::size_t kNone = ~std::size_t{0};

    /// @param limit one more than the largest number, from 1 on. What is asked of the set has to lie below it, except of
    ///        FirstFrom().
    explicit LevelSet(std::size_t limit)
    {
        do
        {
            limit = (limit + kWordBits - 1) / kWordBits;
            m_floors.emplace_back(limit);
        } while (limit > 1);
    }

    /// Puts a number into the set, if it is not there.
    void Insert(std::size_t level)
    {
        for (auto & floor : m_floors)
        {
            std::uint64_t & word = floor[level / kWordBits];
            bool const wasFilled = word != 0;
            word |= Bit(level);
            if (wasFilled) return;
            level /= kWordBits;
        }
    }

    /// Takes a number out of the set, if it is there.
    void Remove(std::size_t level)
    {
        for (auto & floor : m_floors)
        {
            std::uint64_t & word = floor[level / kWordBits];
            word &= ~Bit(level);
            if (word != 0) return;
            level /= kWordBits;
        }
    }

    /// Is the number in the set?
    [[nodiscard]] bool Contains(std::size_t level) const
    {
        return (m_floors.front()[level / kWordBits] & Bit(level)) != 0;
    }

    /// The largest number of the set up to @p level, kNone when there is none.
    [[nodiscard]] std::size_t LastUpTo(std::size_t level) const
    {
        for (std::size_t floor = 0; floor < m_floors.size(); ++floor)
        {
            std::uint64_t const below = ~std::uint64_t{0} >> (kWordBits - 1 - level % kWordBits);
            std::uint64_t const word = m_floors[floor][level / kWordBits] & below;
            if (word != 0)
            {
                return Descend(floor, level / kWordBits * kWordBits + Last(word), Last);
            }
            if (level / kWordBits == 0) return kNone;
            level = level / kWordBits - 1;
        }
        return kNone;
    }

    /// The smallest number of the set from @p level on, kNone when there is none.
    [[nodiscard]] std::size_t FirstFrom(std::size_t level) const
    {
        for (std::size_t floor = 0; floor < m_floors.size(); ++floor)
        {
            if (level / kWordBits >= m_floors[floor].size()) return kNone;
            std::uint64_t const above = ~std::uint64_t{0} << (level % kWordBits);
            std::uint64_t const word = m_floors[floor][level / kWordBits] & above;
            if (word != 0)
            {
                return Descend(floor, level / kWordBits * kWordBits + First(word), First);
            }
            level = level / kWordBits + 1;
        }
        return kNone;
    }

private:
    static constexpr std::size_t kWordBits = 64;

    static std::uint64_t Bit(std::size_t level) { return std::uint64_t{1} << (level % kWordBits); }

    static std::size_t First(std::uint64_t word) { return static_cast<std::size_t>(std::countr_zero(word)); }

    static std::size_t Last(std::uint64_t word)
    {
        return kWordBits - 1 - static_cast<std::size_t>(std::countl_zero(word));
    }

    /// From a bit of a floor down to the number that @p choose finds below it.
    std::size_t Descend(std::size_t floor, std::size_t bit, std::size_t (*choose)(std::uint64_t)) const
    {
        while (floor > 0)
        {
            --floor;
            bit = bit * kWordBits + choose(m_floors[floor][bit]);
        }
        return bit;
    }

    /// The numbers first, then what summarises them.
    std::vector<std::vector<std::uint64_t>> m_floors;
};

} // namespace morvane::common
