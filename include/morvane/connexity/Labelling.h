/// @file
/// Operators that label the connected zones of an image.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace morvane::connexity
{

/// Gives each connected zone of measured pixels a label of its own.
///
/// A zone is a connected component of pixels that are not empty (see common::IsNonZeroPixel()), whatever their values.
/// Zones are numbered from 1 in the raster order of their first pixels; 0 means no zone.
///
/// | array    | shape         | depths                                             | channels | values |
/// |----------|---------------|----------------------------------------------------|----------|--------|
/// | `image`  | rows x cols   | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 to 4   | any; NaN counts
/// as empty | | `labels` | rows x cols, made by the caller | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S` | 1 | 0 or a label |
///
/// @param image the image; may be empty (0 rows or columns), may be a view with gaps between its rows
/// @param connexity the neighbourhood; with a value outside the table each measured pixel is a zone of its own. Wrapped
///        shapes join the first and the last column; on an image narrower than an offset, neighbours that are still
///        outside after one wrap are skipped.
/// @param labels overwritten whole, never reallocated. Its depth selects the label type. Numbering wraps silently at
/// the
///        limit of the type: in `CV_8U`, zone 256 gets 0 and zone 257 gets 1; `CV_16S` takes the bit pattern of the
///        unsigned number, so that label 40000 reads as -25536. Its channels are not checked: in a wider image every
///        element is zeroed and labels land in the first `cols` elements of each row.
/// @return true when the labels were written. False, with `labels` untouched, when the sizes differ, the image has a
///         refused depth, the labels have a refused depth, or the image has more than 4 channels, looked at in this
///         order; also for matrices of more than two dimensions.
/// @throws std::bad_alloc, std::length_error, cv::Exception when memory runs out; `labels` may then be partly written
///
/// Cost: O(pixels) time; at most 10 bytes per pixel of memory beside the images. One thread. `image` and `labels` must not
/// overlap.
///
/// @code
/// cv::Mat labels(depth.size(), CV_32SC1);
/// bool const done = morvane::connexity::Label(depth, morvane::connexity::eConnexity8, labels);
/// @endcode
///
/// Source: the zones are those of a raster scan with breadth-first floods (see ConnectedZoneScan); they are found by runs
/// and union-find after L. He, Y. Chao, K. Suzuki, "A run-based two-scan labeling algorithm", IEEE Transactions on Image
/// Processing 17(5), 2008, with the contacts between rows found in bit masks.
[[nodiscard]] MORVANE_EXPORT bool Label(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels);

} // namespace morvane::connexity
