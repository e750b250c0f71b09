/// @file
/// Measures of zones: tables with one row for each label, and images in which each pixel carries a measure of its zone.
///
/// A table has N rows and one column, N being the largest label plus one, and is indexed by label. Row 0 belongs to no zone
/// and keeps the start value, as do labels that the image does not hold. visual::ApplyLut() writes a table back on labels.
///
/// All tables share the contract of ComputeArea() for their label image:
///
/// - `labels`: one channel of depth `CV_8U`, `CV_16U`, `CV_16S` or `CV_32S`; label 0 is passed over, and so are negative
///   labels.
/// - N is computed in the type of the labels and wraps as that does: with a `CV_8U` image that holds 255, or a `CV_16U` image
///   that holds 65535, the table has no row, which counts as failure. With the largest value of `CV_16S` or `CV_32S` it
///   would be negative, which `cv::Mat` refuses with an exception.
/// - `values`: one or three channels of the six accepted depths, of the size of `labels`. Where it has another size, pixel
///   n of `labels` in raster order meets pixel n of `values`, as far as both go.
/// - The table is `CV_32S` for integer values, `CV_32F` for float, `CV_64F` for double, with the channels of `values`, each
///   of which is measured on its own.
/// - A refusal is an empty matrix.
///
/// Cost: O(pixels + labels) time; memory for a few tables, for a copy of the labels where they are not `CV_32S` or hold
/// negative ones, and for copies of images whose sizes differ. One thread. Arguments may be the same matrix.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace morvane::connexity
{

/// The number of pixels of each zone.
///
/// @param labels see the head of this file
/// @return `CV_32SC1`, N x 1, start value 0; empty when `labels` has a refused type or more than one channel
/// @throws cv::Exception, std::bad_alloc when N is negative or memory runs out
///
/// @code
/// cv::Mat const areas = morvane::connexity::ComputeArea(labels);
/// int const areaOfZone3 = areas.at<int>(3);
/// @endcode
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeArea(cv::Mat const & labels);

/// The sum of the values of each zone, start value 0.
///
/// `int` sums wrap. Floating-point sums add the pixels of a zone in raster order.
///
/// @param labels see the head of this file
/// @param values what is summed
/// @return a table of the type that belongs to `values`; empty when a type is refused
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeAccumulation(cv::Mat const & labels, cv::Mat const & values);

/// The sum of the squares of the values of each zone, start value 0.
///
/// Each square is computed in the element type of the values and cut to it before it is added: on `CV_8U`, 16 squared adds
/// 0. For exact squares, convert the values to float first.
///
/// @param labels see the head of this file
/// @param values what is squared
/// @return a table of the type that belongs to `values`; empty when a type is refused
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeSQAccumulation(cv::Mat const & labels, cv::Mat const & values);

/// The sum of the products of two values at each pixel of a zone, start value 0.
///
/// Each product is cut to the element type of the values, as in ComputeSQAccumulation().
///
/// @param labels see the head of this file
/// @param values1 one factor
/// @param values2 the other, of the same type
/// @return a table of the type that belongs to the values; empty when a type is refused or the two differ
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat
ComputeProductAccumulation(cv::Mat const & labels, cv::Mat const & values1, cv::Mat const & values2);

/// The largest value of each zone, start value -2147483647, which is rounded in float tables.
///
/// Each value replaces the entry unless the entry is greater: a NaN does, and the value after a NaN does.
///
/// @param labels see the head of this file
/// @param values what is compared
/// @return a table of the type that belongs to `values`; empty when a type is refused
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeMax(cv::Mat const & labels, cv::Mat const & values);

/// The smallest value of each zone, start value 2147483647; otherwise as ComputeMax().
///
/// @param labels see the head of this file
/// @param values what is compared
/// @return a table of the type that belongs to `values`; empty when a type is refused
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeMin(cv::Mat const & labels, cv::Mat const & values);

/// The sum of the row indices of each zone, start value 0, wrapping.
///
/// @param labels see the head of this file
/// @return `CV_32SC1`, N x 1; empty when `labels` has a refused type or more than one channel
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeRowAcc(cv::Mat const & labels);

/// The sum of the column indices of each zone, start value 0, wrapping.
///
/// @param labels see the head of this file
/// @return `CV_32SC1`, N x 1; empty when `labels` has a refused type or more than one channel
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeColAcc(cv::Mat const & labels);

/// The largest row index of each zone, start value -2147483647.
///
/// @param labels see the head of this file
/// @return `CV_32SC1`, N x 1; empty when `labels` has a refused type or more than one channel
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeRowMax(cv::Mat const & labels);

/// The smallest row index of each zone, start value 2147483647.
///
/// @param labels see the head of this file
/// @return `CV_32SC1`, N x 1; empty when `labels` has a refused type or more than one channel
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeRowMin(cv::Mat const & labels);

/// The largest column index of each zone, start value -2147483647.
///
/// @param labels see the head of this file
/// @return `CV_32SC1`, N x 1; empty when `labels` has a refused type or more than one channel
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeColMax(cv::Mat const & labels);

/// The smallest column index of each zone, start value 2147483647.
///
/// @param labels see the head of this file
/// @return `CV_32SC1`, N x 1; empty when `labels` has a refused type or more than one channel
/// @throws as ComputeArea()
[[nodiscard]] MORVANE_EXPORT cv::Mat ComputeColMin(cv::Mat const & labels);

/// An image in which each measured pixel carries the number of pixels of its flat zone.
///
/// @param image one channel, any accepted depth; flat zones as in LabelFlatZonesNoZero()
/// @param connexity the neighbourhood
/// @return `CV_32SC1` of the image's size, 0 at empty pixels; empty when the type of the image is refused
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels). One thread.
[[nodiscard]] MORVANE_EXPORT cv::Mat
LabelFlatZonesNoZeroWithArea(cv::Mat const & image, eConnexityType const & connexity);

/// An image in which each measured pixel carries the sum of other values over its flat zone.
///
/// Integer sums wrap in `int`. Floating-point sums add the pixels of a zone in the order of the walk, breadth first from
/// its first pixel; a NaN makes the sum NaN.
///
/// @param image one channel, any accepted depth; it alone makes the zones
/// @param values one channel, any accepted depth, of the same size
/// @param connexity the neighbourhood
/// @return an image of `CV_32S` for integer values, `CV_32F` for float, `CV_64F` for double; 0 at empty pixels; empty when
///         the image has more than one channel, the sizes differ, or a type is refused
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels). One thread.
[[nodiscard]] MORVANE_EXPORT cv::Mat
LabelFlatZonesNoZeroWithAccumulation(cv::Mat const & image, cv::Mat const & values, eConnexityType const & connexity);

/// An image in which each measured pixel carries the largest of other values over its flat zone.
///
/// @param image 1 to 4 channels, any accepted depth; it alone makes the zones
/// @param values as for ComputeMax()
/// @param connexity the neighbourhood
/// @return an image of the type of the table that ComputeMax() gives, 0 at empty pixels; empty when a type is refused
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels). One thread.
[[nodiscard]] MORVANE_EXPORT cv::Mat
LabelFlatZonesNoZeroWithMax(cv::Mat const & image, cv::Mat const & values, eConnexityType const & connexity);

/// As LabelFlatZonesNoZeroWithMax(), with the smallest value.
///
/// @copydetails LabelFlatZonesNoZeroWithMax
[[nodiscard]] MORVANE_EXPORT cv::Mat
LabelFlatZonesNoZeroWithMin(cv::Mat const & image, cv::Mat const & values, eConnexityType const & connexity);

} // namespace morvane::connexity
