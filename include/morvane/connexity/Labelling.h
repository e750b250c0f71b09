/// @file
/// Operators that label or count the connected zones of an image.
///
/// - A zone is a connected component of measured pixels, whatever their values: Label(), CountZones().
/// - A flat zone is a connected component of equal values. Zero is a value like any other, so that every pixel of the
///   image belongs to one: LabelFlatZones(), CountFlatZones(). NaN equals nothing and is a zone of its own.
/// - A delta flat zone is a connected component in which each step between neighbours is bounded by a delta, neighbour
///   against neighbour, never against the seed: a slow ramp is one zone. LabelDeltaFlatZones().
/// - `NoZero`: empty pixels (see common::IsNonZeroPixel()) belong to no zone and separate zones.
///
/// All operators share the contract of Label() in what they accept, write and cost; each says where it differs.
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
/// | array    | shape       | depths                                                    | channels | values              |
/// |----------|-------------|-----------------------------------------------------------|----------|---------------------|
/// | `image`  | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 to 4   | any; NaN is empty   |
/// | `labels` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`; the caller's       | 1        | 0 or a zone's label |
///
/// @param image the image; may be empty (0 rows or columns), may be a view with gaps between its rows
/// @param connexity the neighbourhood; with a value outside the table each measured pixel is a zone of its own. Wrapped
///        shapes join the first and the last column; on an image narrower than an offset, neighbours that are still
///        outside after one wrap are skipped.
/// @param labels overwritten whole, never reallocated. Its depth selects the label type. Numbering wraps silently at
///        the limit of the type: in `CV_8U`, zone 256 gets 0 and zone 257 gets 1; `CV_16S` takes the bit pattern of
///        the unsigned number, so that label 40000 reads as -25536. Its channels are not checked: in a wider image
///        every element is zeroed and labels land in the first `cols` elements of each row.
/// @return true when the labels were written. False, with `labels` untouched, when the sizes differ, the image has a
///         refused depth, the labels have a refused depth, or the image has more than 4 channels, looked at in this
///         order; also for matrices of more than two dimensions.
/// @throws std::bad_alloc, std::length_error, cv::Exception when memory runs out; `labels` may then be partly written
///
/// Cost: O(pixels) time; at most 10 bytes per pixel of memory beside the images. One thread. `image` and `labels` must
/// not overlap.
///
/// @code
/// cv::Mat labels(depth.size(), CV_32SC1);
/// bool const done = morvane::connexity::Label(depth, morvane::connexity::eConnexity8, labels);
/// @endcode
///
/// Source: the zones are those of a raster scan with breadth-first floods (see ConnectedZoneScan); they are found by
/// runs and union-find after L. He, Y. Chao, K. Suzuki, "A run-based two-scan labeling algorithm", IEEE Transactions on
/// Image Processing 17(5), 2008, with the contacts between rows found in bit masks.
[[nodiscard]] MORVANE_EXPORT bool Label(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels);

/// Gives each flat zone, a connected component of equal values, a label of its own. Every pixel is labelled.
///
/// Arrays, answer, cost, threads and aliasing as for Label().
///
/// @param image the image, 1 to 4 channels; pixels of several channels are equal when all channels are
/// @param connexity the neighbourhood
/// @param labels overwritten whole, never reallocated
/// @return as for Label()
[[nodiscard]] MORVANE_EXPORT bool
LabelFlatZones(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels);

/// Gives each flat zone of measured pixels a label of its own. Empty pixels get 0 and separate zones.
///
/// Arrays, answer, cost, threads and aliasing as for Label().
///
/// @param image the image, 1 to 4 channels
/// @param connexity the neighbourhood
/// @param labels overwritten whole, never reallocated
/// @return as for Label()
[[nodiscard]] MORVANE_EXPORT bool
LabelFlatZonesNoZero(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels);

/// Gives each connected component of pixels that are equal in both images, and not empty in the first, a label.
///
/// Zones are found on the first image; the zero test looks at it alone, so that a pixel that is empty only in the
/// second takes part, with the value 0.
///
/// @param image the first image, one channel, any accepted depth
/// @param second the second image, one channel, any accepted depth, of the same size
/// @param connexity the neighbourhood
/// @param labels overwritten whole, never reallocated; otherwise as for Label()
/// @return true when the labels were written. False, with `labels` untouched, when an image has more than one channel,
///         the sizes differ, or the depth of the first, of the second or of the labels is refused, in this order; also
///         for matrices of more than two dimensions.
/// @throws as for Label()
///
/// Cost, threads and aliasing as for Label().
[[nodiscard]] MORVANE_EXPORT bool
LabelFlatZonesNoZero(cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, cv::Mat & labels);

/// Gives each delta flat zone a label of its own. Every pixel is labelled.
///
/// Neighbours belong together when their values differ by at most @p delta: see DeltaConnected for one channel,
/// DeltaConnected_MultiChannel, the Euclidean distance, for more.
///
/// Arrays, answer, cost, threads and aliasing as for Label().
///
/// @param image the image, 1 to 4 channels
/// @param connexity the neighbourhood
/// @param delta the bound, inclusive, in units of the image. For one channel of an integer type it is cut to an `int`
///        of which the low bits of the type are kept: on `CV_8U`, 2.9 is 2, 256.0 is 0, and -1.0 is 255, which joins
///        everything. A negative delta joins nothing on a floating-point image.
/// @param labels overwritten whole, never reallocated
/// @return as for Label()
///
/// @code
/// cv::Mat labels(elevation.size(), CV_32SC1);
/// bool const done = morvane::connexity::LabelDeltaFlatZones(elevation, morvane::connexity::eConnexity8, 0.05, labels);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool
LabelDeltaFlatZones(cv::Mat const & image, eConnexityType const & connexity, double delta, cv::Mat & labels);

/// Gives each connected component of pixels whose steps are bounded in both images a label of its own.
///
/// Zones are found on the first image; a step needs both conditions.
///
/// @param image the first image, 1 to 4 channels, any accepted depth
/// @param second the second image, of the same size and number of channels, any accepted depth
/// @param connexity the neighbourhood
/// @param delta1 the bound on the first image, as for the form with one image
/// @param delta2 the bound on the second image
/// @param labels overwritten whole, never reallocated; otherwise as for Label()
/// @return true when the labels were written. False, with `labels` untouched, when the sizes differ, the depth of the
///         first, of the second or of the labels is refused, the numbers of channels differ, or are more than 4, looked
///         at in this order; also for matrices of more than two dimensions.
/// @throws as for Label()
///
/// Cost, threads and aliasing as for Label().
[[nodiscard]] MORVANE_EXPORT bool LabelDeltaFlatZones(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    cv::Mat & labels);

/// LabelDeltaFlatZones() on measured pixels: empty ones get 0 and separate zones.
///
/// Arrays, answer, cost, threads and aliasing as for Label().
///
/// @param image the image, 1 to 4 channels
/// @param connexity the neighbourhood
/// @param delta as for LabelDeltaFlatZones()
/// @param labels overwritten whole, never reallocated
/// @return as for Label()
[[nodiscard]] MORVANE_EXPORT bool
LabelDeltaFlatZonesNoZero(cv::Mat const & image, eConnexityType const & connexity, double delta, cv::Mat & labels);

/// LabelDeltaFlatZones() of two images, on pixels that are not empty in the first.
///
/// @param image the first image, 1 to 4 channels, any accepted depth
/// @param second the second image, of the same size and number of channels, any accepted depth
/// @param connexity the neighbourhood
/// @param delta1 the bound on the first image
/// @param delta2 the bound on the second image
/// @param labels overwritten whole, never reallocated; otherwise as for Label()
/// @return true when the labels were written, and **also true, with `labels` untouched, when the depth of the labels is
///         refused or the images have more than 4 channels**. False, with `labels` untouched, when the sizes differ,
///         the depth of the first or of the second image is refused, or the numbers of channels differ, and for
///         matrices of more than two dimensions. The depth of the labels is looked at before the channels.
/// @throws as for Label()
///
/// Cost, threads and aliasing as for Label().
[[nodiscard]] MORVANE_EXPORT bool LabelDeltaFlatZonesNoZero(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    cv::Mat & labels);

/// LabelDeltaFlatZones() of two images for zones of more than @p area pixels.
///
/// Other zones get 0 and consume no label, so that labels stay dense from 1.
///
/// @param image the first image, 1 to 4 channels, any accepted depth
/// @param second the second image, of the same size and number of channels, any accepted depth
/// @param connexity the neighbourhood
/// @param delta1 the bound on the first image
/// @param delta2 the bound on the second image
/// @param area a zone is kept when it has more pixels; 0 keeps all, a negative number drops all
/// @param labels overwritten whole, never reallocated; otherwise as for Label()
/// @return as for LabelDeltaFlatZonesNoZero() of two images: **also true on a refused depth of the labels and on more
///         than 4 channels**, with `labels` untouched
/// @throws as for Label()
///
/// Cost, threads and aliasing as for Label(), and 4 more bytes for each run of pixels (8 from 4,294,967,295 pixels on).
[[nodiscard]] MORVANE_EXPORT bool LabelDeltaFlatZonesWithAreaCondition(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    int area, cv::Mat & labels);

/// LabelDeltaFlatZonesWithAreaCondition() on pixels that are not empty in the first image.
///
/// @copydetails LabelDeltaFlatZonesWithAreaCondition
[[nodiscard]] MORVANE_EXPORT bool LabelDeltaFlatZonesNoZeroWithAreaCondition(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    int area, cv::Mat & labels);

/// Counts the connected zones of measured pixels.
///
/// @param image one channel, any accepted depth
/// @param connexity the neighbourhood
/// @param count the number of zones; 0 when there is none
/// @return true when the count was written; false, with `count` untouched, when the image has more than one channel,
///         more than two dimensions or a refused depth
/// @throws as for Label()
///
/// Cost as for Label(), without the labels. One thread.
[[nodiscard]] MORVANE_EXPORT bool CountZones(cv::Mat const & image, eConnexityType const & connexity, int & count);

/// Counts the flat zones. Arguments, answer and cost as for CountZones().
///
/// @copydetails CountZones
[[nodiscard]] MORVANE_EXPORT bool CountFlatZones(cv::Mat const & image, eConnexityType const & connexity, int & count);

/// Counts the flat zones of measured pixels. Arguments, answer and cost as for CountZones().
///
/// @copydetails CountZones
[[nodiscard]] MORVANE_EXPORT bool
CountFlatZonesNoZero(cv::Mat const & image, eConnexityType const & connexity, int & count);

} // namespace morvane::connexity
