/// @file
/// Scalar images made visible: grey and false-colour maps, colours for labels, and tables written back on labels.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::visual
{

/// Stretches the values of an image linearly over 8-bit grey.
///
/// The range runs from `lo` to `hi`, the extremes of the image. A pixel becomes `(value - lo) * (255 / (hi - lo))`, computed
/// in double and truncated; below 0 it becomes 0, from 255 on 255. An image with one value becomes all 0.
///
/// | array    | shape       | depths                                                     | channels | values |
/// |----------|-------------|------------------------------------------------------------|----------|--------|
/// | `image`  | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F`  | 1        | any; NaN is not expected and becomes 0 |
/// | `output` | rows x cols, made by the caller | `CV_8U`                                | 1        | 0 to 255 |
///
/// @param image the image; empty (0 rows or columns) is true and does nothing
/// @param output overwritten whole, never reallocated; must not overlap `image`, except that a `CV_8UC1` image may be mapped
///        onto itself
/// @return true when the output was written; false, with it untouched, when the depth or the number of channels is
///         refused, or the output has another size or type
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(pixels), without memory of note. One thread.
[[nodiscard]] MORVANE_EXPORT bool GrayMap(cv::Mat const & image, cv::Mat & output);

/// GrayMap() over a part of the range.
///
/// @param image as for GrayMap()
/// @param output as for GrayMap()
/// @param minimum where @p clip is true and this is above the least value of the image, the range starts here
/// @param maximum where @p clip is true and this is below the greatest value of the image, the range ends here
/// @param clip whether the two bounds are looked at
/// @return as for GrayMap()
///
/// @code
/// // Heights from 236 m to 400 m over the whole scale; what is higher is white.
/// bool const done = morvane::visual::GrayMap(heights, grey, 236.0, 400.0, true);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool
GrayMap(cv::Mat const & image, cv::Mat & output, double minimum, double maximum, bool clip);

/// GrayMap() with the range of the pixels that differ from 0, compared exactly.
///
/// Zero is special for the range alone: a zero pixel then goes through the formula like any other. With all other values
/// above 0 it lies below the range and becomes 0. An image of zeros becomes all 0.
///
/// @param image as for GrayMap()
/// @param output as for GrayMap()
/// @return as for GrayMap()
[[nodiscard]] MORVANE_EXPORT bool GrayMapNoZero(cv::Mat const & image, cv::Mat & output);

/// GrayMapNoZero() over a part of the range.
///
/// @param image as for GrayMap()
/// @param output as for GrayMap()
/// @param minimum where @p clip is true and this is above the least value that differs from 0, the range starts here
/// @param maximum where @p clip is true and this is below the greatest such value, the range ends here
/// @param clip whether the two bounds are looked at
/// @return as for GrayMap()
[[nodiscard]] MORVANE_EXPORT bool
GrayMapNoZero(cv::Mat const & image, cv::Mat & output, double minimum, double maximum, bool clip);

/// Stretches the values of an image over a ramp from green over yellow to red.
///
/// As GrayMap() with 511 steps in place of 255; the truncated step is looked up in the ramp. What lies below the range is
/// black, what lies at its end or above is white: this marks what a range cuts off. The greatest pixel is
/// white as well, unless the product, by rounding, comes to just less than 511: it is then the last red of the ramp.
///
/// @param image as for GrayMap()
/// @param output `CV_8UC3` (blue, green, red), of the image's size; otherwise as for GrayMap()
/// @return as for GrayMap()
[[nodiscard]] MORVANE_EXPORT bool ColorMap(cv::Mat const & image, cv::Mat & output);

/// ColorMap() over a part of the range.
///
/// @param image as for GrayMap()
/// @param output as for ColorMap()
/// @param minimum where @p clip is true and this is above the least value of the image, the range starts here
/// @param maximum where @p clip is true and this is below the greatest value of the image, the range ends here
/// @param clip whether the two bounds are looked at
/// @return as for GrayMap()
[[nodiscard]] MORVANE_EXPORT bool
ColorMap(cv::Mat const & image, cv::Mat & output, double minimum, double maximum, bool clip);

/// Stretches the values of an image over a ramp from black over blue, cyan, green and yellow to red.
///
/// As ColorMap() with 1275 steps, and with the range of the pixels that differ from 0, see GrayMapNoZero().
///
/// @param image as for GrayMap()
/// @param output as for ColorMap()
/// @return as for GrayMap()
[[nodiscard]] MORVANE_EXPORT bool ColorMapNoZero(cv::Mat const & image, cv::Mat & output);

/// ColorMapNoZero() over a part of the range.
///
/// @param image as for GrayMap()
/// @param output as for ColorMap()
/// @param minimum as for GrayMapNoZero()
/// @param maximum as for GrayMapNoZero()
/// @param clip whether the two bounds are looked at
/// @return as for GrayMap()
[[nodiscard]] MORVANE_EXPORT bool
ColorMapNoZero(cv::Mat const & image, cv::Mat & output, double minimum, double maximum, bool clip);

/// Gives each label a random colour.
///
/// The colours are drawn from OpenCV's generator of the thread, `cv::theRNG()`: blue, green and red of label 1, of label 2,
/// and so on up to the largest label, each a draw modulo 255. They change from call to call as the generator goes on.
///
/// @param labels `CV_8U`, `CV_16U`, `CV_16S` or `CV_32S`, one channel
/// @param output `CV_8UC3` (blue, green, red) of the same size, made by the caller; 0 and negative labels become black
/// @return true when the output was written; false, with it untouched, when a type is refused or the sizes differ
/// @throws std::bad_alloc when memory runs out: a table of as many colours as the largest label is made
///
/// Cost: O(pixels + largest label). One thread.
[[nodiscard]] MORVANE_EXPORT bool ColorLabel(cv::Mat const & labels, cv::Mat & output);

/// Replaces each label by its entry in a table.
///
/// | array    | shape       | depths                                     | channels | values |
/// |----------|-------------|--------------------------------------------|----------|--------|
/// | `image`  | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`      | 1        | labels |
/// | `lut`    | N x 1       | the type of `output`                       | of `output` | entry L in row L |
/// | `output` | rows x cols, made by the caller | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 or 3 | entries |
///
/// @param image labels; those that are 0, negative, or have no row in the table give 0 in all channels
/// @param lut the table, as from connexity::ComputeMax()
/// @param output overwritten whole, never reallocated; may be the same matrix as `image`, or as `lut`
/// @return true when the output was written; false, with it untouched, when `image` has more than one channel, a type is
///         refused, the table has not exactly one column, the sizes differ, or the types of table and output differ
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(pixels + N) time, and memory for a copy of the table. One thread.
///
/// @code
/// cv::Mat const table = morvane::connexity::ComputeMax(labels, heights);
/// cv::Mat highest(labels.size(), table.type());
/// bool const done = morvane::visual::ApplyLut(labels, table, highest);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool ApplyLut(cv::Mat const & image, cv::Mat const & lut, cv::Mat & output);

} // namespace morvane::visual
