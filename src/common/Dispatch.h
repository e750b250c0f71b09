/// @file
/// The road from an untyped cv::Mat to a typed leaf: one visitor for each run-time type.
///
/// A visitor calls its function object with the type (or number) as a template argument. What is outside the list gives
/// the refusal: the value-initialised result, `false` or an empty `cv::Mat`. An operator that answers otherwise says so
/// where it calls the visitor, with a last argument.
///
/// @code
/// return VisitElement(image, [&]<class T> {
///     return VisitChannels(image, [&]<int N> { return Leaf<T, N>(image, result); });
/// });
/// @endcode
#pragma once

#include <morvane/common/PixelTypes.h>

#include <opencv2/core.hpp>

#include <type_traits>
#include <utility>

namespace morvane::common
{

/// Tells whether the matrix has at most two dimensions: an image, possibly empty.
[[nodiscard]] inline bool IsRaster(cv::Mat const & image)
{
    return image.dims <= 2;
}

/// Tells whether all are images with the rows and columns of the first.
template <class... Images>
[[nodiscard]] bool SameSize(cv::Mat const & first, Images const &... others)
{
    return IsRaster(first) && ((IsRaster(others) && others.rows == first.rows && others.cols == first.cols) && ...);
}

/// Tells whether the image has one channel; its depth is not looked at.
[[nodiscard]] inline bool IsSingleChannel(cv::Mat const & image)
{
    return image.channels() == 1;
}

/// Calls @p leaf with the element type of @p image.
template <class Leaf, class Result = decltype(std::declval<Leaf>().template operator()<uchar>())>
Result VisitElement(cv::Mat const & image, Leaf && leaf, std::type_identity_t<Result> refusal = {})
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
        return refusal;
    }
}

/// Calls @p leaf with the label type of @p labels: `CV_16U` and `CV_16S` share one, whose bit pattern is stored.
template <class Leaf, class Result = decltype(std::declval<Leaf>().template operator()<uchar>())>
Result VisitLabel(cv::Mat const & labels, Leaf && leaf, std::type_identity_t<Result> refusal = {})
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
        return refusal;
    }
}

/// Calls @p leaf with the element type of @p labels, to read labels with their sign: `CV_16S` as short.
template <class Leaf, class Result = decltype(std::declval<Leaf>().template operator()<uchar>())>
Result VisitSignedLabel(cv::Mat const & labels, Leaf && leaf, std::type_identity_t<Result> refusal = {})
{
    switch (labels.depth())
    {
    case CV_8U:
        return leaf.template operator()<uchar>();
    case CV_16U:
        return leaf.template operator()<ushort>();
    case CV_16S:
        return leaf.template operator()<short>();
    case CV_32S:
        return leaf.template operator()<int>();
    default:
        return refusal;
    }
}

/// Calls @p leaf with the channel count of @p image, 1 to 4.
template <class Leaf, class Result = decltype(std::declval<Leaf>().template operator()<1>())>
Result VisitChannels(cv::Mat const & image, Leaf && leaf, std::type_identity_t<Result> refusal = {})
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
        return refusal;
    }
}

} // namespace morvane::common
