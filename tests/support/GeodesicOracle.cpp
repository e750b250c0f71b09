#include "support/GeodesicOracle.h"

#include "support/ImageLiterals.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <vector>

namespace morvane::tests
{

namespace
{

double Lower(double one, double other)
{
    return std::min(one, other);
}

double Higher(double one, double other)
{
    return std::max(one, other);
}

using Choice = double (*)(double, double);

/// Each element of the one image with that of the other.
cv::Mat Combined(cv::Mat const & one, cv::Mat const & other, Choice choose)
{
    cv::Mat result(one.rows, one.cols, one.type());
    for (int y = 0; y < one.rows; ++y)
    {
        for (int x = 0; x < one.cols; ++x)
        {
            for (int channel = 0; channel < one.channels(); ++channel)
            {
                SetElement(
                    result, y, x, channel, choose(ElementAt(one, y, x, channel), ElementAt(other, y, x, channel)));
            }
        }
    }
    return result;
}

/// Where an element leads to from a pixel.
std::vector<cv::Point> OffsetsOf(int shape, int kernelSize)
{
    cv::Mat const element = cv::getStructuringElement(shape, {kernelSize, kernelSize});
    int const centre = kernelSize / 2;
    std::vector<cv::Point> offsets;
    for (int y = 0; y < kernelSize; ++y)
    {
        for (int x = 0; x < kernelSize; ++x)
        {
            if (element.at<uchar>(y, x) != 0) offsets.emplace_back(x - centre, y - centre);
        }
    }
    return offsets;
}

/// The choice among the pixels of the image under an element.
cv::Mat Filtered(cv::Mat const & image, std::vector<cv::Point> const & offsets, Choice choose)
{
    cv::Rect const inside({}, image.size());
    cv::Mat result(image.rows, image.cols, image.type());
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            for (int channel = 0; channel < image.channels(); ++channel)
            {
                // The centre is part of every element.
                double value = ElementAt(image, y, x, channel);
                for (cv::Point const & offset : offsets)
                {
                    cv::Point const at = cv::Point(x, y) + offset;
                    if (inside.contains(at)) value = choose(value, ElementAt(image, at.y, at.x, channel));
                }
                SetElement(result, y, x, channel, value);
            }
        }
    }
    return result;
}

/// 1 where the image is not 0; NaN is not.
cv::Mat NonZeros(cv::Mat const & image)
{
    cv::Mat result(image.rows, image.cols, image.type());
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            SetElement(result, y, x, 0, ElementAt(image, y, x) == 0.0 ? 0.0 : 1.0);
        }
    }
    return result;
}

/// From counts to distances.
cv::Mat FromLargest(cv::Mat out)
{
    double largest = 0.0;
    cv::minMaxLoc(out, nullptr, &largest);
    out = (largest - out) + 1;
    for (int y = 0; y < out.rows; ++y)
    {
        for (int x = 0; x < out.cols; ++x)
        {
            if (ElementAt(out, y, x) > largest) SetElement(out, y, x, 0, 0.0);
        }
    }
    return out;
}

cv::Mat DilatedUnder(cv::Mat const & region, cv::Mat const & seed, int shape)
{
    cv::Mat const element = cv::getStructuringElement(shape, {3, 3});
    int const border = static_cast<int>(cv::BORDER_CONSTANT) | static_cast<int>(cv::BORDER_ISOLATED);
    cv::Mat next;
    cv::min(seed, region, next);
    cv::dilate(next, next, element, {-1, -1}, 1, border, cv::morphologyDefaultBorderValue());
    cv::min(next, region, next);
    return next;
}

constexpr int kUnreached = -1;

/// The number of steps from the marker, within the mask.
cv::Mat1i StepsFrom(cv::Mat const & marker, cv::Mat const & mask, int shape)
{
    std::vector<cv::Point> const offsets = OffsetsOf(shape, 3);
    cv::Rect const inside({}, mask.size());
    cv::Mat1i steps(mask.rows, mask.cols, kUnreached);
    std::deque<cv::Point> queue;
    for (int y = 0; y < mask.rows; ++y)
    {
        for (int x = 0; x < mask.cols; ++x)
        {
            if (ElementAt(marker, y, x) == 0.0 || ElementAt(mask, y, x) == 0.0) continue;
            steps(y, x) = 0;
            queue.emplace_back(x, y);
        }
    }
    for (; !queue.empty(); queue.pop_front())
    {
        for (cv::Point const & offset : offsets)
        {
            cv::Point const at = queue.front() + offset;
            if (!inside.contains(at) || ElementAt(mask, at.y, at.x) == 0.0 || steps(at) != kUnreached) continue;
            steps(at) = steps(queue.front()) + 1;
            queue.push_back(at);
        }
    }
    return steps;
}

bool IsOutside(cv::Mat const & marker, cv::Mat const & mask, int y, int x)
{
    return ElementAt(marker, y, x) != 0.0 && ElementAt(mask, y, x) == 0.0;
}

/// The dilations up to and with the first that changes nothing, but fewer than there are pixels.
std::size_t CountedDilations(cv::Mat const & marker, cv::Mat const & mask, cv::Mat1i const & steps)
{
    bool startsOutside = false;
    int deepest = 0;
    for (int y = 0; y < mask.rows; ++y)
    {
        for (int x = 0; x < mask.cols; ++x)
        {
            startsOutside = startsOutside || IsOutside(marker, mask, y, x);
            deepest = std::max(deepest, steps(y, x));
        }
    }
    // The first dilation clears the marker outside the mask.
    int const changing = startsOutside ? std::max(deepest, 1) : deepest;
    return std::min(static_cast<std::size_t>(changing) + 1, mask.total() - 1);
}

/// Where a count of ones in the type ends.
double LargestCount(int depth)
{
    switch (depth)
    {
    case CV_8U:
        return 255.0;
    case CV_16U:
        return 65535.0;
    case CV_16S:
        return 32767.0;
    case CV_32F:
        return 16777216.0;
    default:
        return std::numeric_limits<double>::infinity();
    }
}

} // namespace

cv::Mat OracleGeoDilate(cv::Mat const & marker, cv::Mat const & mask, int shape, int kernelSize)
{
    cv::Mat const clipped = Combined(marker, mask, Lower);
    return Combined(Filtered(clipped, OffsetsOf(shape, kernelSize), Higher), mask, Lower);
}

cv::Mat OracleGeoErode(cv::Mat const & marker, cv::Mat const & mask, int shape)
{
    cv::Mat const raised = Combined(marker, mask, Higher);
    return Combined(Filtered(raised, OffsetsOf(shape, 3), Lower), mask, Higher);
}

cv::Mat OracleDistance(cv::Mat const & marker, cv::Mat const & mask, int shape)
{
    cv::Mat seed = NonZeros(marker);
    cv::Mat const region = NonZeros(mask);
    cv::Mat out = seed.clone();
    std::size_t counter = 1;
    while (counter < region.total())
    {
        cv::Mat const next = DilatedUnder(region, seed, shape);
        ++counter;
        cv::add(out, next, out);
        if (cv::countNonZero(seed != next) == 0) break;
        seed = next;
    }
    return FromLargest(out);
}

cv::Mat OracleDistanceByQueue(cv::Mat const & marker, cv::Mat const & mask, int shape)
{
    cv::Mat1i const steps = StepsFrom(marker, mask, shape);
    auto const dilations = static_cast<double>(CountedDilations(marker, mask, steps));
    cv::Mat counts(mask.rows, mask.cols, mask.type(), cv::Scalar(0));
    for (int y = 0; y < mask.rows; ++y)
    {
        for (int x = 0; x < mask.cols; ++x)
        {
            double count = IsOutside(marker, mask, y, x) ? 1.0 : 0.0;
            if (steps(y, x) != kUnreached) count = dilations + 1.0 - steps(y, x);
            SetElement(counts, y, x, 0, std::min(count, LargestCount(mask.depth())));
        }
    }
    return FromLargest(counts);
}

std::size_t OracleCountedDilations(cv::Mat const & marker, cv::Mat const & mask, int shape)
{
    return CountedDilations(marker, mask, StepsFrom(marker, mask, shape));
}

double LowestOf(int depth)
{
    if (depth == CV_16S) return -32768.0;
    if (depth == CV_32F) return static_cast<double>(std::numeric_limits<float>::lowest());
    return depth == CV_64F ? std::numeric_limits<double>::lowest() : 0.0;
}

double HighestOf(int depth)
{
    if (depth == CV_8U) return 255.0;
    if (depth == CV_16U) return 65535.0;
    return depth == CV_16S ? 32767.0 : -LowestOf(depth);
}

cv::Mat FiniteImage(Random & random, cv::Size size, int type)
{
    cv::Mat image = RandomImage(random, size, type, {0.3, 0.2, 5});
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            for (int channel = 0; channel < image.channels(); ++channel)
            {
                double const value = ElementAt(image, y, x, channel);
                double const finite =
                    std::isnan(value) ? 0.0 : std::clamp(value, LowestOf(image.depth()), HighestOf(image.depth()));
                SetElement(image, y, x, channel, finite == 0.0 ? 0.0 : finite);
            }
        }
    }
    return image;
}

} // namespace morvane::tests
