#include <morvane/features/ShapeDescriptors.h>

#include <morvane/common/ImageCompare.h>

#include "common/Comparisons.h"
#include "common/Dispatch.h"
#include "common/Morphology.h"
#include "features/GrowingSquares.h"

#include <algorithm>
#include <cstddef>

namespace morvane::features
{

namespace
{

using Contours = std::vector<std::vector<cv::Point>>;

/// The shape in an image as 0 and other values; empty for what has no shape.
cv::Mat ShapeOf(cv::Mat const & src)
{
    if (!common::IsRaster(src) || src.empty()) return {};
    if (src.type() == CV_8UC1) return src.clone();
    cv::Mat shape(src.size(), CV_8UC1);
    bool const isShape = common::ImageCompare(src, common::kEqual, 0.0, cv::Scalar(0.0), cv::Scalar(255.0), shape);
    return isShape ? shape : cv::Mat();
}

/// The outer contours of a shape, which may touch the border.
Contours OuterContours(cv::Mat const & shape, int frame)
{
    Contours contours;
    if (shape.empty()) return contours;
    cv::Mat framed;
    cv::copyMakeBorder(shape, framed, frame, frame, frame, frame, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED, 0.0);
    cv::findContours(framed, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE, cv::Point(-frame, -frame));
    return contours;
}

/// What the curves and the corners refuse.
bool IsMeasurable(cv::Mat const & src)
{
    return common::IsRaster(src) && common::IsSingleChannel(src) && src.rows >= 3 && src.cols >= 3;
}

double Sum(cv::Mat const & image)
{
    return cv::sum(image)[0];
}

bool MeasureOpenings(cv::Mat const & src, std::vector<double> & curve, int shape, int operation)
{
    if (!IsMeasurable(src)) return false;
    cv::Mat current = src.clone();
    cv::Mat next;
    double const total = Sum(current);
    int const largest = std::max(src.rows, src.cols);
    curve.clear();
    curve.reserve(static_cast<std::size_t>(largest));
    GrowingSquares squares(src);
    for (int i = 1; i < largest; ++i)
    {
        curve.push_back(Sum(current) / total);
        if (shape == cv::MORPH_RECT && squares.AreExact())
        {
            // What is open by a square is open by the smaller ones: the filter before this one makes no difference.
            squares.Open(operation, next);
        }
        else
        {
            common::Filter(current, next, operation, common::StructuringElement(shape, 2 * i + 1));
        }
        if (common::AreImagesEqual(current, next)) break;
        cv::swap(current, next);
    }
    return true;
}

} // namespace

bool BoundingRectangles(cv::Mat const & src, std::vector<cv::Rect> & rectangles)
{
    Contours const contours = OuterContours(ShapeOf(src), 1);
    if (contours.empty()) return false;
    rectangles.clear();
    for (std::vector<cv::Point> const & contour : contours)
    {
        rectangles.push_back(cv::boundingRect(contour));
    }
    return true;
}

bool MaximalBoundingRectangle(cv::Mat const & src, cv::Rect & rectangle)
{
    for (std::vector<cv::Point> const & contour : OuterContours(ShapeOf(src), 2))
    {
        cv::Rect const box = cv::boundingRect(contour);
        bool const isEmpty = rectangle.width < 1 || rectangle.height < 1;
        rectangle = isEmpty ? box : rectangle | box;
    }
    return true;
}

bool BoundingConvexHulls(cv::Mat const & src, cv::Mat & dst)
{
    constexpr int kSize = 11;
    constexpr int kTimes = 6;
    cv::Mat const shape = ShapeOf(src);
    if (shape.empty()) return true;
    cv::Mat closed;
    common::Filter(shape, closed, cv::MORPH_CLOSE, common::StructuringElement(cv::MORPH_RECT, kSize), kTimes);
    if (OuterContours(closed, 2).empty()) return true;
    // The closed shape covers whatever is drawn before it: its contours, filled, are not drawn at all.
    closed.copyTo(dst);
    return true;
}

bool MorphologicalFractalDimension(cv::Mat const & src, std::vector<double> & curve, int shape)
{
    if (!IsMeasurable(src)) return false;
    double minimum = 0.0;
    double maximum = 0.0;
    cv::minMaxLoc(src, &minimum, &maximum);
    auto const pixels = static_cast<double>(src.total());
    int const largest = std::max(src.rows, src.cols);
    curve.clear();
    curve.reserve(static_cast<std::size_t>(largest));
    cv::Mat eroded;
    cv::Mat dilated;
    cv::Mat difference;
    GrowingSquares squares(src);
    for (int i = 1; i < largest; ++i)
    {
        int const size = 2 * i + 1;
        if (shape == cv::MORPH_RECT && squares.AreExact())
        {
            squares.ErodeAndDilate();
            eroded = squares.Eroded();
            dilated = squares.Dilated();
        }
        else
        {
            common::Filter(src, eroded, cv::MORPH_ERODE, common::StructuringElement(shape, size));
            common::Filter(src, dilated, cv::MORPH_DILATE, common::StructuringElement(shape, size));
        }
        cv::subtract(dilated, eroded, difference);
        curve.push_back(Sum(difference) / size);
        if (Sum(eroded) == pixels * minimum || Sum(dilated) == pixels * maximum) break;
    }
    return true;
}

bool GranulometryByOpening(cv::Mat const & src, std::vector<double> & curve, int shape)
{
    return MeasureOpenings(src, curve, shape, cv::MORPH_OPEN);
}

bool GranulometryByClosing(cv::Mat const & src, std::vector<double> & curve, int shape)
{
    return MeasureOpenings(src, curve, shape, cv::MORPH_CLOSE);
}

bool ExtractHarrisCorners(cv::Mat const & src, cv::Mat & dst)
{
    constexpr int kBlock = 2;
    constexpr int kAperture = 7;
    constexpr double kFree = 0.04;
    if (!IsMeasurable(src)) return false;
    cv::Mat work;
    src.convertTo(work, CV_32F, 1.0);
    cv::Mat response = cv::Mat::zeros(src.size(), CV_32FC1);
    cv::cornerHarris(work, response, kBlock, kAperture, kFree, cv::BORDER_DEFAULT);
    cv::normalize(response, response, 0.0, 255.0, cv::NORM_MINMAX, CV_32F, cv::Mat());
    dst = response;
    return true;
}

} // namespace morvane::features
