#include <morvane/algorithm/WatershedSegmentation.h>

#include "common/Dispatch.h"

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

namespace morvane::algorithm
{

namespace
{

bool HasInterior(cv::Mat const & image)
{
    return image.rows >= 3 && image.cols >= 3;
}

/// Empties the inner pixels of a row that differ from a neighbour.
///
/// @param before the rows above and of the pixels as they were
/// @param below the row below
template <class T>
void EraseBorders(T const * above, T const * before, T const * below, int columns, T * row)
{
    for (int x = 1; x < columns - 1; ++x)
    {
        T const value = before[x];
        // Without a shortcut, so that it compiles to vector code.
        bool const isInner =
            (above[x] == value) & (below[x] == value) & (before[x - 1] == value) & (before[x + 1] == value);
        row[x] = isInner ? value : T{0};
    }
}

template <class T>
bool EraseBordersOf(cv::Mat & labels)
{
    int const columns = labels.cols;
    // Two rows as they were, instead of the whole image.
    std::vector<T> above(labels.ptr<T>(0), labels.ptr<T>(0) + columns);
    std::vector<T> before(above.size());
    for (int y = 1; y < labels.rows - 1; ++y)
    {
        T * const row = labels.ptr<T>(y);
        std::copy_n(row, columns, before.begin());
        EraseBorders(above.data(), before.data(), labels.ptr<T>(y + 1), columns, row);
        above.swap(before);
    }
    return true;
}

/// How much two values differ, exactly.
template <class T>
auto DistanceOf(T one, T other)
{
    if constexpr (std::floating_point<T>)
    {
        return std::abs(one - other);
    }
    else
    {
        return std::abs(std::int64_t{one} - std::int64_t{other});
    }
}

struct Step
{
    int dx;
    int dy;
};

/// Of neighbours that differ as much, the first of these wins.
constexpr Step kNeighbours[] = {{-1, -1}, {-1, 1}, {-1, 0}, {0, -1}, {0, 1}, {1, -1}, {1, 1}, {1, 0}};

/// Gives a pixel the label of that of its neighbours that is most like it.
template <class T, class Label>
void TakeLabel(cv::Mat const & luminance, cv::Mat & labels, cv::Point const & pixel)
{
    T const value = luminance.ptr<T>(pixel.y)[pixel.x];
    Label & label = labels.ptr<Label>(pixel.y)[pixel.x];
    // The same for all types: where values reach further, a difference of 255 or more never wins.
    decltype(DistanceOf(value, value)) best = 255;
    for (Step const & step : kNeighbours)
    {
        cv::Point const neighbour(pixel.x + step.dx, pixel.y + step.dy);
        Label const candidate = labels.ptr<Label>(neighbour.y)[neighbour.x];
        if (candidate == 0) continue;
        auto const distance = DistanceOf(luminance.ptr<T>(neighbour.y)[neighbour.x], value);
        if (distance < best)
        {
            label = candidate;
            best = distance;
        }
    }
}

/// The outermost rows, then columns, become copies of those beside them.
template <class Label>
void CopyToFrame(cv::Mat & labels)
{
    int const lastRow = labels.rows - 1;
    int const lastColumn = labels.cols - 1;
    std::copy_n(labels.ptr<Label>(1), labels.cols, labels.ptr<Label>(0));
    std::copy_n(labels.ptr<Label>(lastRow - 1), labels.cols, labels.ptr<Label>(lastRow));
    for (int y = 0; y <= lastRow; ++y)
    {
        auto * const row = labels.ptr<Label>(y);
        row[0] = row[1];
        row[lastColumn] = row[lastColumn - 1];
    }
}

template <class T, class Label>
bool LabelLines(cv::Mat const & luminance, cv::Mat & labels)
{
    if (!HasInterior(labels)) return true;
    for (int y = 1; y < labels.rows - 1; ++y)
    {
        auto const * const row = labels.ptr<Label>(y);
        for (int x = 1; x < labels.cols - 1; ++x)
        {
            if (row[x] <= 0) TakeLabel<T, Label>(luminance, labels, {x, y});
        }
    }
    CopyToFrame<Label>(labels);
    return true;
}

} // namespace

bool Erode3x3Segmentation(cv::Mat & labels)
{
    if (!common::IsRaster(labels) || !common::IsSingleChannel(labels)) return false;
    return common::VisitElement(labels, [&]<class T> { return !HasInterior(labels) || EraseBordersOf<T>(labels); });
}

bool FillWS3x3WithLum(cv::Mat const & luminance, cv::Mat & labels)
{
    if (!common::IsSingleChannel(luminance) || !common::SameSize(luminance, labels)) return false;
    return common::VisitElement(luminance, [&]<class T> {
        return common::VisitSignedLabel(labels, [&]<class Label> { return LabelLines<T, Label>(luminance, labels); });
    });
}

} // namespace morvane::algorithm
