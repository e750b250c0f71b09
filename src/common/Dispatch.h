/// @file
/// The road from an untyped cv::Mat to a typed leaf: one visitor for each run-time type.
///
/// A visitor calls its function object with the type (or number) as a template argument. What is outside the list gives
/// the refusal: the value-initialised result, `false` or an empty `cv::Mat`. An operator that answers otherwise says so
/// where it calls the visitor.
///
/// @code
/// return VisitElement(image, [&]<class T> {
///     return VisitChannels(image, [&]<int N> { return Leaf<T, N>(image, result); });
/// });
/// @endcode
#pragma once

#include <morvane/common/PixelTypes.h>

#include <opencv2/core.hpp>

namespace morvane::common
{

/// Tells whether all images are two-dimensional (or empty) with the rows and columns of the first.
template <class... Images>
[[nodiscard]] bool SameSize(cv::Mat const & first, Images const &... others)
{
    auto const matches = [&first](cv::Mat const & other) {
        return other.dims <= 2 && other.rows == first.rows && other.cols == first.cols;
    };
    return first.dims <= 2 && (matches(others) && ...);
}

/// Calls @p leaf with the element type of @p image.
template <class Leaf>
auto VisitElement(cv::Mat const & image, Leaf && leaf) -> decltype(leaf.template operator()<uchar>())
{
    switch (image.depth())
    {
    case CV_8U:
        return leaf.template operator()<uchar>();
    case CV_16U:
        return leaf.template operator()<ushort>();
    case CV_16S:
        return leaf.template operator()<short>();
    case CV_32S:
        return leaf.template operator()<int>();
    case CV_32F:
        return leaf.template operator()<float>();
    case CV_64F:
        return leaf.template operator()<double>();
    default:
        return {};
    }
}

/// Calls @p leaf with the label type of @p labels: `CV_16U` and `CV_16S` share one, whose bit pattern is stored.
template <class Leaf>
auto VisitLabel(cv::Mat const & labels, Leaf && leaf) -> decltype(leaf.template operator()<uchar>())
{
    switch (labels.depth())
    {
    case CV_8U:
        return leaf.template operator()<uchar>();
    case CV_16U:
    case CV_16S:
        return leaf.template operator()<ushort>();
    case CV_32S:
        return leaf.template operator()<int>();
    default:
        return {};
    }
}

/// Calls @p leaf with the channel count of @p image, 1 to 4.
template <class Leaf>
auto VisitChannels(cv::Mat const & image, Leaf && leaf) -> decltype(leaf.template operator()<1>())
{
    switch (image.channels())
    {
    case 1:
        return leaf.template operator()<1>();
    case 2:
        return leaf.template operator()<2>();
    case 3:
        return leaf.template operator()<3>();
    case 4:
        return leaf.template operator()<4>();
    default:
        return {};
    }
}

} // namespace morvane::common
