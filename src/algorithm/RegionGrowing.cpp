#include <morvane/algorithm/RegionGrowing.h>

#include <morvane/connexity/Conditions.h>

#include "common/Dispatch.h"
#include "connexity/ZoneGrowth.h"

#include <vector>

namespace morvane::algorithm
{

using common::PaddedGrid;
using common::PlaneOf;
using connexity::AccumulatorConnected;
using connexity::DeltaConnected;
using connexity::eConnexityType;
using namespace connexity::growth_internals;

namespace
{

bool AreReady(cv::Mat const & image, cv::Mat const & out)
{
    return common::IsSingleChannel(image) && common::SameSize(image, out) &&
           common::VisitLabel(out, []<class> { return true; });
}

} // namespace

bool MagicWand(
    cv::Mat const & image, eConnexityType const & connexity, std::vector<cv::Point> const & seeds, float delta,
    cv::Mat & out)
{
    if (!AreReady(image, out)) return false;
    return common::VisitElement(image, [&]<class T> {
        if (seeds.empty()) return false;
        return LabelGrownZones(
            image.size(), connexity, out, [&]<class Index>(PaddedGrid<Index> const & grid, ZonePlane<Index> & zones) {
                std::vector<T> const values = PlaneOf<T>(image, grid, T{});
                zones.GrowFrom(seeds, NewestFirst<Index>(), AskValues<T, DeltaConnected<T>>(values, delta));
            });
    });
}

bool MagicWandBasedOnAccumulator(
    cv::Mat const & image, eConnexityType const & connexity, std::vector<cv::Point> const & seeds, float delta,
    cv::Mat & out)
{
    if (!AreReady(image, out)) return false;
    return common::VisitElement(image, [&]<class T> {
        if (seeds.empty()) return false;
        return LabelGrownZones(
            image.size(), connexity, out, [&]<class Index>(PaddedGrid<Index> const & grid, ZonePlane<Index> & zones) {
                std::vector<T> const values = PlaneOf<T>(image, grid, T{});
                zones.GrowFrom(seeds, OldestFirst<Index>(), AskValues<T, AccumulatorConnected<T>>(values, delta));
            });
    });
}

bool MagicWandBasedOnPriorityAccumulator(
    cv::Mat const & image, eConnexityType const & connexity, std::vector<cv::Point> const & seeds, float delta,
    cv::Mat & out)
{
    if (!AreReady(image, out)) return false;
    return common::VisitElement(image, [&]<class T> {
        if (seeds.empty()) return false;
        return LabelGrownZones(
            image.size(), connexity, out, [&]<class Index>(PaddedGrid<Index> const & grid, ZonePlane<Index> & zones) {
                std::vector<T> const values = PlaneOf<T>(image, grid, T{});
                zones.GrowFrom(
                    seeds, LowestFirst<T, Index>(values), AskValues<T, AccumulatorConnected<T>>(values, delta));
            });
    });
}

} // namespace morvane::algorithm
