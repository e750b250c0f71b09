/// @file
/// Morphological reconstruction, and what is built on it: extrema by their dynamics, the filling of holes.
///
/// Two kinds stand side by side. The `Reconstructionby...` operators repeat a geodesic step (see GeodesicOperators.h)
/// until it changes nothing; their `shape` is a code of `cv::getStructuringElement`: 0 a rectangle, 1 a cross, 2 an
/// ellipse. OverBuild() and UnderBuild() flood once, by priority, and take a connexity.
///
/// What lies outside an image never contributes but to infinities, which OpenCV's finite border replaces by the outermost
/// number that is finite; a parent matrix around a view never does.
///
/// Sources: L. Vincent, "Morphological grayscale reconstruction in image analysis: applications and efficient
/// algorithms", 1993; P. Soille, "Morphological Image Analysis", 2nd edition, 2003.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace morvane::geodesy
{

/// The reconstruction of a mask from a marker by dilation: geodesic dilations of the marker, until nothing changes.
///
/// | array    | shape                               | depths                                    | channels | values |
/// |----------|-------------------------------------|-------------------------------------------|----------|--------|
/// | `marker` | rows x cols                         | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32F`, `CV_64F` | 1 to 4 | any |
/// | `mask`   | rows x cols                         | that of `marker`                          | those of `marker` | any |
/// | `out`    | rows x cols, or empty and then made | that of `marker`                          | those of `marker` | the reconstruction |
///
/// @param marker, mask see the table; where the marker exceeds the mask it is cut
/// @param shape code of `cv::getStructuringElement`
/// @param out may be left on another buffer than the one it came with: a view into it, or another header of it, does then
///        not see the result. An allocated matrix of another size or type is refused, not replaced.
/// @param kernelSize of the element of one step
/// @return true when the reconstruction was made. False, when `marker` and `mask` differ in type, with `out` untouched;
///         or, after an empty `out` was made, when `out` has another type, `mask` or `out` another size, or an image has
///         more than two dimensions. True for images without pixels.
/// @throws cv::Exception as OpenCV's morphology does, which takes neither `CV_32S` nor `CV_8S` nor `CV_16F`, no more than 4
///         channels, nor other shapes and sizes; std::bad_alloc when memory runs out
///
/// Cost: two raster sweeps and what a queue carries on from there, for elements of 3 by 3; for others dilations as long
/// as many pixels change, and the queue. Images that hold NaN or negative zeros take every step, at most as many as there
/// are pixels. Memory for two copies of the image and the queue. One thread of ours. `out` may be the same matrix as
/// `marker`; it must not overlap `mask`.
///
/// @code
/// // Domes of more than 20 grey levels: what the reconstruction does not reach.
/// cv::Mat flat;
/// bool const done = morvane::geodesy::ReconstructionbyDilate(image - 20, image, cv::MORPH_RECT, flat, {3, 3});
/// cv::Mat const domes = image - flat;
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool
ReconstructionbyDilate(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize);

/// The reconstruction of a mask from a marker by erosion: geodesic erosions of the marker, until nothing changes.
///
/// @param marker, mask, shape, kernelSize as for ReconstructionbyDilate(); where the mask exceeds the marker it is raised
/// @param out as for ReconstructionbyDilate(), but always written in place
/// @return as ReconstructionbyDilate()
/// @throws cv::Exception, std::bad_alloc as ReconstructionbyDilate()
///
/// Cost, threads and aliasing as for ReconstructionbyDilate().
[[nodiscard]] MORVANE_EXPORT bool
ReconstructionbyErode(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize);

/// The viscous reconstruction by dilation: each geodesic dilation is followed by an erosion above the marker and a
/// dilation under the mask with a second element, so that nothing flows through what is narrower than that.
///
/// @param marker, mask, shape, kernelSize as for ReconstructionbyDilate()
/// @param viscositySize of the second element; 1 by 1 is ReconstructionbyDilate()
/// @param out as for ReconstructionbyDilate(), but always written in place; must not overlap `marker` or `mask`
/// @return as ReconstructionbyDilate()
/// @throws cv::Exception, std::bad_alloc as ReconstructionbyDilate()
///
/// Cost: three steps and a comparison for each pass, as many passes as it takes, at most one for each pixel; passes cover the
/// surroundings of what the one before has changed. With a second element of 1 by 1, that of ReconstructionbyDilate().
/// Images that hold NaN or negative zeros are passed over whole. One thread of ours.
///
/// Source: C. Vachier and F. Meyer, "The viscous watershed transform", 2005.
[[nodiscard]] MORVANE_EXPORT bool ReconstructionbyViscousDilation(
    cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Size viscositySize, cv::Mat & out,
    cv::Size kernelSize);

/// The viscous reconstruction by erosion: ReconstructionbyViscousDilation() with dilations and erosions exchanged.
///
/// @param marker, mask, shape, viscositySize, out, kernelSize as for ReconstructionbyViscousDilation()
/// @return as ReconstructionbyDilate()
/// @throws cv::Exception, std::bad_alloc as ReconstructionbyDilate()
///
/// Cost and threads as for ReconstructionbyViscousDilation().
[[nodiscard]] MORVANE_EXPORT bool ReconstructionbyViscousErosion(
    cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Size viscositySize, cv::Mat & out,
    cv::Size kernelSize);

/// Floods up over a mask: the reconstruction by erosion of a marker above a mask, in one pass.
///
/// The image that bounds the result comes first and the one that seeds it second: the reverse of the order of the
/// `Reconstructionby...` operators.
///
/// | array    | shape                         | depths                       | channels | values |
/// |----------|-------------------------------|------------------------------|----------|--------|
/// | `mask`   | rows x cols                   | `CV_8U`, `CV_32S`, `CV_32F`  | 1        | any    |
/// | `marker` | rows x cols                   | that of `mask`               | 1        | any    |
/// | `out`    | made rows x cols where it is not | that of `mask`            | 1        | the flooded image |
///
/// The flood starts from the regional minima of max(`mask`, `marker`), which keep their values; a pixel that is reached
/// at some level takes the larger of that level and the mask. A minimum that the mask does not support stays as it is.
/// A NaN in the mask is passed, and what lies behind it takes the mask. Without any minimum all pixels keep
/// max(`mask`, `marker`).
///
/// @param mask, marker see the table
/// @param connexity the neighbourhood; with a wrapped one the flood crosses the left and right edges. A value outside the
///        enumeration has no neighbours.
/// @param out made as OpenCV's own operators make theirs; must not overlap `mask` or `marker`
/// @return true when the image was flooded. False, with `out` untouched, when the types differ, the depth is another,
///         an image is empty or has more than two dimensions. False, with `out` holding max(`mask`, `marker`), for more
///         than one channel.
/// @throws cv::Exception when the sizes differ, as `cv::max` does, to which an image of one pixel is a number: as a marker
///         it is that of all pixels, as a mask the answer is false; std::bad_alloc when memory runs out
///
/// Cost: O(pixels) for `CV_8U`, O(pixels log pixels) for the others. About 20 bytes for each pixel. One thread.
///
/// Source: L. Vincent, 1993; S. Beucher and F. Meyer, "The morphological approach to segmentation", 1993.
[[nodiscard]] MORVANE_EXPORT bool
OverBuild(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType const & connexity, cv::Mat & out);

/// Floods down under a mask: OverBuild() upside down, from the regional maxima of min(`mask`, `marker`).
///
/// @param mask, marker, connexity, out as for OverBuild()
/// @return as OverBuild(), with min(`mask`, `marker`)
/// @throws cv::Exception, std::bad_alloc as OverBuild()
///
/// Cost and threads as for OverBuild().
[[nodiscard]] MORVANE_EXPORT bool
UnderBuild(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType const & connexity, cv::Mat & out);

/// Marks the maxima of at least a given dynamic: those from which no path leads to a higher pixel without descending by
/// @p h.
///
/// | array   | shape                               | depths                                          | channels | values |
/// |---------|-------------------------------------|-------------------------------------------------|----------|--------|
/// | `image` | rows x cols                         | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32F`, `CV_64F` | 1        | any    |
/// | `out`   | rows x cols, or empty and then made like `image` | the six depths of ImageCompare()   | 1        | 255 on those maxima, 0 elsewhere |
///
/// Maxima within @p h of the largest number of an integer type are not found: the sum of image and @p h saturates.
///
/// @param image see the table
/// @param shape code of `cv::getStructuringElement`, of 3 by 3
/// @param h the dynamic; added in the type of the image, and compared as it is: a fraction counts against differences
///        that are whole in integer types. 0 marks every pixel.
/// @param out overwritten; an allocated matrix of another size or more channels is refused. May be `image`.
/// @return true when the maxima were marked. False when `image` has more than one channel or dimensions than two, with
///         `out` untouched; or, after an empty `out` was made, when it has another size, more channels, or a depth that
///         ImageCompare() refuses.
/// @throws cv::Exception as ReconstructionbyDilate(), and for images without pixels; std::bad_alloc when memory runs out
///
/// Cost: a reconstruction and a few passes over the image. OpenCV's and ImageCompare()'s threads.
///
/// Source: P. Soille, 2003, chapter 6.
[[nodiscard]] MORVANE_EXPORT bool HMaxima(cv::Mat const & image, int shape, double h, cv::Mat & out);

/// Marks the minima of at least a given dynamic: HMaxima() for minima.
///
/// @param image, shape, h, out as for HMaxima()
/// @return as HMaxima()
/// @throws cv::Exception, std::bad_alloc as HMaxima()
///
/// Cost and threads as for HMaxima().
[[nodiscard]] MORVANE_EXPORT bool HMinima(cv::Mat const & image, int shape, double h, cv::Mat & out);

/// Fills the holes of an image, by reconstruction: regional minima from which no path of lower values leads to a seed.
///
/// The seeds are the image's pixels where @p seedMask is not 0; elsewhere the marker has the image's largest value, cut
/// to an `int`, from which it falls onto the image. On a floating-point image with a fractional maximum, pixels are thus
/// filled to the whole number below it at most.
///
/// @param image as `mask` of ReconstructionbyErode()
/// @param seedMask `CV_8UC1`, rows x cols. Without data it counts as all seeds.
/// @param shape code of `cv::getStructuringElement`, of 3 by 3
/// @param out as for ReconstructionbyErode()
/// @return that of ReconstructionbyErode(); false, with `out` untouched, when `seedMask` has another type or an image more
///         than two dimensions
/// @throws cv::Exception when `seedMask` has another size, and as ReconstructionbyErode()
///
/// Cost, threads and aliasing as for ReconstructionbyErode().
[[nodiscard]] MORVANE_EXPORT bool
FillHolesbyReconstruction(cv::Mat const & image, cv::Mat const & seedMask, int shape, cv::Mat & out);

/// Fills the holes that do not touch the image's edge, by reconstruction: the seeds are the pixels of the edge.
///
/// @param image, shape, out as for the other form
/// @return as the other form
/// @throws cv::Exception as the other form
///
/// Cost, threads and aliasing as for the other form.
[[nodiscard]] MORVANE_EXPORT bool FillHolesbyReconstruction(cv::Mat const & image, int shape, cv::Mat & out);

/// Fills the holes of an image, by OverBuild() from the marker of FillHolesbyReconstruction().
///
/// @param image as `mask` of OverBuild()
/// @param seedMask as for FillHolesbyReconstruction()
/// @param connexity the neighbourhood
/// @param out as for OverBuild()
/// @return that of OverBuild(); false, with `out` untouched, when `seedMask` has another type than `CV_8UC1`
/// @throws cv::Exception as OverBuild(), when `seedMask` has another size, and for `CV_16F` images
///
/// Cost and threads as for OverBuild().
[[nodiscard]] MORVANE_EXPORT bool FillHolesbyOverBuild(
    cv::Mat const & image, cv::Mat const & seedMask, connexity::eConnexityType const & connexity, cv::Mat & out);

/// Fills the holes that do not touch the image's edge, by OverBuild().
///
/// @param image, connexity, out as for the other form
/// @return as the other form
/// @throws cv::Exception as the other form
///
/// Cost and threads as for OverBuild().
[[nodiscard]] MORVANE_EXPORT bool
FillHolesbyOverBuild(cv::Mat const & image, connexity::eConnexityType const & connexity, cv::Mat & out);

} // namespace morvane::geodesy
