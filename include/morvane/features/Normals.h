/// @file
/// Surface normals of point clouds, slopes of height fields, normals from depth alone, the main orientation of an
/// image.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

#include <cstdint>

namespace morvane::features
{

/// How the window of a pixel is chosen, see NormalComputation.h.
enum eNormalComputationMethod : int
{
    WindowMoving = 0,           ///< one window for all pixels
    Pyramid = 1,                ///< the best of several, by integral images; the smallest one is never the best
    PyramidWindowMoving = 2,    ///< the best of several moving windows, by RMS / points
    PyramidWindowMovingSqrt = 3 ///< the same by RMS / sqrt(points)
};

/// Labels, values and figures of a classification by direction, for callers; no operator of this library fills it.
struct MORVANE_EXPORT StatisticsOutput
{
    StatisticsOutput();
    /// Copies, the images too.
    StatisticsOutput(StatisticsOutput const & other);
    /// Copies, the images too.
    StatisticsOutput & operator=(StatisticsOutput const & other);
    ~StatisticsOutput();

    /// Starts anew: images of 0 and, where they were there before, values of -1; all figures but the last measure 0.
    ///
    /// @param size of the images that are made while `index` is -1; later they keep theirs
    void Init(cv::Size const & size);

    cv::Mat labels;             ///< `CV_32S`
    cv::Mat classes;            ///< `CV_32S`
    cv::Mat values;             ///< `CV_32F`
    int index = -1;             ///< -1 until Init()
    float mean = -1.0F;         ///< of the values
    float deviation = -1.0F;    ///< of the values
    float least = -1.0F;        ///< of the values
    float greatest = -1.0F;     ///< of the values
    float median = -1.0F;       ///< of the values; Init() leaves it
    std::uint32_t zones = 0;    ///< number of labels
    std::uint32_t accepted = 0; ///< of these
    std::uint32_t rejected = 0; ///< of these
    std::uint64_t pixels = 0;   ///< with a label
    std::uint64_t sum = 0;      ///< of the values
    std::uint64_t squares = 0;  ///< of the values
    std::uint64_t products = 0; ///< of the values
    std::uint32_t state = 0;    ///< of the classification
    std::uint64_t total = 0;    ///< pixels looked at
};

/// The class of one direction, for callers; no operator of this library fills it.
struct DirectionClassInfos
{
    int direction = -1;          ///< number of the direction
    std::uint64_t first = 0;     ///< first pixel
    std::uint64_t last = 0;      ///< last pixel
    std::uint64_t pixels = 0;    ///< of the class
    int parent = -1;             ///< class that it came from
    StatisticsOutput statistics; ///< of its pixels
};

/// The normals of an organised point cloud, and how well their planes fit.
///
/// | array          | shape       | depths                          | channels | values |
/// |----------------|-------------|---------------------------------|----------|--------|
/// | `depth`        | rows x cols | any but `CV_8S` and `CV_16F`    | 1        | not 0 where a point exists, NaN included |
/// | `x`, `y`, `z`  | rows x cols | `CV_32F` or `CV_64F`, all alike | 1        | coordinates; 0 where no point exists |
/// | `normals`      | rows x cols | that of `x`                     | 3        | unit vectors towards the origin |
/// | `rms`          | rows x cols | that of `x`                     | 1        | in the unit of the coordinates; 25 without a plane |
///
/// A window needs more than 6 points, and a smallest eigenvalue of their covariance of 0.0001 or more: see
/// NormalComputation.h.
///
/// @param depth, x, y, z see the table
/// @param normals, rms where one of them is empty, both are made and set to 0; else they are written in place, and
///        pixels without a plane keep their normal
/// @param method how the window of a pixel is chosen
/// @param halfWidth its radius, or the largest one that is tried; cut for small images
/// @param wrapColumns the first column is a neighbour of the last, as in a full panorama; `Pyramid` does not look at it
/// @return true when the normals were written. False, with the outputs untouched, when `x` has another depth, an input
///         is empty or has several channels, sizes differ, or `z` has another depth than `x`; false after empty outputs
///         were made, when `normals` or `rms` have another size or type; false after `rms` was set to 25 when there is
///         no such method
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels) time for `WindowMoving`, times the number of radii for the others. Threads: OpenCV's, but one for
/// `WindowMoving`; the result does not depend on their number. The outputs must not overlap the inputs.
///
/// @code
/// features::ComputeMatNormal(z, x, y, z, normals, rms, features::WindowMoving, 3, true); // windows of 7 by 7 in a full panorama
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool ComputeMatNormal(
    cv::Mat const & depth, cv::Mat const & x, cv::Mat const & y, cv::Mat const & z, cv::Mat & normals, cv::Mat & rms,
    eNormalComputationMethod method, int halfWidth, bool wrapColumns);

/// The slope of a height field in degrees, with its normals and how well their planes fit.
///
/// | array     | shape       | depths   | channels | values |
/// |-----------|-------------|----------|----------|--------|
/// | `height`  | rows x cols | `CV_32F` | 1        | heights over a regular grid |
/// | `mask`    | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | 0 where nothing was measured |
/// | `normals` | rows x cols | `CV_32F` | 3        | as of ComputeMatNormal() |
/// | `slope`   | made        | `CV_32F` | 1        | angle between normal and vertical, 0 to 90; -1 without a plane and outside the mask |
/// | `rms`     | rows x cols | `CV_32F` | 1        | as of ComputeMatNormal(), -1 outside the mask |
///
/// Pixels outside the mask are first filled with the middle between the lowest and the highest measured height in a
/// square of `kernelSize` pixels around them, 0 where there is none. Heights of exactly 0 count as no points, also
/// filled ones. Then the best window of a radius of 1 or 2 pixels gives the normal.
///
/// @param height, mask see the table
/// @param pixelSize distance of neighbouring pixels, above 0, in the unit of `height`
/// @param kernelSize side of the square that fills, in pixels, from 1 on
/// @param normals, rms as for ComputeMatNormal(), of the type of the table; where `normals` was there before, a pixel
///        without a plane gets the slope of its old normal
/// @param slope replaced
/// @return true when all was written; false, with the outputs untouched, when `height` or `mask` is empty or has
///         another type, sizes differ, `pixelSize` is not above 0, `kernelSize` is 0 or exceeds an int; false as
///         ComputeMatNormal(), with `slope` untouched
/// @throws cv::Exception as OpenCV's morphology does
///
/// Cost: two passes of OpenCV's morphology, and ComputeMatNormal() with two radii. Threads as there. The outputs must
/// not overlap the inputs.
[[nodiscard]] MORVANE_EXPORT bool ComputeNormalSlopeAndRms(
    cv::Mat const & height, cv::Mat const & mask, float pixelSize, unsigned int kernelSize, cv::Mat & normals,
    cv::Mat & slope, cv::Mat & rms);

/// Normals from the differences of a depth image alone, with smoothed tangents.
///
/// | array     | shape       | depths   | channels | values |
/// |-----------|-------------|----------|----------|--------|
/// | `depth`   | rows x cols | `CV_32F` | 1        | distance along the view |
/// | `normals` | made        | `CV_64F` | 3        | unit vectors; 0 where there is none, and in the last `step` rows and columns |
///
/// Two tangents of the surface are taken from the depth and its differences to the pixel `step` columns to the right
/// and `step` rows below; their components in the image plane are smoothed by ASF_Close() with elements up to 5 by 5;
/// the normal is their cross product.
///
/// @param depth see the table
/// @param normals replaced
/// @param focalLength in pixels; with 0, tangents are infinite or NaN, and normals are 0 or NaN
/// @param principalPoint where the optical axis meets the image, in pixels; looked at with `perspective` only
/// @param step distance of the pixels that are compared, from 0 on
/// @param perspective whether rays meet in a point; else they are parallel
/// @return true when `normals` was written; false when `depth` has several channels, another depth or more than two
///         dimensions, or `step` is negative, with `normals` untouched, and for images of fewer than 5 rows or columns,
///         with `normals` of 0
/// @throws cv::Exception as OpenCV's morphology does
///
/// Cost: O(pixels) time, mostly that of the smoothing; six images of floats. One thread of ours. `depth` may be
/// `normals`.
[[nodiscard]] MORVANE_EXPORT bool EstimateNormals(
    cv::Mat const & depth, cv::Mat & normals, float focalLength, cv::Point const & principalPoint, int step,
    bool perspective);

/// The direction of the main axis of the mass of an image.
///
/// Half the arc tangent of 2 * mu11 and mu20 - mu02, the central moments of `cv::moments`, over the mass.
///
/// @param src one channel, as `cv::moments` takes it; a list of points works as it does there
/// @param direction a unit vector, x to the right and y down; NaN for an image without mass
/// @return true when `direction` was written; false, with `direction` untouched, for an empty image
/// @throws cv::Exception as `cv::moments` does
///
/// Cost: O(pixels). Source: M.-K. Hu, "Visual pattern recognition by moment invariants", IRE Transactions on
/// Information Theory 8, 1962.
[[nodiscard]] MORVANE_EXPORT bool FindMainOrientation(cv::Mat const & src, cv::Point2d & direction);

} // namespace morvane::features
