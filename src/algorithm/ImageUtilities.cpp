#include <morvane/algorithm/ImageUtilities.h>

#include <morvane/common/Conversions.h>

#include "common/Dispatch.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace morvane::algorithm
{

namespace
{

/// The depths that the accumulations take: all but double.
template <class Leaf>
bool VisitAccumulated(cv::Mat const & image, Leaf && leaf)
{
    return common::VisitElement(image, [&]<class T> {
        if constexpr (std::same_as<T, double>)
        {
            return false;
        }
        else
        {
            return leaf.template operator()<T>();
        }
    });
}

/// The largest of the sums that were met. A NaN is larger than nothing, and nothing than a NaN that came first.
class Largest
{
public:
    void Meet(float sum)
    {
        if (!m_value || sum > *m_value) m_value = sum;
    }

    /// None where nothing was met, or nothing but 0 at the most.
    [[nodiscard]] std::optional<float> UnlessZero() const
    {
        return m_value && *m_value == 0.0F ? std::nullopt : m_value;
    }

private:
    std::optional<float> m_value;
};

/// What both accumulations end with.
bool Finish(std::vector<float> & sums, Largest const & largest, bool normalize)
{
    std::optional<float> const divisor = largest.UnlessZero();
    if (!divisor) return false;
    if (normalize)
    {
        float const scale = 1.0F / *divisor;
        std::transform(sums.begin(), sums.end(), sums.begin(), [scale](float sum) { return sum * scale; });
    }
    return true;
}

bool IsAccumulable(cv::Mat const & image)
{
    return common::IsRaster(image) && common::IsSingleChannel(image);
}

} // namespace

bool AccumulateColumns(cv::Mat const & image, std::vector<float> & sums, bool normalize)
{
    if (!IsAccumulable(image)) return false;
    return VisitAccumulated(image, [&]<class T> {
        sums.resize(static_cast<std::size_t>(image.rows));
        Largest largest;
        for (int y = 0; y < image.rows; ++y)
        {
            T const * const row = image.ptr<T>(y);
            float & sum = sums[static_cast<std::size_t>(y)];
            for (int x = 0; x < image.cols; ++x)
            {
                sum += static_cast<float>(row[x]);
                largest.Meet(sum);
            }
        }
        return Finish(sums, largest, normalize);
    });
}

bool AccumulateRows(cv::Mat const & image, std::vector<float> & sums, bool normalize)
{
    if (!IsAccumulable(image)) return false;
    return VisitAccumulated(image, [&]<class T> {
        sums.resize(static_cast<std::size_t>(image.cols));
        Largest largest;
        for (int y = 0; y < image.rows; ++y)
        {
            T const * const row = image.ptr<T>(y);
            for (int x = 0; x < image.cols; ++x)
            {
                float & sum = sums[static_cast<std::size_t>(x)];
                sum += static_cast<float>(row[x]);
                largest.Meet(sum);
            }
        }
        return Finish(sums, largest, normalize);
    });
}

bool ImageMode(cv::Mat const & image, double & mode, double & count, cv::Mat const & mask)
{
    if (!IsAccumulable(image) || image.empty()) return false;
    double maximum = 0.0;
    cv::minMaxLoc(image, nullptr, &maximum, nullptr, nullptr, mask);
    int const bins = common::TruncateTo<int>(maximum + 1.0);
    if (bins < 1) return false;

    cv::Mat values;
    image.convertTo(values, CV_32F, 1.0, 0.0);
    float const range[] = {0.0F, static_cast<float>(maximum + 1.0)};
    float const * ranges[] = {range};
    cv::Mat counts;
    cv::calcHist(&values, 1, nullptr, mask, counts, 1, &bins, ranges, true, false);
    cv::Point fullest;
    double largest = 0.0;
    cv::minMaxLoc(counts, nullptr, &largest, nullptr, &fullest);
    mode = fullest.y;
    count = largest;
    return true;
}

bool MinMaxInNeighborhood(
    // By value, as it is in the interface.
    // NOLINTNEXTLINE(performance-unnecessary-value-param)
    cv::Mat const & image, cv::Point const & point, connexity::Connexity connexity, double & minimum, double & maximum,
    cv::Mat const & mask)
{
    bool const isReady = common::IsRaster(image) && image.type() == CV_32FC1 &&
                         cv::Rect({}, image.size()).contains(point) && (mask.empty() || common::SameSize(image, mask));
    if (!isReady) return false;
    common::Neighbourhood const neighbourhood = NeighbourhoodOver(connexity, image.size());
    float lowest = image.ptr<float>(point.y)[point.x];
    float highest = lowest;
    for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
    {
        auto const neighbour = neighbourhood.Neighbour(point, index);
        if (!neighbour || (!mask.empty() && mask.ptr<uchar>(neighbour->y)[neighbour->x] == 0)) continue;
        float const value = image.ptr<float>(neighbour->y)[neighbour->x];
        lowest = value < lowest ? value : lowest;
        highest = value > highest ? value : highest;
    }
    minimum = lowest;
    maximum = highest;
    return true;
}

double computeOverlap(cv::Mat const & a, cv::Mat const & b, int x1, int y1, int x2, int y2, int norm)
{
    // In 64 bits: the difference of two positions may be more than an int holds.
    std::int64_t const dx = std::int64_t{x1} - x2;
    std::int64_t const dy = std::int64_t{y1} - y2;
    std::int64_t const left = std::max<std::int64_t>(dx, 0);
    std::int64_t const top = std::max<std::int64_t>(dy, 0);
    std::int64_t const width = std::min<std::int64_t>(dx + b.cols, a.cols) - left;
    std::int64_t const height = std::min<std::int64_t>(dy + b.rows, a.rows) - top;
    if (width < 1 || height < 1) return 0.0;

    auto const part = [&](std::int64_t x, std::int64_t y) {
        return cv::Rect(static_cast<int>(x), static_cast<int>(y), static_cast<int>(width), static_cast<int>(height));
    };
    cv::Mat common;
    cv::bitwise_and(a(part(left, top)), b(part(left - dx, top - dy)), common);
    return cv::countNonZero(common) / static_cast<double>(norm);
}

} // namespace morvane::algorithm
