#include "algorithm/OccupancyCodes.h"

#include "common/ValueRange.h"

#include <morvane/common/Conversions.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>

namespace morvane::algorithm
{

namespace
{

constexpr int kLargestEmpty = 2;
constexpr int kPerPair = 16;

/// The elements of an image as integers of 32 bits.
cv::Mat AsIntegers(cv::Mat const & image)
{
    return {image.rows, image.cols, CV_32SC1, image.data, image.step};
}

} // namespace

template <class T>
int CountEqual(T const * a, T const * b, int count)
{
    // Lanes of the elements' own width count side by side, for as long as they can.
    constexpr int kLanes = 64 / sizeof(T);
    constexpr int kMostRounds = sizeof(T) == 1 ? 255 : 32767;
    int equal = 0;
    int i = 0;
    while (i + kLanes <= count)
    {
        std::array<T, kLanes> lanes{};
        int const end = i + std::min((count - i) / kLanes, kMostRounds) * kLanes;
        for (; i < end; i += kLanes)
        {
            for (int lane = 0; lane < kLanes; ++lane)
            {
                auto const place = static_cast<std::size_t>(lane);
                lanes[place] = static_cast<T>(lanes[place] + static_cast<T>(a[i + lane] == b[i + lane] ? 1 : 0));
            }
        }
        equal = std::accumulate(lanes.begin(), lanes.end(), equal);
    }
    for (; i < count; ++i)
    {
        equal += a[i] == b[i] ? 1 : 0;
    }
    return equal;
}

template int CountEqual<uchar>(uchar const *, uchar const *, int);
template int CountEqual<ushort>(ushort const *, ushort const *, int);
template int CountEqual<int>(int const *, int const *, int);

OccupancyCodes::OccupancyCodes(cv::Mat const & fixed, cv::Mat const & moving)
    : m_spans(static_cast<std::size_t>(moving.rows))
{
    cv::Mat const fixedValues = AsIntegers(fixed);
    cv::Mat const movingValues = AsIntegers(moving);
    // What only one of the images reaches is equal to nothing.
    int const largest =
        std::min(common::WidenedBy<int>(fixedValues, {0, 0}).high, common::WidenedBy<int>(movingValues, {0, 0}).high);
    if (largest < std::numeric_limits<uchar>::max())
    {
        Encode<uchar>(fixedValues, movingValues, largest);
    }
    else if (largest < std::numeric_limits<ushort>::max())
    {
        Encode<ushort>(fixedValues, movingValues, largest);
    }
    else
    {
        Encode<int>(fixedValues, movingValues, largest);
    }
}

template <class T>
void OccupancyCodes::Encode(cv::Mat const & fixed, cv::Mat const & moving, int largest)
{
    // For all other values, 0 on one side and a number that no code has on the other.
    constexpr T kNone = static_cast<T>(-1);
    auto const encode = [&](cv::Mat const & image, T none) {
        cv::Mat codes(image.size(), cv::DataType<T>::type);
        for (int y = 0; y < image.rows; ++y)
        {
            int const * const values = image.ptr<int>(y);
            T * const row = codes.ptr<T>(y);
            for (int x = 0; x < image.cols; ++x)
            {
                bool const isCoded = values[x] > kLargestEmpty && values[x] <= largest;
                row[x] = isCoded ? static_cast<T>(values[x]) : none;
            }
        }
        return codes;
    };
    m_fixed = encode(fixed, T{0});
    m_moving = encode(moving, kNone);
    for (int y = 0; y < moving.rows; ++y)
    {
        T const * const row = m_moving.ptr<T>(y);
        auto const isCoded = [](T code) {
            return code != kNone;
        };
        Span span{0, moving.cols};
        while (span.last > 0 && !isCoded(row[span.last - 1]))
        {
            --span.last;
        }
        while (span.first < span.last && !isCoded(row[span.first]))
        {
            ++span.first;
        }
        m_spans[static_cast<std::size_t>(y)] = span;
    }
}

template <class T>
int OccupancyCodes::CountAt(int x, int y) const
{
    int const rows = std::min(m_moving.rows, m_fixed.rows - y);
    int const columns = m_fixed.cols - x;
    int equal = 0;
    for (int row = 0; row < rows; ++row)
    {
        Span const & span = m_spans[static_cast<std::size_t>(row)];
        int const count = std::min(span.last, columns) - span.first;
        if (count <= 0) continue;
        equal += CountEqual(m_fixed.ptr<T>(y + row) + x + span.first, m_moving.ptr<T>(row) + span.first, count);
    }
    return equal;
}

int OccupancyCodes::ScoreAt(int x, int y) const
{
    int count = 0;
    switch (m_fixed.depth())
    {
    case CV_8U:
        count = CountAt<uchar>(x, y);
        break;
    case CV_16U:
        count = CountAt<ushort>(x, y);
        break;
    default:
        count = CountAt<int>(x, y);
        break;
    }
    return common::WrapTo<int>(std::int64_t{count} * kPerPair);
}

} // namespace morvane::algorithm
