#include "features/GrowingSquares.h"

#include "common/Dispatch.h"
#include "common/Morphology.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

namespace morvane::features
{

namespace
{

struct Greater
{
    template <class T>
    static T Neutral()
    {
        return std::numeric_limits<T>::lowest();
    }

    template <class T>
    T operator()(T one, T other) const
    {
        return std::max(one, other);
    }
};

struct Smaller
{
    template <class T>
    static T Neutral()
    {
        return std::numeric_limits<T>::max();
    }

    template <class T>
    T operator()(T one, T other) const
    {
        return std::min(one, other);
    }
};

template <class T, class Select>
void SelectRow(T const * one, T const * other, T * out, int columns, Select select)
{
    // In place or apart: forwards, nothing is read after it was written.
    for (int x = 0; x < columns; ++x)
    {
        out[x] = select(one[x], other[x]);
    }
}

/// The greatest, or smallest, of each column over the rows within a radius.
///
/// Rows are taken in blocks as high as the window. A window is the end of one block and the start of the next; what these
/// hold is known from one pass down and one pass up each block.
///
/// @param fromStart memory for the one
/// @param toEnd memory for the other
template <class T, class Select>
void SelectInColumns(
    cv::Mat const & src, cv::Mat & dst, int radius, Select select, cv::Mat & fromStart, cv::Mat & toEnd)
{
    int const rows = src.rows;
    int const columns = src.cols;
    int const block = 2 * radius + 1;
    src.copyTo(fromStart);
    src.copyTo(toEnd);
    for (int y = 1; y < rows; ++y)
    {
        if (y % block == 0) continue;
        SelectRow(fromStart.ptr<T>(y - 1), src.ptr<T>(y), fromStart.ptr<T>(y), columns, select);
    }
    for (int y = rows - 2; y >= 0; --y)
    {
        if (y % block == block - 1) continue;
        SelectRow(toEnd.ptr<T>(y + 1), src.ptr<T>(y), toEnd.ptr<T>(y), columns, select);
    }
    dst.create(src.size(), src.type());
    for (int y = 0; y < rows; ++y)
    {
        int const first = std::max(y - radius, 0);
        int const last = std::min(y + radius, rows - 1);
        T * const out = dst.ptr<T>(y);
        if (first / block != last / block)
        {
            SelectRow(toEnd.ptr<T>(first), fromStart.ptr<T>(last), out, columns, select);
            continue;
        }
        // A window that the image cuts off, or a whole block: it begins, or ends, where the block does.
        cv::Mat const & whole = first % block == 0 ? fromStart : toEnd;
        std::copy_n(whole.ptr<T>(first % block == 0 ? last : first), columns, out);
    }
}

/// The same over the columns within a radius of each pixel of a row, in place.
///
/// Windows double until the next would be too wide; two of the last make the window.
///
/// @param neutral what is never selected, beyond the row
template <class T, class Select>
void SelectInRow(T * row, int columns, int radius, Select select, T neutral, std::array<std::vector<T>, 2> & memory)
{
    std::size_t const window = 2 * static_cast<std::size_t>(radius) + 1;
    std::size_t total = static_cast<std::size_t>(columns) + window - 1;
    for (std::vector<T> & buffer : memory)
    {
        buffer.resize(total);
    }
    T * selected = memory[0].data();
    T * next = memory[1].data();
    std::fill_n(selected, radius, neutral);
    std::copy_n(row, columns, selected + radius);
    std::fill_n(selected + radius + columns, radius, neutral);
    std::size_t width = 1;
    for (; 2 * width <= window; width *= 2)
    {
        total -= width;
        SelectRow(selected, selected + width, next, static_cast<int>(total), select);
        std::swap(selected, next);
    }
    SelectRow(selected, selected + (window - width), row, columns, select);
}

/// One of OpenCV's two filters by a square of 3 pixels, in place.
void Filter(cv::Mat & image, int operation, cv::Mat & memory)
{
    common::Filter(image, memory, operation, common::StructuringElement(cv::MORPH_RECT, 3));
    cv::swap(image, memory);
}

} // namespace

GrowingSquares::GrowingSquares(cv::Mat const & image)
    : m_eroded(image.clone())
    , m_dilated(m_eroded.clone())
{}

bool GrowingSquares::AreExact() const
{
    int const depth = m_eroded.depth();
    return depth == CV_8U || depth == CV_16U || depth == CV_16S;
}

void GrowingSquares::ErodeAndDilate()
{
    Filter(m_eroded, cv::MORPH_ERODE, m_memory);
    Filter(m_dilated, cv::MORPH_DILATE, m_memory);
}

void GrowingSquares::Open(int operation, cv::Mat & dst)
{
    ++m_radius;
    if (operation == cv::MORPH_OPEN)
    {
        Filter(m_eroded, cv::MORPH_ERODE, m_memory);
        SelectInSquares(m_eroded, dst, Greater());
    }
    else
    {
        Filter(m_dilated, cv::MORPH_DILATE, m_memory);
        SelectInSquares(m_dilated, dst, Smaller());
    }
}

template <class Select>
void GrowingSquares::SelectInSquares(cv::Mat const & src, cv::Mat & dst, Select select)
{
    common::VisitElement(src, [&]<class T> {
        if constexpr (std::integral<T>)
        {
            SelectInColumns<T>(src, dst, m_radius, select, m_fromStart, m_toEnd);
            std::array<std::vector<T>, 2> memory;
            for (int y = 0; y < dst.rows; ++y)
            {
                SelectInRow(dst.ptr<T>(y), dst.cols, m_radius, select, Select::template Neutral<T>(), memory);
            }
        }
        return true;
    });
}

} // namespace morvane::features
