/// @file
/// Tidying the label image of a watershed: gaps between zones, and labels for its lines.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::algorithm
{

/// Empties each pixel that is not equal to its four axis neighbours: zones that touch are parted, thin ones disappear.
///
/// | array    | shape       | depths                                          | channels | values |
/// |----------|-------------|-------------------------------------------------|----------|--------|
/// | `labels` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | any; out: as they were, or 0. A NaN differs from itself |
///
/// Each pixel is compared with its neighbours as they were before the call. The first and the last row and column stay.
///
/// @param labels in and out
/// @return true when it was done, also with fewer than 3 rows or columns, where nothing changes. False, with `labels`
///         untouched, for several channels, a refused depth or more than two dimensions.
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(pixels), at memory bandwidth; two rows of memory. One thread.
///
/// @code
/// bool const done = morvane::algorithm::Erode3x3Segmentation(labels);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool Erode3x3Segmentation(cv::Mat & labels);

/// Gives each pixel without a label the one of the neighbour that is most like it in a second image.
///
/// | array       | shape       | depths                                          | channels | values |
/// |-------------|-------------|-------------------------------------------------|----------|--------|
/// | `luminance` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | any    |
/// | `labels`    | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`           | 1; of several, the first `cols` elements of each row are meant | in: 0 or below has no label; out: labels |
///
/// Inner pixels are taken in raster order, and see the labels that were given before. A neighbour counts when its label
/// is not 0 (-1, a line of the watershed, counts) and its luminance differs by less than 255; at equal differences the
/// first of upper left, lower left, left, above, below, upper right, lower right, right. Without one the pixel stays.
/// Last, the second row and the last but one are copied to the first and the last, then the columns in the same way.
///
/// @param luminance see the table; a NaN is like nothing
/// @param labels in and out
/// @return true when it was done, also with fewer than 3 rows or columns, where nothing changes. False, with `labels`
///         untouched, when `luminance` has several channels, a depth is refused, the sizes differ, or a matrix has more
///         than two dimensions.
///
/// Cost: O(pixels), and the neighbours of those without a label. One thread. The arguments must not overlap.
///
/// @code
/// cv::watershed(colour, labels);
/// bool const done = morvane::algorithm::FillWS3x3WithLum(grey, labels);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool FillWS3x3WithLum(cv::Mat const & luminance, cv::Mat & labels);

} // namespace morvane::algorithm
