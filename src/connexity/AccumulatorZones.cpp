#include <morvane/connexity/AccumulatorZones.h>

#include "common/Dispatch.h"
#include "common/PaddedGrid.h"
#include "connexity/AccumulatorGrowth.h"
#include "connexity/ZonePlane.h"

namespace morvane::connexity
{

using common::PaddedGrid;
using namespace growth_internals;

namespace
{

template <template <class, class> class Queue>
bool LabelZones(cv::Mat const & image, eConnexityType type, double budget, cv::Mat & labels)
{
    bool const isReady = common::IsSingleChannel(image) && common::SameSize(image, labels) &&
                         common::VisitLabel(labels, []<class> { return true; });
    if (!isReady) return false;
    return common::VisitElement(image, [&]<class T> {
        auto const grow = [&]<class Index>(PaddedGrid<Index> const & grid, ZonePlane<Index> & zones) {
            AccumulatorGrowth<T, Index, Queue> growth(image, grid, budget);
            zones.GrowAll(growth);
        };
        return LabelGrownZones(image.size(), type, labels, grow);
    });
}

} // namespace

bool LabelAccumulatorZones(cv::Mat const & image, eConnexityType const & connexity, double budget, cv::Mat & labels)
{
    return LabelZones<OldestFirst>(image, connexity, budget, labels);
}

bool LabelPriorityAccumulatorZones(
    cv::Mat const & image, eConnexityType const & connexity, double budget, cv::Mat & labels)
{
    return LabelZones<LowestFirst>(image, connexity, budget, labels);
}

} // namespace morvane::connexity
