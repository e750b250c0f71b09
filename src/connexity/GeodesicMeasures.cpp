#include <morvane/connexity/GeodesicMeasures.h>

#include <morvane/connexity/Labelling.h>
#include <morvane/visual/ColorMaps.h>

#include "connexity/GeodesicWalk.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <numeric>
#include <span>
#include <vector>

namespace morvane::connexity
{

using namespace geodesic_internals;

namespace
{

/// The zones of an image by their numbers, with their pixels in raster order.
class ZoneList
{
public:
    /// @return false when the image cannot be labelled
    bool Build(cv::Mat const & image)
    {
        if (image.dims > 2 || image.empty()) return false;
        cv::Mat labels(image.size(), CV_16SC1);
        if (!LabelFlatZonesNoZero(image, eConnexity8, labels)) return false;
        // The numbers are those of 16 bits.
        labels.convertTo(m_labels, CV_32S);
        CountPixels();
        SortPixels();
        return true;
    }

    [[nodiscard]] cv::Mat const & Labels() const { return m_labels; }

    /// The greatest number of a zone; 0 without zones.
    [[nodiscard]] int Largest() const { return static_cast<int>(m_ends.size()) - 1; }

    /// The pixels of a zone, none where the number does not occur.
    [[nodiscard]] std::span<cv::Point const> Pixels(int label) const
    {
        auto const index = static_cast<std::size_t>(label);
        return std::span(m_pixels).subspan(m_ends[index - 1], m_ends[index] - m_ends[index - 1]);
    }

private:
    /// How many pixels there are of each number and of those below it.
    void CountPixels()
    {
        m_ends.assign(1, 0);
        for (int y = 0; y < m_labels.rows; ++y)
        {
            int const * const row = m_labels.ptr<int>(y);
            for (int x = 0; x < m_labels.cols; ++x)
            {
                if (row[x] < 1) continue;
                auto const label = static_cast<std::size_t>(row[x]);
                if (label >= m_ends.size()) m_ends.resize(label + 1, 0);
                ++m_ends[label];
            }
        }
        std::partial_sum(m_ends.begin(), m_ends.end(), m_ends.begin());
    }

    void SortPixels()
    {
        m_pixels.resize(m_ends.back());
        std::vector<std::size_t> next(m_ends);
        for (int y = 0; y < m_labels.rows; ++y)
        {
            int const * const row = m_labels.ptr<int>(y);
            for (int x = 0; x < m_labels.cols; ++x)
            {
                if (row[x] >= 1) m_pixels[next[static_cast<std::size_t>(row[x]) - 1]++] = {x, y};
            }
        }
    }

    cv::Mat m_labels;
    /// By number, where its pixels end, which is where those of the next begin.
    std::vector<std::size_t> m_ends;
    std::vector<cv::Point> m_pixels;
};

enum class Marked
{
    First,
    Both,
};

bool MarkExtremities(cv::Mat const & image, Marked marked, cv::Mat & out)
{
    ZoneList zones;
    if (!zones.Build(image)) return false;
    cv::Mat marks = cv::Mat::zeros(image.size(), CV_8UC1);
    WalkPlane plane(zones.Labels());
    GeodesicWalk walk(plane);
    for (int label = 1; label <= zones.Largest(); ++label)
    {
        if (zones.Pixels(label).empty()) continue;
        LongestPath const path = walk.CountLongestPath(zones.Pixels(label));
        marks.at<uchar>(path.first) = 255;
        if (marked == Marked::Both) marks.at<uchar>(path.second) = 255;
    }
    out = marks;
    return true;
}

/// Writes a table of measures on the zones, into new memory.
bool Apply(ZoneList const & zones, cv::Mat const & measures, cv::Mat & out)
{
    cv::Mat result = cv::Mat::zeros(zones.Labels().size(), CV_64FC1);
    bool const isApplied = visual::ApplyLut(zones.Labels(), measures, result);
    out = result;
    return isApplied;
}

/// Gives the pixels of each zone a measure of its longest path and the number of its pixels.
template <class Measure>
bool LabelWithMeasure(cv::Mat const & image, Measure const & measure, cv::Mat & out)
{
    ZoneList zones;
    if (!zones.Build(image)) return false;
    cv::Mat1d measures(zones.Largest() + 1, 1, 0.0);
    WalkPlane plane(zones.Labels());
    cv::parallel_for_({1, zones.Largest() + 1}, [&](cv::Range const & labels) {
        GeodesicWalk walk(plane);
        for (int label = labels.start; label < labels.end; ++label)
        {
            auto const pixels = zones.Pixels(label);
            if (!pixels.empty()) measures(label) = measure(walk.CountLongestPath(pixels), pixels.size());
        }
    });
    return Apply(zones, measures, out);
}

double Diameter(LongestPath const & path, std::size_t)
{
    return path.length;
}

double Elongation(LongestPath const & path, std::size_t pixels)
{
    // Not the nearest number to pi, but the one that results are made with.
    constexpr double kPi = 3.141598;
    return path.length * kPi * path.length / (static_cast<double>(pixels) * 4.0);
}

double Tortuosity(LongestPath const & path, std::size_t)
{
    double const dx = static_cast<double>(path.first.x) - path.second.x;
    double const dy = static_cast<double>(path.first.y) - path.second.y;
    double const distance = std::sqrt(dx * dx + dy * dy);
    return distance == 0.0 ? 1.0 : path.length / distance;
}

/// The squared ratio of the axes of the inertia ellipse of a contour.
double AxesRatio(std::vector<cv::Point> const & contour)
{
    cv::Moments const moments = cv::moments(contour, false);
    double const difference = moments.mu20 - moments.mu02;
    double const t = moments.mu20 + moments.mu02;
    double const s = std::sqrt(difference * difference + 4.0 * (moments.mu11 * moments.mu11));
    return t - s == 0.0 ? 1.0 : (t + s) / (t - s);
}

/// The points of the outer contours of all that is not empty, by the number of the zone that is wide enough there.
std::map<int, std::vector<cv::Point>> ContoursByZone(cv::Mat const & labels)
{
    cv::Mat const square = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3), cv::Point(1, 1));
    cv::Mat eroded;
    cv::Mat numbers;
    labels.convertTo(numbers, CV_16S);
    cv::erode(numbers, eroded, square, cv::Point(-1, -1), 1, cv::BORDER_CONSTANT);
    // From all labels, not from what the erosion has left.
    cv::Mat const isZone = labels != 0;
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(isZone, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    std::map<int, std::vector<cv::Point>> byZone;
    for (std::vector<cv::Point> const & contour : contours)
    {
        int const label = eroded.at<short>(contour.front());
        if (label < 1) continue;
        std::vector<cv::Point> & points = byZone[label];
        points.insert(points.end(), contour.begin(), contour.end());
    }
    return byZone;
}

} // namespace

bool GeodesicExtremitiesOnFlatZonesNoZero(cv::Mat const & image, cv::Mat & out)
{
    return MarkExtremities(image, Marked::Both, out);
}

bool GeodesicExtremityOnFlatZonesNoZero(cv::Mat const & image, cv::Mat & out)
{
    return MarkExtremities(image, Marked::First, out);
}

bool LabelFlatZonesNoZeroWithGeodesicDiameter(cv::Mat const & image, cv::Mat & out)
{
    return LabelWithMeasure(image, Diameter, out);
}

bool LabelFlatZonesNoZeroWithGeodesicElongation(cv::Mat const & image, cv::Mat & out)
{
    return LabelWithMeasure(image, Elongation, out);
}

bool LabelFlatZonesNoZeroWithGeodesicTortuosity(cv::Mat const & image, cv::Mat & out)
{
    return LabelWithMeasure(image, Tortuosity, out);
}

bool LabelFlatZonesNoZeroWithStandardElongation(cv::Mat const & image, cv::Mat & out)
{
    ZoneList zones;
    if (!zones.Build(image)) return false;
    auto const contours = ContoursByZone(zones.Labels());
    cv::Mat1d measures(contours.empty() ? 1 : contours.rbegin()->first + 1, 1, 0.0);
    for (auto const & [label, contour] : contours)
    {
        measures(label) = AxesRatio(contour);
    }
    return Apply(zones, measures, out);
}

} // namespace morvane::connexity
