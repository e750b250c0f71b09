#include <morvane/algorithm/RegionGrowing.h>

#include "common/Dispatch.h"
#include "common/PaddedGrid.h"
#include "connexity/AccumulatorGrowth.h"
#include "connexity/SimilarGrowth.h"
#include "connexity/ZonePlane.h"

#include <utility>
#include <vector>

namespace morvane::algorithm
{

using common::PaddedGrid;
using connexity::eConnexityType;
using namespace connexity::growth_internals;

namespace
{

bool AreReady(cv::Mat const & image, cv::Mat const & out)
{
    return common::IsSingleChannel(image) && common::SameSize(image, out) &&
           common::VisitLabel(out, []<class> { return true; });
}

/// The width of the second image is not among what is compared.
bool AreReady(cv::Mat const & image1, cv::Mat const & image2, cv::Mat const & out)
{
    return AreReady(image1, out) && common::IsSingleChannel(image2) && common::IsRaster(image2) &&
           image2.rows == out.rows;
}

template <template <class, class> class Queue>
bool GrowWithinBudget(
    cv::Mat const & image, eConnexityType type, std::vector<cv::Point> const & seeds, double budget, cv::Mat & out)
{
    if (!AreReady(image, out) || seeds.empty()) return false;
    return common::VisitElement(image, [&]<class T> {
        auto const grow = [&]<class Index>(PaddedGrid<Index> const & grid, bool, ZonePlane<Index> & zones) {
            AccumulatorGrowth<T, Index, Queue> growth(image, grid, budget);
            zones.GrowFrom(seeds, growth);
            return true;
        };
        return LabelGrownZones(image.size(), type, out, grow);
    });
}

/// The second image in the width of the first: what it does not reach is empty.
cv::Mat AsWideAs(cv::Mat const & image1, cv::Mat const & image2)
{
    if (image2.cols >= image1.cols) return image2.colRange(0, image1.cols);
    cv::Mat wide = cv::Mat::zeros(image1.size(), image2.type());
    if (image2.cols > 0) image2.copyTo(wide.colRange(0, image2.cols));
    return wide;
}

/// Lets `run(zones, growth)` grow zones over pixels that are near in both images.
template <Reference kReference, class Run>
bool GrowOverTwo(
    cv::Mat const & image1, cv::Mat const & image2, eConnexityType type, double delta1, double delta2, cv::Mat & out,
    Run const & run)
{
    auto const grow = [&]<class Index>(PaddedGrid<Index> const & grid, bool wrapsInX, ZonePlane<Index> & zones) {
        return VisitBoundedPlane(image1, grid, wrapsInX, delta1, [&]<class First>(First first) {
            return VisitBoundedPlane(
                AsWideAs(image1, image2), grid, wrapsInX, delta2, [&]<class Second>(Second second) {
                    SimilarGrowth<kReference, Index, First, Second> growth(
                        grid, wrapsInX, std::move(first), std::move(second));
                    run(zones, growth);
                    return true;
                });
        });
    };
    return LabelGrownZones(image1.size(), type, out, grow);
}

} // namespace

bool MagicWand(
    cv::Mat const & image, eConnexityType const & connexity, std::vector<cv::Point> const & seeds, float delta,
    cv::Mat & out)
{
    if (!AreReady(image, out) || seeds.empty()) return false;
    auto const grow = [&]<class Index>(PaddedGrid<Index> const & grid, bool wrapsInX, ZonePlane<Index> & zones) {
        return VisitBoundedPlane(image, grid, wrapsInX, delta, [&]<class Plane>(Plane plane) {
            SimilarGrowth<Reference::Neighbour, Index, Plane, AnyValue> growth(grid, wrapsInX, std::move(plane), {});
            zones.GrowFrom(seeds, growth);
            return true;
        });
    };
    return LabelGrownZones(image.size(), connexity, out, grow);
}

bool MagicWand(
    cv::Mat const & image1, cv::Mat const & image2, eConnexityType const & connexity,
    std::vector<cv::Point> const & seeds, float delta1, float delta2, cv::Mat & out)
{
    if (!AreReady(image1, image2, out) || seeds.empty()) return false;
    return GrowOverTwo<Reference::Neighbour>(
        image1, image2, connexity, delta1, delta2, out,
        [&](auto & zones, auto & growth) { zones.GrowFrom(seeds, growth); });
}

bool MagicWandBasedOnAccumulator(
    cv::Mat const & image, eConnexityType const & connexity, std::vector<cv::Point> const & seeds, float delta,
    cv::Mat & out)
{
    return GrowWithinBudget<OldestFirst>(image, connexity, seeds, delta, out);
}

bool MagicWandBasedOnPriorityAccumulator(
    cv::Mat const & image, eConnexityType const & connexity, std::vector<cv::Point> const & seeds, float delta,
    cv::Mat & out)
{
    return GrowWithinBudget<LowestFirst>(image, connexity, seeds, delta, out);
}

bool GrowRegion(
    cv::Mat const & image1, cv::Mat const & image2, eConnexityType const & connexity, float delta1, float delta2,
    cv::Mat & out)
{
    if (!AreReady(image1, image2, out)) return false;
    return GrowOverTwo<Reference::Seed>(
        image1, image2, connexity, delta1, delta2, out, [](auto & zones, auto & growth) { zones.GrowAll(growth); });
}

} // namespace morvane::algorithm
