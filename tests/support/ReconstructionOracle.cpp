#include "support/ReconstructionOracle.h"

#include <morvane/geodesy/Reconstruction.h>

#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"
#include "support/Snapshot.h"
#include "support/StepOracle.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

namespace morvane::tests
{

namespace
{

cv::Point const kCentre(-1, -1);
constexpr int kBorder = static_cast<int>(cv::BORDER_CONSTANT) | static_cast<int>(cv::BORDER_ISOLATED);

void Step(bool dilates, cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize)
{
    cv::Mat const element = cv::getStructuringElement(shape, kernelSize, kCentre);
    cv::Scalar const outside = cv::morphologyDefaultBorderValue();
    if (dilates)
    {
        cv::min(marker, mask, out);
        cv::dilate(out, out, element, kCentre, 1, kBorder, outside);
        cv::min(out, mask, out);
    }
    else
    {
        cv::max(marker, mask, out);
        cv::erode(out, out, element, kCentre, 1, kBorder, outside);
        cv::max(out, mask, out);
    }
}

bool SameBytes(cv::Mat const & one, cv::Mat const & other)
{
    std::size_t const bytes = static_cast<std::size_t>(one.cols) * one.elemSize();
    for (int y = 0; y < one.rows; ++y)
    {
        if (std::memcmp(one.ptr(y), other.ptr(y), bytes) != 0) return false;
    }
    return true;
}

/// The pixels of regional minima (or maxima) of an image of doubles.
std::vector<cv::Point> ExtremePixels(bool minima, cv::Mat1d const & image, int connexity)
{
    auto const zones = OracleZones(EveryPixel(image.size()), connexity, EqualSteps(image));
    cv::Rect const inside(cv::Point(), image.size());
    // Whatever is neither equal nor farther beats the pixel: a NaN on either side does.
    auto const isBeaten = [&](cv::Point pixel, cv::Point neighbour) {
        if (OracleWraps(connexity) && neighbour.x < 0) neighbour.x += image.cols;
        if (OracleWraps(connexity) && neighbour.x >= image.cols) neighbour.x -= image.cols;
        if (!inside.contains(neighbour) || image(pixel) == image(neighbour)) return false;
        return !(minima ? image(pixel) < image(neighbour) : image(pixel) > image(neighbour));
    };
    std::vector<cv::Point> pixels;
    for (auto const & zone : zones)
    {
        bool isExtremum = true;
        for (cv::Point const & pixel : zone)
        {
            for (cv::Point const & offset : OracleOffsets(connexity))
            {
                isExtremum = isExtremum && !isBeaten(pixel, pixel + offset);
            }
        }
        if (isExtremum) pixels.insert(pixels.end(), zone.begin(), zone.end());
    }
    return pixels;
}

struct Entry
{
    cv::Point pixel;
    double value;
};

/// A queue by value: a list that is searched, or the standard heap.
class Queue
{
public:
    Queue(bool smallestFirst, Equals equals)
        : m_smallestFirst(smallestFirst)
        , m_equals(equals)
    {}

    [[nodiscard]] bool IsEmpty() const { return m_entries.empty(); }

    void Push(cv::Point pixel, double value)
    {
        m_entries.push_back({pixel, value});
        if (m_equals == Equals::AsInHeap) std::push_heap(m_entries.begin(), m_entries.end(), Later());
    }

    Entry Pop()
    {
        auto const later = Later();
        if (m_equals == Equals::AsInHeap)
        {
            std::pop_heap(m_entries.begin(), m_entries.end(), later);
            Entry const entry = m_entries.back();
            m_entries.pop_back();
            return entry;
        }
        auto first = m_entries.begin();
        for (auto place = first; place != m_entries.end(); ++place)
        {
            if (later(*first, *place)) first = place;
        }
        Entry const entry = *first;
        m_entries.erase(first);
        return entry;
    }

private:
    [[nodiscard]] std::function<bool(Entry const &, Entry const &)> Later() const
    {
        return [smallestFirst = m_smallestFirst](Entry const & one, Entry const & other) {
            return smallestFirst ? other.value < one.value : other.value > one.value;
        };
    }

    bool m_smallestFirst;
    Equals m_equals;
    std::vector<Entry> m_entries;
};

double Lowest(int depth)
{
    switch (depth)
    {
    case CV_16S:
        return std::numeric_limits<short>::lowest();
    case CV_32S:
        return std::numeric_limits<int>::lowest();
    case CV_32F:
        return static_cast<double>(std::numeric_limits<float>::lowest());
    case CV_64F:
        return std::numeric_limits<double>::lowest();
    default:
        return 0;
    }
}

double Highest(int depth)
{
    if (depth == CV_8U) return 255;
    if (depth == CV_16U) return 65535;
    return depth == CV_16S || depth == CV_32S ? -1 - Lowest(depth) : -Lowest(depth);
}

} // namespace

bool Reconstruct(
    Repeated repeated, cv::Mat const & marker, cv::Mat const & mask, Elements const & elements, cv::Mat & out)
{
    auto const & [shape, kernelSize, viscositySize] = elements;
    switch (repeated)
    {
    case Repeated::Dilate:
        return geodesy::ReconstructionbyDilate(marker, mask, shape, out, kernelSize);
    case Repeated::Erode:
        return geodesy::ReconstructionbyErode(marker, mask, shape, out, kernelSize);
    case Repeated::ViscousDilation:
        return geodesy::ReconstructionbyViscousDilation(marker, mask, shape, viscositySize, out, kernelSize);
    default:
        return geodesy::ReconstructionbyViscousErosion(marker, mask, shape, viscositySize, out, kernelSize);
    }
}

void OracleReconstruct(
    Repeated repeated, cv::Mat const & marker, cv::Mat const & mask, Elements const & elements, cv::Mat & out)
{
    auto const & [shape, kernelSize, viscositySize] = elements;
    bool const dilates = repeated == Repeated::Dilate || repeated == Repeated::ViscousDilation;
    bool const isViscous = repeated == Repeated::ViscousDilation || repeated == Repeated::ViscousErosion;
    cv::Mat current = marker.clone();
    for (std::size_t pass = 0; pass < marker.total(); ++pass)
    {
        Step(dilates, current, mask, shape, out, kernelSize);
        if (isViscous)
        {
            Step(!dilates, out, marker, shape, out, viscositySize);
            Step(dilates, out, mask, shape, out, viscositySize);
        }
        if (SameBytes(current, out)) return;
        out.copyTo(current);
    }
}

std::vector<std::size_t> OracleChanges(cv::Mat const & marker, cv::Mat const & mask, Elements const & elements)
{
    cv::Mat current;
    cv::min(marker, mask, current);
    std::vector<std::size_t> changes;
    do
    {
        cv::Mat next;
        Step(true, current, mask, elements.shape, next, elements.kernelSize);
        changes.push_back(static_cast<std::size_t>(cv::countNonZero(current != next)));
        current = next;
    } while (changes.back() != 0);
    return changes;
}

cv::Mat OracleBuild(bool over, cv::Mat const & mask, cv::Mat const & marker, int connexity, Equals equals)
{
    cv::Mat nearest;
    over ? cv::max(mask, marker, nearest) : cv::min(mask, marker, nearest);
    cv::Mat1d bounds;
    cv::Mat1d out;
    mask.convertTo(bounds, CV_64F);
    nearest.convertTo(out, CV_64F);
    cv::Mat1b status(out.rows, out.cols, uchar{0});
    Queue queue(over, equals);
    for (cv::Point const & pixel : ExtremePixels(over, out, connexity))
    {
        status(pixel) = 2;
        queue.Push(pixel, out(pixel));
    }
    while (!queue.IsEmpty())
    {
        auto const [pixel, level] = queue.Pop();
        if (status(pixel) == 1) continue;
        status(pixel) = 1;
        for (cv::Point const & offset : OracleOffsets(connexity))
        {
            cv::Point neighbour = pixel + offset;
            if (neighbour.y < 0 || neighbour.y >= out.rows) continue;
            if (OracleWraps(connexity) && neighbour.x < 0) neighbour.x += out.cols;
            if (OracleWraps(connexity) && neighbour.x >= out.cols) neighbour.x -= out.cols;
            // Images narrower than the offset stay without that neighbour.
            if (neighbour.x < 0 || neighbour.x >= out.cols || status(neighbour) != 0) continue;
            status(neighbour) = 2;
            double const bound = bounds(neighbour);
            bool const isBeyond = over ? level > bound : level < bound;
            out(neighbour) = isBeyond ? level : bound;
            queue.Push(neighbour, out(neighbour));
        }
    }
    cv::Mat result;
    out.convertTo(result, mask.type());
    return result;
}

cv::Mat OracleExtrema(bool maxima, cv::Mat const & image, int shape, double h, int type)
{
    cv::Mat const sum = image + cv::Scalar(h);
    cv::Mat reconstructed(sum.size(), sum.type());
    Elements const elements{shape, {3, 3}, {}};
    cv::Mat difference;
    if (maxima)
    {
        OracleReconstruct(Repeated::Dilate, image, sum, elements, reconstructed);
        difference = (sum - reconstructed) + cv::Scalar(0.001);
    }
    else
    {
        OracleReconstruct(Repeated::Erode, sum, image, elements, reconstructed);
        difference = (reconstructed - image) + cv::Scalar(0.001);
    }
    return OracleCompare({difference, cv::CMP_LT, h, cv::Scalar(0), cv::Scalar(255)}, cv::Mat(image.size(), type));
}

cv::Mat OracleHoleMarker(cv::Mat const & image, cv::Mat const & seedMask)
{
    cv::Mat const elements = image.reshape(1);
    double largest = 0;
    cv::minMaxIdx(elements, nullptr, &largest);
    // No negative zero, which an integer has not.
    cv::Mat marker(image.size(), image.type(), cv::Scalar::all(std::trunc(largest) + 0.0));
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            if (!seedMask.empty() && seedMask.at<uchar>(y, x) == 0) continue;
            std::size_t const start = static_cast<std::size_t>(x) * image.elemSize();
            std::memcpy(marker.ptr(y) + start, image.ptr(y) + start, image.elemSize());
        }
    }
    return marker;
}

cv::Mat OracleEdge(cv::Size size)
{
    cv::Mat1b edge(size, uchar{255});
    if (size.width > 2 && size.height > 2) edge(cv::Rect(1, 1, size.width - 2, size.height - 2)).setTo(0);
    return edge;
}

cv::Mat LevelImage(Random & random, cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    int const depth = image.depth();
    bool const isFloating = depth == CV_32F || depth == CV_64F;
    double const least = Lowest(depth);
    int const offset = depth == CV_8U || depth == CV_16U ? 0 : -20;
    for (int channel = 0; channel < image.channels(); ++channel)
    {
        double value = 10;
        for (int y = 0; y < size.height; ++y)
        {
            for (int x = 0; x < size.width; ++x)
            {
                if (random.Chance(0.5)) value = offset + random.Below(isFloating ? 160 : 40) / (isFloating ? 4.0 : 1.0);
                bool const extreme = random.Chance(0.04);
                // Added to 0, since a negative zero is not wanted.
                SetElement(image, y, x, channel, 0.0 + (extreme ? random.Chance(0.5) ? least : Highest(depth) : value));
            }
        }
    }
    return image;
}

cv::Mat RandomMarker(Random & random, cv::Mat const & mask, MarkerKind kind, bool sparseHigh)
{
    cv::Mat const other = LevelImage(random, mask.size(), mask.type());
    cv::Mat marker;
    switch (kind)
    {
    case MarkerKind::Below:
        cv::min(mask, other, marker);
        return marker;
    case MarkerKind::Above:
        cv::max(mask, other, marker);
        return marker;
    case MarkerKind::Crossing:
        return other;
    default:
        break;
    }
    double const rest = sparseHigh ? Highest(mask.depth()) : Lowest(mask.depth());
    marker = cv::Mat(mask.rows, mask.cols, mask.type(), cv::Scalar::all(rest));
    for (int count = 0; count < 3 && !mask.empty(); ++count)
    {
        cv::Rect const pixel(random.Below(mask.cols), random.Below(mask.rows), 1, 1);
        mask(pixel).copyTo(marker(pixel));
    }
    return marker;
}

std::vector<cv::Size> const & KernelSizes()
{
    static std::vector<cv::Size> const sizes{{1, 1}, {3, 3}, {2, 2}, {5, 5}, {1, 5}, {4, 3}, {7, 7}};
    return sizes;
}

std::string Describe(Repeated repeated, cv::Mat const & marker, Elements const & elements)
{
    auto const text = [](cv::Size size) {
        return std::to_string(size.width) + "x" + std::to_string(size.height);
    };
    return "operator " + std::to_string(static_cast<int>(repeated)) + ", " + cv::typeToString(marker.type()) + " " +
           text(marker.size()) + ", shape " + std::to_string(elements.shape) + ", kernel " + text(elements.kernelSize) +
           ", viscosity " + text(elements.viscositySize);
}

} // namespace morvane::tests
