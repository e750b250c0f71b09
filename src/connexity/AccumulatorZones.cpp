#include <morvane/connexity/AccumulatorZones.h>

#include <morvane/connexity/Conditions.h>

#include "common/Dispatch.h"
#include "connexity/ZoneGrowth.h"

#include <vector>

namespace morvane::connexity
{

using common::PaddedGrid;
using common::PlaneOf;
using namespace growth_internals;

namespace
{

bool AreReady(cv::Mat const & image, cv::Mat const & labels)
{
    return common::IsSingleChannel(image) && common::SameSize(image, labels) &&
           common::VisitLabel(labels, []<class> { return true; });
}

} // namespace

bool LabelAccumulatorZones(cv::Mat const & image, eConnexityType const & connexity, double budget, cv::Mat & labels)
{
    if (!AreReady(image, labels)) return false;
    return common::VisitElement(image, [&]<class T> {
        return LabelGrownZones(
            image.size(), connexity, labels,
            [&]<class Index>(PaddedGrid<Index> const & grid, ZonePlane<Index> & zones) {
                std::vector<T> const values = PlaneOf<T>(image, grid, T{});
                zones.GrowAll(OldestFirst<Index>(), AskValues<T, AccumulatorConnected<T>>(values, budget));
            });
    });
}

bool LabelPriorityAccumulatorZones(
    cv::Mat const & image, eConnexityType const & connexity, double budget, cv::Mat & labels)
{
    if (!AreReady(image, labels)) return false;
    return common::VisitElement(image, [&]<class T> {
        return LabelGrownZones(
            image.size(), connexity, labels,
            [&]<class Index>(PaddedGrid<Index> const & grid, ZonePlane<Index> & zones) {
                std::vector<T> const values = PlaneOf<T>(image, grid, T{});
                zones.GrowAll(LowestFirst<T, Index>(values), AskValues<T, AccumulatorConnected<T>>(values, budget));
            });
    });
}

} // namespace morvane::connexity
