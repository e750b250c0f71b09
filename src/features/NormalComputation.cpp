#include <morvane/features/NormalComputation.h>

#include "features/NormalChecks.h"
#include "features/PlaneBatch.h"
#include "features/SlidingSums.h"

#include <morvane/common/Conversions.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace morvane
{

using normal_internals::AreCoordinates;
using normal_internals::Cloud;
using normal_internals::Plane;
using normal_internals::SlidingSums;
using normal_internals::ValidityOf;
using normal_internals::VisitPlanes;
using normal_internals::WindowTotals;

namespace
{

/// The smallest radius whose window can hold so many points.
int FirstRadiusFor(int minPoints)
{
    double const side = std::sqrt(static_cast<double>(std::max(minPoints, 0)));
    return 1 - common::TruncateTo<int>((side - 1.0) * -0.5);
}

} // namespace

template <class T>
void NormalAndRMSOutput_T<T>::WriteNormal(
    int const * row, int const * column, int /*count*/, double const * /*centroid*/, double const * normal)
{
    normals->at<cv::Vec<T, 3>>(*row, *column) = {
        static_cast<T>(normal[0]), static_cast<T>(normal[1]), static_cast<T>(normal[2])};
}

template <class T>
void NormalAndRMSOutput_T<T>::WriteNormalAndRms(
    int const * row, int const * column, int count, double const * centroid, double const * normal, double rmsValue,
    double /*score*/, int /*radius*/)
{
    WriteNormal(row, column, count, centroid, normal);
    rms->at<T>(*row, *column) = static_cast<T>(rmsValue);
}

template <class T, class Output, class Func>
NormalComputation_T<T, Output, Func>::NormalComputation_T(
    int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat yImage, cv::Mat zImage,
    Output & outputOfResults, int leastPoints)
    : halfWidth(halfWidthOfWindow)
    , depth(&depthImage)
    , x(&xImage)
    , y(std::move(yImage))
    , z(std::move(zImage))
    , firstRadius(FirstRadiusFor(leastPoints))
    , output(&outputOfResults)
    , minPoints(leastPoints)
{
    int const side = std::min(depthImage.rows, depthImage.cols);
    if (2 * static_cast<std::int64_t>(halfWidth) + 1 > side) halfWidth = side / 2 - 1;
    windowWidth = 2 * halfWidth + 1;
}

template <class T, class Output, class Func>
NormalComputation_T<T, Output, Func>::~NormalComputation_T() = default;

template <class T, class Output>
NormalComputationWithWindowMoving_T<T, Output>::NormalComputationWithWindowMoving_T(
    int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat const & yImage,
    cv::Mat const & zImage, Output & outputOfResults, int leastPoints)
    : NormalComputation_T<T, Output, Nonefuntion<double>>(
          halfWidthOfWindow, depthImage, xImage, yImage, zImage, outputOfResults, leastPoints)
    , validity(ValidityOf(depthImage))
{}

template <class T, class Output>
NormalComputationWithWindowMoving_T<T, Output>::~NormalComputationWithWindowMoving_T() = default;

template <class T, class Output>
void NormalComputationWithWindowMoving_T<T, Output>::Execute()
{
    if (this->halfWidth < 0 || !AreCoordinates<T>(validity, {*this->x, this->y, this->z})) return;
    Cloud const cloud{validity, *this->x, this->y, this->z};
    SlidingSums<T> sums(cloud, this->halfWidth, this->wrapColumns);
    for (int row = 0; row < validity.rows; ++row)
    {
        WindowTotals const & totals = sums.Totals();
        VisitPlanes(
            validity.cols, this->minPoints, [&](int column) { return totals.CountAt(column); },
            [&](int column) { return totals.SumsAt(column); },
            [&](int column, Plane const & plane) {
                this->output->WriteNormalAndRms(
                    &row, &column, plane.count, plane.centroid.data(), plane.normal.data(), plane.rms, plane.rms,
                    this->halfWidth);
            });
        sums.Advance();
    }
}

template class NormalAndRMSOutput_T<float>;
template class NormalAndRMSOutput_T<double>;
template class NormalComputation_T<float, RMSOutput_T<float>, Nonefuntion<double>>;
template class NormalComputation_T<float, NormalAndRMSOutput_T<float>, Nonefuntion<double>>;
template class NormalComputation_T<double, NormalAndRMSOutput_T<double>, Nonefuntion<double>>;
template class NormalComputation_T<float, NormalAndRMSOutput_T<float>, Sqrtfuntion<double>>;
template class NormalComputation_T<double, NormalAndRMSOutput_T<double>, Sqrtfuntion<double>>;
template class NormalComputationWithWindowMoving_T<float, NormalAndRMSOutput_T<float>>;
template class NormalComputationWithWindowMoving_T<double, NormalAndRMSOutput_T<double>>;

} // namespace morvane
