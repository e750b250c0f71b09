#include "support/ShapeOracle.h"

#include "support/ImageLiterals.h"

#include <morvane/connexity/Labelling.h>
#include <morvane/geodesy/GeodesicOperators.h>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>

namespace morvane::tests
{

namespace
{

/// The largest value of an image and its first place in raster order.
struct Maximum
{
    cv::Point place;
    double value;
};

/// The largest distance from a seed of one pixel.
Maximum FarthestFrom(cv::Point const & start, cv::Mat const & region)
{
    cv::Mat seed(region.size(), CV_16UC1, cv::Scalar(0));
    seed.at<ushort>(start) = 1;
    cv::Mat distance;
    EXPECT_TRUE(geodesy::GeodesicDistance(seed, region, 0, distance));
    Maximum maximum;
    cv::minMaxLoc(distance, nullptr, &maximum.value, nullptr, &maximum.place);
    return maximum;
}

cv::Rect BoxOf(std::vector<cv::Point> const & points)
{
    cv::Point least = points.front();
    cv::Point greatest = points.front();
    for (cv::Point const & point : points)
    {
        least = {std::min(least.x, point.x), std::min(least.y, point.y)};
        greatest = {std::max(greatest.x, point.x), std::max(greatest.y, point.y)};
    }
    return {least, greatest + cv::Point(1, 1)};
}

cv::Point NearestTo(cv::Point const & centre, std::vector<cv::Point> const & points)
{
    cv::Point nearest;
    double least = DBL_MAX;
    for (cv::Point const & point : points)
    {
        cv::Point const step = point - centre;
        double const distance = std::sqrt(static_cast<double>(step.x * step.x + step.y * step.y));
        if (distance < least)
        {
            least = distance;
            nearest = point;
        }
    }
    return nearest;
}

cv::Mat LabelsOf(cv::Mat const & image)
{
    cv::Mat labels(image.size(), CV_16SC1, cv::Scalar(0));
    EXPECT_TRUE(connexity::LabelFlatZonesNoZero(image, connexity::eConnexity8, labels));
    return labels;
}

double MeasureOf(OraclePath const & path, std::size_t pixels, PathMeasure measure)
{
    if (measure == PathMeasure::Diameter) return path.length;
    if (measure == PathMeasure::Elongation)
    {
        return path.length * 3.141598 * path.length / (static_cast<double>(pixels) * 4.0);
    }
    double const dx = path.first.x - path.second.x;
    double const dy = path.first.y - path.second.y;
    double const distance = std::sqrt(dx * dx + dy * dy);
    return distance == 0.0 ? 1.0 : path.length / distance;
}

/// Each pixel of a label image with the entry of its label, 0 where there is none.
cv::Mat WithTable(cv::Mat const & labels, std::map<int, double> const & table)
{
    cv::Mat out(labels.size(), CV_64FC1, cv::Scalar(0));
    for (int y = 0; y < labels.rows; ++y)
    {
        for (int x = 0; x < labels.cols; ++x)
        {
            auto const entry = table.find(labels.at<short>(y, x));
            if (entry != table.end()) out.at<double>(y, x) = entry->second;
        }
    }
    return out;
}

cv::Mat Element(int shape, int size)
{
    return cv::getStructuringElement(shape, cv::Size(size, size), cv::Point(-1, -1));
}

cv::Mat Morphed(cv::Mat const & src, int operation, cv::Mat const & element)
{
    cv::Mat out;
    cv::morphologyEx(src, out, operation, element, cv::Point(-1, -1), 1, cv::BORDER_CONSTANT, cv::Scalar::all(DBL_MAX));
    return out;
}

bool HaveSameBytes(cv::Mat const & one, cv::Mat const & other)
{
    for (int y = 0; y < one.rows; ++y)
    {
        if (std::memcmp(one.ptr(y), other.ptr(y), static_cast<std::size_t>(one.cols) * one.elemSize()) != 0)
        {
            return false;
        }
    }
    return true;
}

/// Sets what hangs together with a pixel, and has its value, to another value, and tells which pixels these are.
std::vector<cv::Point> Fill(cv::Mat1b & image, cv::Point const & start, uchar value, bool diagonally)
{
    cv::Rect const inside({}, image.size());
    uchar const before = image(start);
    std::vector<cv::Point> pixels{start};
    image(start) = value;
    for (std::size_t front = 0; front < pixels.size(); ++front)
    {
        for (int dy = -1; dy <= 1; ++dy)
        {
            for (int dx = -1; dx <= 1; ++dx)
            {
                cv::Point const at = pixels[front] + cv::Point(dx, dy);
                if ((dx != 0 && dy != 0 && !diagonally) || !inside.contains(at) || image(at) != before) continue;
                image(at) = value;
                pixels.push_back(at);
            }
        }
    }
    return pixels;
}

/// The least, or greatest, values within a radius to each side, inside the image.
template <class Choose>
cv::Mat1b InWindows(cv::Mat1b const & image, int radius, Choose choose)
{
    cv::Mat1b rows = image.clone();
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            for (int at = std::max(x - radius, 0); at <= std::min(x + radius, image.cols - 1); ++at)
            {
                rows(y, x) = choose(rows(y, x), image(y, at));
            }
        }
    }
    cv::Mat1b out = rows.clone();
    for (int y = 0; y < image.rows; ++y)
    {
        for (int at = std::max(y - radius, 0); at <= std::min(y + radius, image.rows - 1); ++at)
        {
            for (int x = 0; x < image.cols; ++x)
            {
                out(y, x) = choose(out(y, x), rows(at, x));
            }
        }
    }
    return out;
}

/// The place that stands for one outside: mirrored at the first and last pixel.
int Mirrored(int at, int count)
{
    while (at < 0 || at >= count)
    {
        at = at < 0 ? -at : 2 * (count - 1) - at;
    }
    return at;
}

using Kernel = std::vector<double>;

/// The image under a separable kernel of 7 by 7.
cv::Mat1d Convolved(cv::Mat1d const & image, Kernel const & across, Kernel const & down)
{
    cv::Mat1d out(image.size(), 0.0);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            for (int row = 0; row < 7; ++row)
            {
                for (int column = 0; column < 7; ++column)
                {
                    double const weight =
                        across[static_cast<std::size_t>(column)] * down[static_cast<std::size_t>(row)];
                    cv::Point const at(Mirrored(x + column - 3, image.cols), Mirrored(y + row - 3, image.rows));
                    out(y, x) += weight * image(at);
                }
            }
        }
    }
    return out;
}

} // namespace

OraclePath OracleGeodesicPath(std::vector<cv::Point> const & points)
{
    cv::Rect const box = BoxOf(points);
    cv::Mat region(box.height, box.width, CV_16UC1, cv::Scalar(0));
    for (cv::Point const & point : points)
    {
        region.at<ushort>(point - box.tl()) = 1;
    }
    cv::Point const centre(box.x + box.width / 2, box.y + box.height / 2);
    Maximum const end = FarthestFrom(NearestTo(centre, points) - box.tl(), region);
    Maximum const first = FarthestFrom(end.place, region);
    Maximum const second = FarthestFrom(first.place, region);
    return {first.place + box.tl(), second.place + box.tl(), second.value};
}

std::map<int, std::vector<cv::Point>> OracleZonePixels(cv::Mat const & image)
{
    cv::Mat const labels = LabelsOf(image);
    std::map<int, std::vector<cv::Point>> zones;
    for (int y = 0; y < labels.rows; ++y)
    {
        for (int x = 0; x < labels.cols; ++x)
        {
            int const label = labels.at<short>(y, x);
            if (label >= 1) zones[label].emplace_back(x, y);
        }
    }
    return zones;
}

cv::Mat OracleExtremities(cv::Mat const & image, bool both)
{
    cv::Mat out(image.size(), CV_8UC1, cv::Scalar(0));
    for (auto const & [label, pixels] : OracleZonePixels(image))
    {
        OraclePath const path = OracleGeodesicPath(pixels);
        out.at<uchar>(path.first) = 255;
        if (both) out.at<uchar>(path.second) = 255;
    }
    return out;
}

cv::Mat OraclePathMeasure(cv::Mat const & image, PathMeasure measure)
{
    std::map<int, double> table;
    for (auto const & [label, pixels] : OracleZonePixels(image))
    {
        table[label] = MeasureOf(OracleGeodesicPath(pixels), pixels.size(), measure);
    }
    return WithTable(LabelsOf(image), table);
}

cv::Mat OracleStandardElongation(cv::Mat const & image)
{
    cv::Mat const labels = LabelsOf(image);
    cv::Mat eroded;
    cv::erode(
        labels, eroded, cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3), cv::Point(1, 1)), cv::Point(-1, -1),
        1, cv::BORDER_CONSTANT, cv::morphologyDefaultBorderValue());
    cv::Mat1b binary(labels.size(), uchar{255});
    binary.setTo(0, labels == 0);
    std::vector<std::vector<cv::Point>> contours;
    std::vector<cv::Vec4i> hierarchy;
    cv::findContours(binary, contours, hierarchy, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE, cv::Point(0, 0));
    std::map<int, std::vector<cv::Point>> zones;
    for (std::vector<cv::Point> const & contour : contours)
    {
        int const label = eroded.at<short>(contour[0]);
        if (label > 0) zones[label].insert(zones[label].end(), contour.begin(), contour.end());
    }
    std::map<int, double> table;
    for (auto const & [label, points] : zones)
    {
        cv::Moments const m = cv::moments(points, false);
        double const t = m.mu20 + m.mu02;
        double const s = std::sqrt((m.mu20 - m.mu02) * (m.mu20 - m.mu02) + 4 * (m.mu11 * m.mu11));
        table[label] = t - s == 0 ? 1.0 : (t + s) / (t - s);
    }
    return WithTable(labels, table);
}

std::vector<double> OracleFractalDimension(cv::Mat const & src, int shape)
{
    cv::Mat const image = src.clone();
    double minimum = 0.0;
    double maximum = 0.0;
    cv::minMaxLoc(image, &minimum, &maximum);
    auto const n = static_cast<double>(image.total());
    std::vector<double> curve;
    for (int i = 1; i < std::max(image.rows, image.cols); ++i)
    {
        int const s = 2 * i + 1;
        cv::Mat const eroded = Morphed(image, cv::MORPH_ERODE, Element(shape, s));
        cv::Mat const dilated = Morphed(image, cv::MORPH_DILATE, Element(shape, s));
        curve.push_back(cv::sum(dilated - eroded)[0] / s);
        if (cv::sum(eroded)[0] == n * minimum || cv::sum(dilated)[0] == n * maximum) break;
    }
    return curve;
}

std::vector<double> OracleGranulometry(cv::Mat const & src, int shape, int operation)
{
    cv::Mat current = src.clone();
    double const total = cv::sum(current)[0];
    std::vector<double> curve;
    for (int i = 1; i < std::max(src.rows, src.cols); ++i)
    {
        curve.push_back(cv::sum(current)[0] / total);
        cv::Mat const next = Morphed(current, operation, Element(shape, 2 * i + 1));
        if (HaveSameBytes(current, next)) break;
        current = next;
    }
    return curve;
}

std::vector<cv::Rect> OracleOuterBoxes(cv::Mat1b const & shape)
{
    // With a border all around, what is outside hangs together.
    cv::Mat1b image(shape.rows + 2, shape.cols + 2, uchar{0});
    image(cv::Rect({1, 1}, shape.size())).setTo(255, shape);
    constexpr uchar kOutside = 1;
    constexpr uchar kSeen = 2;
    Fill(image, {0, 0}, kOutside, false);
    std::vector<cv::Rect> boxes;
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            if (image(y, x) != 255) continue;
            // The first pixel of a part has what surrounds the part above it.
            bool const isOuter = image(y - 1, x) == kOutside;
            cv::Rect const box = BoxOf(Fill(image, {x, y}, kSeen, true));
            if (isOuter) boxes.push_back(box - cv::Point(1, 1));
        }
    }
    return boxes;
}

cv::Mat1b OracleClosed(cv::Mat1b const & shape)
{
    constexpr int kRadius = 6 * 5;
    cv::Mat1b const dilated = InWindows(shape, kRadius, [](uchar one, uchar other) { return std::max(one, other); });
    return InWindows(dilated, kRadius, [](uchar one, uchar other) { return std::min(one, other); });
}

cv::Mat1d OracleHarrisCorners(cv::Mat const & src)
{
    cv::Mat1d image;
    src.convertTo(image, CV_64F);
    Kernel const smooth{1, 6, 15, 20, 15, 6, 1};
    Kernel const slope{-1, -4, -5, 0, 5, 4, 1};
    cv::Mat1d const dx = Convolved(image, slope, smooth);
    cv::Mat1d const dy = Convolved(image, smooth, slope);
    cv::Mat1d response(image.size(), 0.0);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            double xx = 0.0;
            double xy = 0.0;
            double yy = 0.0;
            for (cv::Point const & at : {cv::Point(x - 1, y - 1), {x, y - 1}, {x - 1, y}, {x, y}})
            {
                cv::Point const place(Mirrored(at.x, image.cols), Mirrored(at.y, image.rows));
                xx += dx(place) * dx(place);
                xy += dx(place) * dy(place);
                yy += dy(place) * dy(place);
            }
            response(y, x) = xx * yy - xy * xy - 0.04 * (xx + yy) * (xx + yy);
        }
    }
    double minimum = 0.0;
    double maximum = 0.0;
    cv::minMaxLoc(response, &minimum, &maximum);
    for (double & value : response)
    {
        value = (value - minimum) * 255.0 / (maximum - minimum);
    }
    return response;
}

} // namespace morvane::tests
