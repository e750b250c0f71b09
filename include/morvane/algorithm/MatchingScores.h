/// @file
/// How well one placement of an image on another fits, and what searches for placements need: rotations, medians,
/// shifts.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::algorithm
{

/// Scores of two images, pixel against pixel.
namespace score
{

/// @name Scores of occupancy words
/// A pixel is a word of 16 bits, one for each layer of space that it looks at. Only pairs of words that are both not 0
/// count.
///
/// | array | shape       | depths   | channels | values |
/// |-------|-------------|----------|----------|--------|
/// | `a`   | rows x cols | `CV_16U` | 1        | any    |
/// | `b`   | as many pixels as `a`, taken in raster order | `CV_16U` | 1 | any |
///
/// The types are not checked: of wider ones, the first `cols` words of each row are read.
///
/// Each sets its result to 0 first. Each returns true when it was summed up; false, with 0, for different numbers of
/// pixels, elements that are not made of words of 16 bits, and more than two dimensions. They throw std::bad_alloc or
/// cv::Exception when memory runs out, which is needed for images of two shapes. Cost: O(pixels). One thread.
/// @{

/// Sums 16 minus the number of bits that differ.
///
/// @param a the first image
/// @param b the second
/// @param result the score; it wraps around in `int`
/// @return see above
/// @throws see above
[[nodiscard]] MORVANE_EXPORT bool ComputeHamingDistanceComparison(cv::Mat const & a, cv::Mat const & b, int & result);

/// Sums utils::OccupancyMatchingScore().
///
/// @param a the first image
/// @param b the second
/// @param result the score; it wraps around in `int`
/// @return see above
/// @throws see above
[[nodiscard]] MORVANE_EXPORT bool ComputeOccupancyMatchingScore(cv::Mat const & a, cv::Mat const & b, int & result);

/// Sums 16 for each pair of equal words; others add nothing.
///
/// @param a the first image
/// @param b the second
/// @param result the score
/// @return see above
/// @throws see above
[[nodiscard]] MORVANE_EXPORT bool
ComputeOccupancyLonguestChainMatchingScore(cv::Mat const & a, cv::Mat const & b, double & result);

/// @}

/// @name Scores of masks
/// Of the elements of both masks the lowest byte is read, whatever their depth, in raster order. Pairs count that are
/// equal and 3 or more. The elevations are looked at for their size and depth alone.
///
/// Each sets its result to 0 first. Each returns true when it was summed up, also over empty masks; false, with 0, for
/// elevations of different numbers of pixels or depths, or of another depth than `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`
/// and `CV_32F`, or for masks of more than two dimensions. Elements of `m1` that `m2` does not have are left out. Cost:
/// O(pixels). One thread.
/// @{

/// Sums 16 for each pair that counts.
///
/// @param e1 elevations of the first image
/// @param m1 its mask
/// @param e2 elevations of the second
/// @param m2 its mask
/// @param result the score
/// @return see above
[[nodiscard]] MORVANE_EXPORT bool NonEmptyElevationMatching(
    cv::Mat const & e1, cv::Mat const & m1, cv::Mat const & e2, cv::Mat const & m2, double & result);

/// Sums, for each pair that counts, 30 for each bit that is set, and 1 for each that is not, below the highest set one.
///
/// @param e1 elevations of the first image
/// @param m1 its mask
/// @param e2 elevations of the second
/// @param m2 its mask
/// @param result the score
/// @return see above
[[nodiscard]] MORVANE_EXPORT bool
OccupancyMatching(cv::Mat const & e1, cv::Mat const & m1, cv::Mat const & e2, cv::Mat const & m2, double & result);

/// @}

} // namespace score

/// What searches for placements need.
namespace utils
{

/// The number of bits that differ.
///
/// @param a a word
/// @param b another
/// @return 0 to 16
[[nodiscard]] MORVANE_EXPORT int HammingDistance(unsigned short a, unsigned short b);

/// The number of bits set in both words minus the number of those set in one only.
///
/// @param a a word
/// @param b another
/// @return -16 to 16
[[nodiscard]] MORVANE_EXPORT int OccupancyMatchingScore(unsigned short a, unsigned short b);

/// The mean of (a + offsetA) - (b + offsetB) over the pixels where neither is 0.
///
/// It is summed down the columns, one after the other, in double precision. NaN is not 0.
///
/// @param a rows x cols, `CV_32FC1`. The type is not checked: of wider ones, the first `cols` words of each row are
///         read.
/// @param b as many pixels, taken in raster order, `CV_32FC1`
/// @param offsetA added to `a`
/// @param offsetB added to `b`
/// @param shift the mean
/// @return true when there was a pixel; false, with a `shift` of 0, without, for different numbers of pixels, elements
///         that are not made of words of 32 bits, and more than two dimensions
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels), and a copy of both images. One thread.
[[nodiscard]] MORVANE_EXPORT bool
ComputeMeanShift(cv::Mat const & a, cv::Mat const & b, double const & offsetA, double const & offsetB, double & shift);

/// The most frequent difference of two pairs of images, in bins of 50. It is no median.
///
/// The differences `a1` - `b1` and `a2` - `b2`, each 0 where not both are above 0, are counted in a histogram over the
/// range of the first, only at pixels where both `a1` and `b1` are above 0, in either difference. With fewer than 5
/// such pixels the peak is 0; otherwise it is the lower end of the fullest bin. In a range without width, that is its
/// value.
///
/// | array      | shape       | depths            | channels | values |
/// |------------|-------------|-------------------|----------|--------|
/// | all four   | rows x cols | `CV_8U`, `CV_16U`, `CV_32F`, all alike | 1 | any |
///
/// @param a1 the first image of the first pair
/// @param b1 the second image of the first pair
/// @param a2 the first image of the second pair
/// @param b2 the second image of the second pair
/// @param offset1 added to the peak
/// @param offset2 not read
/// @param result the lowest `double` first, then the peak plus `offset1`
/// @return true when it was found; false for images of several channels, of a depth that common::ImageCompare()
///         refuses, or of different numbers of pixels in a pair
/// @throws cv::Exception for other types and sizes; std::bad_alloc when memory runs out
///
/// Cost: O(pixels + range / 50). OpenCV's threads.
[[nodiscard]] MORVANE_EXPORT bool ComputeMedian(
    cv::Mat const & a1, cv::Mat const & b1, cv::Mat const & a2, cv::Mat const & b2, double const & offset1,
    double const & offset2, double & result);

/// Turns an image about its middle, inside a square that holds every rotation of it, by the nearest pixel.
///
/// The side of the square is the diagonal of the image, rounded, and one more if that is even. The image lies in its
/// middle, rounded down, and is turned by warping::Transform() with `cv::getRotationMatrix2D`, read from `out` to the
/// image: so it turns the other way than RotateImageUsingOpenCVTransform() does, clockwise for positive angles as seen
/// with y downwards.
///
/// @param image rows x cols, one channel, any accepted depth
/// @param angle degrees
/// @param out replaced: the square, 0 where nothing of the image is; 0 everywhere for types that are refused
/// @param dx the translation in the matrix of the rotation in x, minus the centre
/// @param dy the same in y
/// @return true
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels of the image + side of the square), and the clearing of the square. One thread. `image` and `out`
/// must not overlap.
///
/// @code
/// (void)morvane::algorithm::utils::RotateImage(moving, 30.0, rotated, dx, dy);
/// @endcode
MORVANE_EXPORT bool RotateImage(cv::Mat const & image, double angle, cv::Mat & out, double & dx, double & dy);

/// As RotateImage(), with warping::TransformBinary(): `CV_8U`, `CV_16U` and `CV_32S` only.
///
/// @param image as for RotateImage()
/// @param angle as for RotateImage()
/// @param out as for RotateImage()
/// @param dx as for RotateImage()
/// @param dy as for RotateImage()
/// @return true
/// @throws as RotateImage()
MORVANE_EXPORT bool RotateBinaryImage(cv::Mat const & image, double angle, cv::Mat & out, double & dx, double & dy);

/// As RotateImage(), with `cv::warpAffine` and `cv::INTER_LINEAR`, which turns the other way.
///
/// @param image rows x cols, any type that `cv::warpAffine` takes
/// @param angle as for RotateImage()
/// @param out as for RotateImage()
/// @param dx as for RotateImage()
/// @param dy as for RotateImage()
/// @return true
/// @throws cv::Exception for types that `cv::warpAffine` refuses, as `CV_32S`; std::bad_alloc when memory runs out
MORVANE_EXPORT bool
RotateImageUsingOpenCVTransform(cv::Mat const & image, double angle, cv::Mat & out, double & dx, double & dy);

/// Where a station of an image lies in the output of RotateImage().
///
/// @param size columns and rows of the image
/// @param station in pixels of the image
/// @param angleRadians the angle of the rotation, in radians
/// @return the station in pixels of the square
[[nodiscard]] MORVANE_EXPORT cv::Point_<double>
UpdateStationPosition(cv::Point_<int> const & size, cv::Point_<double> const & station, double const & angleRadians);

} // namespace utils

} // namespace morvane::algorithm
