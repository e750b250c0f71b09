#include "support/SkeletonOracle.h"

#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/AttributeOpening.h>
#include <morvane/connexity/GeodesicMeasures.h>
#include <morvane/connexity/Labelling.h>
#include <morvane/features/ShapeDescriptors.h>
#include <morvane/geodesy/GeodesicOperators.h>

#include "tarnel/PolylineSimplification.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <deque>
#include <map>
#include <utility>
#include <vector>

namespace morvane::tests
{

namespace
{

/// The values around a pixel by their numbers: 2 above, then clockwise to 9.
using Around = std::array<bool, 10>;

Around AroundPixel(cv::Mat1b const & image, int y, int x)
{
    Around p{};
    p[2] = image(y - 1, x) != 0;
    p[3] = image(y - 1, x + 1) != 0;
    p[4] = image(y, x + 1) != 0;
    p[5] = image(y + 1, x + 1) != 0;
    p[6] = image(y + 1, x) != 0;
    p[7] = image(y + 1, x - 1) != 0;
    p[8] = image(y, x - 1) != 0;
    p[9] = image(y - 1, x - 1) != 0;
    return p;
}

int Count(std::initializer_list<bool> values)
{
    return static_cast<int>(std::count(values.begin(), values.end(), true));
}

bool IsMarkedByZhangSuen(Around const & p, int iter)
{
    int const a = Count(
        {!p[2] && p[3], !p[3] && p[4], !p[4] && p[5], !p[5] && p[6], !p[6] && p[7], !p[7] && p[8], !p[8] && p[9],
         !p[9] && p[2]});
    int const b = Count({p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9]});
    bool const m1 = iter == 0 ? (p[2] && p[4] && p[6]) : (p[2] && p[4] && p[8]);
    bool const m2 = iter == 0 ? (p[4] && p[6] && p[8]) : (p[2] && p[6] && p[8]);
    return a == 1 && b >= 2 && b <= 6 && !m1 && !m2;
}

bool IsMarkedByGuoHall(Around const & p, int iter)
{
    int const c =
        Count({!p[2] && (p[3] || p[4]), !p[4] && (p[5] || p[6]), !p[6] && (p[7] || p[8]), !p[8] && (p[9] || p[2])});
    int const n1 = Count({p[9] || p[2], p[3] || p[4], p[5] || p[6], p[7] || p[8]});
    int const n2 = Count({p[2] || p[3], p[4] || p[5], p[6] || p[7], p[8] || p[9]});
    int const n = std::min(n1, n2);
    bool const m = iter == 0 ? ((p[6] || p[7] || !p[9]) && p[8]) : ((p[2] || p[3] || !p[5]) && p[4]);
    return c == 1 && n >= 2 && n <= 3 && !m;
}

cv::Mat1b SubIteration(cv::Mat1b const & image, int type, int iter)
{
    cv::Mat1b marker(image.size(), uchar{0});
    for (int y = 1; y < image.rows - 1; ++y)
    {
        for (int x = 1; x < image.cols - 1; ++x)
        {
            Around const p = AroundPixel(image, y, x);
            bool const isMarked =
                (type == 0 && IsMarkedByZhangSuen(p, iter)) || (type == 1 && IsMarkedByGuoHall(p, iter));
            marker(y, x) = isMarked ? 255 : 0;
        }
    }
    cv::Mat1b out;
    cv::bitwise_and(image, ~marker, out);
    return out;
}

cv::Mat Morphed(cv::Mat const & src, int operation, int shape, int size)
{
    cv::Mat const element = cv::getStructuringElement(shape, cv::Size(size, size), cv::Point(-1, -1));
    cv::Mat out;
    cv::morphologyEx(src, out, operation, element, cv::Point(-1, -1), 1, cv::BORDER_CONSTANT, cv::Scalar::all(DBL_MAX));
    return out;
}

int LargestOf(cv::Mat const & image)
{
    double largest = 0.0;
    cv::minMaxLoc(image, nullptr, &largest);
    return static_cast<int>(largest);
}

/// 255 where an image holds a value, in a type of choice.
cv::Mat ZoneOf(cv::Mat const & image, int value, int type)
{
    cv::Mat zone(image.size(), type);
    EXPECT_TRUE(common::ImageCompare(image, 0, value, cv::Scalar(255), cv::Scalar(0), zone));
    return zone;
}

cv::Rect BoxOf(cv::Mat const & zone)
{
    cv::Rect box;
    EXPECT_TRUE(features::MaximalBoundingRectangle(zone, box));
    return box;
}

cv::Mat LabelsOf(cv::Mat const & image, int type)
{
    cv::Mat labels(image.size(), type, cv::Scalar(0));
    EXPECT_TRUE(connexity::LabelFlatZonesNoZero(image, connexity::eConnexity8, labels));
    return labels;
}

/// The lines between the points of a polyline.
cv::Mat LinesOf(tarnel::Polyline const & points, int firstLabel, cv::Mat const & zone)
{
    cv::Mat lines = cv::Mat::zeros(zone.size(), zone.type());
    std::vector<cv::Point> corners;
    for (auto const & [distance, point] : points)
    {
        corners.emplace_back(cvFloor(point.x()), cvFloor(point.y()));
    }
    int label = firstLabel + 1;
    for (std::size_t index = 1; index < corners.size(); ++index)
    {
        if (corners[index - 1] == corners[index]) continue;
        cv::line(lines, corners[index - 1], corners[index], cv::Scalar(label), 1, 8, 0);
        ++label;
    }
    return lines;
}

/// The ends of the lines.
features::SegmentMap ReadBack(cv::Mat const & lines)
{
    features::SegmentMap ends;
    cv::Mat const mask = lines != 0;
    if (cv::countNonZero(mask) == 0) return ends;
    double smallest = 0.0;
    double largest = 0.0;
    cv::minMaxLoc(lines, &smallest, &largest, nullptr, nullptr, mask);
    for (int label = static_cast<int>(smallest); label <= static_cast<int>(largest); ++label)
    {
        cv::Mat extremities;
        EXPECT_TRUE(connexity::GeodesicExtremitiesOnFlatZonesNoZero(ZoneOf(lines, label, lines.type()), extremities));
        std::vector<cv::Point> positions;
        for (int y = 0; y < extremities.rows; ++y)
        {
            for (int x = 0; x < extremities.cols; ++x)
            {
                if (extremities.at<uchar>(y, x) != 0) positions.emplace_back(x, y);
            }
        }
        if (positions.size() >= 2) ends.insert({label, {positions[0], positions[1]}});
    }
    return ends;
}

} // namespace

cv::Mat1b OracleThinning(cv::Mat const & src, int type, int maxIterations)
{
    cv::Mat1b image;
    src.convertTo(image, -1, 0.00392156862745098, 0.0);
    cv::Mat1b previous(image.size(), uchar{0});
    for (int count = 1;; ++count)
    {
        image = SubIteration(image, type, 0);
        image = SubIteration(image, type, 1);
        cv::Mat1b difference;
        cv::absdiff(image, previous, difference);
        image.copyTo(previous);
        if (cv::countNonZero(difference) == 0 || (maxIterations > 0 && count == maxIterations)) break;
    }
    image.setTo(255, image);
    return image;
}

cv::Mat OracleSkeletonByErosion(cv::Mat const & src, int shape, int kernelSize)
{
    cv::Mat work = src.clone();
    cv::Mat dst = cv::Mat::zeros(src.size(), CV_8UC1);
    for (bool isDone = false; !isDone;)
    {
        cv::Mat const eroded = Morphed(work, cv::MORPH_ERODE, shape, kernelSize);
        cv::Mat const opened = Morphed(eroded, cv::MORPH_DILATE, shape, kernelSize);
        dst = dst | (work - opened);
        // Nothing would ever change.
        isDone = cv::countNonZero(eroded != work) == 0 || cv::countNonZero(eroded) == 0;
        work = eroded;
    }
    dst = Morphed(dst, cv::MORPH_DILATE, shape, 2 * kernelSize);
    dst = Morphed(dst, cv::MORPH_ERODE, cv::MORPH_CROSS, 2 * kernelSize);
    cv::Mat out(dst.size(), dst.type());
    EXPECT_TRUE(connexity::AttributeOpening(dst, common::eAttributeArea, connexity::eConnexity8, 5, out));
    return out;
}

cv::Mat OracleMainSegment(cv::Mat const & zone, cv::Mat const & seed)
{
    cv::Mat current = seed.clone();
    while (true)
    {
        cv::Mat next;
        EXPECT_TRUE(geodesy::GeoDilate(current, zone, 0, next, 3));
        cv::Mat const rest = zone - current;
        int const n = LargestOf(LabelsOf(rest, CV_32SC1));
        current = next;
        if (n != 1) return next;
    }
}

cv::Mat OracleBranches(cv::Mat const & skeleton)
{
    cv::Mat labels(skeleton.size(), CV_32SC1, cv::Scalar(0));
    cv::Mat work = LabelsOf(skeleton, CV_16SC1);
    int counter = LargestOf(work);
    std::deque<int> queue;
    for (int label = 1; label <= counter; ++label)
    {
        queue.push_back(label);
    }
    while (!queue.empty())
    {
        cv::Mat const whole = ZoneOf(work, queue.front(), CV_8UC1);
        cv::Rect const box = BoxOf(whole);
        cv::Mat const zone = whole(box).clone();
        cv::Mat seed;
        EXPECT_TRUE(connexity::GeodesicExtremityOnFlatZonesNoZero(zone, seed));
        cv::Mat const branch = OracleMainSegment(zone, seed);
        int const label = LargestOf(labels) + 1;
        labels(box).setTo(label, branch != 0);
        queue.pop_front();
        cv::Mat const rest = zone - branch;
        if (cv::countNonZero(rest) == 0) continue;
        cv::Mat parts = LabelsOf(rest, CV_16SC1);
        int const count = LargestOf(parts);
        parts += counter;
        parts.copyTo(work(box), rest != 0);
        for (int part = counter + 1; part <= counter + count; ++part)
        {
            queue.push_back(part);
        }
        counter += count;
    }
    return LabelsOf(labels, CV_32SC1);
}

features::SegmentMap OracleSegmentsOfBranch(cv::Mat const & zone, double tolerance, int firstLabel)
{
    cv::Mat seed;
    EXPECT_TRUE(connexity::GeodesicExtremityOnFlatZonesNoZero(zone, seed));
    cv::Mat marker;
    cv::Mat mask;
    seed.convertTo(marker, CV_16S);
    zone.convertTo(mask, CV_16S);
    cv::Mat distance;
    EXPECT_TRUE(geodesy::GeodesicDistance(marker, mask, 0, distance));
    tarnel::Polyline polyline;
    for (int y = 0; y < distance.rows; ++y)
    {
        for (int x = 0; x < distance.cols; ++x)
        {
            int const key = distance.at<short>(y, x);
            if (key >= 1 && polyline.count(key) == 0) polyline[key] = Eigen::Vector2d(x, y);
        }
    }
    tarnel::Polyline simplified;
    EXPECT_TRUE(tarnel::RDP_2DPolylineSimplification(polyline, tolerance, simplified));
    return ReadBack(LinesOf(simplified, firstLabel, zone));
}

void OracleSegments(cv::Mat const & labels, double tolerance, cv::Mat & segments, features::SegmentMap & ends)
{
    int const largest = LargestOf(labels);
    for (int label = 1; label <= largest; ++label)
    {
        cv::Mat const zone = ZoneOf(labels, label, labels.type());
        if (cv::sum(zone)[0] == 0.0) continue;
        cv::Rect const box = BoxOf(zone);
        if (box.size() == cv::Size(1, 1)) continue;
        int const firstLabel = ends.empty() ? 0 : ends.rbegin()->first;
        for (auto const & [key, segment] : OracleSegmentsOfBranch(zone(box).clone(), tolerance, firstLabel))
        {
            cv::Point const first = segment.first + box.tl();
            cv::Point const second = segment.second + box.tl();
            if (ends.count(key) == 0) ends[key] = {first, second};
            cv::line(segments, first, second, cv::Scalar(key), 1, 8, 0);
        }
    }
}

cv::Mat1b RandomShape(Random & random, cv::Size size)
{
    int const kind = random.Below(3);
    cv::Mat1b shape(size.height, size.width, uchar{0});
    if (kind == 0)
    {
        shape.setTo(255, RandomMask(random, size, 0.1 + 0.8 * random.Unit()));
        return shape;
    }
    auto const place = [&] {
        return cv::Point(random.Below(std::max(size.width, 1)), random.Below(std::max(size.height, 1)));
    };
    for (int count = 1 + random.Below(8); count > 0; --count)
    {
        // What is drawn as 0 makes bays and holes.
        cv::Scalar const value(kind == 1 || random.Chance(0.7) ? 255 : 0);
        cv::Point const at = place();
        if (kind == 1)
        {
            cv::line(shape, at, place(), value, 1 + random.Below(2), 8);
        }
        else
        {
            cv::ellipse(
                shape, at, {1 + random.Below(12), 1 + random.Below(12)}, random.Below(180), 0, 360, value, -1, 8);
        }
    }
    return shape;
}

} // namespace morvane::tests
