#include <morvane/features/Normals.h>

#include "common/Dispatch.h"

#include <morvane/common/ImageCompare.h>
#include <morvane/features/NormalComputation.h>

#include <opencv2/imgproc.hpp>

#include <cfloat>
#include <cmath>
#include <limits>
#include <memory>

namespace morvane::features
{

using common::SameSize;

namespace
{

constexpr double kDefaultRms = 25.0;
constexpr int kMinPoints = 6;

/// Tells whether the inputs are images of one channel and equal size.
bool AreReady(cv::Mat const & depth, cv::Mat const & x, cv::Mat const & y, cv::Mat const & z)
{
    if (depth.empty() || x.empty() || y.empty() || z.empty() || !SameSize(depth, x, y, z)) return false;
    bool const haveOneChannel = depth.channels() == 1 && x.channels() == 1 && y.channels() == 1 && z.channels() == 1;
    return haveOneChannel && z.depth() == x.depth() && depth.depth() != CV_8S && depth.depth() != CV_16F;
}

/// Runs the class of a method. @return false when there is none
template <class T>
bool Run(
    eNormalComputationMethod method, int halfWidth, bool wrapColumns, cv::Mat const & depth, cv::Mat const & x,
    cv::Mat const & y, cv::Mat const & z, NormalAndRMSOutput_T<T> & output)
{
    auto const run = [&]<class Computation> {
        Computation computation(halfWidth, depth, x, y, z, output, kMinPoints);
        computation.wrapColumns = wrapColumns;
        computation.Execute();
        return true;
    };
    using Output = NormalAndRMSOutput_T<T>;
    using Plain = Nonefuntion<double>;
    using Root = Sqrtfuntion<double>;
    switch (method)
    {
    case WindowMoving:
        return run.template operator()<NormalComputationWithWindowMoving_T<T, Output>>();
    case Pyramid:
        return run.template operator()<NormalComputationWithPyramid_T<T, Output, Plain>>();
    case PyramidWindowMoving:
        return run.template operator()<NormalComputationWithPyramidWindowMoving_T<T, Output, Plain>>();
    case PyramidWindowMovingSqrt:
        return run.template operator()<NormalComputationWithPyramidWindowMoving_T<T, Output, Root>>();
    default:
        return false;
    }
}

template <class T>
bool ComputeNormals(
    cv::Mat const & depth, cv::Mat const & x, cv::Mat const & y, cv::Mat const & z, cv::Mat & normals, cv::Mat & rms,
    eNormalComputationMethod method, int halfWidth, bool wrapColumns)
{
    int const type = cv::DataType<T>::depth;
    if (!AreReady(depth, x, y, z)) return false;
    if (rms.empty() || normals.empty())
    {
        rms = cv::Mat::zeros(depth.size(), CV_MAKETYPE(type, 1));
        normals = cv::Mat::zeros(depth.size(), CV_MAKETYPE(type, 3));
    }
    if (!SameSize(depth, normals, rms) || normals.depth() != x.depth() || normals.depth() != y.depth()) return false;
    if (normals.channels() != 3 || rms.type() != CV_MAKETYPE(type, 1)) return false;
    NormalAndRMSOutput_T<T> output(normals, static_cast<T>(kDefaultRms), rms);
    rms.setTo(kDefaultRms);
    return Run<T>(method, halfWidth, wrapColumns, depth, x, y, z, output);
}

/// The lowest or highest measured height in a square around each pixel; what counts for unmeasured ones is @p missing.
cv::Mat ExtremeAround(cv::Mat const & height, cv::Mat const & mask, float missing, int operation, int kernelSize)
{
    cv::Mat filled(height.size(), height.type());
    (void)common::ImageCompare(mask, 0, 0.0, cv::Scalar(missing), height, filled);
    cv::Mat const kernel = cv::getStructuringElement(cv::MORPH_RECT, {kernelSize, kernelSize}, {-1, -1});
    cv::Mat extreme;
    cv::morphologyEx(filled, extreme, operation, kernel, {-1, -1}, 1, cv::BORDER_CONSTANT, cv::Scalar::all(DBL_MAX));
    return extreme;
}

/// The heights with unmeasured ones replaced by the middle of those around them.
cv::Mat FilledHeights(cv::Mat const & height, cv::Mat const & mask, int kernelSize)
{
    cv::Mat const low = ExtremeAround(height, mask, FLT_MAX, cv::MORPH_ERODE, kernelSize);
    cv::Mat const high = ExtremeAround(height, mask, -FLT_MAX, cv::MORPH_DILATE, kernelSize);
    cv::Mat middle;
    cv::addWeighted(low, 0.5, high, 0.5, 0.0, middle);
    (void)common::ImageCompare(high, 0, -FLT_MAX, cv::Scalar(0), middle, middle);
    cv::Mat filled(height.size(), height.type());
    (void)common::ImageCompare(mask, 0, 0.0, middle, height, filled);
    return filled;
}

/// A pixel's number in its row, or that of its row, times the size of a pixel.
void FillGrid(float pixelSize, cv::Mat & x, cv::Mat & y)
{
    for (int row = 0; row < x.rows; ++row)
    {
        for (int column = 0; column < x.cols; ++column)
        {
            x.at<float>(row, column) = static_cast<float>(column) * pixelSize;
            y.at<float>(row, column) = static_cast<float>(row) * pixelSize;
        }
    }
}

/// The angle to the vertical in degrees, whichever way the normal points.
float SlopeOf(cv::Vec3f const & normal)
{
    constexpr double kDegrees = 57.29577951308232;
    return static_cast<float>(static_cast<double>(std::acos(std::fabs(normal[2]))) * kDegrees);
}

} // namespace

bool ComputeMatNormal(
    cv::Mat const & depth, cv::Mat const & x, cv::Mat const & y, cv::Mat const & z, cv::Mat & normals, cv::Mat & rms,
    eNormalComputationMethod method, int halfWidth, bool wrapColumns)
{
    switch (x.depth())
    {
    case CV_32F:
        return ComputeNormals<float>(depth, x, y, z, normals, rms, method, halfWidth, wrapColumns);
    case CV_64F:
        return ComputeNormals<double>(depth, x, y, z, normals, rms, method, halfWidth, wrapColumns);
    default:
        return false;
    }
}

bool ComputeNormalSlopeAndRms(
    cv::Mat const & height, cv::Mat const & mask, float pixelSize, unsigned int kernelSize, cv::Mat & normals,
    cv::Mat & slope, cv::Mat & rms)
{
    if (height.empty() || mask.empty() || !(pixelSize > 0.0F) || kernelSize == 0) return false;
    if (height.type() != CV_32FC1 || !common::IsSingleChannel(mask) || !SameSize(height, mask)) return false;
    return common::VisitElement(mask, [&]<class T> {
        if (kernelSize > static_cast<unsigned>(std::numeric_limits<int>::max())) return false;
        cv::Mat const filled = FilledHeights(height, mask, static_cast<int>(kernelSize));
        cv::Mat x(height.size(), CV_32FC1);
        cv::Mat y(height.size(), CV_32FC1);
        FillGrid(pixelSize, x, y);
        if (!ComputeMatNormal(filled, x, y, filled, normals, rms, PyramidWindowMoving, 1, false)) return false;
        slope = cv::Mat(height.size(), CV_32FC1, cv::Scalar(-1.0));
        for (int row = 0; row < height.rows; ++row)
        {
            for (int column = 0; column < height.cols; ++column)
            {
                cv::Vec3f const & normal = normals.at<cv::Vec3f>(row, column);
                if (mask.at<T>(row, column) == T{0})
                {
                    rms.at<float>(row, column) = -1.0F;
                }
                else if (normal != cv::Vec3f())
                {
                    slope.at<float>(row, column) = SlopeOf(normal);
                }
            }
        }
        return true;
    });
}

bool FindMainOrientation(cv::Mat const & src, cv::Point2d & direction)
{
    if (src.empty()) return false;
    cv::Moments const moments = cv::moments(src, false);
    double const angle =
        0.5 * std::atan2(2.0 * moments.mu11 / moments.m00, moments.mu20 / moments.m00 - moments.mu02 / moments.m00);
    direction = {std::cos(angle), std::sin(angle)};
    return true;
}

} // namespace morvane::features
