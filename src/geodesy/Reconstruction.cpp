#include <morvane/geodesy/Reconstruction.h>

#include <morvane/common/Conversions.h>
#include <morvane/common/ImageCompare.h>

#include "common/Dispatch.h"
#include "geodesy/ActiveTiles.h"
#include "geodesy/FixedPoint.h"
#include "geodesy/GeodesicSteps.h"
#include "geodesy/PriorityBuild.h"

#include <opencv2/imgproc.hpp>

#include <cstddef>
#include <utility>

namespace morvane::geodesy
{

using common::AreImagesEqual;
using common::ImageCompare;
using reconstruction_internals::ActiveTiles;
using reconstruction_internals::Direction;
using reconstruction_internals::FixedPoint;
using reconstruction_internals::HasFixedPoint;

namespace
{

cv::Size const kSingle(1, 1);
cv::Size const kThree(3, 3);

/// Repeats dilations; the buffers are exchanged, so that `out` may end up on either.
void RepeatDilation(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize)
{
    cv::Mat current = marker.clone();
    std::size_t const passes = marker.total();
    for (std::size_t pass = 0; pass < passes; ++pass)
    {
        GeoDilateBySize(current, mask, shape, out, kernelSize);
        if (AreImagesEqual(current, out)) return;
        // After the last pass `out` keeps the newest image.
        if (pass < passes - 1) cv::swap(out, current);
    }
}

/// Repeats a pass that takes the image so far and writes `out`, in place.
template <class Pass>
void RepeatInPlace(cv::Mat const & marker, cv::Mat & out, Pass const & pass)
{
    cv::Mat current = marker.clone();
    std::size_t const passes = marker.total();
    for (std::size_t count = 0; count < passes; ++count)
    {
        pass(current);
        if (AreImagesEqual(current, out)) return;
        out.copyTo(current);
    }
}

/// Tells whether the passes need not be made one by one. What OpenCV refuses has to reach it.
bool CanGoStraight(cv::Mat const & marker, cv::Mat const & mask)
{
    return marker.total() > 0 && marker.channels() <= 4 && HasFixedPoint(marker) && HasFixedPoint(mask);
}

/// What a viscous reconstruction is asked for.
struct Viscous
{
    cv::Mat const & marker;
    cv::Mat const & mask;
    int shape;
    cv::Size kernelSize;
    cv::Size viscositySize;
    Direction direction;
};

/// Repeats the pass of a viscous reconstruction.
template <class Pass>
void RunViscous(Viscous const & viscous, Pass const & pass, cv::Mat & out)
{
    cv::Mat const & marker = viscous.marker;
    if (!CanGoStraight(marker, viscous.mask))
    {
        cv::Rect const all(cv::Point(), marker.size());
        RepeatInPlace(marker, out, [&](cv::Mat const & current) { pass(all, current, out); });
        return;
    }
    // A second element of one pixel changes nothing.
    if (viscous.viscositySize == kSingle)
    {
        FixedPoint(marker, viscous.mask, viscous.shape, viscous.kernelSize, viscous.direction).copyTo(out);
        return;
    }
    // Three elements one after the other; twice that of the second.
    cv::Size const reach(
        viscous.kernelSize.width / 2 + viscous.viscositySize.width / 2 * 2,
        viscous.kernelSize.height / 2 + viscous.viscositySize.height / 2 * 2);
    marker.copyTo(out);
    ActiveTiles(marker.size(), reach, pass).Run(out, marker.total());
}

/// The image from which holes are filled: the largest value, cut to a whole number, but where there are seeds.
cv::Mat MarkerOfHoles(cv::Mat const & image, cv::Mat const & seedMask)
{
    double largest = 0.0;
    cv::minMaxIdx(image, nullptr, &largest);
    cv::Mat marker(image.size(), image.type(), cv::Scalar::all(common::TruncateTo<int>(largest)));
    image.copyTo(marker, seedMask);
    return marker;
}

/// The pixels along the image's edge.
cv::Mat EdgeOf(cv::Mat const & image)
{
    cv::Mat edge = cv::Mat::zeros(image.size(), CV_8UC1);
    cv::rectangle(edge, cv::Rect(0, 0, image.cols, image.rows), cv::Scalar(255), 1, 8, 0);
    return edge;
}

/// Tells whether the arguments of HMaxima() and HMinima() fit; an empty @p out is made.
bool AreReadyForExtrema(cv::Mat const & image, cv::Mat & out)
{
    if (!common::IsSingleChannel(image) || !common::IsRaster(image)) return false;
    if (out.empty()) out.create(image.size(), image.type());
    return common::SameSize(image, out) && common::IsSingleChannel(out);
}

} // namespace

bool ReconstructionbyDilate(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize)
{
    if (!AreReady(marker, mask, out)) return false;
    if (!CanGoStraight(marker, mask))
    {
        RepeatDilation(marker, mask, shape, out, kernelSize);
        return true;
    }
    cv::Mat result = FixedPoint(marker, mask, shape, kernelSize, Direction::Rise);
    // Whoever holds another header of `out` finds the image in it only where nothing had to be done.
    if (AreImagesEqual(marker, result))
    {
        result.copyTo(out);
    }
    else
    {
        out = std::move(result);
    }
    return true;
}

bool ReconstructionbyErode(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize)
{
    if (!AreReady(marker, mask, out)) return false;
    if (CanGoStraight(marker, mask))
    {
        FixedPoint(marker, mask, shape, kernelSize, Direction::Fall).copyTo(out);
        return true;
    }
    RepeatInPlace(marker, out, [&](cv::Mat const & current) { GeoErodeBySize(current, mask, shape, out, kernelSize); });
    return true;
}

bool ReconstructionbyViscousDilation(
    cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Size viscositySize, cv::Mat & out, cv::Size kernelSize)
{
    if (!AreReady(marker, mask, out)) return false;
    auto const pass = [&](cv::Rect const & area, cv::Mat const & current, cv::Mat & next) {
        GeoDilateBySize(current, mask(area), shape, next, kernelSize);
        GeoErodeBySize(next, marker(area), shape, next, viscositySize);
        GeoDilateBySize(next, mask(area), shape, next, viscositySize);
    };
    RunViscous({marker, mask, shape, kernelSize, viscositySize, Direction::Rise}, pass, out);
    return true;
}

bool ReconstructionbyViscousErosion(
    cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Size viscositySize, cv::Mat & out, cv::Size kernelSize)
{
    if (!AreReady(marker, mask, out)) return false;
    auto const pass = [&](cv::Rect const & area, cv::Mat const & current, cv::Mat & next) {
        GeoErodeBySize(current, mask(area), shape, next, kernelSize);
        GeoDilateBySize(next, marker(area), shape, next, viscositySize);
        GeoErodeBySize(next, mask(area), shape, next, viscositySize);
    };
    RunViscous({marker, mask, shape, kernelSize, viscositySize, Direction::Fall}, pass, out);
    return true;
}

bool OverBuild(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType const & connexity, cv::Mat & out)
{
    if (mask.type() != marker.type()) return false;
    return reconstruction_internals::BuildOver(mask, marker, connexity, out);
}

bool UnderBuild(
    cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType const & connexity, cv::Mat & out)
{
    if (mask.type() != marker.type()) return false;
    return reconstruction_internals::BuildUnder(mask, marker, connexity, out);
}

bool HMaxima(cv::Mat const & image, int shape, double h, cv::Mat & out)
{
    if (!AreReadyForExtrema(image, out)) return false;
    cv::Mat const sum = image + cv::Scalar(h);
    cv::Mat reconstructed(sum.size(), sum.type());
    if (!ReconstructionbyDilate(image, sum, shape, reconstructed, kThree)) return false;
    // A thousandth more, against rounding in floating-point images.
    cv::Mat const difference = (sum - reconstructed) + cv::Scalar(0.001);
    return ImageCompare(difference, cv::CMP_LT, h, cv::Scalar(0), cv::Scalar(255), out);
}

bool HMinima(cv::Mat const & image, int shape, double h, cv::Mat & out)
{
    if (!AreReadyForExtrema(image, out)) return false;
    cv::Mat const sum = image + cv::Scalar(h);
    cv::Mat reconstructed(sum.size(), sum.type());
    if (!ReconstructionbyErode(sum, image, shape, reconstructed, kThree)) return false;
    cv::Mat const difference = (reconstructed - image) + cv::Scalar(0.001);
    return ImageCompare(difference, cv::CMP_LT, h, cv::Scalar(0), cv::Scalar(255), out);
}

bool FillHolesbyReconstruction(cv::Mat const & image, cv::Mat const & seedMask, int shape, cv::Mat & out)
{
    if (seedMask.type() != CV_8UC1 || !common::IsRaster(image) || !common::IsRaster(seedMask)) return false;
    return ReconstructionbyErode(MarkerOfHoles(image, seedMask), image, shape, out, kThree);
}

bool FillHolesbyReconstruction(cv::Mat const & image, int shape, cv::Mat & out)
{
    return common::IsRaster(image) && FillHolesbyReconstruction(image, EdgeOf(image), shape, out);
}

bool FillHolesbyOverBuild(
    cv::Mat const & image, cv::Mat const & seedMask, connexity::eConnexityType const & connexity, cv::Mat & out)
{
    if (seedMask.type() != CV_8UC1 || !common::IsRaster(image) || !common::IsRaster(seedMask)) return false;
    return OverBuild(image, MarkerOfHoles(image, seedMask), connexity, out);
}

bool FillHolesbyOverBuild(cv::Mat const & image, connexity::eConnexityType const & connexity, cv::Mat & out)
{
    return common::IsRaster(image) && FillHolesbyOverBuild(image, EdgeOf(image), connexity, out);
}

} // namespace morvane::geodesy
