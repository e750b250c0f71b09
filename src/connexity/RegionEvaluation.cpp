#include "connexity/RegionEvaluation.h"

#include "common/Dispatch.h"

#include <morvane/algorithm/Filling.h>
#include <morvane/common/Conversions.h>
#include <morvane/common/ImageCompare.h>

#include <opencv2/core/utility.hpp>
#include <opencv2/core/utils/tls.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace morvane::quasi_flat_internals
{

namespace
{

constexpr double kSurfaceGrid = 100.0;

using Contour = std::vector<cv::Point>;

/// Side of the thumbnail: the grid, but for the rounding, which makes it 99 for some sizes.
int SideOfThumbnail(int side)
{
    return common::TruncateTo<int>(side / (side / kSurfaceGrid));
}

/// Fills the empty pixels of @p work, pass by pass, by at most @p limit + 1 pixels.
void SpreadMeans(cv::Mat & work, std::int64_t limit)
{
    for (std::int64_t pass = 0; pass <= limit; ++pass)
    {
        cv::Mat next = cv::Mat::zeros(work.size(), work.type());
        (void)algorithm::FillImageWithMean(work, work, next, connexity::eConnexity8);
        bool const equal = common::AreImagesEqual(work, next);
        work = next;
        if (equal) return;
    }
}

/// The quarter of the longest contour's points that has the smallest distances; nothing without a contour.
Contour NearestContourPoints(cv::Mat const & zone, cv::Rect const & box, cv::Mat const & distance)
{
    cv::Mat framed;
    cv::copyMakeBorder(zone, framed, 1, 1, 1, 1, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED, cv::Scalar(0));
    std::vector<Contour> contours;
    cv::findContours(framed, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE, box.tl() - cv::Point(1, 1));
    // Of equals the first.
    auto const longest = std::ranges::max_element(contours, {}, &Contour::size);
    if (longest == contours.end()) return {};
    Contour points = *longest;
    std::ranges::stable_sort(points, {}, [&](cv::Point const & point) { return distance.at<float>(point); });
    points.resize(points.size() / 4);
    return points;
}

/// What one thread has seen.
struct Tally
{
    bool isAccepted = false;
    int points = 0;
};

/// Looks at the points of a contour, in parallel.
template <class T>
ResultType LookAt(
    Contour const & points, cv::Mat const & distance, cv::Mat const & image, cv::Mat const & surface,
    SearchLimits const & limits)
{
    cv::TLSDataAccumulator<Tally> tallies;
    cv::parallel_for_({0, static_cast<int>(points.size())}, [&](cv::Range const & range) {
        Tally & tally = tallies.getRef();
        for (int i = range.start; i < range.end; ++i)
        {
            cv::Point const & point = points[static_cast<std::size_t>(i)];
            float const d = distance.at<float>(point);
            if (!(d > 0.0F) || !(static_cast<float>(limits.radius) > d)) continue;
            double const height =
                std::abs(static_cast<double>(image.at<T>(point)) - static_cast<double>(surface.at<T>(point)));
            ++tally.points;
            if (height < double{d} * limits.slopeRatio * limits.pixelSize) tally.isAccepted = true;
        }
    });
    std::vector<Tally *> all;
    tallies.gather(all);
    bool const isAccepted = std::ranges::any_of(all, &Tally::isAccepted);
    bool const isSeen = std::ranges::any_of(all, [](Tally const * tally) { return tally->points > 0; });
    if (isAccepted) return ResultAccepted;
    return isSeen ? ResultRejected : ResultUnknown;
}

} // namespace

ResultType EvaluateZone(
    cv::Mat const & accepted, cv::Mat const & zone, cv::Rect const & box, cv::Mat const & image,
    SearchLimits const & limits)
{
    if (!(limits.pixelSize > 0.0) || !common::IsSingleChannel(image)) return ResultError;
    if (zone.empty() || cv::sum(zone)[0] <= 1.0) return ResultRejected;
    if (limits.radius < 0) return ResultError;
    // Outside what is accepted all distances are 0: no point would be looked at.
    cv::Mat overlap;
    accepted(box).copyTo(overlap, zone);
    if (cv::countNonZero(overlap) == 0) return ResultUnknown;

    cv::Mat surface;
    if (!ExtendSurface(image, surface, limits.radius)) return ResultError;
    cv::Mat distance;
    cv::distanceTransform(accepted, distance, cv::DIST_L2, 3, CV_32F);
    Contour const points = NearestContourPoints(zone, box, distance);
    return common::VisitElement(image, [&]<class T> { return LookAt<T>(points, distance, image, surface, limits); });
}

ResultType EvaluateRegion(
    cv::Mat const & accepted, cv::Mat const & zone, cv::Mat const & image, int radius, double pixelSize,
    double slopeRatio)
{
    if (image.empty() || !common::SameSize(image, accepted, zone)) return ResultError;
    if (accepted.type() != CV_8UC1 || zone.type() != CV_8UC1) return ResultError;
    cv::Rect const box = cv::boundingRect(zone);
    return EvaluateZone(accepted, zone(box), box, image, {0, radius, pixelSize, slopeRatio});
}

bool ExtendSurface(cv::Mat const & source, cv::Mat & out, int radius)
{
    if (!common::IsRaster(source) || source.empty() || radius < 0) return false;
    cv::Size const size(SideOfThumbnail(source.cols), SideOfThumbnail(source.rows));
    cv::Mat work;
    cv::resize(source, work, size, 0.0, 0.0, cv::INTER_LINEAR);
    if (size == source.size())
    {
        SpreadMeans(work, static_cast<std::int64_t>(radius / (source.cols / kSurfaceGrid)));
    }
    else
    {
        // FillImageWithMean() refuses images of two sizes; its output, made as 0, stays 0 in all further passes.
        work = cv::Mat::zeros(source.size(), source.type());
    }
    cv::resize(work, out, source.size(), 0.0, 0.0, cv::INTER_LINEAR);
    return true;
}

} // namespace morvane::quasi_flat_internals
