#include "features/NormalChecks.h"
#include "features/PlaneBatch.h"
#include "features/SlidingSums.h"

#include <morvane/common/Conversions.h>
#include <morvane/features/NormalComputation.h>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

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

/// How many rows of sums are kept until they are looked at: enough for the threads, and little memory.
constexpr int kBandRows = 16;

/// The moving window of one radius, with the sums of the rows that it came by last.
template <class T>
class RadiusSums
{
public:
    RadiusSums(Cloud const & cloud, int radius, bool wrapColumns)
        : m_radius(radius)
        , m_sliding(cloud, radius, wrapColumns)
        , m_rows(kBandRows)
    {}

    [[nodiscard]] int Radius() const { return m_radius; }

    /// Keeps the sums of the next rows.
    void Collect(int rows)
    {
        for (int i = 0; i < rows; ++i)
        {
            m_rows[static_cast<std::size_t>(i)] = m_sliding.Totals();
            m_sliding.Advance();
        }
    }

    /// The sums of the row that was kept as number @p i.
    [[nodiscard]] WindowTotals const & Row(int i) const { return m_rows[static_cast<std::size_t>(i)]; }

private:
    int m_radius;
    SlidingSums<T> m_sliding;
    std::vector<WindowTotals> m_rows;
};

} // namespace

template <class T, class Output, class Func>
NormalComputationWithPyramidWindowMoving_T<T, Output, Func>::NormalComputationWithPyramidWindowMoving_T(
    int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat const & yImage,
    cv::Mat const & zImage, Output & outputOfResults, int leastPoints)
    : NormalComputation_T<T, Output, Func>(
          halfWidthOfWindow, depthImage, xImage, yImage, zImage, outputOfResults, leastPoints)
    , validity(ValidityOf(depthImage))
{}

template <class T, class Output, class Func>
NormalComputationWithPyramidWindowMoving_T<T, Output, Func>::~NormalComputationWithPyramidWindowMoving_T() = default;

template <class T, class Output, class Func>
void NormalComputationWithPyramidWindowMoving_T<T, Output, Func>::Execute()
{
    if (!AreCoordinates<T>(validity, {*this->x, this->y, this->z})) return;
    Cloud const cloud{validity, *this->x, this->y, this->z};
    std::vector<RadiusSums<T>> searches;
    for (int radius = this->firstRadius; radius <= std::max(this->halfWidth, 2); ++radius)
    {
        searches.emplace_back(cloud, radius, this->wrapColumns);
    }
    common::VisitElement(*this->depth, [&]<class Score> {
        cv::Mat bestScore(validity.size(), this->depth->type(), cv::Scalar(this->output->defaultRms));
        // Radii in rising order at each pixel: as they would arrive one after the other, whatever the threads.
        auto const searchRow = [&](int row, int rowOfBand) {
            auto * const best = bestScore.template ptr<Score>(row);
            for (RadiusSums<T> const & search : searches)
            {
                WindowTotals const & totals = search.Row(rowOfBand);
                auto const keepBetter = [&](int column, Plane const & plane) {
                    double const score = plane.rms * Func{}(1.0 / plane.count);
                    if (!(static_cast<double>(best[column]) > score)) return;
                    best[column] = common::TruncateTo<Score>(score);
                    this->output->WriteNormalAndRms(
                        &row, &column, plane.count, plane.centroid.data(), plane.normal.data(), plane.rms, score,
                        search.Radius());
                };
                VisitPlanes(
                    validity.cols, this->minPoints, [&](int column) { return totals.CountAt(column); },
                    [&](int column) { return totals.SumsAt(column); }, keepBetter);
            }
        };
        for (int first = 0; first < validity.rows; first += kBandRows)
        {
            int const rows = std::min(kBandRows, validity.rows - first);
            cv::parallel_for_({0, static_cast<int>(searches.size())}, [&](cv::Range const & range) {
                for (int i = range.start; i < range.end; ++i)
                {
                    searches[static_cast<std::size_t>(i)].Collect(rows);
                }
            });
            cv::parallel_for_({0, rows}, [&](cv::Range const & range) {
                for (int i = range.start; i < range.end; ++i)
                {
                    searchRow(first + i, i);
                }
            });
        }
        return true;
    });
}

template class NormalComputationWithPyramidWindowMoving_T<float, NormalAndRMSOutput_T<float>, Nonefuntion<double>>;
template class NormalComputationWithPyramidWindowMoving_T<double, NormalAndRMSOutput_T<double>, Nonefuntion<double>>;
template class NormalComputationWithPyramidWindowMoving_T<float, NormalAndRMSOutput_T<float>, Sqrtfuntion<double>>;
template class NormalComputationWithPyramidWindowMoving_T<double, NormalAndRMSOutput_T<double>, Sqrtfuntion<double>>;

} // namespace morvane
