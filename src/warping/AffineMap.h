/// @file
/// The walk over the pixels of an image that an affine map leads into another one.
#pragma once

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace morvane::warping
{

/// Columns from the first on, without the last.
struct ColumnRange
{
    int first;
    int last;
};

/// The columns among some in which a function, which rises or falls with the column, lies in [low, high).
template <class Function>
[[nodiscard]] ColumnRange ColumnsWithin(ColumnRange range, bool rises, double low, double high, Function const & value)
{
    // The first column at which a condition, false before it, is true.
    auto const firstOf = [&](auto const & condition) {
        int first = range.first;
        int count = range.last - range.first;
        while (count > 0)
        {
            int const half = count / 2;
            bool const isBefore = !condition(value(first + half));
            first = isBefore ? first + half + 1 : first;
            count = isBefore ? count - half - 1 : half;
        }
        return first;
    };
    auto const isHigh = [&](double at) {
        return at >= high;
    };
    auto const isLow = [&](double at) {
        return at < low;
    };
    if (rises) return {firstOf([&](double at) { return !isLow(at); }), firstOf(isHigh)};
    return {firstOf([&](double at) { return !isHigh(at); }), firstOf(isLow)};
}

/// An affine map from pixels of one image to pixels of another, by the middles of the pixels.
class AffineMap
{
public:
    /// @param matrix 2 x 3, `CV_64FC1`
    /// @param columns of the image whose pixels are mapped
    AffineMap(cv::Mat const & matrix, int columns)
    {
        for (int row = 0; row < 2; ++row)
        {
            Axis & axis = m_axes[static_cast<std::size_t>(row)];
            axis.perColumn = matrix.at<double>(row, 0);
            axis.perRow = matrix.at<double>(row, 1);
            axis.offset = matrix.at<double>(row, 2);
            // Beyond this, products and sums could overflow; the places are beyond any image.
            constexpr double kLargest = 1e298;
            for (double const element : {axis.perColumn, axis.perRow, axis.offset})
            {
                m_leadsAnywhere = m_leadsAnywhere && std::abs(element) <= kLargest;
            }
            axis.ofColumn.resize(static_cast<std::size_t>(columns));
            for (int x = 0; x < columns; ++x)
            {
                axis.ofColumn[static_cast<std::size_t>(x)] = (x + 0.5) * axis.perColumn;
            }
        }
    }

    /// Calls @p visit(x, place) for the columns x of a row, from left to right, that lead into a rectangle; the place is
    /// the offset of an element there, counted from the origin of the coordinates.
    ///
    /// @param stride elements from row to row there
    template <class Visit>
    void ForEachWithin(int y, cv::Rect const & rectangle, std::ptrdiff_t stride, Visit const & visit) const
    {
        if (!m_leadsAnywhere) return;
        double const rowX = (y + 0.5) * m_axes[0].perRow;
        double const rowY = (y + 0.5) * m_axes[1].perRow;
        ColumnRange range{0, static_cast<int>(m_axes[0].ofColumn.size())};
        range = ColumnsWithin(range, m_axes[0].perColumn >= 0.0, rectangle.x, rectangle.br().x, [&](int x) {
            return m_axes[0].At(rowX, x);
        });
        range = ColumnsWithin(range, m_axes[1].perColumn >= 0.0, rectangle.y, rectangle.br().y, [&](int x) {
            return m_axes[1].At(rowY, x);
        });
        // In blocks, so that the places are found in vector code. All are in the rectangle, where truncating is floor().
        constexpr int kBlock = 64;
        std::array<int, kBlock> sourceX;
        std::array<int, kBlock> sourceY;
        for (int start = range.first; start < range.last; start += kBlock)
        {
            int const count = std::min(kBlock, range.last - start);
            double const * const ofColumnX = &m_axes[0].ofColumn[static_cast<std::size_t>(start)];
            double const * const ofColumnY = &m_axes[1].ofColumn[static_cast<std::size_t>(start)];
            for (int i = 0; i < count; ++i)
            {
                sourceX[static_cast<std::size_t>(i)] = static_cast<int>(rowX + ofColumnX[i] + m_axes[0].offset);
                sourceY[static_cast<std::size_t>(i)] = static_cast<int>(rowY + ofColumnY[i] + m_axes[1].offset);
            }
            for (int i = 0; i < count; ++i)
            {
                auto const place = static_cast<std::size_t>(i);
                visit(start + i, sourceY[place] * stride + sourceX[place]);
            }
        }
    }

private:
    struct Axis
    {
        double perColumn = 0.0;
        double perRow = 0.0;
        double offset = 0.0;
        std::vector<double> ofColumn; ///< the share of each column

        /// The place of a pixel before it is rounded down.
        [[nodiscard]] double At(double row, int x) const
        {
            return row + ofColumn[static_cast<std::size_t>(x)] + offset;
        }
    };

    std::array<Axis, 2> m_axes;
    bool m_leadsAnywhere = true;
};

} // namespace morvane::warping
