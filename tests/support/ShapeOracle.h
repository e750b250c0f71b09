/// @file
/// Geodesic measures and shape descriptors step by step, with OpenCV's filters on every size.
#pragma once

#include <opencv2/core.hpp>

#include <map>
#include <vector>

namespace morvane::tests
{

/// The ends of the longest path in a set of pixels, and how many pixels it has.
struct OraclePath
{
    cv::Point first;
    cv::Point second;
    double length;
};

/// The longest path by three distance images of the bounding box.
[[nodiscard]] OraclePath OracleGeodesicPath(std::vector<cv::Point> const & points);

/// The pixels of the flat zones of an image that are not empty, in raster order, by their numbers in `CV_16S`; numbers
/// below 1 are left out.
[[nodiscard]] std::map<int, std::vector<cv::Point>> OracleZonePixels(cv::Mat const & image);

/// 255 at the first extremity of each zone, or at both.
[[nodiscard]] cv::Mat OracleExtremities(cv::Mat const & image, bool both);

/// The measures of the longest path.
enum class PathMeasure
{
    Elongation,
    Tortuosity,
    Diameter,
};

/// The measure of its zone in each pixel, `CV_64F`.
[[nodiscard]] cv::Mat OraclePathMeasure(cv::Mat const & image, PathMeasure measure);

/// The elongation of the inertia ellipse in each pixel, `CV_64F`.
[[nodiscard]] cv::Mat OracleStandardElongation(cv::Mat const & image);

/// The area between dilation and erosion, each by an element of the whole size.
[[nodiscard]] std::vector<double> OracleFractalDimension(cv::Mat const & src, int shape);

/// What is left after `cv::MORPH_OPEN` or `cv::MORPH_CLOSE`, one filter after the other.
[[nodiscard]] std::vector<double> OracleGranulometry(cv::Mat const & src, int shape, int operation);

/// The boxes of the 8-connected parts of an image that lie in no hole of another, in raster order of their first
/// pixels.
[[nodiscard]] std::vector<cv::Rect> OracleOuterBoxes(cv::Mat1b const & shape);

/// An image closed by a square of 61 pixels, by plain loops.
[[nodiscard]] cv::Mat1b OracleClosed(cv::Mat1b const & shape);

/// The response of Harris' detector by plain loops in double precision, scaled to 0 to 255.
[[nodiscard]] cv::Mat1d OracleHarrisCorners(cv::Mat const & src);

} // namespace morvane::tests
