#include "Surface.h"

#include "scansim/Scan.h"

#include <opencv2/imgproc.hpp>

#include <vector>

namespace gallery
{

cv::Mat SurfaceOf(cv::Mat const & elevation)
{
    cv::Mat const isEmpty = elevation == 0.0F;
    cv::Mat distances;
    cv::Mat1i nearest;
    cv::distanceTransform(isEmpty, distances, nearest, cv::DIST_L2, 5, cv::DIST_LABEL_PIXEL);
    std::vector<float> heights(elevation.total() + 1);
    for (int y = 0; y < elevation.rows; ++y)
    {
        for (int x = 0; x < elevation.cols; ++x)
        {
            float const value = elevation.at<float>(y, x);
            if (value != 0.0F) heights[static_cast<std::size_t>(nearest(y, x))] = value;
        }
    }
    cv::Mat1f surface(elevation.size());
    for (int y = 0; y < elevation.rows; ++y)
    {
        for (int x = 0; x < elevation.cols; ++x)
        {
            surface(y, x) = heights[static_cast<std::size_t>(nearest(y, x))];
        }
    }
    cv::medianBlur(surface, surface, 5);
    return cv::max(surface - scansim::kDatum, 0.0);
}

} // namespace gallery
