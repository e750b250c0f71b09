#include "support/ExtremaOracle.h"

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Oracles.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace morvane::tests
{

namespace
{

bool IsFloating(int depth)
{
    return depth == CV_32F || depth == CV_64F;
}

/// The lowest and the highest number of a depth, or the infinities.
std::array<double, 2> Ends(int depth)
{
    switch (depth)
    {
    case CV_8U:
        return {0.0, 255.0};
    case CV_16U:
        return {0.0, 65535.0};
    case CV_16S:
        return {-32768.0, 32767.0};
    case CV_32S:
        return {-2147483648.0, 2147483647.0};
    default:
        return {-std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    }
}

} // namespace

OracleZoneList OracleExtrema(cv::Mat const & image, int connexity, Extremum kind)
{
    std::vector<bool> isExtremum; // of each zone so far
    OracleCondition condition;
    condition.reset = [&] {
        isExtremum.push_back(true);
    };
    condition.isConnected = [&](cv::Point from, cv::Point to, cv::Point) {
        double const value = ElementAt(image, from.y, from.x);
        double const neighbour = ElementAt(image, to.y, to.x);
        if (value == neighbour) return true;
        bool const isBeyond = kind == Extremum::Maximum ? value > neighbour : value < neighbour;
        isExtremum.back() = isExtremum.back() && isBeyond;
        return false;
    };
    OracleZoneList const zones = OracleZones(EveryPixel(image.size()), connexity, condition);
    OracleZoneList extrema;
    for (std::size_t index = 0; index < zones.size(); ++index)
    {
        if (isExtremum[index]) extrema.push_back(zones[index]);
    }
    return extrema;
}

PointsOfExtrema ByNumber(OracleZoneList const & zones)
{
    PointsOfExtrema points;
    int number = 0;
    for (std::vector<cv::Point> const & zone : zones)
    {
        points[++number] = zone;
    }
    return points;
}

bool CallLabel(Extremum kind, cv::Mat const & image, int connexity, cv::Mat & labels)
{
    return kind == Extremum::Maximum ? connexity::LabelMaxima(image, Shape(connexity), labels)
                                     : connexity::LabelMinima(image, Shape(connexity), labels);
}

bool CallList(Extremum kind, cv::Mat const & image, int connexity, PointsOfExtrema & points)
{
    return kind == Extremum::Maximum ? connexity::LabelMaxima(image, Shape(connexity), points)
                                     : connexity::LabelMinima(image, Shape(connexity), points);
}

cv::Mat LabelledExtrema(Extremum kind, cv::Mat const & image, int connexity, int type)
{
    return Written(image.size(), type, [&](cv::Mat & labels) { return CallLabel(kind, image, connexity, labels); });
}

cv::Mat UpsideDown(cv::Mat const & image)
{
    cv::Mat result(image.rows, image.cols, image.type());
    double const sum = IsFloating(image.depth()) ? 0.0 : Ends(image.depth())[0] + Ends(image.depth())[1];
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            SetElement(result, y, x, 0, sum - ElementAt(image, y, x));
        }
    }
    return result;
}

cv::Mat Terraces(Random & random, cv::Size size, int depth)
{
    cv::Mat image(size.height, size.width, depth, cv::Scalar(4));
    if (image.empty()) return image;
    for (int hills = random.Below(8); hills > 0; --hills)
    {
        int const left = random.Below(size.width);
        int const top = random.Below(size.height);
        cv::Rect const hill(left, top, 1 + random.Below(size.width - left), 1 + random.Below(size.height - top));
        image(hill).setTo(cv::Scalar(2 + random.Below(5)));
    }
    for (int steps = random.Below(1 + size.area() / 8); steps > 0; --steps)
    {
        int const y = random.Below(size.height);
        int const x = random.Below(size.width);
        double value = 3 + random.Below(3);
        int const kind = random.Below(12);
        if (kind < 2) value = Ends(depth)[static_cast<std::size_t>(kind)];
        if (kind == 2 && IsFloating(depth)) value = std::numeric_limits<double>::quiet_NaN();
        SetElement(image, y, x, 0, value);
    }
    return image;
}

} // namespace morvane::tests
