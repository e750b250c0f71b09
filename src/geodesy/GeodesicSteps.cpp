#include "geodesy/GeodesicSteps.h"

#include "common/Dispatch.h"

#include <opencv2/imgproc.hpp>

#include <utility>
#include <vector>

namespace morvane::geodesy
{

namespace
{

cv::Point const kCentre(-1, -1);

/// The outside of the image never contributes. Nor does a parent matrix around a view, at which OpenCV would look.
constexpr int kBorder = static_cast<int>(cv::BORDER_CONSTANT) | static_cast<int>(cv::BORDER_ISOLATED);

} // namespace

bool AreReady(cv::Mat const & marker, cv::Mat const & mask, cv::Mat & out)
{
    if (!common::IsRaster(marker) || marker.type() != mask.type()) return false;
    if (out.empty()) out.create(marker.size(), marker.type());
    return out.type() == marker.type() && common::SameSize(marker, mask, out);
}

bool GeoDilateBySize(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize)
{
    cv::Mat const element = cv::getStructuringElement(shape, kernelSize, kCentre);
    cv::min(marker, mask, out);
    cv::dilate(out, out, element, kCentre, 1, kBorder, cv::morphologyDefaultBorderValue());
    cv::min(out, mask, out);
    return !out.empty();
}

bool GeoErodeBySize(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize)
{
    cv::Mat const element = cv::getStructuringElement(shape, kernelSize, kCentre);
    cv::max(marker, mask, out);
    cv::erode(out, out, element, kCentre, 1, kBorder, cv::morphologyDefaultBorderValue());
    cv::max(out, mask, out);
    return !out.empty();
}

common::Neighbourhood ReachOfElement(int shape, cv::Size kernelSize, cv::Size size)
{
    cv::Mat1b const element = cv::getStructuringElement(shape, kernelSize, kCentre);
    cv::Point const anchor(kernelSize.width / 2, kernelSize.height / 2);
    std::vector<cv::Point> offsets;
    for (int y = 0; y < element.rows; ++y)
    {
        for (int x = 0; x < element.cols; ++x)
        {
            // A pixel takes from where the element lies, so it gives to the opposite side.
            cv::Point const offset = anchor - cv::Point(x, y);
            if (element(y, x) != 0 && offset != cv::Point()) offsets.push_back(offset);
        }
    }
    return {std::move(offsets), false, size};
}

} // namespace morvane::geodesy
