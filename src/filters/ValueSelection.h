/// @file
/// The values of an image in order of their size, without sorting them.
#pragma once

#include <opencv2/core.hpp>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace morvane::filters::selection_internals
{

/// Types with so few values that counting them beats comparing them.
template <class T>
concept Countable = std::integral<T> && sizeof(T) <= 2;

/// Tells whether the image has pixels enough for counting, which passes through all values of the type.
template <Countable T>
[[nodiscard]] bool IsWorthCounting(cv::Mat const & image)
{
    constexpr std::size_t kLeast = sizeof(T) == 1 ? 256 : 16384;
    return image.total() >= kLeast;
}

/// How often each value of one channel occurs; all below 0 count as 0.
template <Countable T>
[[nodiscard]] std::vector<std::uint32_t> CountValues(cv::Mat const & image)
{
    // Two tables in turns: neighbours are often equal, and a count that was just written must be waited for.
    constexpr std::size_t kValues = std::size_t{std::numeric_limits<T>::max()} + 1;
    std::vector<std::uint32_t> even(kValues);
    std::vector<std::uint32_t> odd(kValues);
    std::uint32_t * const evenCounts = even.data();
    std::uint32_t * const oddCounts = odd.data();
    for (int y = 0; y < image.rows; ++y)
    {
        T const * const row = image.ptr<T>(y);
        int x = 0;
        for (; x < image.cols - 1; x += 2)
        {
            ++evenCounts[std::max<T>(row[x], 0)];
            ++oddCounts[std::max<T>(row[x + 1], 0)];
        }
        if (x < image.cols) ++evenCounts[std::max<T>(row[x], 0)];
    }
    std::transform(even.begin(), even.end(), odd.begin(), even.begin(), std::plus<>());
    return even;
}

/// The same without 0 and what counts as 0.
template <Countable T>
[[nodiscard]] std::vector<std::uint32_t> CountPositive(cv::Mat const & image)
{
    std::vector<std::uint32_t> counts = CountValues<T>(image);
    counts[0] = 0;
    return counts;
}

/// The values above 0, in no order. NaN is not above 0.
template <class T>
[[nodiscard]] std::vector<T> CollectPositive(cv::Mat const & image)
{
    std::vector<T> values(image.total());
    std::size_t count = 0;
    for (int y = 0; y < image.rows; ++y)
    {
        T const * const row = image.ptr<T>(y);
        for (int x = 0; x < image.cols; ++x)
        {
            // Written always, kept where above 0: no branch to guess.
            values[count] = row[x];
            count += row[x] > T{0} ? 1U : 0U;
        }
    }
    values.resize(count);
    return values;
}

} // namespace morvane::filters::selection_internals
