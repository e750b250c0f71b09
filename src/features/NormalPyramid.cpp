#include "features/NormalChecks.h"
#include "features/PlaneBatch.h"

#include <morvane/features/NormalComputation.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace morvane
{

using normal_internals::AreCoordinates;
using normal_internals::Plane;
using normal_internals::PointSums;
using normal_internals::ValidityOf;
using normal_internals::VisitPlanes;

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

/// All sums over a window.
template <class Computation>
PointSums SumsIn(Computation const & images, Window const & window)
{
    return {window.SumIn<double>(images.sumX),       window.SumIn<double>(images.sumY),
            window.SumIn<double>(images.sumZ),       window.SumIn<double>(images.squareSumX),
            window.SumIn<double>(images.squareSumY), window.SumIn<double>(images.squareSumZ),
            window.SumIn<double>(images.sumXY),      window.SumIn<double>(images.sumYZ),
            window.SumIn<double>(images.sumXZ)};
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
    constexpr double kNone = std::numeric_limits<double>::infinity();
    auto const searchRow = [&](int row) {
        auto const windowAt = [&](int column, int radius) {
            return Window(row, column, radius, validity.size());
        };
        std::vector<double> best(static_cast<std::size_t>(validity.cols), kNone);
        for (int radius = this->firstRadius; radius <= std::max(this->halfWidth, 2); ++radius)
        {
            auto const countAt = [&](int column) {
                return windowAt(column, radius).template SumIn<int>(count);
            };
            auto const sumsAt = [&](int column) {
                return SumsIn(*this, windowAt(column, radius));
            };
            VisitPlanes(validity.cols, this->minPoints, countAt, sumsAt, [&](int column, Plane const & plane) {
                double & bestScore = best[static_cast<std::size_t>(column)];
                double const score = plane.rms * Func{}(1.0 / plane.count);
                if (!(score < bestScore)) return;
                // The first one is the yardstick of the others, and is not written.
                bool const isFirst = bestScore == kNone;
                bestScore = score;
                if (isFirst) return;
                this->output->WriteNormalAndRms(
                    &row, &column, plane.count, plane.centroid.data(), plane.normal.data(), plane.rms, score, radius);
            });
        }
    };
    cv::parallel_for_({0, validity.rows}, [&](cv::Range const & rows) {
        for (int row = rows.start; row < rows.end; ++row)
        {
            searchRow(row);
        }
    });
}

template class NormalComputationWithPyramid_T<float, NormalAndRMSOutput_T<float>, Nonefuntion<double>>;
template class NormalComputationWithPyramid_T<double, NormalAndRMSOutput_T<double>, Nonefuntion<double>>;

} // namespace morvane
