#include "common/Dispatch.h"

#include <morvane/features/Normals.h>
#include <morvane/filters/AlternatingSequentialFilters.h>

#include <opencv2/imgproc.hpp>

#include <cmath>

namespace morvane::features
{

namespace
{

/// Where the view comes from, and how far apart pixels are compared.
struct View
{
    float focalLength;
    cv::Point principalPoint;
    int step;
};

/// The two tangents of the surface at each pixel, to the right and downwards.
struct Tangents
{
    explicit Tangents(cv::Size size)
    {
        for (cv::Mat1f * const image : {&t1x, &t1y, &t2x, &t2y, &dzx, &dzy})
        {
            *image = cv::Mat1f(size, 0.0F);
        }
    }

    cv::Mat1f t1x;
    cv::Mat1f t1y;
    cv::Mat1f t2x;
    cv::Mat1f t2y;
    cv::Mat1f dzx;
    cv::Mat1f dzy;
};

/// What lies in the image plane, for rays that meet in a point.
void FillInPerspective(cv::Mat const & depth, View const & view, Tangents & tangents)
{
    float const f = view.focalLength;
    for (int y = 0; y < depth.rows - view.step; ++y)
    {
        auto const fromCentreY = static_cast<float>(y - view.principalPoint.y);
        for (int x = 0; x < depth.cols - view.step; ++x)
        {
            auto const fromCentreX = static_cast<float>(x - view.principalPoint.x);
            float const z = depth.at<float>(y, x);
            float const dzx = tangents.dzx(y, x);
            float const dzy = tangents.dzy(y, x);
            tangents.t1x(y, x) = (fromCentreX * dzx + z) / f;
            tangents.t1y(y, x) = fromCentreY * dzx / f;
            tangents.t2y(y, x) = (fromCentreY * dzy + z) / f;
            tangents.t2x(y, x) = fromCentreX * dzy / f;
        }
    }
}

/// The same for parallel rays.
void FillInParallel(cv::Mat const & depth, View const & view, Tangents & tangents)
{
    for (int y = 0; y < depth.rows - view.step; ++y)
    {
        for (int x = 0; x < depth.cols - view.step; ++x)
        {
            float const width = depth.at<float>(y, x) / view.focalLength;
            tangents.t1x(y, x) = width;
            tangents.t2y(y, x) = width;
        }
    }
}

/// The differences of depth to the right and downwards.
void FillDifferences(cv::Mat const & depth, int step, Tangents & tangents)
{
    for (int y = 0; y < depth.rows - step; ++y)
    {
        auto const * const here = depth.ptr<float>(y);
        auto const * const below = depth.ptr<float>(y + step);
        for (int x = 0; x < depth.cols - step; ++x)
        {
            tangents.dzx(y, x) = here[x + step] - here[x];
            tangents.dzy(y, x) = below[x] - here[x];
        }
    }
}

/// Smooths what lies in the image plane; differences of depth stay as they are.
bool Smooth(Tangents & tangents)
{
    constexpr int kSize = 5;
    auto const smooth = [](cv::Mat1f & image) {
        return filters::ASF_Close(image, image, kSize, cv::MORPH_RECT);
    };
    return smooth(tangents.t1x) && smooth(tangents.t1y) && smooth(tangents.t2x) && smooth(tangents.t2y);
}

/// The unit vector across two others, 0 where these are parallel.
cv::Vec3d UnitNormal(cv::Vec3d const & one, cv::Vec3d const & other)
{
    constexpr double kShortest = 1e-10;
    cv::Vec3d const across(
        one[1] * other[2] - one[2] * other[1], one[2] * other[0] - one[0] * other[2],
        one[0] * other[1] - one[1] * other[0]);
    double const length = std::sqrt(across[0] * across[0] + across[1] * across[1] + across[2] * across[2]);
    if (!(length > kShortest)) return {};
    return {across[0] / length, across[1] / length, across[2] / length};
}

} // namespace

bool EstimateNormals(
    cv::Mat const & depth, cv::Mat & normals, float focalLength, cv::Point const & principalPoint, int step,
    bool perspective)
{
    if (!common::IsRaster(depth) || !common::IsSingleChannel(depth) || depth.depth() != CV_32F || step < 0)
        return false;
    // A copy of the header: `normals` may be the same matrix.
    cv::Mat const depths = depth;
    View const view{focalLength, principalPoint, step};
    normals = cv::Mat();
    normals = cv::Mat::zeros(depths.size(), CV_64FC3);
    Tangents tangents(depths.size());
    FillDifferences(depths, step, tangents);
    if (perspective)
    {
        FillInPerspective(depths, view, tangents);
    }
    else
    {
        FillInParallel(depths, view, tangents);
    }
    if (!Smooth(tangents)) return false;
    for (int y = 0; y < depths.rows - step; ++y)
    {
        auto * const row = normals.ptr<cv::Vec3d>(y);
        for (int x = 0; x < depths.cols - step; ++x)
        {
            row[x] = UnitNormal(
                {tangents.t1x(y, x), tangents.t1y(y, x), tangents.dzx(y, x)},
                {tangents.t2x(y, x), tangents.t2y(y, x), tangents.dzy(y, x)});
        }
    }
    return true;
}

} // namespace morvane::features
