#include "support/MapOracle.h"

#include "support/ImageLiterals.h"

#include <cmath>
#include <limits>
#include <utility>

namespace morvane::tests
{

namespace
{

/// A table entry; each number keeps its low 8 bits.
cv::Vec3b Entry(int blue, int green, int red)
{
    return {static_cast<uchar>(blue & 0xFF), static_cast<uchar>(green & 0xFF), static_cast<uchar>(red & 0xFF)};
}

cv::Vec3b ColorEntry(int i)
{
    return i < 255 ? Entry(0, 255, i) : Entry(0, 254 - i, 255);
}

cv::Vec3b ColorNoZeroEntry(int i)
{
    if (i == 0) return Entry(0, 0, 0);
    if (i <= 254) return Entry(i, 0, 0);
    if (i <= 509) return Entry(255, i + 1, 0);
    if (i <= 764) return Entry(253 - i, 255, 0);
    if (i <= 1019) return Entry(0, 255, i + 3);
    return Entry(0, 251 - i, 255);
}

/// The extremes of an image; without zeros, those of an image of zeros are crossed.
std::pair<double, double> Range(MapUnderTest const & map, cv::Mat const & image)
{
    double const most = std::numeric_limits<double>::max();
    double lo = map.noZero ? most : std::numeric_limits<double>::infinity();
    double hi = -lo;
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            double const value = ElementAt(image, y, x);
            if (map.noZero && value == 0.0) continue;
            if (value < lo) lo = value;
            if (value > hi) hi = value;
        }
    }
    return {lo, hi};
}

void Paint(MapUnderTest const & map, double v, cv::Mat & output, int y, int x)
{
    bool const below = v < 0;
    bool const above = v >= map.steps;
    int const step = below || above ? 0 : static_cast<int>(v);
    if (map.outputType == CV_8UC1)
    {
        output.at<uchar>(y, x) = static_cast<uchar>(above ? 255 : step);
        return;
    }
    auto & pixel = output.at<cv::Vec3b>(y, x);
    if (below)
    {
        pixel = Entry(0, 0, 0);
    }
    else if (above)
    {
        pixel = Entry(255, 255, 255);
    }
    else
    {
        pixel = map.noZero ? ColorNoZeroEntry(step) : ColorEntry(step);
    }
}

} // namespace

MapResult OracleMap(MapUnderTest const & map, cv::Mat const & image, MapLimits const * limits)
{
    double const most = std::numeric_limits<double>::max();
    MapLimits const used = limits == nullptr ? MapLimits{-most, most, true} : *limits;
    auto [lo, hi] = Range(map, image);
    if (used.clip)
    {
        if (used.minimum > lo) lo = used.minimum;
        if (used.maximum < hi) hi = used.maximum;
    }
    MapResult result{cv::Mat::zeros(image.size(), map.outputType), cv::Mat1b(image.size(), uchar{0})};
    if (lo == hi) return result;
    double const s = map.steps / (hi - lo);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            double const v = (ElementAt(image, y, x) - lo) * s;
            if (std::isnan(v))
            {
                result.open(y, x) = 1;
            }
            else
            {
                Paint(map, v, result.image, y, x);
            }
        }
    }
    return result;
}

} // namespace morvane::tests
