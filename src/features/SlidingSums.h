/// @file
/// The sums over a square window that moves down a point cloud, for all columns at once.
#pragma once

#include "features/PlaneFit.h"

#include <opencv2/core.hpp>

#include <array>
#include <cstddef>
#include <vector>

namespace morvane::normal_internals
{

/// The images that windows are summed over.
struct Cloud
{
    cv::Mat validity; ///< `CV_8UC1`: 1 where a point exists
    cv::Mat x;        ///< float or double
    cv::Mat y;        ///< the same type
    cv::Mat z;        ///< the same type
};

/// The sums over the windows around all columns of a row.
struct WindowTotals
{
    static constexpr std::size_t kSums = 9;

    /// How many points are in the window around a column.
    [[nodiscard]] int CountAt(int column) const { return static_cast<int>(counts[static_cast<std::size_t>(column)]); }

    /// The sums over the window around a column.
    [[nodiscard]] PointSums SumsAt(int column) const
    {
        double const * const total = sums.data() + column;
        auto const stride = static_cast<std::ptrdiff_t>(counts.size());
        return {total[0],          total[stride],     total[2 * stride], total[3 * stride], total[4 * stride],
                total[5 * stride], total[6 * stride], total[7 * stride], total[8 * stride]};
    }

    std::vector<unsigned> counts; ///< one for each column
    std::vector<double> sums;     ///< nine rows, in the order of PointSums
};

/// A ring of rows, each with the sums of an image row over the columns of the window, and their totals over its rows.
///
/// Above the first row the image is mirrored, below the last it ends. The nine sums of a row lie one after the other,
/// since nine running sums side by side take no longer than one.
///
/// @tparam T element type of the coordinates
template <class T>
class SlidingSums
{
public:
    /// @param cloud summed over; outlives the object
    /// @param radius the window is 2 * radius + 1 wide and high
    /// @param wrapColumns whether the first column is a neighbour of the last; else windows are cut
    ///
    /// The window is that of the first row.
    SlidingSums(Cloud const & cloud, int radius, bool wrapColumns);

    /// Moves the window down by one row.
    void Advance();

    /// The sums over the windows of the row.
    [[nodiscard]] WindowTotals const & Totals() const { return m_totals; }

private:
    void SumRow(int row, WindowTotals & sums);
    void LoadRow(int row);
    [[nodiscard]] std::size_t Next(std::size_t index) const { return index + 1 == m_ring.size() ? 0 : index + 1; }

    Cloud const & m_cloud;
    int m_cols;
    int m_radius;
    bool m_wrapColumns;
    int m_entering;
    std::size_t m_writeIndex;
    std::size_t m_readIndex = 0;
    std::vector<WindowTotals> m_ring; ///< image rows, summed along their columns
    WindowTotals m_totals;
    std::vector<unsigned> m_points; ///< a row of the image, with the columns beyond its ends
    std::vector<double> m_terms;    ///< nine of them
};

} // namespace morvane::normal_internals
