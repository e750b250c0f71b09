#include "features/SlidingSums.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

namespace morvane::normal_internals
{

namespace
{

template <class E, class Operation>
void CombineRows(E * __restrict totals, E const * __restrict row, std::size_t length, Operation const & operation)
{
    for (std::size_t i = 0; i < length; ++i)
    {
        totals[i] = operation(totals[i], row[i]);
    }
}

/// Adds a row to totals, or subtracts it.
template <class Operation>
void Combine(WindowTotals & totals, WindowTotals const & row, Operation const & operation)
{
    CombineRows(totals.counts.data(), row.counts.data(), row.counts.size(), operation);
    CombineRows(totals.sums.data(), row.sums.data(), row.sums.size(), operation);
}

template <class E>
void ReplaceRows(E * __restrict totals, E const * __restrict entering, E const * __restrict leaving, std::size_t length)
{
    for (std::size_t i = 0; i < length; ++i)
    {
        totals[i] = totals[i] + entering[i] - leaving[i];
    }
}

/// Adds a row to totals and subtracts another, in one pass.
void Replace(WindowTotals & totals, WindowTotals const & entering, WindowTotals const & leaving)
{
    ReplaceRows(totals.counts.data(), entering.counts.data(), leaving.counts.data(), totals.counts.size());
    ReplaceRows(totals.sums.data(), entering.sums.data(), leaving.sums.data(), totals.sums.size());
}

/// Writes the columns beyond the ends of a row: those of the other end, or 0.
///
/// @param padded @p radius columns, then @p cols of the row, then @p radius + 1 more
template <class E>
void FillEnds(E * padded, int cols, int radius, bool wrapColumns)
{
    E * const row = padded + radius;
    for (int x = -radius; x < 0; ++x)
    {
        row[x] = wrapColumns ? row[cols - 1 - (-1 - x) % cols] : E{0};
    }
    for (int x = cols; x <= cols + radius; ++x)
    {
        row[x] = wrapColumns ? row[x % cols] : E{0};
    }
}

/// The coordinates of a row and their products, each in a row of its own.
template <class T>
void LoadTerms(
    T const * __restrict x, T const * __restrict y, T const * __restrict z, double * __restrict terms,
    std::ptrdiff_t stride, int length)
{
    for (int i = 0; i < length; ++i)
    {
        double const px = x[i];
        double const py = y[i];
        double const pz = z[i];
        terms[i] = px;
        terms[i + stride] = py;
        terms[i + 2 * stride] = pz;
        terms[i + 3 * stride] = px * px;
        terms[i + 4 * stride] = py * py;
        terms[i + 5 * stride] = pz * pz;
        terms[i + 6 * stride] = px * py;
        terms[i + 7 * stride] = py * pz;
        terms[i + 8 * stride] = px * pz;
    }
}

/// Running sums along several rows side by side: the element that enters is added, then the one that leaves subtracted.
///
/// @param padded the rows, each with its ends
/// @param sums for each column
template <std::size_t kRows, class E>
void SumAlong(
    E const * __restrict padded, std::ptrdiff_t paddedStride, E * __restrict sums, std::ptrdiff_t sumStride, int length,
    int windowWidth)
{
    std::array<E, kRows> running{};
    for (int x = 0; x < windowWidth; ++x)
    {
        for (std::size_t k = 0; k < kRows; ++k)
        {
            running[k] += padded[static_cast<std::ptrdiff_t>(k) * paddedStride + x];
        }
    }
    for (int x = 0; x < length; ++x)
    {
        for (std::size_t k = 0; k < kRows; ++k)
        {
            E const * const row = padded + static_cast<std::ptrdiff_t>(k) * paddedStride + x;
            sums[static_cast<std::ptrdiff_t>(k) * sumStride + x] = running[k];
            running[k] += row[windowWidth];
            running[k] -= row[0];
        }
    }
}

} // namespace

template <class T>
SlidingSums<T>::SlidingSums(Cloud const & cloud, int radius, bool wrapColumns)
    : m_cloud(cloud)
    , m_cols(cloud.x.cols)
    , m_radius(radius)
    , m_wrapColumns(wrapColumns)
    , m_entering(radius + 1)
    , m_writeIndex(static_cast<std::size_t>(2 * radius + 1))
{
    auto const cols = static_cast<std::size_t>(m_cols);
    std::size_t const padded = cols + static_cast<std::size_t>(2 * radius + 1);
    m_totals = {std::vector<unsigned>(cols), std::vector<double>(WindowTotals::kSums * cols)};
    m_ring.assign(m_writeIndex + 1, m_totals);
    m_points.resize(padded);
    m_terms.resize(WindowTotals::kSums * padded);
    for (std::size_t i = 0; i < m_writeIndex; ++i)
    {
        int const row = std::abs(static_cast<int>(i) - radius);
        // An image that ends inside the window has no more to give.
        if (row >= cloud.x.rows) continue;
        SumRow(row, m_ring[i]);
        Combine(m_totals, m_ring[i], std::plus<>());
    }
}

template <class T>
void SlidingSums<T>::Advance()
{
    if (m_entering < m_cloud.x.rows)
    {
        SumRow(m_entering, m_ring[m_writeIndex]);
        Replace(m_totals, m_ring[m_writeIndex], m_ring[m_readIndex]);
        m_writeIndex = Next(m_writeIndex);
        ++m_entering;
    }
    else
    {
        Combine(m_totals, m_ring[m_readIndex], std::minus<>());
    }
    m_readIndex = Next(m_readIndex);
}

template <class T>
void SlidingSums<T>::LoadRow(int row)
{
    std::size_t const padded = m_points.size();
    uchar const * const validity = m_cloud.validity.ptr(row);
    std::copy(validity, validity + m_cols, m_points.begin() + m_radius);
    FillEnds(m_points.data(), m_cols, m_radius, m_wrapColumns);
    LoadTerms(
        m_cloud.x.ptr<T>(row), m_cloud.y.ptr<T>(row), m_cloud.z.ptr<T>(row), m_terms.data() + m_radius,
        static_cast<std::ptrdiff_t>(padded), m_cols);
    for (std::size_t k = 0; k < WindowTotals::kSums; ++k)
    {
        FillEnds(m_terms.data() + k * padded, m_cols, m_radius, m_wrapColumns);
    }
}

template <class T>
void SlidingSums<T>::SumRow(int row, WindowTotals & sums)
{
    LoadRow(row);
    int const windowWidth = 2 * m_radius + 1;
    auto const stride = static_cast<std::ptrdiff_t>(m_points.size());
    SumAlong<1>(m_points.data(), stride, sums.counts.data(), m_cols, m_cols, windowWidth);
    SumAlong<WindowTotals::kSums>(m_terms.data(), stride, sums.sums.data(), m_cols, m_cols, windowWidth);
}

template class SlidingSums<float>;
template class SlidingSums<double>;

} // namespace morvane::normal_internals
