/// @file
/// Geodesic measures: how long the flat zones of an image are when a path must stay inside, and what follows from it.
///
/// | array   | shape       | depths                                          | channels | values |
/// |---------|-------------|-------------------------------------------------|----------|--------|
/// | `image` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 to 4 | any; a zone is an 8-connected set of equal pixels that are not empty |
/// | `out`   | becomes rows x cols, new memory | `CV_8U` or `CV_64F`, see each operator | 1 | 0 where there is no zone |
///
/// A path of n pixels has the length n, so that a zone of one pixel has the length 1. The longest path is found by
/// three walks: from the pixel nearest to the middle of the bounding box to the farthest, from there to the farthest,
/// which is the first extremity, and from there to the farthest, which is the second. Of pixels as far, the first in
/// raster order is taken. Zones are numbered in 16 bits: numbers above 32767 read as negative, and their zones are left
/// out; numbers from 65537 on repeat, and zones of one number are measured together. Distances are counted in 16 bits:
/// to a walk of 65534 pixels or more, what lies in the bounding box and is not reached seems as far as 65535; it ends
/// there, outside the zone, and the next walk has the length 1. In a zone that is all of its box, lengths end at 65534,
/// or at 65535 where it is a line of one pixel.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

#include <vector>

namespace morvane::connexity
{

/// Marks the two extremities of each zone.
///
/// @param image see the head of this file
/// @param out `CV_8U`: 255 at the extremities, of which a zone may have one
/// @return true when `out` was written. False, with `out` untouched, for an empty image, a refused depth, more than 4
///         channels, or more than two dimensions.
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels), for zones shorter than 65534. About 15 bytes for each pixel, and 12 more for each of the largest
/// zone. One thread. `image` and `out` may be the same object.
///
/// @code
/// bool const done = morvane::connexity::GeodesicExtremitiesOnFlatZonesNoZero(zones, ends);
/// @endcode
///
/// Source: C. Lantuejoul and F. Maisonneuve, "Geodesic methods in quantitative image analysis", 1984, with the three
/// walks in place of all pairs.
[[nodiscard]] MORVANE_EXPORT bool GeodesicExtremitiesOnFlatZonesNoZero(cv::Mat const & image, cv::Mat & out);

/// Marks the first extremity of each zone. Otherwise as GeodesicExtremitiesOnFlatZonesNoZero().
///
/// @param image see the head of this file
/// @param out `CV_8U`: 255 at the first extremities
/// @return as GeodesicExtremitiesOnFlatZonesNoZero()
/// @throws std::bad_alloc, cv::Exception when memory runs out
[[nodiscard]] MORVANE_EXPORT bool GeodesicExtremityOnFlatZonesNoZero(cv::Mat const & image, cv::Mat & out);

/// Gives the pixels of each zone the length of its longest path, in pixels.
///
/// @param image see the head of this file
/// @param out `CV_64F`
/// @return as GeodesicExtremitiesOnFlatZonesNoZero()
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels), for zones shorter than 65534; OpenCV's threads, each with zones of its own: the result does not
/// depend on their number. About 20 bytes for each pixel, and 12 more for each of the largest zone of each thread.
/// Aliasing as for GeodesicExtremitiesOnFlatZonesNoZero().
[[nodiscard]] MORVANE_EXPORT bool LabelFlatZonesNoZeroWithGeodesicDiameter(cv::Mat const & image, cv::Mat & out);

/// Gives the pixels of each zone its elongation, `length * 3.141598 * length / (4 * pixels)`: about 1 for a disc, large
/// for what is long and thin. The constant is this number.
///
/// @param image see the head of this file
/// @param out `CV_64F`
/// @return as GeodesicExtremitiesOnFlatZonesNoZero()
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost and threads as for LabelFlatZonesNoZeroWithGeodesicDiameter().
[[nodiscard]] MORVANE_EXPORT bool LabelFlatZonesNoZeroWithGeodesicElongation(cv::Mat const & image, cv::Mat & out);

/// Gives the pixels of each zone its tortuosity, the length by the Euclidean distance of the extremities: n / (n - 1)
/// for a straight bar of n pixels, more for what is bent, 1 where both are one pixel.
///
/// @param image see the head of this file
/// @param out `CV_64F`
/// @return as GeodesicExtremitiesOnFlatZonesNoZero()
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost and threads as for LabelFlatZonesNoZeroWithGeodesicDiameter().
[[nodiscard]] MORVANE_EXPORT bool LabelFlatZonesNoZeroWithGeodesicTortuosity(cv::Mat const & image, cv::Mat & out);

/// Gives the zone in the image's first corner the squared ratio of the axes of its contour's inertia ellipse, and all
/// other zones 0.
///
/// Contours are the outer ones of all that is not empty, the zones together, as `cv::findContours` finds them
/// (8-connected, straight parts by their ends alone). A contour belongs to the zone whose number the image of numbers,
/// eroded by a square of 3 pixels, holds at the contour's first point, and to none where that is 0 or less. The pixels
/// left of that point and above it are empty or outside the image: so the only contour that counts is one that begins at
/// row 0 and column 0, where none of the three pixels that touch it is empty or of a zone that is left out. It belongs to
/// zone 1, whatever other zones it runs around. LabelFlatZonesNoZeroWithGeodesicElongation() measures all zones.
///
/// With the central moments of the contour, t = mu20 + mu02 and s = sqrt((mu20 - mu02)^2 + 4 mu11^2), the measure is
/// (t + s) / (t - s), or 1 where t equals s.
///
/// @param image see the head of this file
/// @param out `CV_64F`; 0 in all other zones, and everywhere if no contour counts
/// @return as GeodesicExtremitiesOnFlatZonesNoZero()
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels). One thread, and OpenCV's for the erosion. Aliasing as for GeodesicExtremitiesOnFlatZonesNoZero().
[[nodiscard]] MORVANE_EXPORT bool LabelFlatZonesNoZeroWithStandardElongation(cv::Mat const & image, cv::Mat & out);

namespace geodesic_internals
{

/// Finds the longest path inside a set of pixels.
///
/// @param points the pixels, at least one, in raster order; 8-connected, or what is not connected with the pixel
///        nearest to the middle of their box is left out
/// @param first the first extremity
/// @param second the second
/// @param length pixels on the path
/// @return true; false, with nothing written, without points
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels of the bounding box). One thread.
[[nodiscard]] MORVANE_EXPORT bool
GeodesicPath(std::vector<cv::Point> const & points, cv::Point & first, cv::Point & second, double & length);

} // namespace geodesic_internals

} // namespace morvane::connexity
