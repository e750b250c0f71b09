#include <morvane/filters/Sampling.h>

#include "common/Dispatch.h"
#include "filters/BlockReductions.h"
#include "filters/PixelPairs.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <vector>

namespace morvane::filters
{

using common::IsRaster;
using common::VisitElement;
using namespace sampling_internals;

namespace
{

/// Tells whether an image has room for what is written to it.
bool Holds(cv::Mat const & image, cv::Size written)
{
    return IsRaster(image) && (written.empty() || (image.rows >= written.height && image.cols >= written.width));
}

/// Reduces the blocks of two rows.
template <class Reduction, class T, class High>
void SplitRows(
    T const * __restrict upper, T const * __restrict lower, T * __restrict low, High * __restrict highUpper,
    High * __restrict highLower, int blocks)
{
    for (int x = 0; x < blocks; ++x)
    {
        Pair<T> const above = LoadPair(upper + 2 * x);
        Pair<T> const below = LoadPair(lower + 2 * x);
        auto const a = Reduction::Read(above.one);
        auto const b = Reduction::Read(above.other);
        auto const c = Reduction::Read(below.one);
        auto const d = Reduction::Read(below.other);
        auto const value = Reduction::Finish(Reduction::Merge(Reduction::Merge(Reduction::Merge(a, b), c), d));
        low[x] = Reduction::ToLow(value);
        StorePair(highUpper + 2 * x, {Reduction::ToHigh(a, value), Reduction::ToHigh(b, value)});
        StorePair(highLower + 2 * x, {Reduction::ToHigh(c, value), Reduction::ToHigh(d, value)});
    }
}

template <class Reduction, class T, class High>
void SplitBlocks(cv::Mat const & src, cv::Mat & low, cv::Mat & high)
{
    for (int y = 0; y < src.rows / 2; ++y)
    {
        SplitRows<Reduction>(
            src.ptr<T>(2 * y), src.ptr<T>(2 * y + 1), low.ptr<T>(y), high.ptr<High>(2 * y), high.ptr<High>(2 * y + 1),
            src.cols / 2);
    }
}

/// Merges the pixels of @p block into the value of a block, and writes it and all details of @p covered anew.
template <class Reduction, class High, class T>
void Refine(cv::Mat const & src, cv::Rect const & block, cv::Rect const & covered, T & value, cv::Mat & high)
{
    for (int y = block.y; y < block.br().y; ++y)
    {
        for (int x = block.x; x < block.br().x; ++x)
        {
            value = Reduction::Merge(value, src.at<T>(y, x));
        }
    }
    for (int y = covered.y; y < covered.br().y; ++y)
    {
        for (int x = covered.x; x < covered.br().x; ++x)
        {
            high.at<High>(y, x) = Reduction::ToHigh(src.at<T>(y, x), value);
        }
    }
}

/// Folds the last column and row of odd sizes into the last blocks.
template <class Reduction, class T, class High>
void FoldRemainder(cv::Mat const & src, cv::Mat & low, cv::Mat & high)
{
    int const blockRows = src.rows / 2;
    int const blockCols = src.cols / 2;
    if (blockRows == 0 || blockCols == 0) return;
    int const lastWidth = 2 + src.cols % 2;
    if (lastWidth == 3)
    {
        for (int y = 0; y < blockRows; ++y)
        {
            Refine<Reduction, High>(
                src, {src.cols - 1, 2 * y, 1, 2}, {src.cols - 3, 2 * y, 3, 2}, low.ptr<T>(y)[blockCols - 1], high);
        }
    }
    if (src.rows % 2 == 0) return;
    for (int x = 0; x < blockCols; ++x)
    {
        int const width = x == blockCols - 1 ? lastWidth : 2;
        Refine<Reduction, High>(
            src, {2 * x, src.rows - 1, width, 1}, {2 * x, src.rows - 3, width, 3}, low.ptr<T>(blockRows - 1)[x], high);
    }
}

/// A reduction of one channel with whatever belongs to it.
template <template <class, class> class Reduction, class T, class High>
void SplitPlane(cv::Mat const & src, cv::Mat & low, cv::Mat & high)
{
    SplitBlocks<Reduction<T, High>, T, High>(src, low, high);
    if constexpr (std::is_same_v<Reduction<T, High>, Minimum<T, High>>)
    {
        FoldRemainder<Reduction<T, High>, T, High>(src, low, high);
    }
}

/// Makes an image; what no block covers is 0.
void MakeHigh(cv::Mat const & src, cv::Mat & high)
{
    high.create(src.size(), src.type());
    if (high.empty()) return;
    // Of any number of channels, which a scalar has not.
    cv::Mat const elements = high.reshape(1);
    if (src.rows % 2 == 1) elements.row(src.rows - 1) = 0.0;
    if (src.cols % 2 == 1) elements.colRange(elements.cols - src.channels(), elements.cols) = 0.0;
}

using Planes = std::vector<cv::Mat>;

Planes PlanesOf(Planes const & images, int channel)
{
    Planes planes(images.size());
    for (std::size_t i = 0; i < images.size(); ++i)
    {
        cv::extractChannel(images[i], planes[i], channel);
    }
    return planes;
}

/// Calls @p work with the planes of each channel; those of the outputs are put back.
template <class Work>
void ForEachChannel(Planes const & inputs, Planes outputs, Work const & work)
{
    if (inputs[0].channels() == 1)
    {
        work(inputs, outputs);
        return;
    }
    for (int channel = 0; channel < inputs[0].channels(); ++channel)
    {
        Planes written = PlanesOf(outputs, channel);
        work(PlanesOf(inputs, channel), written);
        for (std::size_t i = 0; i < outputs.size(); ++i)
        {
            cv::insertChannel(written[i], outputs[i], channel);
        }
    }
}

/// Checks and makes the outputs of a reduction, and reduces each channel.
template <template <class, class> class Reduction, class T, class High>
bool Split(cv::Mat const & src, cv::Size written, cv::Mat & low, cv::Mat & high)
{
    if (!IsRaster(src)) return false;
    cv::Size const half(src.cols / 2, src.rows / 2);
    if (!low.empty() && (low.type() != src.type() || !Holds(low, half))) return false;
    if (!high.empty() && (high.channels() != src.channels() || !Holds(high, written))) return false;
    // In this order: were both the same matrix, it would have room for either.
    if (high.empty()) MakeHigh(src, high);
    if (low.empty()) low.create(half, src.type());
    if (half.empty()) return true;
    ForEachChannel({src}, {low, high}, [](Planes const & inputs, Planes & outputs) {
        SplitPlane<Reduction, T, High>(inputs[0], outputs[0], outputs[1]);
    });
    return true;
}

/// What the blocks of an image cover.
cv::Size CoveredBy2(cv::Mat const & src)
{
    return {src.cols & ~1, src.rows & ~1};
}

/// What they cover when the last ones take in the remainders of odd sizes.
cv::Size CoveredBy3(cv::Mat const & src)
{
    return src.rows < 2 || src.cols < 2 ? cv::Size() : src.size();
}

/// A reduction between any two depths.
template <template <class, class> class Reduction>
bool SplitOfAnyDepths(cv::Mat const & src, cv::Size written, cv::Mat & low, cv::Mat & high)
{
    return VisitElement(src, [&]<class T> {
        return VisitElement(
            high.empty() ? src : high, [&]<class High> { return Split<Reduction, T, High>(src, written, low, high); });
    });
}

/// Saturates; unlike OpenCV's cast, loops over it compile to vectors.
template <class Out>
Out Saturate(int value)
{
    if constexpr (sizeof(Out) <= 2)
    {
        return static_cast<Out>(
            std::clamp<int>(value, std::numeric_limits<Out>::min(), std::numeric_limits<Out>::max()));
    }
    else
    {
        return static_cast<Out>(value);
    }
}

/// One pixel of the way back: the value of its block plus its detail.
template <class T, class High, class Out>
Out Sum(T value, High detail)
{
    // Unsigned: it may wrap around.
    int const sum = WrapTo<int>(static_cast<unsigned>(value) + static_cast<unsigned>(detail));
    if constexpr (std::is_same_v<T, uchar>)
    {
        if constexpr (std::is_same_v<High, uchar>) return WrapTo<uchar>(sum);
        if constexpr (std::is_same_v<High, short>) return Saturate<uchar>(WrapTo<short>(sum));
        return Saturate<uchar>(sum);
    }
    else if constexpr (std::is_same_v<T, int>)
    {
        return std::is_same_v<High, uchar> ? WrapTo<uchar>(sum) : sum;
    }
    else
    {
        return Saturate<Out>(sum);
    }
}

template <std::floating_point T, class High, class Out>
Out Sum(T value, High detail)
{
    return value + static_cast<T>(detail);
}

cv::Size Twice(cv::Mat const & low)
{
    return {2 * low.cols, 2 * low.rows};
}

/// Tells whether there is an image of twice the size, with room in @p dst if that is there.
bool CanDouble(cv::Mat const & low, cv::Mat const & dst)
{
    constexpr int kLargest = std::numeric_limits<int>::max() / 2;
    if (!IsRaster(low) || low.rows > kLargest || low.cols > kLargest) return false;
    return dst.empty() || (dst.channels() == low.channels() && Holds(dst, Twice(low)));
}

/// Joins one row of values with one row of details.
template <class T, class High, class Out>
void JoinRow(T const * __restrict low, High const * __restrict high, Out * __restrict dst, int blocks)
{
    for (int x = 0; x < blocks; ++x)
    {
        Pair<High> const details = LoadPair(high + 2 * x);
        StorePair(dst + 2 * x, {Sum<T, High, Out>(low[x], details.one), Sum<T, High, Out>(low[x], details.other)});
    }
}

template <class T, class High, class Out>
bool Join(cv::Mat const & low, cv::Mat const & high, cv::Mat & dst)
{
    if (!CanDouble(low, dst)) return false;
    cv::Size const twice = Twice(low);
    if (!low.empty() && (high.channels() != low.channels() || !Holds(high, twice))) return false;
    if (dst.empty()) dst.create(twice, low.type());
    if (low.empty()) return true;
    ForEachChannel({low, high}, {dst}, [](Planes const & inputs, Planes & outputs) {
        for (int y = 0; y < 2 * inputs[0].rows; ++y)
        {
            JoinRow(inputs[0].ptr<T>(y / 2), inputs[1].ptr<High>(y), outputs[0].ptr<Out>(y), inputs[0].cols);
        }
    });
    return true;
}

template <class T>
void RepeatRow(T const * __restrict low, T * __restrict dst, int blocks)
{
    for (int x = 0; x < blocks; ++x)
    {
        StorePair(dst + 2 * x, {low[x], low[x]});
    }
}

} // namespace

bool DownSampling(cv::Mat const & src, cv::Mat & low, cv::Mat & high)
{
    return SplitOfAnyDepths<Mean>(src, CoveredBy2(src), low, high);
}

bool DownSamplingWithLogicalOr(cv::Mat const & src, cv::Mat & low, cv::Mat & high)
{
    // The two depths of 16 bits share one member, as they do for labels.
    return common::VisitLabel(src, [&]<class T> {
        return common::VisitLabel(high.empty() ? src : high, [&]<class High> {
            return Split<LogicalOr, T, High>(src, CoveredBy2(src), low, high);
        });
    });
}

bool DownSamplingWithMax(cv::Mat const & src, cv::Mat & low, cv::Mat & high)
{
    return SplitOfAnyDepths<Maximum>(src, CoveredBy2(src), low, high);
}

bool DownSamplingWithMax(cv::Mat const & src, cv::Mat & low)
{
    cv::Mat high;
    return DownSamplingWithMax(src, low, high);
}

bool DownSamplingWithMin(cv::Mat const & src, cv::Mat & low, cv::Mat & high)
{
    return SplitOfAnyDepths<Minimum>(src, CoveredBy3(src), low, high);
}

bool DownSamplingWithMin(cv::Mat const & src, cv::Mat & low)
{
    cv::Mat high;
    return DownSamplingWithMin(src, low, high);
}

bool UpSampling(cv::Mat const & low, cv::Mat const & high, cv::Mat & dst)
{
    return VisitElement(low, [&]<class T> {
        return common::VisitSignedLabel(high, [&]<class High> {
            if constexpr (std::integral<T> && sizeof(T) == 2)
            {
                return VisitElement(
                    dst.empty() ? low : dst, [&]<class Out> { return Join<T, High, Out>(low, high, dst); });
            }
            else
            {
                return (dst.empty() || dst.depth() == low.depth()) && Join<T, High, T>(low, high, dst);
            }
        });
    });
}

bool UpSampling(cv::Mat const & low, cv::Mat & dst)
{
    return VisitElement(low, [&]<class T> {
        if (!CanDouble(low, dst) || (!dst.empty() && dst.depth() != low.depth())) return false;
        if (dst.empty()) dst.create(Twice(low), low.type());
        if (low.empty()) return true;
        ForEachChannel({low}, {dst}, [](Planes const & inputs, Planes & outputs) {
            for (int y = 0; y < 2 * inputs[0].rows; ++y)
            {
                RepeatRow(inputs[0].ptr<T>(y / 2), outputs[0].ptr<T>(y), inputs[0].cols);
            }
        });
        return true;
    });
}

} // namespace morvane::filters
