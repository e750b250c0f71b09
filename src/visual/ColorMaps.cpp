#include <morvane/visual/ColorMaps.h>

#include "common/Dispatch.h"
#include "common/ValueRange.h"
#include "visual/Ramps.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <vector>

namespace morvane::visual
{

using common::IsSingleChannel;
using common::SameSize;
using common::VisitElement;

namespace
{

/// The values that a map spreads over its scale.
struct Range
{
    double low;
    double high;
};

constexpr double kLargest = std::numeric_limits<double>::max();

/// The part of the range that the caller asks for.
struct Bounds
{
    double minimum = -kLargest;
    double maximum = kLargest;
    bool clip = true;
};

/// The range of all pixels, or of those that differ from 0; from the largest number to the least where there is none.
template <class T, bool SkipZero>
Range RangeOf(cv::Mat const & image)
{
    using Limits = std::numeric_limits<T>;
    constexpr T kTop = Limits::has_infinity ? Limits::infinity() : Limits::max();
    constexpr T kBottom = Limits::has_infinity ? -Limits::infinity() : Limits::lowest();
    auto const [low, high] = common::WidenedBy<T, SkipZero>(image, {kTop, kBottom});
    if (low > high) return {kLargest, -kLargest};
    return {std::min(static_cast<double>(low), kLargest), std::max(static_cast<double>(high), -kLargest)};
}

void Clip(Range & range, Bounds const & bounds)
{
    if (!bounds.clip) return;
    range.low = std::max(range.low, bounds.minimum);
    range.high = std::min(range.high, bounds.maximum);
}

/// The linear part of a map: values to steps on a scale of so many.
struct Scale
{
    Scale(Range const & range, double steps)
        : low(range.low)
        , factor(steps / (range.high - range.low))
        , count(steps)
    {}

    /// From 1 to count; 0 below the scale and for NaN, count + 1 from its end on.
    [[nodiscard]] int StepOf(double value) const
    {
        double const position = (value - low) * factor;
        double const inside = std::min(position, count);
        // Minus one and every number above it are cut to an integer that fits.
        return 1 + static_cast<int>(position >= 0.0 ? inside : -1.0);
    }

    double low;
    double factor;
    double count;
};

/// How many pixels are looked up at a time.
constexpr int kBlock = 1024;

/// Types with so few values that each of them can be mapped once.
template <class T>
constexpr bool kIsNarrow = sizeof(T) <= 2;

/// Calls @p write with the steps of up to kBlock pixels at a time, and where they are.
template <class T, class Write>
void ForEachBlock(cv::Mat const & image, Scale const & scale, Write && write)
{
    std::array<int, kBlock> steps;
    for (int y = 0; y < image.rows; ++y)
    {
        T const * const row = image.ptr<T>(y);
        int count = 0;
        for (int x = 0; x < image.cols; x += count)
        {
            count = std::min(kBlock, image.cols - x);
            for (int index = 0; index < count; ++index)
            {
                steps[static_cast<std::size_t>(index)] = scale.StepOf(static_cast<double>(row[x + index]));
            }
            write(y, x, count, steps);
        }
    }
}

/// The entry of each value of a narrow type.
template <class T, class Entry>
std::vector<Entry> EntryOfEachValue(Scale const & scale, std::vector<Entry> const & entries)
{
    std::vector<Entry> table(std::size_t{1} << (8 * sizeof(T)));
    for (std::size_t bits = 0; bits < table.size(); ++bits)
    {
        auto const value = static_cast<T>(bits);
        table[bits] = entries[static_cast<std::size_t>(scale.StepOf(static_cast<double>(value)))];
    }
    return table;
}

/// Writes the entry of a pixel.
void StoreEntry(uchar * row, int x, uchar entry)
{
    row[x] = entry;
}

void StoreEntry(uchar * row, int x, Bgr const & entry)
{
    std::memcpy(row + 3 * static_cast<std::ptrdiff_t>(x), entry.bytes.data(), 3);
}

/// Looks each pixel's entry up.
template <class T, class Entry>
void MapPixels(cv::Mat const & image, Scale const & scale, std::vector<Entry> const & entries, cv::Mat & output)
{
    if constexpr (kIsNarrow<T>)
    {
        // A table of all values pays from as many pixels on.
        if (image.total() >> (8 * sizeof(T)) != 0)
        {
            std::vector<Entry> const table = EntryOfEachValue<T>(scale, entries);
            for (int y = 0; y < image.rows; ++y)
            {
                T const * const row = image.ptr<T>(y);
                uchar * const target = output.ptr(y);
                for (int x = 0; x < image.cols; ++x)
                {
                    StoreEntry(target, x, table[static_cast<std::make_unsigned_t<T>>(row[x])]);
                }
            }
            return;
        }
    }
    ForEachBlock<T>(image, scale, [&](int y, int x, int count, std::array<int, kBlock> const & steps) {
        uchar * const target = output.ptr(y);
        for (int index = 0; index < count; ++index)
        {
            StoreEntry(target, x + index, entries[static_cast<std::size_t>(steps[static_cast<std::size_t>(index)])]);
        }
    });
}

/// The whole of a map: checks, range, pixels.
template <bool NoZero, class Entry>
bool Map(
    cv::Mat const & image, cv::Mat & output, int outputType, std::vector<Entry> const & entries, Bounds const & bounds)
{
    return VisitElement(image, [&]<class T> {
        if (!IsSingleChannel(image) || !SameSize(image, output) || output.type() != outputType) return false;
        if (image.empty()) return true;
        Range range = RangeOf<T, NoZero>(image);
        Clip(range, bounds);
        if (range.low == range.high)
        {
            output.setTo(0.0);
            return true;
        }
        // The first and the last entry are for what lies beside the scale.
        MapPixels<T>(image, Scale(range, static_cast<double>(entries.size() - 2)), entries, output);
        return true;
    });
}

} // namespace

bool GrayMap(cv::Mat const & image, cv::Mat & output)
{
    return Map<false>(image, output, CV_8UC1, GreyEntries(), {});
}

bool GrayMap(cv::Mat const & image, cv::Mat & output, double minimum, double maximum, bool clip)
{
    return Map<false>(image, output, CV_8UC1, GreyEntries(), {minimum, maximum, clip});
}

bool GrayMapNoZero(cv::Mat const & image, cv::Mat & output)
{
    return Map<true>(image, output, CV_8UC1, GreyEntries(), {});
}

bool GrayMapNoZero(cv::Mat const & image, cv::Mat & output, double minimum, double maximum, bool clip)
{
    return Map<true>(image, output, CV_8UC1, GreyEntries(), {minimum, maximum, clip});
}

bool ColorMap(cv::Mat const & image, cv::Mat & output)
{
    return Map<false>(image, output, CV_8UC3, ColorEntries(), {});
}

bool ColorMap(cv::Mat const & image, cv::Mat & output, double minimum, double maximum, bool clip)
{
    return Map<false>(image, output, CV_8UC3, ColorEntries(), {minimum, maximum, clip});
}

bool ColorMapNoZero(cv::Mat const & image, cv::Mat & output)
{
    return Map<true>(image, output, CV_8UC3, ColorNoZeroEntries(), {});
}

bool ColorMapNoZero(cv::Mat const & image, cv::Mat & output, double minimum, double maximum, bool clip)
{
    return Map<true>(image, output, CV_8UC3, ColorNoZeroEntries(), {minimum, maximum, clip});
}

} // namespace morvane::visual
