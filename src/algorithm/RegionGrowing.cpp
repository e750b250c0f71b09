#include <morvane/algorithm/RegionGrowing.h>

#include "common/Dispatch.h"
#include "common/PaddedGrid.h"
#include "connexity/AccumulatorGrowth.h"
#include "connexity/RunGrowth.h"
#include "connexity/ZonePlane.h"

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

template <template <class, class> class Queue>
bool GrowWithinBudget(
    cv::Mat const & image, eConnexityType type, std::vector<cv::Point> const & seeds, double budget, cv::Mat & out)
{
    if (!AreReady(image, out) || seeds.empty()) return false;
    return common::VisitElement(image, [&]<class T> {
        auto const grow = [&]<class Index>(PaddedGrid<Index> const & grid, ZonePlane<Index> & zones) {
            AccumulatorGrowth<T, Index, Queue> growth(image, grid, budget);
            zones.GrowFrom(seeds, growth);
        };
        return LabelGrownZones(image.size(), type, out, grow);
    });
}

} // namespace

bool MagicWand(
    cv::Mat const & image, eConnexityType const & connexity, std::vector<cv::Point> const & seeds, float delta,
    cv::Mat & out)
{
    if (!AreReady(image, out) || seeds.empty()) return false;
    return common::VisitElement(image, [&]<class T> {
        out = cv::Scalar(0);
        RunGrowth(image.size(), connexity, NearNeighbour<T>(image, delta), out).GrowFrom(seeds);
        return true;
    });
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

} // namespace morvane::algorithm
