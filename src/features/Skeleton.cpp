#include <morvane/features/Skeleton.h>

#include <morvane/common/Conversions.h>
#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/AttributeOpening.h>
#include <morvane/connexity/GeodesicMeasures.h>
#include <morvane/geodesy/GeodesicOperators.h>

#include "common/Comparisons.h"
#include "common/Dispatch.h"
#include "common/Morphology.h"
#include "tarnel/PolylineSimplification.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <utility>
#include <vector>

namespace morvane::features
{

namespace
{

/// OpenCV's search for the extremes of integers does not find the next one under a mask.
constexpr int kLargestLabel = std::numeric_limits<int>::max() - 1;

cv::Mat Filtered(cv::Mat const & image, int operation, cv::Mat const & element)
{
    cv::Mat filtered;
    common::Filter(image, filtered, operation, element);
    return filtered;
}

/// The sum of what each opening takes away from the erosion before it.
cv::Mat SumOfResidues(cv::Mat work, cv::Mat const & element)
{
    cv::Mat sum = cv::Mat::zeros(work.size(), CV_8UC1);
    while (true)
    {
        cv::Mat const eroded = Filtered(work, cv::MORPH_ERODE, element);
        cv::Mat const opened = Filtered(eroded, cv::MORPH_DILATE, element);
        cv::bitwise_or(sum, work - opened, sum);
        // Nothing would change any more where an erosion changes nothing.
        if (cv::countNonZero(eroded) == 0 || common::AreImagesEqual(work, eroded)) return sum;
        work = eroded;
    }
}

/// 255 where an image of labels equals one of them.
cv::Mat ZoneOf(cv::Mat const & labels, double label)
{
    cv::Mat zone(labels.size(), labels.type());
    // The types are those of the label image: nothing can be refused.
    static_cast<void>(common::ImageCompare(labels, common::kEqual, label, cv::Scalar(255.0), cv::Scalar(0.0), zone));
    return zone;
}

/// The bounding boxes of the labels of an image, by label.
std::map<int, cv::Rect> BoxesOf(cv::Mat1i const & labels)
{
    std::map<int, cv::Rect> boxes;
    for (int y = 0; y < labels.rows; ++y)
    {
        for (int x = 0; x < labels.cols; ++x)
        {
            if (labels(y, x) >= 1) boxes[labels(y, x)] |= cv::Rect(x, y, 1, 1);
        }
    }
    return boxes;
}

/// The chain of a branch from its first extremity: for each distance, the first pixel in raster order.
bool ChainOf(cv::Mat const & zone, tarnel::Polyline & chain)
{
    cv::Mat seed;
    if (!connexity::GeodesicExtremityOnFlatZonesNoZero(zone, seed)) return false;
    cv::Mat mask;
    cv::Mat marker;
    zone.convertTo(mask, CV_16S);
    seed.convertTo(marker, CV_16S);
    cv::Mat distances;
    if (!geodesy::GeodesicDistance(marker, mask, cv::MORPH_RECT, distances)) return false;
    for (int y = 0; y < distances.rows; ++y)
    {
        short const * const row = distances.ptr<short>(y);
        for (int x = 0; x < distances.cols; ++x)
        {
            // A point that is there stays.
            if (row[x] >= 1) chain.emplace(row[x], Eigen::Vector2d(x, y));
        }
    }
    return true;
}

cv::Point FloorOf(Eigen::Vector2d const & point)
{
    return {common::TruncateTo<int>(std::floor(point.x())), common::TruncateTo<int>(std::floor(point.y()))};
}

/// Draws the segments of a chain, with labels that follow @p label.
void DrawSegments(tarnel::Polyline const & chain, int label, cv::Mat & lines)
{
    if (chain.empty()) return;
    cv::Point before = FloorOf(chain.begin()->second);
    for (auto const & [distance, position] : chain)
    {
        cv::Point const point = FloorOf(position);
        if (point == before) continue;
        ++label;
        cv::line(lines, before, point, cv::Scalar(label), 1, cv::LINE_8, 0);
        before = point;
    }
}

/// Adds the ends of drawn segments under their labels.
bool ReadSegments(cv::Mat const & lines, SegmentMap & ends)
{
    cv::Mat const drawn = lines != 0;
    if (cv::countNonZero(drawn) == 0) return true;
    double smallest = 0.0;
    double largest = 0.0;
    cv::minMaxLoc(lines, &smallest, &largest, nullptr, nullptr, drawn);
    // In 64 bits: floats round the largest label to one that an int does not hold.
    for (auto label = static_cast<std::int64_t>(smallest); label <= static_cast<std::int64_t>(largest); ++label)
    {
        cv::Mat const zone = ZoneOf(lines, static_cast<double>(label));
        cv::Mat extremities;
        if (!connexity::GeodesicExtremitiesOnFlatZonesNoZero(zone, extremities)) return false;
        std::vector<cv::Point> positions;
        cv::findNonZero(extremities, positions);
        auto const key = static_cast<int>(std::min<std::int64_t>(label, kLargestLabel));
        if (positions.size() >= 2) ends.emplace(key, std::pair(positions[0], positions[1]));
    }
    return true;
}

} // namespace

bool ExtractSkeletonByErosion(cv::Mat const & src, cv::Mat & dst, cv::MorphShapes shape, int kernelSize)
{
    constexpr std::size_t kLeastArea = 5;
    bool const isReady = common::IsRaster(src) && common::IsSingleChannel(src) && src.rows >= 3 && src.cols >= 3;
    if (!isReady) return false;
    cv::Mat const residues = SumOfResidues(src.clone(), common::StructuringElement(shape, kernelSize));
    // Joined by one shape and thinned by another: what they do to corners is not meant to cancel.
    cv::Mat const joined = Filtered(residues, cv::MORPH_DILATE, common::StructuringElement(shape, 2 * kernelSize));
    cv::Mat const thinned =
        Filtered(joined, cv::MORPH_ERODE, common::StructuringElement(cv::MORPH_CROSS, 2 * kernelSize));
    dst = thinned.clone();
    return connexity::AttributeOpening(thinned, common::eAttributeArea, connexity::eConnexity8, kLeastArea, dst);
}

bool ExtractSegmentsFromSkeleton(cv::Mat const & skeleton, double tolerance, cv::Mat & segments, SegmentMap & ends)
{
    if (skeleton.empty() || !common::IsRaster(skeleton)) return false;
    cv::Mat labels = cv::Mat::zeros(skeleton.size(), CV_32SC1);
    if (!skeleton_internals::SplitSkeletonBySegments(skeleton, labels)) return false;
    segments = cv::Mat::zeros(labels.size(), labels.type());
    return skeleton_internals::SimplifyMultiLabeledSegments(labels, tolerance, segments, ends);
}

namespace skeleton_internals
{

bool SimplifyMultiLabeledSegments(cv::Mat const & labels, double tolerance, cv::Mat & segments, SegmentMap & ends)
{
    bool const isReady = !labels.empty() && labels.type() == CV_32SC1 && common::SameSize(labels, segments);
    if (!isReady) return false;
    for (auto const & [label, box] : BoxesOf(labels))
    {
        if (box.area() <= 1) continue;
        SegmentMap local;
        // What could not be simplified has no segments.
        static_cast<void>(
            SimplifySegment(ZoneOf(labels(box), label), tolerance, ends.empty() ? 0 : ends.rbegin()->first, local));
        for (auto const & [number, segment] : local)
        {
            cv::Point const first = segment.first + box.tl();
            cv::Point const second = segment.second + box.tl();
            ends.emplace(number, std::pair(first, second));
            cv::line(segments, first, second, cv::Scalar(number), 1, cv::LINE_8, 0);
        }
    }
    return true;
}

bool SimplifySegment(cv::Mat const & zone, double tolerance, int firstLabel, SegmentMap & ends)
{
    if (zone.empty()) return false;
    tarnel::Polyline chain;
    if (!ChainOf(zone, chain) || !tarnel::RDP_2DPolylineSimplification(chain, tolerance, chain)) return false;
    // Each step of the chain takes a label, if it leads anywhere.
    int const steps = std::max(static_cast<int>(chain.size()), 1) - 1;
    if (firstLabel > kLargestLabel - steps) return false;
    cv::Mat lines = cv::Mat::zeros(zone.size(), zone.type());
    DrawSegments(chain, firstLabel, lines);
    return ReadSegments(lines, ends);
}

} // namespace skeleton_internals

} // namespace morvane::features
