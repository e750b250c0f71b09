/// @file
/// Planes fitted to point clouds in their plainest form: every window is summed anew, and eigenvalues come from OpenCV's
/// iteration.
///
/// The library finds eigenvalues in another way, so the last bits may differ: where a choice hangs on these, the oracle
/// says that it is open.
#pragma once

#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <string>
#include <vector>

namespace morvane::tests
{

/// The images of a scan.
struct PointCloud
{
    cv::Mat depth; ///< not 0 where a point exists
    cv::Mat x;     ///< float or double
    cv::Mat y;     ///< the same type
    cv::Mat z;     ///< the same type
};

/// How a random cloud is made.
struct CloudMixture
{
    double emptyShare = 0.2;    ///< pixels without a point
    double strayShare = 0.0;    ///< of these, the ones that have coordinates all the same
    double flatShare = 0.2;     ///< of patches of 6 by 6 pixels, the ones without noise
    int depthType = CV_32FC1;   ///< of the image that says where points are
    cv::Vec3d centre{0, 0, 16}; ///< of the cloud, in whole numbers
};

/// A random rough surface. Coordinates are small multiples of 1/64: sums of them and of their products are exact.
[[nodiscard]] PointCloud RoughCloud(Random & random, cv::Size size, int type, CloudMixture const & mixture = {});

/// The sums over the points of a window.
struct WindowSums
{
    int count = 0;
    cv::Vec3d sum;
    cv::Matx33d products; ///< all nine

    void Add(cv::Vec3d const & point);
};

/// The sums of a moving window: rows mirrored at the top and cut at the bottom, columns circular or cut.
[[nodiscard]] WindowSums OracleMovingSums(PointCloud const & cloud, cv::Point pixel, int radius, bool wrapColumns);

/// The sums of a window that is cut at all borders; products of different coordinates have the type of these.
[[nodiscard]] WindowSums OracleCutSums(PointCloud const & cloud, cv::Point pixel, int radius);

/// What is known of a plane.
enum class PlaneAnswer
{
    None, ///< there is none
    Plane,
    Open ///< either may be
};

/// The plane of a window.
struct OraclePlane
{
    PlaneAnswer answer = PlaneAnswer::None;
    bool isSideOpen = false; ///< the origin lies in the plane: the normal may point either way
    int count = 0;
    cv::Vec3d centroid;
    cv::Vec3d normal;
    double rms = 0.0;
};

/// The plane of points with a covariance.
[[nodiscard]] OraclePlane OracleSolve(cv::Vec3d const & centroid, cv::Matx33d const & covariance);

/// The plane of the points of a window, which are divided by @p count.
[[nodiscard]] OraclePlane OracleFit(WindowSums const & sums, int count);

/// What a strategy is told.
struct NormalSettings
{
    int method = 0; ///< of features::eNormalComputationMethod
    int halfWidth = 1;
    bool wrapColumns = false;
    int minPoints = 6;
    double defaultRms = 25.0;
};

/// The radii that a strategy tries, in rising order.
[[nodiscard]] std::vector<int> OracleRadii(cv::Size size, NormalSettings const & settings);

/// Expected images.
struct OracleNormals
{
    cv::Mat normals; ///< three channels of the type of the coordinates
    cv::Mat rms;     ///< one channel
    cv::Mat1b open;  ///< 0 where both are known, 1 where the normal may point either way, 2 where nothing is known
};

/// What a strategy makes of images that hold @p normals and the default distance.
[[nodiscard]] OracleNormals
OracleStrategy(PointCloud const & cloud, NormalSettings const & settings, cv::Mat const & normals);

/// Tells whether images are as expected, but for rounding.
[[nodiscard]] ::testing::AssertionResult
Agree(cv::Mat const & normals, cv::Mat const & rms, OracleNormals const & expected);

/// How many pixels have a plane that is known.
[[nodiscard]] int PlaneCount(OracleNormals const & expected, double defaultRms);

/// What the window of constant width in space is told.
struct FixedWidth
{
    int halfWidth = 4;
    float maxDepthDifference = 1.0F;
    float width = 1.0F;
    float angleStep = 0.05F;
    int rowLimit = 1000;
    int columnLimit = 1000;
    int minPoints = 6;
};

/// A result of the window of constant width in space.
struct FixedWidthResult
{
    cv::Point pixel;
    OraclePlane plane; ///< with the count that the moments were divided by
};

/// All results, in raster order.
[[nodiscard]] std::vector<FixedWidthResult>
OracleFixedWidth(PointCloud const & cloud, cv::Mat const & holeMask, FixedWidth const & settings);

/// A line for SCOPED_TRACE.
[[nodiscard]] std::string NormalCase(PointCloud const & cloud, NormalSettings const & settings);

} // namespace morvane::tests
