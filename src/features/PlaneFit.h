/// @file
/// The plane through a set of points, from their sums.
#pragma once

#include "tarnel/Mat3.h"

#include <morvane/Export.h>

#include <array>

namespace morvane::normal_internals
{

/// Planes that fit better than this have no normal, on purpose.
inline constexpr double kLeastEigenvalue = 0.0001;

/// The sums over the points of a window.
struct PointSums
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double xx = 0.0;
    double yy = 0.0;
    double zz = 0.0;
    double xy = 0.0;
    double yz = 0.0;
    double xz = 0.0;
};

/// Centroid and covariance of a window's points.
struct Moments
{
    /// @param sums over the points
    /// @param count of them, above 0
    MORVANE_EXPORT Moments(PointSums const & sums, int count);

    std::array<double, 3> centroid{};
    tarnel::Mat3<double> covariance; ///< of the population
};

/// Fits a plane to points.
///
/// @param centroid of the points, three numbers
/// @param covariance of the points, symmetric
/// @param normal three numbers: becomes the unit vector across the plane, on the side of the origin
/// @param lambda becomes the smallest eigenvalue, the mean square distance from the plane
/// @return false when the smallest eigenvalue is not unique or below 0.0001, with nothing written
MORVANE_EXPORT bool
SolvePlane(double const * centroid, tarnel::Mat3<double> const & covariance, double * normal, double & lambda);

} // namespace morvane::normal_internals
