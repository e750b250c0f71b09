#include "filters/NonLocalMeansPass.h"

#include "common/Avx2.h"
#include "filters/PatchKeys.h"

#include <morvane/common/Conversions.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace morvane::filters::nlmeans_internals
{

namespace
{

/// What all tiles of a pass read, and what they write.
struct Pass
{
    NLMeansParameters const & parameters;
    cv::Mat levels; ///< whole numbers without sign, with the differences of the pixels
    cv::Mat values; ///< the pixels as the weights multiply them
    float factor;
    float centreBlend;
};

/// The sums over the candidates, for the pixels of a tile.
struct Candidates
{
    Candidates()
        : sums(kPixels)
        , totals(kPixels)
        , nearest(kPixels)
    {}

    void Clear()
    {
        std::fill(sums.begin(), sums.end(), 0.0F);
        std::fill(totals.begin(), totals.end(), 0.0F);
        std::fill(nearest.begin(), nearest.end(), std::numeric_limits<Key>::max());
    }

    static constexpr std::size_t kStride = Tile::kCols + kGroup;
    static constexpr std::size_t kPixels = kStride * Tile::kRows;

    std::vector<float> sums;
    std::vector<float> totals;
    std::vector<Key> nearest; ///< least key: that of the largest weight
};

/// Adds one candidate to each pixel of a row.
void AddCandidates(
    Key const * __restrict keys, float const * __restrict weights, float const * __restrict values,
    float * __restrict sums, float * __restrict totals, Key * __restrict nearest, int length)
{
    for (int x = 0; x < length; ++x)
    {
        float const weight = weights[keys[x]];
        sums[x] += values[x] * weight;
        totals[x] += weight;
    }
    for (int x = 0; x < length; ++x)
    {
        nearest[x] = std::min(nearest[x], keys[x]);
    }
}

#if MORVANE_HAS_AVX2
/// The same with eight weights looked up at once.
MORVANE_AVX2 void GatherCandidates(
    Key const * __restrict keys, float const * __restrict weights, float const * __restrict values,
    float * __restrict sums, float * __restrict totals, Key * __restrict nearest, int length)
{
    constexpr int kLanes = 8;
    for (int x = 0; x < length; x += kLanes)
    {
        __m256i const indices = _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<__m128i const *>(keys + x)));
        __m256 const weight = _mm256_i32gather_ps(weights, indices, sizeof(float));
        __m256 const product = _mm256_mul_ps(_mm256_loadu_ps(values + x), weight);
        _mm256_storeu_ps(sums + x, _mm256_add_ps(_mm256_loadu_ps(sums + x), product));
        _mm256_storeu_ps(totals + x, _mm256_add_ps(_mm256_loadu_ps(totals + x), weight));
    }
    for (int x = 0; x < length; ++x)
    {
        nearest[x] = std::min(nearest[x], keys[x]);
    }
}
#else
constexpr auto GatherCandidates = AddCandidates;
#endif

/// @tparam kAdd adds one candidate to each pixel of a row
template <auto kAdd, class Keys>
MORVANE_INLINED void AddAllCandidates(Pass const & pass, Tile const & tile, Keys & keys, Candidates & candidates)
{
    int const radius = pass.parameters.searchRadius;
    float const * const weights = keys.Weights().data();
    candidates.Clear();
    for (int dy = -radius; dy <= radius; ++dy)
    {
        for (int dx = -radius; dx <= radius; ++dx)
        {
            if (dy == 0 && dx == 0) continue;
            keys.Begin(tile, {dx, dy});
            for (int y = 0; y < tile.rows; ++y)
            {
                std::size_t const first = static_cast<std::size_t>(y) * Candidates::kStride;
                kAdd(
                    keys.Row(tile.y + y), weights, pass.values.ptr<float>(tile.y + y + dy) + tile.x + dx,
                    &candidates.sums[first], &candidates.totals[first], &candidates.nearest[first],
                    WholeGroups(tile.cols));
            }
        }
    }
}

template <class Keys>
void AddAllCandidatesPlainly(Pass const & pass, Tile const & tile, Keys & keys, Candidates & candidates)
{
    AddAllCandidates<AddCandidates>(pass, tile, keys, candidates);
}

template <class Keys>
MORVANE_AVX2 void AddAllCandidatesByAvx2(Pass const & pass, Tile const & tile, Keys & keys, Candidates & candidates)
{
    AddAllCandidates<GatherCandidates>(pass, tile, keys, candidates);
}

/// The greatest mean that the type takes in, in single precision.
template <class T>
constexpr auto kGreatest = static_cast<float>(std::numeric_limits<T>::max());

/// Adds the pixels themselves, and writes the means.
template <class T>
void WriteMeans(
    Pass const & pass, Tile const & tile, std::vector<float> const & weights, Candidates const & candidates,
    cv::Mat & dst)
{
    bool const hasCandidates = pass.parameters.searchRadius > 0;
    for (int y = 0; y < tile.rows; ++y)
    {
        float const * const values = pass.values.ptr<float>(tile.y + y) + tile.x;
        T * const pixels = dst.ptr<T>(tile.y + y) + tile.x;
        for (int x = 0; x < tile.cols; ++x)
        {
            std::size_t const i = static_cast<std::size_t>(y) * Candidates::kStride + static_cast<std::size_t>(x);
            float const largest = hasCandidates ? weights[candidates.nearest[i]] : 0.0F;
            float const centre = (1.0F - pass.centreBlend) * largest + pass.centreBlend;
            float const sum = candidates.sums[i] + values[x] * centre;
            float const total = candidates.totals[i] + centre;
            if (total == 0.0F) continue;
            float const mean = sum / total;
            if (!(mean >= static_cast<float>(std::numeric_limits<T>::min()) && mean <= kGreatest<T>)) continue;
            // In 32 bits the greatest mean is one above the greatest number.
            pixels[x] = static_cast<double>(mean) > std::numeric_limits<T>::max() ? std::numeric_limits<T>::max()
                                                                                  : common::TruncateTo<T>(mean);
        }
    }
}

/// The rows of tiles from @p first up to but not including @p last.
template <class T, class Keys>
void FilterTileRows(Pass const & pass, cv::Range const & range, cv::Mat & dst)
{
    int const margin = pass.parameters.margin;
    auto const addAll = common::HasAvx2() ? AddAllCandidatesByAvx2<Keys> : AddAllCandidatesPlainly<Keys>;
    Keys keys(pass.levels, pass.parameters, pass.factor);
    Candidates candidates;
    for (int y = margin + range.start * Tile::kRows; y < std::min(margin + range.end * Tile::kRows, dst.rows - margin);
         y += Tile::kRows)
    {
        for (int x = margin; x < dst.cols - margin; x += Tile::kCols)
        {
            Tile const tile{
                x, y, std::min<int>(Tile::kCols, dst.cols - margin - x),
                std::min<int>(Tile::kRows, dst.rows - margin - y)};
            addAll(pass, tile, keys, candidates);
            WriteMeans<T>(pass, tile, keys.Weights(), candidates, dst);
        }
    }
}

/// The pixels less the least one, in a matrix with room to the right for whole groups of pixels.
template <class T, class Level>
cv::Mat LevelsOf(cv::Mat const & src, double least)
{
    auto const base = static_cast<unsigned>(static_cast<int>(least));
    cv::Mat levels = cv::Mat::zeros(src.rows, src.cols + 3 * kGroup, sizeof(Level) == 2 ? CV_16UC1 : CV_32SC1);
    for (int y = 0; y < src.rows; ++y)
    {
        T const * const pixels = src.ptr<T>(y);
        Level * const row = levels.ptr<Level>(y);
        for (int x = 0; x < src.cols; ++x)
        {
            // Exact in unsigned arithmetic, also where the difference exceeds an int.
            row[x] = static_cast<Level>(static_cast<unsigned>(pixels[x]) - base);
        }
    }
    return levels;
}

template <class T, class Keys>
void FilterWithKeys(Pass & pass, cv::Mat const & src, double least, bool isParallel, cv::Mat & dst)
{
    pass.levels = LevelsOf<T, typename Keys::Level>(src, least);
    pass.values = cv::Mat::zeros(src.rows, src.cols + kGroup, CV_32FC1);
    src.convertTo(pass.values.colRange(0, src.cols), CV_32F);
    src.copyTo(dst);
    int const inner = src.rows - 2 * pass.parameters.margin;
    cv::Range const all(0, (inner + Tile::kRows - 1) / Tile::kRows);
    auto const filter = [&](cv::Range const & range) {
        FilterTileRows<T, Keys>(pass, range, dst);
    };
    if (isParallel)
    {
        cv::parallel_for_(all, filter);
    }
    else
    {
        filter(all);
    }
}

bool HasInnerPixels(cv::Mat const & image, int margin)
{
    return margin < image.rows / 2 + image.rows % 2 && margin < image.cols / 2 + image.cols % 2;
}

template <class T>
bool Filter(
    NLMeansParameters const & parameters, cv::Mat const & src, float h, float centreBlend, bool isParallel,
    cv::Mat & dst)
{
    if (!HasInnerPixels(src, parameters.margin))
    {
        src.copyTo(dst);
        return true;
    }
    Pass pass{parameters, {}, {}, (1024.0F / h) * parameters.patchNormalisation, centreBlend};
    double least = 0.0;
    double greatest = 0.0;
    cv::minMaxIdx(src, &least, &greatest);
    double const side = 2.0 * parameters.patchRadius + 1.0;
    double const largestSum = (greatest - least) * side * side;
    if (largestSum <= NarrowKeys::kLargestSum)
    {
        FilterWithKeys<T, NarrowKeys>(pass, src, least, isParallel, dst);
    }
    else if (largestSum <= WideKeys::kLargestSum)
    {
        FilterWithKeys<T, WideKeys>(pass, src, least, isParallel, dst);
    }
    else
    {
        FilterWithKeys<T, RoundedKeys>(pass, src, least, isParallel, dst);
    }
    return true;
}

/// The width that counts: an even one is raised.
std::int64_t OddWidth(int size)
{
    return static_cast<std::int64_t>(size) | 1;
}

} // namespace

NLMeansParameters::NLMeansParameters(int patchSize, int searchSize)
    : margin(static_cast<int>(((OddWidth(searchSize) + OddWidth(patchSize)) >> 1) - 1))
    , patchRadius(static_cast<int>(OddWidth(patchSize) >> 1))
    , searchRadius(static_cast<int>(OddWidth(searchSize) >> 1))
    , tableStep(1.0F / 1024.0F)
    , patchNormalisation(1.0F / static_cast<float>(OddWidth(patchSize) * OddWidth(patchSize)))
{
    weightTable.reserve(kTableSize);
    for (std::size_t i = 0; i < kTableSize; ++i)
    {
        weightTable.push_back(static_cast<float>(std::exp(static_cast<double>(tableStep) * -static_cast<double>(i))));
    }
}

template <class T>
bool NLMeansPass(NLMeansParameters const & parameters, cv::Mat const & src, float h, cv::Mat & dst, float centreBlend)
{
    return Filter<T>(parameters, src, h, centreBlend, false, dst);
}

template <class T>
bool NLMeansPassParallel(
    NLMeansParameters const & parameters, cv::Mat const & src, float h, cv::Mat & dst, float centreBlend)
{
    return Filter<T>(parameters, src, h, centreBlend, true, dst);
}

template MORVANE_EXPORT bool NLMeansPass<uchar>(NLMeansParameters const &, cv::Mat const &, float, cv::Mat &, float);
template MORVANE_EXPORT bool NLMeansPass<ushort>(NLMeansParameters const &, cv::Mat const &, float, cv::Mat &, float);
template MORVANE_EXPORT bool NLMeansPass<short>(NLMeansParameters const &, cv::Mat const &, float, cv::Mat &, float);
template MORVANE_EXPORT bool NLMeansPass<int>(NLMeansParameters const &, cv::Mat const &, float, cv::Mat &, float);
template MORVANE_EXPORT bool
NLMeansPassParallel<uchar>(NLMeansParameters const &, cv::Mat const &, float, cv::Mat &, float);
template MORVANE_EXPORT bool
NLMeansPassParallel<ushort>(NLMeansParameters const &, cv::Mat const &, float, cv::Mat &, float);
template MORVANE_EXPORT bool
NLMeansPassParallel<short>(NLMeansParameters const &, cv::Mat const &, float, cv::Mat &, float);
template MORVANE_EXPORT bool
NLMeansPassParallel<int>(NLMeansParameters const &, cv::Mat const &, float, cv::Mat &, float);

} // namespace morvane::filters::nlmeans_internals
