/// @file
/// Affine transforms that never overwrite a measurement, and crops that drop thinly occupied margins.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

#include <vector>

namespace morvane::warping
{

/// Fills the empty pixels of an image from another one, seen through an affine map, by the nearest pixel.
///
/// The pixel (x, y) of `out` takes the pixel (sx, sy) of `source` if it is exactly 0 itself, where, in double precision
/// and in this order,
///
///     sx = floor((y + 0.5) * m01 + (x + 0.5) * m00 + m02),   sy = floor((y + 0.5) * m11 + (x + 0.5) * m10 + m12)
///
/// and mRC is the element of `matrix` in row R and column C. The matrix leads from `out` to `source` and is not
/// inverted: with one that `cv::warpAffine` would be given, an image turns the other way. Pixels that hold a value keep
/// it.
///
/// | array    | shape         | depths                                          | channels | values |
/// |----------|---------------|-------------------------------------------------|----------|--------|
/// | `source` | rows x cols   | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | any  |
/// | `out`    | any, or empty | the depth of `source`                           | 1        | filled where it was 0 |
/// | `matrix` | 2 x 3         | `CV_64F`                                        | 1        | above 1e298 in magnitude it leads nowhere |
///
/// @param source see the table
/// @param out see the table; if empty, it becomes zeros of the size and type of `source`. Pixels that the map leads
///        outside of `source`, or to places beyond the size of `out` itself, stay as they are.
/// @param matrix see the table
/// @return true when it was filled; false, with `out` untouched, for unequal or other depths, several channels, another
///         matrix, more than two dimensions
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels of `out` that the map leads into `source` + rows of `out`). One thread. `source` and `out` must not
/// overlap.
///
/// @code
/// cv::Mat turned = cv::Mat::zeros(scan.size(), scan.type());
/// bool const done = morvane::warping::Transform(scan, turned, cv::getRotationMatrix2D(centre, 30.0, 1.0));
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool Transform(cv::Mat const & source, cv::Mat & out, cv::Mat const & matrix);

/// Merges the bits of an image into another one, seen through an affine map, by the nearest pixel.
///
/// As Transform(), but every pixel (x, y) of `out` becomes `out(x, y) | source(sx, sy)`.
///
/// @param source `CV_8U`, `CV_16U` or `CV_32S`; otherwise as for Transform()
/// @param out as for Transform()
/// @param matrix as for Transform()
/// @return as Transform()
/// @throws std::bad_alloc, cv::Exception when memory runs out
[[nodiscard]] MORVANE_EXPORT bool TransformBinary(cv::Mat const & source, cv::Mat & out, cv::Mat const & matrix);

/// Adds the values of an image up by columns and by rows.
///
/// Each value that is not 0 is cut towards zero to a 64-bit integer, of which the low 32 bits are added; sums wrap
/// around. What 64 bits cannot hold, NaN included, adds nothing.
///
/// @param image `CV_32FC1`
/// @param columns resized to the columns of `image`; sums that were there already are added to
/// @param rows resized to the rows of `image`; likewise
/// @return true when both have bins; false, with both untouched, for another type and more than two dimensions
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost: O(pixels). One thread.
[[nodiscard]] MORVANE_EXPORT bool CreateOccupancyHistogramFromImage(
    cv::Mat const & image, std::vector<unsigned int> & columns, std::vector<unsigned int> & rows);

/// Narrows a range of bins from both ends, the lighter end first, while what is left keeps a share of the weight.
///
/// Of equal ends, the first bin goes. An end stays that weighs as much as all that may go. At last the range is
/// widened, or else shifted or narrowed, by one bin so that `last` - `first` is odd.
///
/// @param histogram the bins; sums of them wrap around in 32 bits
/// @param ratio the share that stays, 0 to 1
/// @param first the first bin of the range
/// @param last its last bin; one less than `first` for a histogram of one bin
/// @return true when both were written; false, with both untouched, for another ratio and an empty histogram
///
/// Cost: O(bins). One thread.
[[nodiscard]] MORVANE_EXPORT bool
TruncateHistogram(std::vector<unsigned int> const & histogram, double const & ratio, int & first, int & last);

/// Cuts thinly occupied margins off an image.
///
/// Columns and rows are narrowed by TruncateHistogram(); the last ones of both ranges are left out.
///
/// @param occupancy `CV_32FC1`: how much each pixel weighs
/// @param image the image to cut, of the size of `occupancy`, any type
/// @param out replaced: the pixels that stay
/// @param ratio the share of weight that stays, 0 to 1
/// @param dx by how many columns the middle of the image has moved
/// @param dy by how many rows
/// @return true when all were written; false, with all untouched, for an `occupancy` of another type or without pixels,
///         a ratio out of range, and when less than a column or a row would be left
/// @throws cv::Exception when `image` is smaller than what stays; std::bad_alloc when memory runs out
///
/// Cost: O(pixels). One thread. `out` must not overlap the others.
///
/// @code
/// bool const done = morvane::warping::CropImage(occupancy, elevation, cropped, 0.98, dx, dy);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool
CropImage(cv::Mat const & occupancy, cv::Mat const & image, cv::Mat & out, double const & ratio, int & dx, int & dy);

} // namespace morvane::warping
