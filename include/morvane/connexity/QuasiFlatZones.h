/// @file
/// Quasi-flat zones: the parts of a height image that can be walked without a step higher than a threshold.
///
/// The threshold bounds the step from one pixel to the next and never the distance from a seed, so that a surface which
/// slopes slowly is one zone (the lambda-connected components of the image). ComputeQuasiFlatZones() finds the zones;
/// QuasiFlatZonesPropagation() makes a mask of some of them: of those that the caller's seeds touch, of the most
/// frequent one, or of the base surface, which it then has to find by itself.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

#include <vector>

namespace morvane
{

/// Orders of morphological steps.
namespace projection
{

/// What each step of the alternating filter begins with. Any other value filters nothing.
enum ProjectionType : int
{
    ProjectionClosingFirst = 0, ///< `cv::MORPH_CLOSE`, then `cv::MORPH_OPEN`
    ProjectionOpeningFirst = 1  ///< `cv::MORPH_OPEN`, then `cv::MORPH_CLOSE`
};

} // namespace projection

/// Prepares an image and labels its quasi-flat zones.
///
/// 1. With `fillHoles`, empty pixels are interpolated by algorithm::FillHolesInterpolationWithMin().
/// 2. With `filter`, squares of 3, 5, 7... pixels, up to `windowSize`, close and open the image in turn.
/// 3. connexity::LabelDeltaFlatZonesNoZero() labels what came out.
///
/// | array      | shape       | depths                                          | channels | values |
/// |------------|-------------|-------------------------------------------------|----------|--------|
/// | `image`    | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 to 4; 1 to fill holes | 0 where nothing was measured |
/// | `filtered` | becomes rows x cols, or has this size and type | as `image` | as `image` | the prepared image |
/// | `labels`   | replaced: rows x cols | `CV_32S`                              | 1        | 0, or a zone, from 1 in raster order of the zones' first pixels |
///
/// @param image see the table
/// @param projection what each step of the filter begins with; a value outside the table leaves the image as it is
/// @param delta largest step between neighbours of a zone, in the unit of the image; see
///        connexity::LabelDeltaFlatZonesNoZero()
/// @param connexity the neighbourhood
/// @param windowSize side of the largest square of the filter, in pixels: with 4 the one of 3 is the only one, below 3
///        there is none. Also the size for `fillHoles`, at least 3 there.
/// @param fillHoles whether to fill holes; see algorithm::FillHolesInterpolationWithMin(), which refuses images of
///        `CV_8U`, `CV_16U` and `CV_16S`
/// @param filter whether to filter
/// @param filtered see the table
/// @param labels see the table
/// @return true when both were written, also for an image without pixels. False when the holes could not be filled,
///         with `labels` untouched; false, with `labels` 0, for an image that connexity::LabelDeltaFlatZonesNoZero()
///         refuses. `filtered` is overwritten then.
/// @throws cv::Exception for what OpenCV refuses: to filter or to fill `CV_32S`, `CV_8S`, `CV_16F` and images without
///         pixels; std::bad_alloc when memory runs out
///
/// Cost: O(pixels * windowSize), in vector code, and one labelling. OpenCV's threads. `image` and `filtered` must not
/// overlap.
///
/// @code
/// bool const done = morvane::ComputeQuasiFlatZones(
///     height, morvane::projection::ProjectionClosingFirst, 0.1, morvane::connexity::eConnexity8, 5, false, true,
///     filtered, labels);
/// @endcode
///
/// Source: P. Soille, "Constrained connectivity for hierarchical image partitioning and simplification", IEEE
/// Transactions on Pattern Analysis and Machine Intelligence 30(7), 2008, on quasi-flat zones; the filter after
/// S. R. Sternberg, "Grayscale morphology", Computer Vision, Graphics, and Image Processing 35(3), 1986.
[[nodiscard]] MORVANE_EXPORT bool ComputeQuasiFlatZones(
    cv::Mat const & image, projection::ProjectionType projection, double const & delta,
    connexity::eConnexityType connexity, int windowSize, bool fillHoles, bool filter, cv::Mat & filtered,
    cv::Mat & labels);

/// A mask of the quasi-flat zones that hold a seed, or of the most frequent one.
///
/// A zone is in the mask when the largest value of `seeds` in it is not 0. Seeds on empty pixels have no effect. When
/// `seeds` has another size than the image, or none, the mask is the zone with the most pixels above 0 in the image; of
/// several, the first. Pixels that no zone holds count as one of number 0 there.
///
/// | array      | shape       | depths                                   | channels | values |
/// |------------|-------------|------------------------------------------|----------|--------|
/// | `image`    | as for ComputeQuasiFlatZones(); one channel without seeds  |    |        |  |
/// | `seeds`    | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`; of another size, any | 1 | not 0 in a seed |
/// | `filtered` | as for ComputeQuasiFlatZones() |                       |          |        |
/// | `mask`     | replaced: rows x cols | `CV_8U`                        | 1        | 255 in the mask, 0 elsewhere |
///
/// @param image see the table
/// @param projection as for ComputeQuasiFlatZones()
/// @param delta as for ComputeQuasiFlatZones()
/// @param connexity as for ComputeQuasiFlatZones()
/// @param windowSize as for ComputeQuasiFlatZones()
/// @param fillHoles as for ComputeQuasiFlatZones()
/// @param filter as for ComputeQuasiFlatZones()
/// @param seeds see the table
/// @param filtered see the table
/// @param mask see the table
/// @return true when the mask was made; all 0 when no seed is set. False when the zones could not be computed, with
///         `mask` untouched; false, with `mask` 0, for seeds of a floating-point depth, or, without seeds, when
///         algorithm::ImageMode() refuses or the image has several channels.
/// @throws cv::Exception as ComputeQuasiFlatZones(), and for seeds of several channels; std::bad_alloc when memory
///         runs out
///
/// Cost: that of ComputeQuasiFlatZones() and O(pixels). Matrices must not overlap.
///
/// @code
/// bool const done = morvane::QuasiFlatZonesPropagation(
///     height, morvane::projection::ProjectionClosingFirst, 0.1, morvane::connexity::eConnexity8, 5, false, true,
///     seeds, filtered, mask);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool QuasiFlatZonesPropagation(
    cv::Mat const & image, projection::ProjectionType projection, double const & delta,
    connexity::eConnexityType connexity, int windowSize, bool fillHoles, bool filter, cv::Mat const & seeds,
    cv::Mat & filtered, cv::Mat & mask);

/// A mask of the quasi-flat zones that hold one of some points; without points, of the most frequent one.
///
/// As the form with an image of seeds. A failure is swallowed: what was achieved is seen in `mask` alone.
///
/// @param image as for the form with an image of seeds
/// @param projection as for ComputeQuasiFlatZones()
/// @param delta as for ComputeQuasiFlatZones()
/// @param connexity as for ComputeQuasiFlatZones()
/// @param windowSize as for ComputeQuasiFlatZones()
/// @param fillHoles as for ComputeQuasiFlatZones()
/// @param filter as for ComputeQuasiFlatZones()
/// @param seedPoints pixels of the image, x the column and y the row; others are passed over
/// @param filtered as for ComputeQuasiFlatZones()
/// @param mask as for the form with an image of seeds; untouched when the zones could not be computed
/// @return true, always
/// @throws cv::Exception, std::bad_alloc as the form with an image of seeds
MORVANE_EXPORT bool QuasiFlatZonesPropagation(
    cv::Mat const & image, projection::ProjectionType projection, double const & delta,
    connexity::eConnexityType connexity, int windowSize, bool fillHoles, bool filter,
    std::vector<cv::Point> const & seedPoints, cv::Mat & filtered, cv::Mat & mask);

/// A mask of the quasi-flat zones that hold a seed, or of the base surface of a height image.
///
/// Seeds of the image's size take precedence: then this is the form with an image of seeds, and the five extra
/// parameters are not read. Otherwise the base surface is searched for:
///
/// 1. The rims of zones that a closing of the labels changes are cleared from the zones.
/// 2. The image is divided into coarse parts, which grow from what is measured.
/// 3. Pixels steeper than 30 degrees are cleared, zones of at most `areaLimit` pixels dropped unless zone 1 alone is
///    left, and with them those whose mean height is more than 4000 off the local floor (see
///    filters::InterpolatedRobustLocalMinNoZero(), in cells of 25000 / `pixelSize` pixels). The largest zone always
///    stays.
/// 4. The largest zone of each coarse part enters the mask, then each zone of more than `areaLimit` pixels.
/// 5. A zone left over enters if the height at its contour, near the mask, passes a test of slope.
///
/// | array      | shape       | depths                                   | channels | values |
/// |------------|-------------|------------------------------------------|----------|--------|
/// | `image`    | rows x cols | `CV_32F` for the search; with seeds as for ComputeQuasiFlatZones() | 1 | heights; 0 where nothing was measured |
/// | `seeds`    | as for the form with an image of seeds |    |          |        |
/// | `filtered` | as for ComputeQuasiFlatZones() |                       |          |        |
/// | `mask`     | replaced: rows x cols | `CV_8U`                        | 1        | 255 in the mask, 0 elsewhere |
///
/// The fixed limits of 4000 and 25000 suit heights and pixel sizes in millimetres.
///
/// @param image see the table
/// @param projection as for ComputeQuasiFlatZones()
/// @param delta as for ComputeQuasiFlatZones()
/// @param connexity as for ComputeQuasiFlatZones()
/// @param windowSize as for ComputeQuasiFlatZones()
/// @param fillHoles as for ComputeQuasiFlatZones()
/// @param filter as for ComputeQuasiFlatZones()
/// @param seeds see the table
/// @param areaLimit pixels that a zone must exceed to enter without a test, above 0
/// @param reserved not read
/// @param radius largest distance from the mask, in pixels, at which the test of slope looks; not below 0 where a test
///        is made
/// @param pixelSize side of a pixel in the unit of the heights, above 0
/// @param slopeRatio largest height over distance that passes the test
/// @param filtered see the table
/// @param mask see the table
/// @return true when the search went to its end. True, too, with `mask` all 0: without seeds set, in an image in which
///         nothing is measured, and when no zone is left to choose from. False, with `mask` as far as it was made, when
///         the zones could not be computed (`mask` untouched), an image of another type, no zone, an argument out of its
///         range.
/// @throws cv::Exception as the form with an image of seeds; std::bad_alloc when memory runs out
///
/// Cost: O(pixels), whatever the number of zones, unless zones are left to the test of slope. OpenCV's threads, on
/// whose number nothing depends. Matrices must not overlap.
///
/// @code
/// bool const done = morvane::QuasiFlatZonesPropagation(
///     heightInMillimetres, morvane::projection::ProjectionClosingFirst, 50.0, morvane::connexity::eConnexity8, 5, false,
///     true, cv::Mat(), 500, 0, 20, 100.0, 0.3, filtered, baseSurface);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool QuasiFlatZonesPropagation(
    cv::Mat const & image, projection::ProjectionType projection, double const & delta,
    connexity::eConnexityType connexity, int windowSize, bool fillHoles, bool filter, cv::Mat const & seeds,
    int areaLimit, int reserved, int radius, double pixelSize, double slopeRatio, cv::Mat & filtered, cv::Mat & mask);

/// What the search for the base surface knows of a zone.
struct RegionInfo
{
    int label = 0;  ///< number of the zone
    int area = 0;   ///< its pixels
    int group = -1; ///< the coarse part that it belongs to; -1 until it is known
    cv::Rect bbox;  ///< its bounding box
};

/// What the test of slope says of a zone.
enum ResultType : int
{
    ResultError = 0,    ///< it could not be made
    ResultAccepted = 1, ///< the zone enters the mask
    ResultRejected = 2, ///< the zone is dropped for good
    ResultUnknown = 3   ///< not decided yet; the zone stays on the list
};

/// The pieces of the search for the base surface.
namespace quasi_flat_internals
{

/// Divides an image into coarse parts, numbered from 1, which grow from the measured pixels of a thumbnail.
///
/// What is measured is made 10 x 10 pixels and large again, both with `cv::INTER_LINEAR`; its 8-connected parts then
/// grow by at most 501 pixels into what is left, the higher number first.
///
/// @param image rows x cols, one channel, any depth that common::ImageCompare() takes
/// @param out replaced on true: rows x cols, `CV_16U`, 0 only further than 501 pixels from all parts
/// @return true when there is a part; false for an empty image and without a part, with `out` untouched
/// @throws cv::Exception, std::bad_alloc when memory runs out
///
/// Cost: O(pixels). OpenCV's threads.
[[nodiscard]] MORVANE_EXPORT bool BuildCoarsePartition(cv::Mat const & image, cv::Mat & out);

/// Describes the zones that are not too steep, not too small, and not too far above the local floor.
///
/// @param image rows x cols, `CV_32FC1`: heights
/// @param areas rows x cols, `CV_32SC1`: to each pixel of a zone the pixels of this zone
/// @param labels rows x cols, `CV_32SC1`: zones from 1
/// @param coarse rows x cols, `CV_32SC1`: coarse parts from 1
/// @param areaLimit pixels that a zone must exceed, above 0; not asked of a single zone of number 1
/// @param pixelSize side of a pixel in the unit of the heights, above 0
/// @param regions on true what was found: the largest first, of equals the lower number
/// @return true, also when nothing was found in the end. False, with `regions` untouched, for images of other types or
///         unequal sizes, arguments out of their range, and without a zone.
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels + zones log zones). OpenCV's threads.
[[nodiscard]] MORVANE_EXPORT bool ComputeRegions(
    cv::Mat const & image, cv::Mat const & areas, cv::Mat const & labels, cv::Mat const & coarse, int areaLimit,
    double pixelSize, std::vector<RegionInfo> & regions);

/// Drops zones of few pixels from a list and from two images.
///
/// In the bounding box of a dropped zone, pixels of `labels` that are its number become 0, and so do pixels of `areas`
/// that are this number, a label, not an area.
///
/// @param areas rows x cols, `CV_32SC1`
/// @param labels rows x cols, `CV_32SC1`
/// @param areaLimit zones of at most so many pixels are dropped
/// @param regions the list; afterwards the largest first, equals in their order
/// @return true when it was done; false, with everything untouched, for images of other types or unequal sizes, empty
///         ones, and an empty list
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(pixels + zones log zones). OpenCV's threads.
[[nodiscard]] MORVANE_EXPORT bool
RemoveSmallRegions(cv::Mat & areas, cv::Mat & labels, int areaLimit, std::vector<RegionInfo> & regions);

/// Finds the largest zone of each coarse part.
///
/// @param regions the zones; those of a group or an area below 0 are passed over
/// @param seedIndices replaced on true and when there is none: places in the list, in the order of their groups; of
///        equal zones the first
/// @return true when there is one; false without, and for an empty list
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(zones log zones). One thread.
[[nodiscard]] MORVANE_EXPORT bool
SelectGroupSeeds(std::vector<RegionInfo> const & regions, std::vector<int> & seedIndices);

/// The test of slope: whether the nearest quarter of a zone's contour can be reached from what is already accepted.
///
/// Of the points of the longest contour, a quarter is looked at, those of the smallest distance d of `accepted` to its
/// nearest 0, as `cv::distanceTransform` has it; so only those inside `accepted` have a distance at all. A point with
/// 0 < d < `radius` accepts the zone if its height above ExtendSurface() is below d * `slopeRatio` * `pixelSize`.
///
/// @param accepted rows x cols, `CV_8UC1`: what is accepted, not 0
/// @param zone rows x cols, `CV_8UC1`: the zone, not 0
/// @param image rows x cols, one channel: heights
/// @param radius distances from here on are not looked at, in pixels; not below 0
/// @param pixelSize side of a pixel, above 0
/// @param slopeRatio see above
/// @return `ResultError` for images that are empty or of other types or sizes, arguments out of their range;
///         `ResultRejected` for a zone with a sum of 1 or less, and when points were looked at and none accepted it;
///         `ResultUnknown` when there was no point to look at
/// @throws cv::Exception when OpenCV cannot resize the image (`CV_32S`); std::bad_alloc when memory runs out
///
/// Cost: O(pixels). OpenCV's threads.
[[nodiscard]] MORVANE_EXPORT ResultType EvaluateRegion(
    cv::Mat const & accepted, cv::Mat const & zone, cv::Mat const & image, int radius, double pixelSize,
    double slopeRatio);

/// Step by step, lets zones into a mask.
///
/// Zones of at most 2 pixels are dropped, zones of more than `areaLimit` enter, EvaluateRegion() decides on others; each
/// change starts again with the first zone of the list.
///
/// @param labels rows x cols, `CV_32SC1`
/// @param image the heights, rows x cols, one channel
/// @param areaLimit see above
/// @param radius as for EvaluateRegion()
/// @param pixelSize as for EvaluateRegion()
/// @param slopeRatio as for EvaluateRegion()
/// @param regions the list; what is left was not decided
/// @param mask rows x cols, `CV_8UC1`: 255 is added where zones enter
/// @return true at the end of the list; false when a test could not be made, with the zones before it in the mask, and
///         for images of other types or unequal sizes
/// @throws as EvaluateRegion()
///
/// Cost: O(pixels of the bounding boxes) for zones that do not overlap the mask, however often they are tried; others
/// add that of EvaluateRegion().
[[nodiscard]] MORVANE_EXPORT bool GrowMask(
    cv::Mat const & labels, cv::Mat const & image, int areaLimit, int radius, double pixelSize, double slopeRatio,
    std::vector<RegionInfo> & regions, cv::Mat & mask);

/// Spreads what is measured in a thumbnail of 100 x 100 pixels, and makes it large again.
///
/// The thumbnail is filled by algorithm::FillImageWithMean() into an image of the full size, which is refused unless
/// both have the same size. So of any image but one of 100 x 100 pixels the result is 0. Of that one, up to `radius` + 1
/// passes are made.
///
/// @param source rows x cols, one channel
/// @param out replaced on true: size and type of `source`
/// @param radius pixels to spread by, in whole columns / 100; not below 0
/// @return false, with `out` untouched, for an empty source and a `radius` below 0
/// @throws cv::Exception when OpenCV cannot resize the image (`CV_32S`); std::bad_alloc when memory runs out
///
/// Cost: O(pixels), and 10,000 pixels for each pass. OpenCV's threads.
[[nodiscard]] MORVANE_EXPORT bool ExtendSurface(cv::Mat const & source, cv::Mat & out, int radius);

} // namespace quasi_flat_internals

} // namespace morvane
