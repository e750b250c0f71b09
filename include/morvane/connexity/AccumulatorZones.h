/// @file
/// Accumulator zones: connected sets whose values sum to less than a budget.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace morvane::connexity
{

/// Splits an image into connected zones whose values sum to less than a budget, grown breadth first.
///
/// Each pixel that no zone has taken opens one, in raster order. Its value is added without a question, so that each
/// zone has at least one pixel. Then a neighbour joins when its value plus the sum so far is below the budget. What is
/// refused stays free: it may be asked again from another pixel of the zone, and opens a zone of its own later.
///
/// | array    | shape       | depths                                          | channels | values |
/// |----------|-------------|-------------------------------------------------|----------|--------|
/// | `image`  | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | any; where it is negative the sum falls, and a pixel that was refused may be taken |
/// | `labels` | rows x cols, made by the caller | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S` | 1; of several, the first `cols` elements of each row take the labels and the others 0 | zones from 1 in the order in which they are opened; wraps silently at the limit of the depth (16 bits wrap after 65535, `CV_16S` takes the bits) |
///
/// @param image see the table; NaN joins no zone
/// @param connexity the neighbourhood; a value outside the table of eConnexityType makes each pixel a zone
/// @param budget bound of the sums, exclusive. For integer depths cut to an `int` (what no `int` can hold, NaN
///        included, is the smallest), for `CV_32F` rounded to `float`. Sums are kept in `int`, where they wrap, `float`
///        or `double`.
/// @param labels see the table
/// @return true when `labels` was written. False, with `labels` untouched, when the sizes differ, the image has more
///         than one channel, a depth is refused, or a matrix has more than two dimensions.
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost: O(pixels and neighbours). About 8 bytes and one value for each pixel. One thread. The arguments must not
/// overlap.
///
/// @code
/// bool const done = morvane::connexity::LabelAccumulatorZones(rain, eConnexity8, 1000.0, labels);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool
LabelAccumulatorZones(cv::Mat const & image, eConnexityType const & connexity, double budget, cv::Mat & labels);

/// Splits an image into connected zones whose values sum to less than a budget, grown from the lowest pixel to the
/// next.
///
/// As LabelAccumulatorZones(), except that of the pixels that have joined, the one with the lowest value is the next
/// whose neighbours are asked: the sum is spent in the valleys of the image. Pixels of one value leave the heap in the
/// order of `std::push_heap` and `std::pop_heap`, keyed on the value alone and pushed in the order of the offsets.
///
/// @param image as for LabelAccumulatorZones()
/// @param connexity as for LabelAccumulatorZones()
/// @param budget as for LabelAccumulatorZones()
/// @param labels as for LabelAccumulatorZones()
/// @return as LabelAccumulatorZones()
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost: O(pixels log(pixels of a zone)). Memory, threads, aliasing as for LabelAccumulatorZones().
[[nodiscard]] MORVANE_EXPORT bool
LabelPriorityAccumulatorZones(cv::Mat const & image, eConnexityType const & connexity, double budget, cv::Mat & labels);

} // namespace morvane::connexity
