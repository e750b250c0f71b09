#include <morvane/warping/Warping.h>

#include "common/Dispatch.h"
#include "warping/AffineMap.h"

#include <morvane/common/Conversions.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace morvane::warping
{

using common::IsRaster;
using common::IsSingleChannel;

namespace
{

/// Fills what is 0.
struct FillEmpty
{
    template <class T>
    static void Apply(T & out, T source)
    {
        if (out == T{0}) out = source;
    }
};

/// Merges bits.
struct MergeBits
{
    template <class T>
    static void Apply(T & out, T source)
    {
        out = static_cast<T>(out | source);
    }
};

template <class Rule, class T>
void Warp(cv::Mat const & source, cv::Mat & out, cv::Mat const & matrix)
{
    AffineMap const map(matrix, out.cols);
    // Places beyond the size of the output do not count, though the source may have them.
    cv::Rect const inside({0, 0}, cv::Size(std::min(source.cols, out.cols), std::min(source.rows, out.rows)));
    if (inside.empty()) return;
    T const * const pixels = source.ptr<T>();
    auto const stride = static_cast<std::ptrdiff_t>(source.step1());
    for (int y = 0; y < out.rows; ++y)
    {
        T * const row = out.ptr<T>(y);
        map.ForEachWithin(y, inside, stride, [&](int x, std::ptrdiff_t place) { Rule::Apply(row[x], pixels[place]); });
    }
}

/// Tells whether images and matrix are what transforms take; an empty output takes the type of the source.
bool AreReady(cv::Mat const & source, cv::Mat const & out, cv::Mat const & matrix)
{
    bool const isMatrix = IsRaster(matrix) && matrix.size() == cv::Size(3, 2) && matrix.type() == CV_64FC1;
    if (!isMatrix || !IsRaster(source) || !IsSingleChannel(source)) return false;
    return out.empty() || (IsRaster(out) && out.type() == source.type());
}

/// The low 32 bits of a value that is cut towards zero; 0 for one that 64 bits cannot hold.
unsigned LowBitsOf(float value)
{
    constexpr float kLimit = 9223372036854775808.0F;
    bool const fits = value >= -kLimit && value < kLimit;
    return fits ? common::WrapTo<unsigned>(static_cast<std::int64_t>(value)) : 0U;
}

/// Makes the difference of both odd: best by a bin more on the side of the heavier end, else on the other side, else by
/// one less.
void MakeOdd(std::vector<unsigned int> const & histogram, int & first, int & last)
{
    bool const canStartEarlier = first > 0;
    bool const canEndLater = last < static_cast<int>(histogram.size()) - 1;
    if (histogram[static_cast<std::size_t>(first)] >= histogram[static_cast<std::size_t>(last)])
    {
        first -= canStartEarlier ? 1 : 0;
        if (!canStartEarlier) last += canEndLater ? 1 : -1;
        return;
    }
    last += canEndLater ? 1 : 0;
    if (!canEndLater) first += canStartEarlier ? -1 : 1;
}

} // namespace

bool Transform(cv::Mat const & source, cv::Mat & out, cv::Mat const & matrix)
{
    if (!AreReady(source, out, matrix)) return false;
    return common::VisitElement(source, [&]<class T> {
        if (out.empty()) out = cv::Mat::zeros(source.size(), source.type());
        Warp<FillEmpty, T>(source, out, matrix);
        return true;
    });
}

bool TransformBinary(cv::Mat const & source, cv::Mat & out, cv::Mat const & matrix)
{
    if (!AreReady(source, out, matrix) || source.depth() == CV_16S) return false;
    return common::VisitLabel(source, [&]<class T> {
        if (out.empty()) out = cv::Mat::zeros(source.size(), source.type());
        Warp<MergeBits, T>(source, out, matrix);
        return true;
    });
}

bool CreateOccupancyHistogramFromImage(
    cv::Mat const & image, std::vector<unsigned int> & columns, std::vector<unsigned int> & rows)
{
    if (!IsRaster(image) || image.type() != CV_32FC1) return false;
    columns.resize(static_cast<std::size_t>(image.cols));
    rows.resize(static_cast<std::size_t>(image.rows));
    for (int y = 0; y < image.rows; ++y)
    {
        auto const * const row = image.ptr<float>(y);
        for (int x = 0; x < image.cols; ++x)
        {
            unsigned const weight = LowBitsOf(row[x]);
            columns[static_cast<std::size_t>(x)] += weight;
            rows[static_cast<std::size_t>(y)] += weight;
        }
    }
    return !columns.empty() && !rows.empty();
}

bool TruncateHistogram(std::vector<unsigned int> const & histogram, double const & ratio, int & first, int & last)
{
    if (!(ratio >= 0.0 && ratio <= 1.0) || histogram.empty()) return false;
    unsigned sum = 0;
    for (unsigned const bin : histogram)
    {
        sum += bin;
    }
    // Wide enough for what follows; only the sum is of 32 bits.
    std::int64_t total = common::WrapTo<int>(sum);
    std::int64_t const keep = common::TruncateTo<int>(std::floor(static_cast<double>(total) * ratio));
    std::int64_t const limit = total - keep;
    int low = 0;
    int high = static_cast<int>(histogram.size()) - 1;
    while (low != high - 1)
    {
        unsigned const left = histogram[static_cast<std::size_t>(low)];
        unsigned const right = histogram[static_cast<std::size_t>(high)];
        bool const dropsRight = left > right;
        std::int64_t const weight = dropsRight ? right : left;
        if (weight >= limit) break;
        total -= weight;
        if (total < keep) break;
        high -= dropsRight ? 1 : 0;
        low += dropsRight ? 0 : 1;
    }
    if ((high - low) % 2 == 0) MakeOdd(histogram, low, high);
    first = low;
    last = high;
    return true;
}

bool CropImage(
    cv::Mat const & occupancy, cv::Mat const & image, cv::Mat & out, double const & ratio, int & dx, int & dy)
{
    std::vector<unsigned int> columns;
    std::vector<unsigned int> rows;
    if (!CreateOccupancyHistogramFromImage(occupancy, columns, rows)) return false;
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;
    if (!TruncateHistogram(columns, ratio, left, right) || !TruncateHistogram(rows, ratio, top, bottom)) return false;
    cv::Rect const window(left, top, right - left, bottom - top);
    if (window.width < 1 || window.height < 1) return false;
    out = image(window).clone();
    dx = (left + right) / 2 - image.cols / 2;
    dy = (top + bottom) / 2 - image.rows / 2;
    return true;
}

} // namespace morvane::warping
