#include "features/PlaneFit.h"

#include "tarnel/EigenValues.h"

#include <cmath>
#include <cstddef>

namespace morvane::normal_internals
{

namespace
{

using Vector = std::array<double, 3>;

Vector Cross(Vector const & a, Vector const & b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Dot(Vector const & a, double const * b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

double SquaredNorm(Vector const & vector)
{
    return Dot(vector, vector.data());
}

/// The eigenvector of an eigenvalue: across all rows of the matrix less the eigenvalue, so along the cross product of
/// two of them. Which of two equally long ones is taken shows in its sign and its last bits.
Vector EigenvectorOf(tarnel::Mat3<double> const & matrix, double eigenvalue)
{
    Vector const row0{matrix(0, 0) - eigenvalue, matrix(0, 1), matrix(0, 2)};
    Vector const row1{matrix(1, 0), matrix(1, 1) - eigenvalue, matrix(1, 2)};
    Vector const row2{matrix(2, 0), matrix(2, 1), matrix(2, 2) - eigenvalue};
    Vector const first = Cross(row0, row1);
    Vector const second = Cross(row1, row2);
    Vector const third = Cross(row2, row0);
    Vector longest = SquaredNorm(first) > SquaredNorm(second) ? first : second;
    if (SquaredNorm(third) > SquaredNorm(longest)) longest = third;
    return longest;
}

} // namespace

Moments::Moments(PointSums const & sums, int count)
{
    double const weight = 1.0F / static_cast<float>(count);
    double const points = count;
    auto const covarianceOf = [&](double products, double one, double other) {
        return (points * products - one * other) * weight * weight;
    };
    centroid = {weight * sums.x, weight * sums.y, weight * sums.z};
    double const xy = covarianceOf(sums.xy, sums.x, sums.y);
    double const xz = covarianceOf(sums.xz, sums.x, sums.z);
    double const yz = covarianceOf(sums.yz, sums.y, sums.z);
    covariance.values = {covarianceOf(sums.xx, sums.x, sums.x), xy, xz, xy,
                         covarianceOf(sums.yy, sums.y, sums.y), yz, xz, yz,
                         covarianceOf(sums.zz, sums.z, sums.z)};
}

bool SolvePlane(double const * centroid, tarnel::Mat3<double> const & covariance, double * normal, double & lambda)
{
    std::array<double, 3> eigenvalues{};
    if (!algo::GetEigenValues_3x3(covariance, eigenvalues.data())) return false;
    double const least = eigenvalues[2];
    if (eigenvalues[1] == least || kLeastEigenvalue > least) return false;
    Vector across = EigenvectorOf(covariance, least);
    double const norm = std::sqrt(SquaredNorm(across));
    double const scale = norm == 0.0 ? 1.0 : norm;
    double const sign = Dot(across, centroid) > 0.0 ? -1.0 : 1.0;
    for (std::size_t i = 0; i < 3; ++i)
    {
        normal[i] = sign * (across[i] / scale);
    }
    lambda = least;
    return true;
}

} // namespace morvane::normal_internals
