#include <morvane/algorithm/MatchingScores.h>

#include "common/Comparisons.h"
#include "common/Dispatch.h"
#include "common/RasterOrder.h"

#include <morvane/common/Conversions.h>
#include <morvane/common/ImageCompare.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace morvane::algorithm
{

using common::ImageCompare;
using common::kGreater;

namespace
{

constexpr int kBitsOfWord = 16;
constexpr int kLeastMask = 3;

/// Tells whether two images can be paired, element by element of a multiple of so many bytes, or without elements.
bool CanBePaired(cv::Mat const & a, cv::Mat const & b, std::size_t bytes)
{
    bool const hasElements = a.empty() || (a.elemSize() % bytes == 0 && b.elemSize() % bytes == 0);
    return common::IsRaster(a) && common::IsRaster(b) && a.total() == b.total() && hasElements;
}

/// Sums a score over the pairs of words that are both not 0; wraps around.
template <class Score>
std::optional<std::uint64_t> SumOverWords(cv::Mat const & a, cv::Mat const & b, Score const & scoreOf)
{
    if (!CanBePaired(a, b, sizeof(ushort))) return std::nullopt;
    if (a.empty()) return 0;
    cv::Mat const other = common::InSize(a.size(), b);
    std::uint64_t sum = 0;
    for (int y = 0; y < a.rows; ++y)
    {
        auto const * const rowA = a.ptr<ushort>(y);
        auto const * const rowB = other.ptr<ushort>(y);
        for (int x = 0; x < a.cols; ++x)
        {
            bool const counts = rowA[x] != 0 && rowB[x] != 0;
            sum += counts ? static_cast<std::uint64_t>(std::int64_t{scoreOf(rowA[x], rowB[x])}) : 0U;
        }
    }
    return sum;
}

/// Puts a sum into a result, 0 without one.
template <class Result>
bool Tell(std::optional<std::uint64_t> const & sum, Result & result)
{
    result = 0;
    if (!sum) return false;
    // The sum wraps around in `int`; a `double` holds any that there is memory for.
    if constexpr (std::is_integral_v<Result>) result = common::WrapTo<Result>(*sum);
    if constexpr (!std::is_integral_v<Result>) result = static_cast<Result>(*sum);
    return true;
}

/// Tells whether elevations go together and have a depth that is known.
bool AreElevations(cv::Mat const & e1, cv::Mat const & e2)
{
    constexpr std::array kDepths{CV_8U, CV_16U, CV_16S, CV_32S, CV_32F};
    bool const isKnown = std::ranges::find(kDepths, e1.depth()) != kDepths.end();
    return e1.total() == e2.total() && e1.depth() == e2.depth() && isKnown;
}

/// The lowest bytes of the elements of a mask, one after the other.
class MaskBytes
{
public:
    explicit MaskBytes(cv::Mat mask)
        : m_mask(std::move(mask))
    {}

    uchar Next()
    {
        uchar const value = m_mask.ptr(m_row)[static_cast<std::size_t>(m_column) * m_mask.elemSize()];
        ++m_column;
        if (m_column == m_mask.cols)
        {
            m_column = 0;
            ++m_row;
        }
        return value;
    }

private:
    cv::Mat m_mask;
    int m_row = 0;
    int m_column = 0;
};

/// Sums a score over equal masks of 3 and more.
template <class Score>
bool SumOverMasks(
    cv::Mat const & e1, cv::Mat const & m1, cv::Mat const & e2, cv::Mat const & m2, Score const & scoreOf,
    double & result)
{
    result = 0.0;
    if (!AreElevations(e1, e2) || !common::IsRaster(m1) || !common::IsRaster(m2)) return false;
    MaskBytes first(m1);
    MaskBytes second(m2);
    std::uint64_t sum = 0;
    for (std::size_t left = std::min(m1.total(), m2.total()); left > 0; --left)
    {
        uchar const mask = first.Next();
        bool const isEqual = second.Next() == mask;
        if (isEqual && mask >= kLeastMask) sum += scoreOf(mask);
    }
    result = static_cast<double>(sum);
    return true;
}

} // namespace

namespace score
{

bool ComputeHamingDistanceComparison(cv::Mat const & a, cv::Mat const & b, int & result)
{
    return Tell(
        SumOverWords(a, b, [](ushort p, ushort q) { return kBitsOfWord - utils::HammingDistance(p, q); }), result);
}

bool ComputeOccupancyMatchingScore(cv::Mat const & a, cv::Mat const & b, int & result)
{
    return Tell(SumOverWords(a, b, utils::OccupancyMatchingScore), result);
}

bool ComputeOccupancyLonguestChainMatchingScore(cv::Mat const & a, cv::Mat const & b, double & result)
{
    return Tell(SumOverWords(a, b, [](ushort p, ushort q) { return p == q ? kBitsOfWord : 0; }), result);
}

bool NonEmptyElevationMatching(
    cv::Mat const & e1, cv::Mat const & m1, cv::Mat const & e2, cv::Mat const & m2, double & result)
{
    return SumOverMasks(
        e1, m1, e2, m2, [](uchar) { return std::uint64_t{kBitsOfWord}; }, result);
}

bool OccupancyMatching(cv::Mat const & e1, cv::Mat const & m1, cv::Mat const & e2, cv::Mat const & m2, double & result)
{
    constexpr unsigned kPerSetBit = 30;
    auto const scoreOf = [](uchar mask) -> std::uint64_t {
        auto const set = static_cast<unsigned>(std::popcount(mask));
        return kPerSetBit * set + static_cast<unsigned>(std::bit_width(mask)) - set;
    };
    return SumOverMasks(e1, m1, e2, m2, scoreOf, result);
}

} // namespace score

namespace utils
{

int HammingDistance(unsigned short a, unsigned short b)
{
    return std::popcount(static_cast<unsigned short>(a ^ b));
}

int OccupancyMatchingScore(unsigned short a, unsigned short b)
{
    return std::popcount(static_cast<unsigned short>(a & b)) - HammingDistance(a, b);
}

bool ComputeMeanShift(
    cv::Mat const & a, cv::Mat const & b, double const & offsetA, double const & offsetB, double & shift)
{
    shift = 0.0;
    if (!CanBePaired(a, b, sizeof(float)) || a.empty()) return false;
    // Turned, so that the columns, whose order decides how the sum rounds, are read along the memory.
    cv::Mat const other = common::InSize(a.size(), b);
    cv::Mat const columnsA = cv::Mat(a.rows, a.cols, CV_32FC1, a.data, a.step).t();
    cv::Mat const columnsB = cv::Mat(a.rows, a.cols, CV_32FC1, other.data, other.step).t();
    double sum = 0.0;
    std::int64_t count = 0;
    for (int x = 0; x < columnsA.rows; ++x)
    {
        auto const * const columnA = columnsA.ptr<float>(x);
        auto const * const columnB = columnsB.ptr<float>(x);
        for (int y = 0; y < columnsA.cols; ++y)
        {
            if (columnA[y] == 0.0F || columnB[y] == 0.0F) continue;
            sum += (double{columnA[y]} + offsetA) - (double{columnB[y]} + offsetB);
            ++count;
        }
    }
    if (count == 0) return false;
    shift = sum / static_cast<double>(count);
    return true;
}

namespace
{

/// Where both images are above 0: 255. @return false when they cannot be compared
bool MaskOfBoth(cv::Mat const & a, cv::Mat const & b, cv::Mat & mask)
{
    mask = cv::Mat::zeros(b.size(), CV_8U);
    return ImageCompare(a, kGreater, 0.0, cv::Scalar(255), mask, mask) &&
           ImageCompare(b, kGreater, 0.0, mask, cv::Scalar(0), mask);
}

/// The difference of two images, 0 where not both are above 0, and where that is.
bool DifferenceOf(cv::Mat const & a, cv::Mat const & b, cv::Mat & mask, cv::Mat & difference)
{
    if (!MaskOfBoth(a, b, mask)) return false;
    difference = cv::Mat::zeros(b.size(), b.type());
    cv::subtract(a, b, difference, cv::noArray(), -1);
    return ImageCompare(mask, kGreater, 0.0, difference, cv::Scalar(0), difference);
}

/// The lower end of the fullest of some bins; @p low without bins.
double PeakOf(cv::Mat const & values, cv::Mat const & mask, double low, double high)
{
    constexpr double kBinWidth = 50.0;
    int const bins = common::TruncateTo<int>(std::ceil((high - low) / kBinWidth));
    if (bins < 1) return low;
    std::array const limits{static_cast<float>(low), static_cast<float>(high)};
    float const * ranges = limits.data();
    int const channel = 0;
    cv::Mat histogram;
    cv::calcHist(&values, 1, &channel, mask, histogram, 1, &bins, &ranges);
    cv::Point fullest;
    cv::minMaxLoc(histogram, nullptr, nullptr, nullptr, &fullest);
    return fullest.y * kBinWidth + low;
}

} // namespace

bool ComputeMedian(
    cv::Mat const & a1, cv::Mat const & b1, cv::Mat const & a2, cv::Mat const & b2, double const & offset1,
    double const & /*offset2*/, double & result)
{
    constexpr int kLeastPixels = 10;
    result = std::numeric_limits<double>::lowest();
    cv::Mat mask1;
    cv::Mat difference1;
    cv::Mat unused;
    cv::Mat difference2;
    if (!DifferenceOf(a1, b1, mask1, difference1) || !DifferenceOf(a2, b2, unused, difference2)) return false;
    cv::Mat differences;
    cv::vconcat(difference1, difference2, differences);
    // The mask of the first pair serves both.
    cv::Mat mask;
    cv::vconcat(mask1, mask1, mask);
    double low = 0.0;
    double high = 0.0;
    cv::minMaxLoc(difference1, &low, &high, nullptr, nullptr, mask1);
    double const peak = cv::countNonZero(mask) < kLeastPixels ? 0.0 : PeakOf(differences, mask, low, high);
    result = peak + offset1;
    return true;
}

} // namespace utils

} // namespace morvane::algorithm
