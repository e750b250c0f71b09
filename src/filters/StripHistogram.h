/// @file
/// The histograms of the windows of eight rows at once, while they slide along.
///
/// Windows of neighbouring rows share most of their pixels. With eight counts side by side for each grey level, a pixel
/// that enters or leaves them is one addition of eight lanes. The levels that occur are kept in a bitmap, so that what
/// looks through a histogram in ascending order meets those alone.
#pragma once

#include "common/Lanes.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::filters::window_internals
{

using common::Lanes;

inline constexpr int kLanes = 8; ///< rows of a strip
inline constexpr int kLevels = 256;

/// A run of rows or columns: from @p first up to but not including @p last.
struct Span
{
    int first;
    int last;

    [[nodiscard]] int Length() const { return last - first; }

    /// The pixels of a window that is so long and @p width pixels wide.
    [[nodiscard]] std::size_t Area(int width) const
    {
        return static_cast<std::size_t>(Length()) * static_cast<std::size_t>(width);
    }

    /// Tells whether a window of twice @p half is cut by a border.
    [[nodiscard]] bool IsCut(int half) const { return Length() < 2 * static_cast<std::int64_t>(half); }
};

/// The rows or columns of the window around @p centre that lie in the image.
///
/// @param centre row or column
/// @param half rows or columns before the centre; there is one less behind it
/// @param size rows or columns of the image
[[nodiscard]] inline Span WindowAround(int centre, int half, int size)
{
    return {std::max(centre - half, 0), half < size - centre ? centre + half : size};
}

/// @tparam Count type that holds the pixels of a window
template <class Count>
class StripHistogram
{
public:
    /// @param grey `CV_8UC1`
    /// @param half of the window's side
    StripHistogram(cv::Mat const & grey, int half)
        : m_grey(grey)
        , m_half(half)
    {}

    /// Goes to the left edge of the strip of rows from @p row on, before any pixel has entered.
    void Begin(int row)
    {
        int const lastRow = std::min(row + kLanes, m_grey.rows) - 1;
        Span const rows{WindowAround(row, m_half, m_grey.rows).first, WindowAround(lastRow, m_half, m_grey.rows).last};
        cv::transpose(m_grey.rowRange(rows.first, rows.last), m_columns);
        m_masks.assign(static_cast<std::size_t>(rows.Length()), {});
        for (int lane = 0; row + lane <= lastRow; ++lane)
        {
            Span const window = WindowAround(row + lane, m_half, m_grey.rows);
            for (int y = window.first; y < window.last; ++y)
            {
                m_masks[static_cast<std::size_t>(y - rows.first)].Set(static_cast<std::size_t>(lane), 1);
            }
        }
        m_counts.fill({});
        m_pixels.fill(0);
        m_occurring.fill(0);
    }

    /// Takes in the pixels of a column.
    void Enter(int column)
    {
        uchar const * const levels = m_columns.ptr(column);
        for (std::size_t i = 0; i < m_masks.size(); ++i)
        {
            std::size_t const level = levels[i];
            m_counts[level] += m_masks[i];
            ++m_pixels[level];
            m_occurring[level / 64] |= std::uint64_t{1} << (level % 64);
        }
    }

    /// Takes out the pixels of a column.
    void Leave(int column)
    {
        uchar const * const levels = m_columns.ptr(column);
        for (std::size_t i = 0; i < m_masks.size(); ++i)
        {
            std::size_t const level = levels[i];
            m_counts[level] -= m_masks[i];
            bool const wasLast = --m_pixels[level] == 0;
            m_occurring[level / 64] &= ~(std::uint64_t{wasLast} << (level % 64));
        }
    }

    /// How often a level occurs in each window.
    [[nodiscard]] Lanes<Count> const & operator[](std::size_t level) const { return m_counts[level]; }

    /// Calls @p visit with the levels from 64 * @p word on, up to 63 more, that occur in one of the windows, in
    /// ascending order.
    template <class Visit>
    void VisitOccurring(std::size_t word, Visit const & visit) const
    {
        for (std::uint64_t rest = m_occurring[word]; rest != 0; rest &= rest - 1)
        {
            visit(word * 64 + static_cast<std::size_t>(std::countr_zero(rest)));
        }
    }

    static constexpr std::size_t kWords = kLevels / 64;

private:
    cv::Mat m_grey;
    int m_half;
    cv::Mat m_columns;                 ///< the rows of the strip's windows, transposed
    std::vector<Lanes<Count>> m_masks; ///< 1 where a row belongs to the window of a lane
    std::array<Lanes<Count>, kLevels> m_counts{};
    std::array<std::uint32_t, kLevels> m_pixels{}; ///< that are in any of the windows
    std::array<std::uint64_t, kWords> m_occurring{};
};

} // namespace morvane::filters::window_internals
