/// @file
/// Regional maxima and minima: flat zones that no neighbour exceeds.
///
/// A regional maximum is a flat zone (linked pixels of equal value) none of whose outer neighbours is higher; a regional
/// minimum has none lower. A pixel of value 0 is a value like the others. What lies outside the image is no neighbour: a
/// plateau on the border is judged by its inner neighbours alone, and a constant image is one extremum, a maximum as
/// well as a minimum. A NaN is equal to nothing and compares with nothing: beside any neighbour it is no extremum, and it
/// keeps each of its neighbours from being one.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

#include <map>
#include <vector>

namespace morvane::connexity
{

/// Labels the regional maxima of an image.
///
/// | array    | shape                             | depths                                  | channels | values |
/// |----------|-----------------------------------|-----------------------------------------|----------|--------|
/// | `image`  | rows x cols                       | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | any |
/// | `labels` | rows x cols, made by the caller   | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`   | 1        | 0 outside the maxima, which count from 1 in raster order of their first pixels |
///
/// Labels wrap at the limit of their type, `CV_16S` as the bits of `CV_16U`: in `CV_8U`, the 256th maximum gets label 0
/// and vanishes. In a label image of more channels, the first `cols` elements of each row are labels and the others 0.
///
/// @param image see the table
/// @param connexity the neighbourhood; a value outside the enumeration has no neighbours, so that each pixel is a
///        maximum
/// @param labels overwritten whole, never reallocated
/// @return true when the labels were written; false, with `labels` untouched, when `image` has more than one channel, the
///         sizes differ, a depth is refused, or a matrix has more than two dimensions
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(pixels) time, 4 bits and one for each neighbour, for each pixel, and 6 bytes for
/// each run of pixels. One thread. `image` and
/// `labels` may be the same matrix.
///
/// Source: the definition by flat zones of S. Beucher and F. Meyer, "The morphological approach to segmentation", 1993.
///
/// @code
/// cv::Mat peaks(heights.size(), CV_32SC1);
/// bool const done = morvane::connexity::LabelMaxima(heights, morvane::connexity::eConnexity8, peaks);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool
LabelMaxima(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels);

/// Labels the regional minima of an image: LabelMaxima() with "lower" in place of "higher".
///
/// @param image, connexity, labels as for LabelMaxima()
/// @return as LabelMaxima()
/// @throws std::bad_alloc when memory runs out
[[nodiscard]] MORVANE_EXPORT bool
LabelMinima(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels);

/// Lists the pixels of each regional maximum.
///
/// @param image as for the other form
/// @param connexity as for the other form
/// @param points cleared first, also by a call that is refused; then under each label, from 1, the pixels of that maximum
///        in the order of a breadth-first flood from its first pixel in raster order
/// @return true when the points were listed; false when `image` has more than one channel or dimensions than two, or its
///         depth is refused
/// @throws std::bad_alloc when memory runs out
///
/// Cost: as for the other form, and 4 bytes for each pixel.
[[nodiscard]] MORVANE_EXPORT bool LabelMaxima(
    cv::Mat const & image, eConnexityType const & connexity, std::map<int, std::vector<cv::Point_<int>>> & points);

/// Lists the pixels of each regional minimum: LabelMaxima() with "lower" in place of "higher".
///
/// @param image, connexity, points as for LabelMaxima()
/// @return as LabelMaxima()
/// @throws std::bad_alloc when memory runs out
[[nodiscard]] MORVANE_EXPORT bool LabelMinima(
    cv::Mat const & image, eConnexityType const & connexity, std::map<int, std::vector<cv::Point_<int>>> & points);

} // namespace morvane::connexity
