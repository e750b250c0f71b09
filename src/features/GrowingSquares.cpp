#include "features/GrowingSquares.h"

#include "common/Dispatch.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <concepts>

namespace morvane::features
{

namespace
{

struct Greater
{
    template <class T>
    T operator()(T one, T other) const
    {
        return std::max(one, other);
    }
};

struct Smaller
{
    template <class T>
    T operator()(T one, T other) const
    {
        return std::min(one, other);
    }
};

template <class T, class Select>
void SelectRow(T const * one, T const * other, T * out, int columns, Select select)
{
    for (int x = 0; x < columns; ++x)
    {
        out[x] = select(one[x], other[x]);
    }
}

/// The greatest, or smallest, of each column over the rows within a radius.
///
/// Rows are taken in blocks as high as the window. A window is the end of one block and the start of the next; what these
/// hold is known from one pass down and one pass up each block.
template <class T, class Select>
void SelectInColumns(cv::Mat const & src, cv::Mat & dst, int radius, Select select)
{
    int const rows = src.rows;
    int const columns = src.cols;
    int const block = 2 * radius + 1;
    cv::Mat fromStart = src.clone();
    cv::Mat toEnd = src.clone();
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

template <class Select>
void SelectInSquares(cv::Mat const & src, cv::Mat & dst, int radius, Select select)
{
    common::VisitElement(src, [&]<class T> {
        if constexpr (std::integral<T>)
        {
            cv::Mat columns;
            SelectInColumns<T>(src, columns, radius, select);
            cv::Mat turned;
            cv::transpose(columns, turned);
            SelectInColumns<T>(turned, columns, radius, select);
            cv::transpose(columns, dst);
        }
        return true;
    });
}

/// One of OpenCV's two filters by a square of 3 pixels.
cv::Mat Filtered(cv::Mat const & image, int operation)
{
    cv::Mat const square = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3));
    cv::Mat filtered;
    cv::morphologyEx(
        image, filtered, operation, square, cv::Point(-1, -1), 1, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED,
        cv::morphologyDefaultBorderValue());
    return filtered;
}

} // namespace

GrowingSquares::GrowingSquares(cv::Mat const & image)
    : m_eroded(image)
    , m_dilated(image)
{}

bool GrowingSquares::AreExact() const
{
    int const depth = m_eroded.depth();
    return depth == CV_8U || depth == CV_16U || depth == CV_16S;
}

void GrowingSquares::ErodeAndDilate(cv::Mat & eroded, cv::Mat & dilated)
{
    m_eroded = Filtered(m_eroded, cv::MORPH_ERODE);
    m_dilated = Filtered(m_dilated, cv::MORPH_DILATE);
    eroded = m_eroded;
    dilated = m_dilated;
}

void GrowingSquares::Open(int operation, cv::Mat & dst)
{
    ++m_radius;
    if (operation == cv::MORPH_OPEN)
    {
        m_eroded = Filtered(m_eroded, cv::MORPH_ERODE);
        SelectInSquares(m_eroded, dst, m_radius, Greater());
    }
    else
    {
        m_dilated = Filtered(m_dilated, cv::MORPH_DILATE);
        SelectInSquares(m_dilated, dst, m_radius, Smaller());
    }
}

} // namespace morvane::features
