#include <morvane/filters/NonLocalMeans.h>

#include "common/Dispatch.h"
#include "filters/NonLocalMeansPass.h"

#include <morvane/common/Conversions.h>
#include <morvane/filters/Sampling.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace morvane::filters
{

using common::TruncateTo;
using common::WrapTo;
using nlmeans_internals::NLMeansParameters;
using nlmeans_internals::NLMeansPass;
using nlmeans_internals::NLMeansPassParallel;

namespace
{

/// Calls @p leaf with the element type of an image that the filters take, of sizes that they take.
template <class Leaf>
bool VisitFiltered(cv::Mat const & src, int patchSize, int searchSize, Leaf const & leaf)
{
    if (!common::IsRaster(src) || !common::IsSingleChannel(src) || patchSize < 0 || searchSize < 0) return false;
    return common::VisitSignedLabel(src, leaf);
}

/// The image in 16 bits, what they cannot hold wrapped around.
template <class T>
cv::Mat In16Bits(cv::Mat const & src)
{
    cv::Mat work(src.size(), CV_16SC1);
    for (int y = 0; y < src.rows; ++y)
    {
        std::transform(src.ptr<T>(y), src.ptr<T>(y) + src.cols, work.ptr<short>(y), WrapTo<short, T>);
    }
    return work;
}

/// The pixels of the work image in the type of the result.
template <class T>
void WriteAs(cv::Mat const & work, cv::Mat & dst)
{
    static constexpr short kLeast = std::is_unsigned_v<T> ? 0 : std::numeric_limits<short>::min();
    static constexpr short kGreatest = sizeof(T) == 1 ? 255 : std::numeric_limits<short>::max();
    for (int y = 0; y < work.rows; ++y)
    {
        std::transform(work.ptr<short>(y), work.ptr<short>(y) + work.cols, dst.ptr<T>(y), [](short value) {
            return static_cast<T>(std::clamp(value, kLeast, kGreatest));
        });
    }
}

using PassOf16Bits = bool (*)(NLMeansParameters const &, cv::Mat const &, float, cv::Mat &, float);

/// Filters the levels of the pyramid below @p base, from the coarsest up, and writes the joined image to @p work.
bool FilterLevels(
    NLMeansParameters const & parameters, cv::Mat const & base, float h, int levels, PassOf16Bits coarsePass,
    cv::Mat & work)
{
    std::vector<cv::Mat> low;
    std::vector<cv::Mat> high;
    for (int i = 0; i < levels; ++i)
    {
        cv::Mat half;
        cv::Mat detail;
        if (!DownSampling(i == 0 ? base : low.back(), half, detail)) return false;
        // A level without pixels adds nothing, and all below it are empty too.
        if (half.empty()) break;
        low.push_back(half);
        high.push_back(detail);
    }
    for (int i = static_cast<int>(low.size()) - 1; i >= 0; --i)
    {
        auto const level = static_cast<std::size_t>(i);
        PassOf16Bits const pass = i == 0 ? NLMeansPassParallel<short> : coarsePass;
        cv::Mat filtered;
        if (!pass(parameters, low[level], std::ldexp(h, -(i + 1)), filtered, 1.0F)) return false;
        if (!UpSampling(filtered, high[level], i == 0 ? work : low[level - 1])) return false;
    }
    return true;
}

/// Adds what a residual has beyond a threshold, on either side of 0.
void AddThresholded(cv::Mat const & residual, short threshold, cv::Mat & work)
{
    for (int y = 0; y < work.rows; ++y)
    {
        std::transform(
            residual.ptr<short>(y), residual.ptr<short>(y) + work.cols, work.ptr<short>(y), work.ptr<short>(y),
            [threshold](int rest, int value) {
                // Two questions: below a threshold of 0 the answer to both can be yes.
                if (rest > threshold) value += rest - threshold;
                if (rest < -threshold) value += rest + threshold;
                return WrapTo<short>(value);
            });
    }
}

/// Tells whether a multi-scale filter can write where it is told to.
bool IsReady(cv::Mat const & src, int levels, cv::Mat const & dst)
{
    return levels >= 1 && dst.type() == src.type() && common::SameSize(src, dst);
}

/// What sets the two multi-scale forms apart.
struct ScaleForm
{
    PassOf16Bits pass;     ///< all but that over the finest level, which has threads in any case
    float firstFactor;     ///< of the strength, in the first pass
    bool returnsResiduals; ///< what the first pass took away comes back in part
};

bool FilterScales(
    ScaleForm const & form, cv::Mat const & src, int patchSize, int searchSize, float h, int levels, cv::Mat & dst)
{
    return VisitFiltered(src, patchSize, searchSize, [&]<class T> {
        if (!IsReady(src, levels, dst)) return false;
        if (src.empty()) return true;
        NLMeansParameters const parameters(patchSize, searchSize);
        cv::Mat work = In16Bits<T>(src);
        cv::Mat base;
        cv::Mat residual;
        if (!form.pass(parameters, work, h * form.firstFactor, base, 0.0F)) return false;
        cv::subtract(work, base, residual);
        if (!FilterLevels(parameters, base, h, levels, form.pass, work)) return false;
        if (form.returnsResiduals) AddThresholded(residual, TruncateTo<short>(h), work);
        WriteAs<T>(work, dst);
        return true;
    });
}

} // namespace

bool NLMeans(cv::Mat const & src, int patchSize, int searchSize, float h, cv::Mat & dst)
{
    return VisitFiltered(src, patchSize, searchSize, [&]<class T> {
        return NLMeansPass<T>(NLMeansParameters(patchSize, searchSize), src, h, dst, 0.0F);
    });
}

bool NLMeansParallel(cv::Mat const & src, int patchSize, int searchSize, float h, cv::Mat & dst)
{
    return VisitFiltered(src, patchSize, searchSize, [&]<class T> {
        return NLMeansPassParallel<T>(NLMeansParameters(patchSize, searchSize), src, h, dst, 0.0F);
    });
}

bool NLMeansIterative(cv::Mat const & src, int patchSize, int searchSize, float h, int iterations, cv::Mat & dst)
{
    return VisitFiltered(src, patchSize, searchSize, [&]<class T> {
        NLMeansParameters const parameters(patchSize, searchSize);
        cv::Mat current = src.clone();
        bool isFiltered = true;
        for (int i = 1; isFiltered && i <= iterations; ++i)
        {
            float const centreBlend = static_cast<float>(i) / static_cast<float>(iterations);
            isFiltered = NLMeansPassParallel<T>(parameters, current, h, dst, centreBlend);
            dst.copyTo(current);
        }
        return isFiltered;
    });
}

bool MSD_NLMeans(cv::Mat const & src, int patchSize, int searchSize, float h, int levels, cv::Mat & dst)
{
    return FilterScales({NLMeansPass<short>, 1.5F, true}, src, patchSize, searchSize, h, levels, dst);
}

bool MSD_NLMeansParallel(cv::Mat const & src, int patchSize, int searchSize, float h, int levels, cv::Mat & dst)
{
    return FilterScales({NLMeansPassParallel<short>, 1.0F, false}, src, patchSize, searchSize, h, levels, dst);
}

} // namespace morvane::filters
