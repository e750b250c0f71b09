/// @file
/// Flooding: markers that spread over an image.
///
/// Flooding() is a watershed with a cost of its own. The others split the image into connected zones inside the basins of
/// OpenCV's watershed, and give each zone the highest marker that fell into it.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace morvane::connexity
{

/// Spreads markers over a grey image, by priority: each pixel takes the label of its labelled neighbours.
///
/// | array     | shape       | depth    | channels | values |
/// |-----------|-------------|----------|----------|--------|
/// | `image`   | rows x cols | `CV_8U`  | 1        | any; not changed |
/// | `markers` | rows x cols | `CV_32S` | 1        | in: above 0 a label, others none; out: labels, -1 on the lines between them and on the image's border, 0 where no label came |
///
/// A pixel of value b that is seen from a pixel of value a waits with the cost |a - b| + a: dark pixels go first, not only
/// similar ones; equal costs in the order in which they came. The flood sees pixels from where it has come; the pixels
/// beside the markers themselves, with which it begins, see the markers, and wait with the least of these costs. Neighbours are those to the left, right, above and below, in
/// this order. A pixel whose labelled neighbours differ becomes a line of -1. Markers on the border are lost.
///
/// @param image see the table
/// @param markers in and out; negative ones inside the border count as 0
/// @return true when anything was flooded. False without a label that can spread, with the border at -1 and negative
///         markers at 0; also, with `markers` untouched, for other types, for sizes that differ and more than two
///         dimensions.
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(pixels). 4 bytes for each pixel that waits, 8 in matrices of 2^32 elements and more; copies where one matrix has gaps between its rows and the other
/// other ones. One thread. The arguments must not overlap.
///
/// Source: F. Meyer, "Color image segmentation", 1992, with another cost.
///
/// @code
/// bool const done = morvane::connexity::Flooding(grey, markers);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool Flooding(cv::Mat & image, cv::Mat & markers);

/// Gives each connected zone of measured pixels, inside one basin, the highest marker in it.
///
/// | array     | shape       | depths                                          | channels | values |
/// |-----------|-------------|-------------------------------------------------|----------|--------|
/// | `image`   | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | any  |
/// | `markers` | rows x cols | `CV_32S`; see below for `CV_8U`, `CV_16U`, `CV_16S` | 1    | in: above 0 a label; out: the highest marker of each zone, 0 where there is no zone |
///
/// Basins are those of `cv::watershed` on the grey map of the image (GrayMapNoZero()), its lines a basin of their own.
/// Zones are those of Label() inside one basin; in a line there is no marker as a rule, so that it becomes 0. Negative
/// markers make no basin; a zone with no others gets the highest of them. Markers on the border make no basin either, but
/// count where zones are given their highest.
///
/// The table of highest markers is `CV_32S`, and is refused for labels of another type: with markers of 8 and 16 bits the
/// answer is always false, and the numbers of the zones are left in `markers`.
///
/// @param image see the table
/// @param connexity the neighbourhood
/// @param markers in and out
/// @return true when the markers were spread. False, with `markers` untouched, when the image has more than one channel,
///         the sizes differ, the depth of the image or of the markers is refused, in this order, or a matrix has more than
///         two dimensions. False with the numbers of the zones in `markers`, in the first `cols` elements of each row, when
///         these are not `CV_32SC1`.
/// @throws cv::Exception for empty images, as OpenCV's conversion to colour does, and for `CV_16S` markers when there are
///         32767 zones or more, with their numbers in `markers`; std::bad_alloc when memory runs out
///
/// Cost: that of `cv::watershed`, plus O(pixels). About 25 bytes for each pixel. One thread. The arguments must not
/// overlap.
[[nodiscard]] MORVANE_EXPORT bool
FloodingNoZero(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & markers);

/// Gives each zone of small differences, inside one basin, the highest marker in it; empty pixels are pixels like others.
///
/// @param image, connexity, markers as for FloodingNoZero()
/// @param delta largest difference between neighbours, in the unit of the image, converted to its type as
///        LabelDeltaFlatZones() does
/// @return as FloodingNoZero()
/// @throws cv::Exception, std::bad_alloc as FloodingNoZero()
///
/// Cost, threads and aliasing as for FloodingNoZero().
[[nodiscard]] MORVANE_EXPORT bool
FloodingDelta(cv::Mat const & image, eConnexityType const & connexity, double delta, cv::Mat & markers);

/// FloodingDelta() with zones in which the differences of a second image are small as well.
///
/// @param image, connexity, markers as for FloodingNoZero(); the basins are those of this image alone
/// @param second rows x cols, any of the six depths, one channel
/// @param delta1 largest difference in the first image
/// @param delta2 largest difference in the second image
/// @return as FloodingNoZero(); false also when the second image has more than one channel, another size or a refused
///         depth
/// @throws cv::Exception, std::bad_alloc as FloodingNoZero()
///
/// Cost, threads and aliasing as for FloodingNoZero().
[[nodiscard]] MORVANE_EXPORT bool FloodingDelta(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    cv::Mat & markers);

/// FloodingDelta() for the measured pixels alone; empty ones become 0.
///
/// @param image, connexity, delta, markers as for FloodingDelta()
/// @return as FloodingNoZero()
/// @throws cv::Exception, std::bad_alloc as FloodingNoZero()
///
/// Cost, threads and aliasing as for FloodingNoZero().
[[nodiscard]] MORVANE_EXPORT bool
FloodingDeltaNoZero(cv::Mat const & image, eConnexityType const & connexity, double delta, cv::Mat & markers);

/// FloodingDeltaNoZero() with a second image; what is measured is asked of the first alone.
///
/// @param image, second, connexity, delta1, delta2, markers as for FloodingDelta()
/// @return as FloodingDelta() with a second image
/// @throws cv::Exception, std::bad_alloc as FloodingNoZero()
///
/// Cost, threads and aliasing as for FloodingNoZero().
[[nodiscard]] MORVANE_EXPORT bool FloodingDeltaNoZero(
    cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, double delta1, double delta2,
    cv::Mat & markers);

} // namespace morvane::connexity
