#include "common/Dispatch.h"
#include "filters/ValueSelection.h"

#include <morvane/common/Conversions.h>
#include <morvane/filters/Statistics.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <type_traits>
#include <vector>

namespace morvane::filters
{

namespace
{

using namespace selection_internals;
using common::TruncateTo;
using common::WrapTo;

/// How many of the lowest values stand for the floor.
std::size_t LowestShare(std::size_t values)
{
    return static_cast<std::size_t>(std::max(TruncateTo<int>(static_cast<float>(values) * 0.15F), 1));
}

/// The sum of the lowest values, kept in their own type.
template <class T>
struct LowestSum
{
    T sum;
    std::size_t values;
};

/// One value more; integers wrap around.
template <class T>
T Plus(T sum, T value)
{
    if constexpr (std::is_integral_v<T>)
    {
        return WrapTo<T>(static_cast<unsigned>(sum) + static_cast<unsigned>(value));
    }
    else
    {
        return sum + value;
    }
}

/// Adds up the lowest of the values above 0 of a cell.
template <class T>
LowestSum<T> SelectLowest(cv::Mat const & cell)
{
    std::vector<T> values = CollectPositive<T>(cell);
    if (values.empty()) return {0, 0};
    std::size_t const count = LowestShare(values.size());
    auto const end = values.begin() + static_cast<std::ptrdiff_t>(count);
    std::nth_element(values.begin(), end - 1, values.end());
    // In ascending order, since sums of floats round; those of integers do not care.
    if constexpr (std::is_floating_point_v<T>) std::sort(values.begin(), end);
    return {std::accumulate(values.begin(), end, T{0}, Plus<T>), count};
}

/// The same by counting all values.
template <Countable T>
LowestSum<T> CountLowest(cv::Mat const & cell)
{
    std::vector<std::uint32_t> const counts = CountPositive<T>(cell);
    auto const values = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
    if (values == 0) return {0, 0};
    std::size_t const count = LowestShare(values);
    std::size_t rest = count;
    unsigned sum = 0;
    for (std::size_t value = 1; rest > 0; ++value)
    {
        std::size_t const taken = std::min<std::size_t>(counts[value], rest);
        // Unsigned: it wraps around, as it does when it is cut to the type.
        sum += static_cast<unsigned>(value) * static_cast<unsigned>(taken);
        rest -= taken;
    }
    return {WrapTo<T>(sum), count};
}

template <class T>
LowestSum<T> LowestOf(cv::Mat const & cell)
{
    if constexpr (Countable<T>)
    {
        if (IsWorthCounting<T>(cell)) return CountLowest<T>(cell);
    }
    return SelectLowest<T>(cell);
}

/// The floor of a cell; the greatest number of the type for one without values above 0.
template <class T>
T FloorOf(cv::Mat const & cell)
{
    LowestSum<T> const lowest = LowestOf<T>(cell);
    if (lowest.values == 0) return std::numeric_limits<T>::max();
    return TruncateTo<T>(static_cast<double>(lowest.sum) / static_cast<double>(lowest.values));
}

/// One pixel for each cell of a grid, with its floor.
template <class T>
cv::Mat FloorsOf(cv::Mat const & src, cv::Size grid)
{
    cv::Size const cell(src.cols / grid.width, src.rows / grid.height);
    cv::Mat floors = cv::Mat::zeros(grid, src.type());
    for (int y = 0; y < grid.height; ++y)
    {
        for (int x = 0; x < grid.width; ++x)
        {
            T const floor = FloorOf<T>(src(cv::Rect({x * cell.width, y * cell.height}, cell)));
            // The greatest number marks a cell without values, also where it is the floor.
            if (floor != std::numeric_limits<T>::max()) floors.at<T>(y, x) = floor;
        }
    }
    return floors;
}

} // namespace

bool InterpolatedRobustLocalMinNoZero(cv::Mat const & src, unsigned int cellSize, cv::Mat & dst)
{
    if (!common::IsRaster(src) || src.rows <= 0 || src.cols <= 0 || cellSize == 0 || !common::IsSingleChannel(src))
    {
        return false;
    }
    return common::VisitElement(src, [&]<class T> {
        int const cols = std::max(static_cast<int>(static_cast<unsigned>(src.cols) / cellSize), 2);
        double const ratio = static_cast<double>(src.rows) / src.cols;
        int const rows = std::max(TruncateTo<int>(std::floor(cols * ratio)), 2);
        cv::Mat const floors = FloorsOf<T>(src, {cols, rows});
        cv::resize(floors, dst, src.size(), 0.0, 0.0, cv::INTER_LINEAR);
        return true;
    });
}

} // namespace morvane::filters
