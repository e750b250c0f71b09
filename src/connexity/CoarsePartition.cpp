#include "common/Comparisons.h"
#include "common/Dispatch.h"

#include <morvane/common/Conversions.h>
#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/Labelling.h>
#include <morvane/connexity/QuasiFlatZones.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <vector>

namespace morvane::quasi_flat_internals
{

using common::ImageCompare;
using common::kEqual;

namespace
{

constexpr double kCoarseGrid = 10.0;
constexpr int kMostPasses = 501;

/// Calls a function with each of the pixels around one, inside the image.
template <class Function>
void ForEachAround(cv::Size const & size, cv::Point const & pixel, Function const & function)
{
    for (int y = std::max(pixel.y - 1, 0); y <= std::min(pixel.y + 1, size.height - 1); ++y)
    {
        for (int x = std::max(pixel.x - 1, 0); x <= std::min(pixel.x + 1, size.width - 1); ++x)
        {
            function(cv::Point(x, y));
        }
    }
}

/// The numbered pixels beside which a pixel has none.
std::vector<cv::Point> Front(cv::Mat const & parts)
{
    cv::Mat const isEmpty = parts == 0;
    cv::Mat nearEmpty;
    cv::dilate(isEmpty, nearEmpty, cv::Mat());
    cv::bitwise_xor(nearEmpty, isEmpty, nearEmpty);
    std::vector<cv::Point> front;
    cv::findNonZero(nearEmpty, front);
    return front;
}

/// Lets the parts grow by a pixel as often as it is allowed; where several meet, the highest number wins.
///
/// As FillImageWithDilation() with a square of 3, but only the pixels that the last pass filled are looked at again.
void GrowParts(cv::Mat & parts)
{
    std::vector<cv::Point> front = Front(parts);
    cv::Mat grown = parts.clone();
    std::vector<cv::Point> reached;
    for (int pass = 0; pass < kMostPasses && !front.empty(); ++pass)
    {
        reached.clear();
        for (cv::Point const & pixel : front)
        {
            ushort const part = parts.at<ushort>(pixel);
            ForEachAround(parts.size(), pixel, [&](cv::Point const & around) {
                if (parts.at<ushort>(around) != 0) return;
                auto & target = grown.at<ushort>(around);
                if (target == 0) reached.push_back(around);
                target = std::max(target, part);
            });
        }
        for (cv::Point const & pixel : reached)
        {
            parts.at<ushort>(pixel) = grown.at<ushort>(pixel);
        }
        front.swap(reached);
    }
}

} // namespace

bool BuildCoarsePartition(cv::Mat const & image, cv::Mat & out)
{
    if (!common::IsRaster(image) || image.empty()) return false;
    cv::Mat valid(image.size(), CV_8U);
    if (!ImageCompare(image, kEqual, 0.0, cv::Scalar(0), cv::Scalar(255), valid)) return false;

    cv::Size const thumbnail(
        common::TruncateTo<int>(image.cols / (image.cols / kCoarseGrid)),
        common::TruncateTo<int>(image.rows / (image.rows / kCoarseGrid)));
    cv::Mat blurred;
    cv::resize(valid, blurred, thumbnail, 0.0, 0.0, cv::INTER_LINEAR);
    cv::resize(blurred, blurred, image.size(), 0.0, 0.0, cv::INTER_LINEAR);
    (void)ImageCompare(blurred, kEqual, 0.0, cv::Scalar(0), cv::Scalar(255), blurred);

    // 16 bits hold all parts that so few pixels can make.
    cv::Mat parts(image.size(), CV_16U);
    (void)connexity::LabelFlatZonesNoZero(blurred, connexity::eConnexity8, parts);
    GrowParts(parts);
    double largest = 0.0;
    cv::minMaxLoc(parts, nullptr, &largest);
    if (largest == 0.0) return false;
    out = parts;
    return true;
}

} // namespace morvane::quasi_flat_internals
