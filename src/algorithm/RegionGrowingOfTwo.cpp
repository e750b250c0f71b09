#include <morvane/algorithm/RegionGrowing.h>

#include <morvane/connexity/Conditions.h>

#include "common/Dispatch.h"
#include "connexity/ZoneGrowth.h"

#include <algorithm>
#include <vector>

namespace morvane::algorithm
{

using common::PaddedGrid;
using common::PlaneOf;
using connexity::DeltaConnected;
using connexity::DeltaConnectedSeed;
using connexity::eConnexityType;
using namespace connexity::growth_internals;

namespace
{

/// The width of the second image is not among what is compared.
bool AreReady(cv::Mat const & image1, cv::Mat const & image2, cv::Mat const & out)
{
    return common::IsSingleChannel(image1) && common::IsSingleChannel(image2) && common::SameSize(image1, out) &&
           common::IsRaster(image2) && image2.rows == out.rows && common::VisitLabel(out, []<class> { return true; });
}

/// The second image in the width of the first: what it does not reach is empty.
cv::Mat AsWideAs(cv::Mat const & image1, cv::Mat const & image2)
{
    if (image2.cols >= image1.cols) return image2.colRange(0, image1.cols);
    cv::Mat wide = cv::Mat::zeros(image1.size(), image2.type());
    if (image2.cols > 0) image2.copyTo(wide.colRange(0, image2.cols));
    return wide;
}

/// Lets `grow(zones, queue, asks)` fill a plane of zones under two conditions at once.
template <template <class> class Condition, class Grow>
bool GrowOverTwo(
    cv::Mat const & image1, cv::Mat const & image2, eConnexityType type, double delta1, double delta2, cv::Mat & out,
    Grow const & grow)
{
    cv::Mat const second = AsWideAs(image1, image2);
    return common::VisitElement(image1, [&]<class T1> {
        return common::VisitElement(second, [&]<class T2> {
            return LabelGrownZones(
                image1.size(), type, out, [&]<class Index>(PaddedGrid<Index> const & grid, ZonePlane<Index> & zones) {
                    std::vector<T1> const values1 = PlaneOf<T1>(image1, grid, T1{});
                    std::vector<T2> const values2 = PlaneOf<T2>(second, grid, T2{});
                    grow(
                        zones, NewestFirst<Index>(),
                        AskBoth(
                            AskValues<T1, Condition<T1>>(values1, delta1),
                            AskValues<T2, Condition<T2>>(values2, delta2)));
                });
        });
    });
}

} // namespace

bool MagicWand(
    cv::Mat const & image1, cv::Mat const & image2, eConnexityType const & connexity,
    std::vector<cv::Point> const & seeds, float delta1, float delta2, cv::Mat & out)
{
    if (!AreReady(image1, image2, out) || seeds.empty()) return false;
    return GrowOverTwo<DeltaConnected>(
        image1, image2, connexity, delta1, delta2, out,
        [&](auto & zones, auto queue, auto asks) { zones.GrowFrom(seeds, queue, asks); });
}

bool GrowRegion(
    cv::Mat const & image1, cv::Mat const & image2, eConnexityType const & connexity, float delta1, float delta2,
    cv::Mat & out)
{
    if (!AreReady(image1, image2, out)) return false;
    return GrowOverTwo<DeltaConnectedSeed>(
        image1, image2, connexity, delta1, delta2, out,
        [](auto & zones, auto queue, auto asks) { zones.GrowAll(queue, asks); });
}

} // namespace morvane::algorithm
