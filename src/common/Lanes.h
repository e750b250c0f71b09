/// @file
/// Eight numbers side by side, with arithmetic on all of them at once.
///
/// Loops of eight over arrays are left as single steps by the compilers we know; these are not. Where vectors are no part
/// of the language, the same is done by loops.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

namespace morvane::common
{

/// @tparam T unsigned integer type, which wraps around, or a floating-point type
template <class T>
class Lanes
{
public:
    static constexpr std::size_t kCount = 8;

    /// All 0.
    Lanes() = default;

    [[nodiscard]] T operator[](std::size_t i) const { return m_values[i]; }

    void Set(std::size_t i, T value) { m_values[i] = value; }

#if defined(__GNUC__)
    /// All the same.
    explicit Lanes(T value)
        : m_values(Values{} + value)
    {}

    void operator+=(Lanes const & other)
    {
        m_values += other.m_values;
    }
    void operator-=(Lanes const & other)
    {
        m_values -= other.m_values;
    }

    /// Takes the numbers of @p other where a comparison gives true: those of @p left that are not above those of @p right.
    void TakeWhereNotAbove(Lanes const & left, Lanes const & right, Lanes const & other)
    {
        m_values = left.m_values <= right.m_values ? other.m_values : m_values;
    }

    /// Tells whether all numbers are above those of @p other.
    [[nodiscard]] bool AreAbove(Lanes const & other) const
    {
        auto const above = m_values > other.m_values;
        std::array<unsigned long long, sizeof(above) / sizeof(unsigned long long)> words{};
        std::memcpy(words.data(), &above, sizeof(above));
        unsigned long long all = std::numeric_limits<unsigned long long>::max();
        for (unsigned long long const word : words)
        {
            all &= word;
        }
        return all == std::numeric_limits<unsigned long long>::max();
    }

private:
    using Values [[gnu::vector_size(kCount * sizeof(T))]] = T;
    Values m_values{};
#else
    explicit Lanes(T value)
    {
        m_values.fill(value);
    }

    void operator+=(Lanes const & other)
    {
        for (std::size_t i = 0; i < kCount; ++i)
        {
            m_values[i] = static_cast<T>(m_values[i] + other.m_values[i]);
        }
    }

    void operator-=(Lanes const & other)
    {
        for (std::size_t i = 0; i < kCount; ++i)
        {
            m_values[i] = static_cast<T>(m_values[i] - other.m_values[i]);
        }
    }

    void TakeWhereNotAbove(Lanes const & left, Lanes const & right, Lanes const & other)
    {
        for (std::size_t i = 0; i < kCount; ++i)
        {
            if (left.m_values[i] <= right.m_values[i]) m_values[i] = other.m_values[i];
        }
    }

    [[nodiscard]] bool AreAbove(Lanes const & other) const
    {
        bool areAbove = true;
        for (std::size_t i = 0; i < kCount; ++i)
        {
            areAbove = areAbove && m_values[i] > other.m_values[i];
        }
        return areAbove;
    }

private:
    std::array<T, kCount> m_values{};
#endif
};

} // namespace morvane::common
