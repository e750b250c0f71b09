#include "support/WatershedOracle.h"

#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <array>
#include <cmath>

namespace morvane::tests
{

namespace
{

/// The element number @p x of row @p y, whatever the channels.
double LabelAt(cv::Mat const & labels, int y, int x)
{
    return ElementAt(labels, y, x / labels.channels(), x % labels.channels());
}

void SetLabel(cv::Mat & labels, int y, int x, double label)
{
    SetElement(labels, y, x / labels.channels(), x % labels.channels(), label);
}

/// How much two values differ, with the rounding of their type.
double Difference(double one, double other, int depth)
{
    if (depth == CV_32F) return static_cast<double>(std::abs(static_cast<float>(one) - static_cast<float>(other)));
    return std::abs(one - other);
}

void FillPixel(cv::Mat const & luminance, cv::Mat & labels, cv::Point pixel)
{
    struct Offset
    {
        int dx;
        int dy;
    };
    constexpr std::array offsets{Offset{-1, -1}, Offset{-1, 1}, Offset{-1, 0}, Offset{0, -1},
                                 Offset{0, 1},   Offset{1, -1}, Offset{1, 1},  Offset{1, 0}};
    double const value = ElementAt(luminance, pixel.y, pixel.x);
    double best = 255.0;
    for (auto const [dx, dy] : offsets)
    {
        int const x = pixel.x + dx;
        int const y = pixel.y + dy;
        double const label = LabelAt(labels, y, x);
        double const difference = Difference(ElementAt(luminance, y, x), value, luminance.depth());
        if (label != 0.0 && difference < best)
        {
            best = difference;
            SetLabel(labels, pixel.y, pixel.x, label);
        }
    }
}

} // namespace

cv::Mat OracleErodedZones(cv::Mat const & labels)
{
    cv::Mat eroded = CopyOf(labels);
    for (int y = 1; y < labels.rows - 1; ++y)
    {
        for (int x = 1; x < labels.cols - 1; ++x)
        {
            double const label = ElementAt(labels, y, x);
            bool const isInside = ElementAt(labels, y - 1, x) == label && ElementAt(labels, y + 1, x) == label &&
                                  ElementAt(labels, y, x - 1) == label && ElementAt(labels, y, x + 1) == label;
            if (!isInside) SetElement(eroded, y, x, 0, 0.0);
        }
    }
    return eroded;
}

cv::Mat OracleFilledLines(cv::Mat const & luminance, cv::Mat const & labels)
{
    cv::Mat filled = CopyOf(labels);
    int const rows = labels.rows;
    int const cols = labels.cols;
    if (rows < 3 || cols < 3) return filled;
    for (int y = 1; y < rows - 1; ++y)
    {
        for (int x = 1; x < cols - 1; ++x)
        {
            if (LabelAt(filled, y, x) <= 0.0) FillPixel(luminance, filled, {x, y});
        }
    }
    for (int x = 0; x < cols; ++x)
    {
        SetLabel(filled, 0, x, LabelAt(filled, 1, x));
        SetLabel(filled, rows - 1, x, LabelAt(filled, rows - 2, x));
    }
    for (int y = 0; y < rows; ++y)
    {
        SetLabel(filled, y, 0, LabelAt(filled, y, 1));
        SetLabel(filled, y, cols - 1, LabelAt(filled, y, cols - 2));
    }
    return filled;
}

} // namespace morvane::tests
