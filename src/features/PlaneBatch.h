/// @file
/// The planes of many windows at once.
///
/// One plane after the other, most of the time goes into the arc tangent, sine and cosine of the eigenvalues. Side by
/// side, all steps are loops over arrays that compile to vectors, and the roots come from a polynomial. Results agree
/// with SolvePlane() up to rounding.
#pragma once

#include "features/PlaneFit.h"

#include <morvane/Export.h>

#include <array>
#include <cstddef>

namespace morvane::normal_internals
{

/// A plane of a batch.
struct Plane
{
    int count;                      ///< points of the window
    std::array<double, 3> centroid; ///< of the points
    std::array<double, 3> normal;   ///< unit vector, on the side of the origin
    double rms;                     ///< root mean square distance of the points
};

/// Windows that wait for their planes.
class PlaneBatch
{
public:
    static constexpr std::size_t kSize = 32;

    /// Tells whether there is room for one more window.
    [[nodiscard]] bool IsFull() const { return m_size == kSize; }

    /// Adds a window.
    ///
    /// @param id of the caller's
    /// @param count points, above 0
    /// @param sums over them
    void Add(int id, int count, PointSums const & sums)
    {
        m_ids[m_size] = id;
        m_counts[m_size] = count;
        m_sums[0][m_size] = sums.x;
        m_sums[1][m_size] = sums.y;
        m_sums[2][m_size] = sums.z;
        m_sums[3][m_size] = sums.xx;
        m_sums[4][m_size] = sums.yy;
        m_sums[5][m_size] = sums.zz;
        m_sums[6][m_size] = sums.xy;
        m_sums[7][m_size] = sums.yz;
        m_sums[8][m_size] = sums.xz;
        ++m_size;
    }

    /// Fits all planes, calls @p visit with the id and the plane of each window that has one, in the order in which
    /// they were added, and empties the batch.
    template <class Visit>
    void Finish(Visit const & visit)
    {
        Solve();
        for (std::size_t i = 0; i < m_size; ++i)
        {
            if (m_isPlane[i] == 0.0) continue;
            visit(
                m_ids[i], Plane{
                              m_counts[i],
                              {m_centroids[0][i], m_centroids[1][i], m_centroids[2][i]},
                              {m_normals[0][i], m_normals[1][i], m_normals[2][i]},
                              m_rms[i]});
        }
        m_size = 0;
    }

    using Row = std::array<double, kSize>;

private:
    MORVANE_EXPORT void Solve();

    std::size_t m_size = 0;
    std::array<int, kSize> m_ids{};
    std::array<int, kSize> m_counts{};
    std::array<Row, 9> m_sums{}; ///< in the order of PointSums
    std::array<Row, 3> m_centroids{};
    std::array<Row, 3> m_normals{};
    Row m_rms{};
    Row m_isPlane{}; ///< 1 where there is one, else 0
};

/// Fits the planes of a row of windows.
///
/// @param cols columns of the row
/// @param minPoints windows of so many points, or fewer, have no plane
/// @param countAt the points of a column's window
/// @param sumsAt the sums over them
/// @param visit called with each column that has a plane, in rising order, and the plane
template <class CountAt, class SumsAt, class Visit>
void VisitPlanes(int cols, int minPoints, CountAt const & countAt, SumsAt const & sumsAt, Visit const & visit)
{
    PlaneBatch batch;
    for (int column = 0; column < cols; ++column)
    {
        int const count = countAt(column);
        if (count <= minPoints || count <= 0) continue;
        batch.Add(column, count, sumsAt(column));
        if (batch.IsFull()) batch.Finish(visit);
    }
    batch.Finish(visit);
}

} // namespace morvane::normal_internals
