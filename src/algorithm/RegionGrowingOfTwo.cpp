#include <morvane/algorithm/RegionGrowing.h>

#include "common/Dispatch.h"
#include "connexity/RunGrowth.h"

#include <vector>

namespace morvane::algorithm
{

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
    if (image2.cols >= image1.cols) return image2;
    cv::Mat wide = cv::Mat::zeros(image1.size(), image2.type());
    if (!image2.empty()) image2.copyTo(wide.colRange(0, image2.cols));
    return wide;
}

/// Lets `run(growth)` grow zones over pixels that are near in both images.
///
/// @tparam Near NearNeighbour or NearSeed
template <template <class> class Near, class Run>
bool GrowOverTwo(
    cv::Mat const & image1, cv::Mat const & image2, eConnexityType type, double delta1, double delta2, cv::Mat & out,
    Run const & run)
{
    cv::Mat const second = AsWideAs(image1, image2);
    return common::VisitElement(image1, [&]<class T1> {
        return common::VisitElement(second, [&]<class T2> {
            out = cv::Scalar(0);
            RunGrowth growth(image1.size(), type, BothNear(Near<T1>(image1, delta1), Near<T2>(second, delta2)), out);
            run(growth);
            return true;
        });
    });
}

} // namespace

bool MagicWand(
    cv::Mat const & image1, cv::Mat const & image2, eConnexityType const & connexity,
    std::vector<cv::Point> const & seeds, float delta1, float delta2, cv::Mat & out)
{
    if (!AreReady(image1, image2, out) || seeds.empty()) return false;
    return GrowOverTwo<NearNeighbour>(
        image1, image2, connexity, delta1, delta2, out, [&](auto & growth) { growth.GrowFrom(seeds); });
}

bool GrowRegion(
    cv::Mat const & image1, cv::Mat const & image2, eConnexityType const & connexity, float delta1, float delta2,
    cv::Mat & out)
{
    if (!AreReady(image1, image2, out)) return false;
    return GrowOverTwo<NearSeed>(
        image1, image2, connexity, delta1, delta2, out, [](auto & growth) { growth.GrowAll(); });
}

} // namespace morvane::algorithm
