#include "features/NormalChecks.h"
#include "features/PlaneFit.h"

#include <morvane/features/NormalComputation.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <limits>

namespace morvane
{

using normal_internals::AreCoordinates;
using normal_internals::PlaneOf;
using normal_internals::PointSums;
using normal_internals::ValidityOf;

namespace
{

/// The pixels of a window: rows and columns from the first up to but not including the last.
struct Window
{
    Window(int row, int column, int radius, cv::Size const & image)
        : firstRow(std::max(row - radius, 0))
        , lastRow(std::min(row + 1 + radius, image.height))
        , firstColumn(std::max(column - radius, 0))
        , lastColumn(std::min(column + 1 + radius, image.width))
    {}

    /// The sum over the window, from the corners of an integral image.
    template <class Sum>
    [[nodiscard]] Sum SumIn(cv::Mat const & integral) const
    {
        Sum const * const above = integral.ptr<Sum>(firstRow);
        Sum const * const below = integral.ptr<Sum>(lastRow);
        return below[lastColumn] - above[lastColumn] - below[firstColumn] + above[firstColumn];
    }

    int firstRow;
    int lastRow;
    int firstColumn;
    int lastColumn;
};

/// The integral image of the products of two images.
cv::Mat IntegralOfProducts(cv::Mat const & one, cv::Mat const & other)
{
    cv::Mat products;
    cv::Mat sums;
    cv::multiply(one, other, products, 1.0);
    cv::integral(products, sums);
    return sums;
}

} // namespace

template <class T, class Output, class Func>
NormalComputationWithPyramid_T<T, Output, Func>::NormalComputationWithPyramid_T(
    int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat const & yImage,
    cv::Mat const & zImage, Output & outputOfResults, int leastPoints)
    : NormalComputation_T<T, Output, Func>(
          halfWidthOfWindow, depthImage, xImage, yImage, zImage, outputOfResults, leastPoints)
    , validity(ValidityOf(depthImage))
{
    if (!AreCoordinates<T>(validity, {xImage, yImage, zImage})) return;
    cv::integral(validity, count);
    cv::integral(xImage, sumX, squareSumX);
    cv::integral(yImage, sumY, squareSumY);
    cv::integral(zImage, sumZ, squareSumZ);
    sumXY = IntegralOfProducts(xImage, yImage);
    sumYZ = IntegralOfProducts(yImage, zImage);
    sumXZ = IntegralOfProducts(xImage, zImage);
}

template <class T, class Output, class Func>
NormalComputationWithPyramid_T<T, Output, Func>::~NormalComputationWithPyramid_T() = default;

template <class T, class Output, class Func>
void NormalComputationWithPyramid_T<T, Output, Func>::Execute()
{
    if (count.empty()) return;
    int const lastRadius = std::max(this->halfWidth, 2);
    auto const planeAt = [&](int row, int column, int radius) {
        Window const window(row, column, radius, validity.size());
        PointSums const sums{
            window.SumIn<double>(sumX),       window.SumIn<double>(sumY),       window.SumIn<double>(sumZ),
            window.SumIn<double>(squareSumX), window.SumIn<double>(squareSumY), window.SumIn<double>(squareSumZ),
            window.SumIn<double>(sumXY),      window.SumIn<double>(sumYZ),      window.SumIn<double>(sumXZ)};
        return PlaneOf(sums, window.SumIn<int>(count), this->minPoints);
    };
    auto const searchAt = [&](int row, int column) {
        bool isFirst = true;
        double best = 0.0;
        for (int radius = this->firstRadius; radius <= lastRadius; ++radius)
        {
            auto const plane = planeAt(row, column, radius);
            if (!plane) continue;
            double const score = plane->rms * Func{}(1.0 / plane->count);
            // The first one is the yardstick of the others, and is not written.
            if (!isFirst && !(score < best)) continue;
            if (!isFirst)
            {
                this->output->WriteNormalAndRms(
                    &row, &column, plane->count, plane->centroid.data(), plane->normal.data(), plane->rms, score,
                    radius);
            }
            isFirst = false;
            best = score;
        }
    };
    cv::parallel_for_({0, validity.rows}, [&](cv::Range const & rows) {
        for (int row = rows.start; row < rows.end; ++row)
        {
            for (int column = 0; column < validity.cols; ++column)
            {
                searchAt(row, column);
            }
        }
    });
}

template class NormalComputationWithPyramid_T<float, NormalAndRMSOutput_T<float>, Nonefuntion<double>>;
template class NormalComputationWithPyramid_T<double, NormalAndRMSOutput_T<double>, Nonefuntion<double>>;

} // namespace morvane
