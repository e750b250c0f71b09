#include "features/NormalChecks.h"
#include "features/PlaneFit.h"

#include <morvane/common/Conversions.h>
#include <morvane/features/NormalComputation.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace morvane
{

using normal_internals::AreCoordinates;
using normal_internals::Moments;
using normal_internals::PointSums;
using normal_internals::SolvePlane;
using normal_internals::ValidityOf;

namespace
{

/// The arc tangent by a polynomial, meant for up to 1.
float FastArcTangent(float t)
{
    float const magnitude = std::fabs(t);
    return t * 0.7853982F - ((magnitude - 1.0F) * t) * (magnitude * 0.0663F + 0.2447F);
}

/// The neighbours of a pixel that take part in its plane.
struct Neighbours
{
    PointSums sums;
    int count = 0;
    int holes = 0;

    void Add(double x, double y, double z)
    {
        sums.x += x;
        sums.y += y;
        sums.z += z;
        sums.xx += x * x;
        sums.yy += y * y;
        sums.zz += z * z;
        sums.xy += x * y;
        sums.yz += y * z;
        sums.xz += x * z;
        ++count;
    }
};

/// The radius of the window of a pixel.
int RadiusAt(NormalComputationWithMaxDepthWithFixedWidth const & computation, float depth)
{
    constexpr int kLeast = 3;
    float const angle = FastArcTangent(computation.fixedWidth / depth);
    int const radius = common::TruncateTo<int>(angle * computation.inverseAngleStep + 0.5F);
    return std::min(std::max(radius, kLeast), computation.halfWidth);
}

/// Every how many pixels a window is looked at.
int StrideOf(int radius)
{
    constexpr int kDense = 8;
    return radius > kDense ? radius / kDense + 1 : 1;
}

Neighbours NeighboursOf(
    NormalComputationWithMaxDepthWithFixedWidth const & computation, int row, int column, int radius, int stride)
{
    Neighbours neighbours;
    float const depth = computation.depth->at<float>(row, column);
    for (int y = row - radius; y <= row + radius; y += stride)
    {
        auto const * const depths = computation.depth->ptr<float>(y);
        uchar const * const mask = computation.holeMask.ptr(y);
        for (int x = column - radius; x <= column + radius; x += stride)
        {
            bool const isHole =
                depths[x] == 0.0F && mask[x] != 0 && y < computation.rowLimit && x < computation.columnLimit;
            if (isHole)
            {
                ++neighbours.holes;
            }
            // One-sided: what is much nearer is left out, what is farther stays.
            else if (computation.maxDepthDifference > depth - depths[x])
            {
                neighbours.Add(
                    computation.x->at<float>(y, x), computation.y.at<float>(y, x), computation.z.at<float>(y, x));
            }
        }
    }
    return neighbours;
}

} // namespace

NormalComputationWithMaxDepthWithFixedWidth::NormalComputationWithMaxDepthWithFixedWidth(
    int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat const & yImage,
    cv::Mat const & zImage, RMSOutput_T<float> & outputOfResults, float depthDifference, float width, float angleStep,
    int rowsWithHoles, int columnsWithHoles, cv::Mat mask, int leastPoints)
    : NormalComputation_T(halfWidthOfWindow, depthImage, xImage, yImage, zImage, outputOfResults, leastPoints)
    , maxDepthDifference(depthDifference)
    , fixedWidth(width)
    , inverseAngleStep(1.0F / angleStep)
    , rowLimit(rowsWithHoles)
    , columnLimit(columnsWithHoles)
    , holeMask(std::move(mask))
{
    wrapColumns = false;
}

NormalComputationWithMaxDepthWithFixedWidth::~NormalComputationWithMaxDepthWithFixedWidth() = default;

void NormalComputationWithMaxDepthWithFixedWidth::Execute()
{
    if (halfWidth < 1 || !AreCoordinates<float>(ValidityOf(*depth), {*depth, *x, y, z})) return;
    if (holeMask.type() != CV_8UC1 || !common::SameSize(*depth, holeMask)) return;
    auto const writeAt = [&](int row, int column) {
        int const radius = RadiusAt(*this, depth->at<float>(row, column));
        int const stride = StrideOf(radius);
        Neighbours const neighbours = NeighboursOf(*this, row, column, radius, stride);
        if (neighbours.count <= minPoints) return;
        int const limit = (2 * radius + 1) / stride;
        // Holes add nothing to the sums, but many of them to what these are divided by.
        int const count = neighbours.count + (neighbours.holes > limit ? neighbours.holes : 0);
        Moments const moments(neighbours.sums, count);
        std::array<double, 3> normal{};
        double lambda = 0.0;
        bool const isPlane = SolvePlane(moments.centroid.data(), moments.covariance, normal.data(), lambda);
        auto const rms = isPlane ? static_cast<float>(std::sqrt(lambda)) : 0.0F;
        output->WriteNormalAndRms(&row, &column, count, moments.centroid.data(), normal.data(), rms, rms, 0);
    };
    for (int row = halfWidth; row < depth->rows - halfWidth; ++row)
    {
        for (int column = halfWidth; column < depth->cols - halfWidth; ++column)
        {
            if (depth->at<float>(row, column) > 0.0F) writeAt(row, column);
        }
    }
}

} // namespace morvane
