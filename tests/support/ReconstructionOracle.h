/// @file
/// Reconstructions in their plainest form: every geodesic step over the whole image, and floods that search their queue
/// from end to end.
#pragma once

#include "support/AllTypes.h"
#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace morvane::tests
{

/// The operators that repeat a geodesic step.
enum class Repeated
{
    Dilate,
    Erode,
    ViscousDilation,
    ViscousErosion,
};

inline constexpr std::array kRepeated{
    Repeated::Dilate, Repeated::Erode, Repeated::ViscousDilation, Repeated::ViscousErosion};

/// The element of one step, and the second one of the viscous operators.
struct Elements
{
    int shape = 0;
    cv::Size kernelSize{3, 3};
    cv::Size viscositySize{1, 1};
};

/// Calls the operator of the library.
[[nodiscard]] bool
Reconstruct(Repeated repeated, cv::Mat const & marker, cv::Mat const & mask, Elements const & elements, cv::Mat & out);

/// Repeats the steps until one changes no byte, at most once for each pixel.
///
/// @param out of the marker's size and type. The layouts of the images are kept as they are, since a NaN may end up
///        differently in a row that is processed together with the next.
void OracleReconstruct(
    Repeated repeated, cv::Mat const & marker, cv::Mat const & mask, Elements const & elements, cv::Mat & out);

/// How many pixels of a one-channel image change in each step of a reconstruction by dilation, the first clip aside,
/// down to the last 0.
[[nodiscard]] std::vector<std::size_t>
OracleChanges(cv::Mat const & marker, cv::Mat const & mask, Elements const & elements);

/// In which order entries of equal priority leave a queue.
enum class Equals
{
    Any,      ///< which does not show in the result without NaN and negative zeros
    AsInHeap, ///< that of std::push_heap and std::pop_heap on the values alone
};

/// Floods up over a mask, or down under it.
///
/// @param mask, marker of one channel
[[nodiscard]] cv::Mat
OracleBuild(bool over, cv::Mat const & mask, cv::Mat const & marker, int connexity, Equals equals = Equals::Any);

/// The pixels of the maxima of at least a dynamic, or of the minima.
///
/// @param type of the result
[[nodiscard]] cv::Mat OracleExtrema(bool maxima, cv::Mat const & image, int shape, double h, int type);

/// The marker from which holes are filled.
[[nodiscard]] cv::Mat OracleHoleMarker(cv::Mat const & image, cv::Mat const & seedMask);

/// 255 along the edge of an image, 0 inside.
[[nodiscard]] cv::Mat OracleEdge(cv::Size size);

/// A random image of plateaus and slopes over the whole range of the type, fractions and negative numbers where it has
/// them; no NaN, no infinity, no negative zero.
[[nodiscard]] cv::Mat LevelImage(Random & random, cv::Size size, int type);

/// Where a marker lies.
enum class MarkerKind
{
    Below,
    Above,
    Crossing,
    Sparse, ///< least everywhere but at a few pixels, where it is the mask; the most instead for erosions
};

inline constexpr std::array kMarkerKinds{
    MarkerKind::Below, MarkerKind::Above, MarkerKind::Crossing, MarkerKind::Sparse};

/// A random marker for a mask.
[[nodiscard]] cv::Mat RandomMarker(Random & random, cv::Mat const & mask, MarkerKind kind, bool sparseHigh = false);

/// Sizes of elements: one pixel, those of the sweeps, others.
[[nodiscard]] std::vector<cv::Size> const & KernelSizes();

/// A line for SCOPED_TRACE.
[[nodiscard]] std::string Describe(Repeated repeated, cv::Mat const & marker, Elements const & elements);

} // namespace morvane::tests
