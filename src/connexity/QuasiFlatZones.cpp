#include <morvane/connexity/QuasiFlatZones.h>

#include "common/Comparisons.h"
#include "common/Dispatch.h"
#include "common/Morphology.h"
#include "connexity/RegionSearch.h"

#include <morvane/algorithm/Filling.h>
#include <morvane/algorithm/ImageUtilities.h>
#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/Labelling.h>
#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/visual/ColorMaps.h>

#include <opencv2/imgproc.hpp>

namespace morvane
{

using common::ImageCompare;
using common::kEqual;
using connexity::eConnexityType;
using projection::ProjectionType;

namespace
{

constexpr int kSmallestSquare = 3;

/// What ComputeQuasiFlatZones() takes, as all forms hand it on.
struct Preparation
{
    ProjectionType projection;
    double delta;
    eConnexityType connexity;
    int windowSize;
    bool fillHoles;
    bool filter;
};

/// Filters by growing squares, each with two operations.
void FilterAlternately(cv::Mat & image, int firstOperation, int secondOperation, int windowSize)
{
    for (int size = kSmallestSquare; size <= windowSize; size += 2)
    {
        cv::Mat const square = common::StructuringElement(cv::MORPH_RECT, size);
        common::Filter(image, image, firstOperation, square);
        common::Filter(image, image, secondOperation, square);
    }
}

/// Filters in the order of @p projection, if it has one.
void FilterAlternately(cv::Mat & image, ProjectionType projection, int windowSize)
{
    bool const closesFirst = projection == projection::ProjectionClosingFirst;
    bool const opensFirst = projection == projection::ProjectionOpeningFirst;
    if (closesFirst) FilterAlternately(image, cv::MORPH_CLOSE, cv::MORPH_OPEN, windowSize);
    if (opensFirst) FilterAlternately(image, cv::MORPH_OPEN, cv::MORPH_CLOSE, windowSize);
}

bool ComputeZones(cv::Mat const & image, Preparation const & how, cv::Mat & filtered, cv::Mat & labels)
{
    return ComputeQuasiFlatZones(
        image, how.projection, how.delta, how.connexity, how.windowSize, how.fillHoles, how.filter, filtered, labels);
}

/// A mask of the zones whose largest seed is not 0.
bool MaskSeededZones(cv::Mat const & labels, cv::Mat const & seeds, cv::Mat & mask)
{
    if (cv::countNonZero(seeds) == 0) return true;
    cv::Mat const largestSeeds = connexity::ComputeMax(labels, seeds);
    cv::Mat touched = cv::Mat::zeros(labels.size(), labels.type());
    if (!visual::ApplyLut(labels, largestSeeds, touched)) return false;
    return ImageCompare(touched, kEqual, 0.0, cv::Scalar(0), cv::Scalar(255), mask);
}

/// A mask of the zone that holds most of the pixels above 0.
bool MaskMostFrequentZone(cv::Mat const & image, cv::Mat & labels, cv::Mat & mask)
{
    // First, so that an image of several channels is refused here; cv::compare would throw.
    if (!ImageCompare(image, kEqual, 0.0, cv::Scalar(0), labels, labels)) return false;
    cv::Mat valid;
    cv::compare(image, 0.0, valid, cv::CMP_GT);
    double mode = 0.0;
    double count = 0.0;
    if (!algorithm::ImageMode(labels, mode, count, valid)) return false;
    return ImageCompare(labels, kEqual, mode, cv::Scalar(255), cv::Scalar(0), mask);
}

/// The form with an image of seeds; without, @p maskWithout makes the mask from the labels.
template <class MaskWithout>
bool Propagate(
    cv::Mat const & image, Preparation const & how, cv::Mat const & seeds, cv::Mat & filtered, cv::Mat & mask,
    MaskWithout const & maskWithout)
{
    cv::Mat labels;
    if (!ComputeZones(image, how, filtered, labels)) return false;
    mask = cv::Mat::zeros(labels.size(), CV_8U);
    return common::SameSize(image, seeds) ? MaskSeededZones(labels, seeds, mask) : maskWithout(labels);
}

} // namespace

bool ComputeQuasiFlatZones(
    cv::Mat const & image, ProjectionType projection, double const & delta, eConnexityType connexity, int windowSize,
    bool fillHoles, bool filter, cv::Mat & filtered, cv::Mat & labels)
{
    if (!fillHoles) image.copyTo(filtered);
    if (fillHoles && !algorithm::FillHolesInterpolationWithMin(image, filtered, windowSize)) return false;
    if (filter) FilterAlternately(filtered, projection, windowSize);
    labels = cv::Mat::zeros(filtered.size(), CV_32S);
    return connexity::LabelDeltaFlatZonesNoZero(filtered, connexity, delta, labels);
}

bool QuasiFlatZonesPropagation(
    cv::Mat const & image, ProjectionType projection, double const & delta, eConnexityType connexity, int windowSize,
    bool fillHoles, bool filter, cv::Mat const & seeds, cv::Mat & filtered, cv::Mat & mask)
{
    Preparation const how{projection, delta, connexity, windowSize, fillHoles, filter};
    return Propagate(
        image, how, seeds, filtered, mask, [&](cv::Mat & labels) { return MaskMostFrequentZone(image, labels, mask); });
}

bool QuasiFlatZonesPropagation(
    cv::Mat const & image, ProjectionType projection, double const & delta, eConnexityType connexity, int windowSize,
    bool fillHoles, bool filter, std::vector<cv::Point> const & seedPoints, cv::Mat & filtered, cv::Mat & mask)
{
    cv::Mat seeds;
    if (!seedPoints.empty()) seeds = cv::Mat::zeros(image.size(), CV_32S);
    cv::Rect const inside({0, 0}, seeds.size());
    for (cv::Point const & point : seedPoints)
    {
        if (inside.contains(point)) seeds.at<int>(point) = 255;
    }
    // Whether it failed is not told.
    (void)QuasiFlatZonesPropagation(
        image, projection, delta, connexity, windowSize, fillHoles, filter, seeds, filtered, mask);
    return true;
}

bool QuasiFlatZonesPropagation(
    cv::Mat const & image, ProjectionType projection, double const & delta, eConnexityType connexity, int windowSize,
    bool fillHoles, bool filter, cv::Mat const & seeds, int areaLimit, int /*reserved*/, int radius, double pixelSize,
    double slopeRatio, cv::Mat & filtered, cv::Mat & mask)
{
    Preparation const how{projection, delta, connexity, windowSize, fillHoles, filter};
    return Propagate(image, how, seeds, filtered, mask, [&](cv::Mat & labels) {
        return quasi_flat_internals::MaskBaseSurface(
            image, filtered, {areaLimit, radius, pixelSize, slopeRatio}, labels, mask);
    });
}

} // namespace morvane
