// The plane of a covariance: which eigenvector, how long, which way.
#include "features/PlaneFit.h"

#include "support/NormalOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace morvane::normal_internals
{

namespace
{

using tests::Random;

/// What SolvePlane() gives.
struct Solution
{
    cv::Vec3d normal;
    double lambda = 0.0;
};

tarnel::Mat3<double> MatrixOf(cv::Matx33d const & matrix)
{
    tarnel::Mat3<double> result;
    std::copy(matrix.val, matrix.val + 9, result.values.begin());
    return result;
}

/// None where it refuses; then nothing must be written.
std::optional<Solution> Solve(cv::Matx33d const & covariance, cv::Vec3d const & centroid = {})
{
    Solution solution{{7.0, 8.0, 9.0}, 5.0};
    if (SolvePlane(centroid.val, MatrixOf(covariance), solution.normal.val, solution.lambda)) return solution;
    EXPECT_EQ(solution.normal, cv::Vec3d(7.0, 8.0, 9.0));
    EXPECT_EQ(solution.lambda, 5.0);
    return std::nullopt;
}

cv::Matx33d Diagonal(double xx, double yy, double zz)
{
    return cv::Matx33d::diag({xx, yy, zz});
}

/// The symmetric matrix with given eigenvectors.
cv::Matx33d WithEigenvalues(
    cv::Vec3d const & one, double first, cv::Vec3d const & two, double second, cv::Vec3d const & three, double third)
{
    return one * one.t() * first + two * two.t() * second + three * three.t() * third;
}

void ExpectNormal(std::optional<Solution> const & solution, cv::Vec3d const & normal, double lambda)
{
    ASSERT_TRUE(solution.has_value());
    EXPECT_LE(cv::norm(solution->normal - normal), 1e-9) << solution->normal << " instead of " << normal;
    EXPECT_NEAR(solution->lambda, lambda, 1e-9 * std::max(1.0, lambda));
}

TEST(SolvePlane, TakesTheEigenvectorOfTheSmallestEigenvalue)
{
    ExpectNormal(Solve(Diagonal(4.0, 1.0, 0.25)), {0.0, 0.0, 1.0}, 0.25);
    ExpectNormal(Solve(Diagonal(4.0, 0.25, 1.0)), {0.0, 1.0, 0.0}, 0.25);
    ExpectNormal(Solve(Diagonal(0.25, 4.0, 1.0)), {1.0, 0.0, 0.0}, 0.25);
    ExpectNormal(Solve(Diagonal(1.0, 4.0, 0.25)), {0.0, 0.0, 1.0}, 0.25);
    ExpectNormal(Solve(Diagonal(4e6, 1e6, 1.0)), {0.0, 0.0, 1.0}, 1.0);
}

TEST(SolvePlane, PointsTheNormalTowardsTheOrigin)
{
    cv::Matx33d const level = Diagonal(4.0, 1.0, 0.25);
    ExpectNormal(Solve(level, {0.0, 0.0, 5.0}), {0.0, 0.0, -1.0}, 0.25);
    ExpectNormal(Solve(level, {0.0, 0.0, -5.0}), {0.0, 0.0, 1.0}, 0.25);
    ExpectNormal(Solve(level, {9.0, -9.0, 1e-3}), {0.0, 0.0, -1.0}, 0.25);
    // The plane goes through the origin: the normal stays as it was found.
    ExpectNormal(Solve(level, {5.0, 5.0, 0.0}), {0.0, 0.0, 1.0}, 0.25);
    ExpectNormal(Solve(Diagonal(0.25, 4.0, 1.0), {3.0, 100.0, 0.0}), {-1.0, 0.0, 0.0}, 0.25);
    ExpectNormal(Solve(Diagonal(4.0, 0.25, 1.0), {3.0, -0.5, 7.0}), {0.0, 1.0, 0.0}, 0.25);
}

// With the centroid in the origin nothing turns the normal: the component of the product that was taken is positive, z
// for the first, x for the second, y for the third.
TEST(SolvePlane, TakesTheLongestOfThreeProductsOfRows)
{
    cv::Vec3d const along(0.6, 0.0, 0.8);
    cv::Vec3d const y(0.0, 1.0, 0.0);
    cv::Vec3d const across(-0.8, 0.0, 0.6);
    cv::Vec3d const steep(0.6, 0.0, -0.8);
    cv::Vec3d const steepAlong(0.8, 0.0, 0.6);
    ExpectNormal(Solve(WithEigenvalues(steepAlong, 4.0, y, 1.0, steep, 0.25)), -steep, 0.25);
    ExpectNormal(Solve(WithEigenvalues(along, 4.0, y, 1.0, across, 0.25)), -across, 0.25);
    cv::Vec3d const z(0.0, 0.0, 1.0);
    ExpectNormal(Solve(WithEigenvalues({0.8, 0.6, 0.0}, 4.0, z, 1.0, {0.6, -0.8, 0.0}, 0.25)), {-0.6, 0.8, 0.0}, 0.25);
    ExpectNormal(Solve(WithEigenvalues({0.6, 0.8, 0.0}, 4.0, z, 1.0, {-0.8, 0.6, 0.0}, 0.25)), {0.8, -0.6, 0.0}, 0.25);
    cv::Vec3d const x(1.0, 0.0, 0.0);
    ExpectNormal(Solve(WithEigenvalues({0.0, 0.8, 0.6}, 4.0, x, 1.0, {0.0, 0.6, -0.8}, 0.25)), {0.0, -0.6, 0.8}, 0.25);
    ExpectNormal(Solve(WithEigenvalues({0.0, 0.6, 0.8}, 4.0, x, 1.0, {0.0, -0.8, 0.6}, 0.25)), {0.0, 0.8, -0.6}, 0.25);
}

TEST(SolvePlane, PrefersTheSecondProductToAnEquallyLongFirst)
{
    double const half = std::sqrt(0.5);
    cv::Matx33d const covariance(2.0, 0.0, 1.0, 0.0, 1.5, 0.0, 1.0, 0.0, 2.0);
    ExpectNormal(Solve(covariance), {half, 0.0, -half}, 1.0);
}

TEST(SolvePlane, PrefersTheSecondProductToAnEquallyLongThird)
{
    double const half = std::sqrt(0.5);
    cv::Matx33d const covariance(2.0, 1.0, 0.0, 1.0, 2.0, 0.0, 0.0, 0.0, 1.5);
    ExpectNormal(Solve(covariance), {half, -half, 0.0}, 1.0);
}

TEST(SolvePlane, PrefersTheFirstProductToAnEquallyLongThird)
{
    double const half = std::sqrt(0.5);
    cv::Matx33d const covariance(1.5, 0.0, 0.0, 0.0, 2.0, 1.0, 0.0, 1.0, 2.0);
    ExpectNormal(Solve(covariance), {0.0, -half, half}, 1.0);
}

TEST(SolvePlane, RefusesPlanesThatFitTooWell)
{
    EXPECT_FALSE(Solve(Diagonal(4.0, 1.0, 0.0)).has_value());
    EXPECT_FALSE(Solve(Diagonal(4.0, 1.0, 0.00009999)).has_value());
    EXPECT_FALSE(Solve(Diagonal(4.0, 1.0, -1.0)).has_value());
    ExpectNormal(Solve(Diagonal(4.0, 1.0, 0.00010001)), {0.0, 0.0, 1.0}, 0.00010001);
}

TEST(SolvePlane, RefusesPointsWithoutASingleBestPlane)
{
    EXPECT_FALSE(Solve(Diagonal(0.0, 0.0, 0.0)).has_value());
    EXPECT_FALSE(Solve(Diagonal(1.0, 1.0, 1.0)).has_value());
    EXPECT_FALSE(Solve(Diagonal(0.3, 0.3, 0.3)).has_value());
    EXPECT_FALSE(Solve(Diagonal(4.0, 1.0, 1.0)).has_value());
    EXPECT_FALSE(Solve(Diagonal(1.0, 4.0, 1.0)).has_value());
    // The two large ones may be alike.
    ExpectNormal(Solve(Diagonal(4.0, 4.0, 1.0)), {0.0, 0.0, 1.0}, 1.0);
}

TEST(SolvePlane, RefusesNumbersThatAreNotFinite)
{
    for (double const number :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()})
    {
        EXPECT_FALSE(Solve(Diagonal(4.0, 1.0, number)).has_value()) << number;
        EXPECT_FALSE(Solve(cv::Matx33d(4.0, number, 0.0, number, 1.0, 0.0, 0.0, 0.0, 0.25)).has_value()) << number;
    }
}

TEST(SolvePlane, AgreesWithAnIteration)
{
    Random random(700);
    int planes = 0;
    for (int i = 0; i < 2000; ++i)
    {
        cv::Matx33d spread;
        for (double & number : spread.val)
        {
            number = 2.0 * random.Unit() - 1.0;
        }
        for (int row = 0; i % 3 == 0 && row < 3; ++row)
        {
            spread(row, 2) *= 0.02;
        }
        cv::Matx33d const covariance = spread * spread.t();
        cv::Vec3d const centroid(random.Unit() - 0.5, random.Unit() - 0.5, random.Unit() - 0.5);
        tests::OraclePlane const expected = tests::OracleSolve(centroid, covariance);
        if (expected.answer == tests::PlaneAnswer::Open || expected.isSideOpen) continue;
        auto const actual = Solve(covariance, centroid);
        ASSERT_EQ(actual.has_value(), expected.answer == tests::PlaneAnswer::Plane);
        if (!actual.has_value()) continue;
        ++planes;
        ASSERT_LE(cv::norm(actual->normal - expected.normal), 1e-6);
        ASSERT_NEAR(actual->lambda, expected.rms * expected.rms, 1e-9);
    }
    EXPECT_GT(planes, 1200);
}

TEST(Moments, DivideByAWeightInSinglePrecision)
{
    PointSums sums;
    sums.x = 6.0;
    sums.y = -3.0;
    sums.z = 30.0;
    sums.xx = 20.0;
    sums.yy = 5.0;
    sums.zz = 320.0;
    sums.xy = 1.0;
    sums.yz = -31.0;
    sums.xz = 59.0;
    Moments const moments(sums, 3);
    double const third = 1.0F / 3.0F;
    ASSERT_NE(third, 1.0 / 3.0);
    EXPECT_EQ(moments.centroid, (std::array<double, 3>{third * 6.0, third * -3.0, third * 30.0}));
    double const xx = (3.0 * 20.0 - 36.0) * third * third;
    double const xy = (3.0 * 1.0 + 18.0) * third * third;
    double const xz = (3.0 * 59.0 - 180.0) * third * third;
    double const yy = (3.0 * 5.0 - 9.0) * third * third;
    double const yz = (3.0 * -31.0 + 90.0) * third * third;
    double const zz = (3.0 * 320.0 - 900.0) * third * third;
    EXPECT_EQ(moments.covariance.values, (std::array<double, 9>{xx, xy, xz, xy, yy, yz, xz, yz, zz}));
}

} // namespace

} // namespace morvane::normal_internals
