#include "support/NonLocalMeansOracle.h"

#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/SamplingOracle.h"
#include "support/Snapshot.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <sstream>
#include <vector>

namespace morvane::tests
{

namespace
{

int Odd(int size)
{
    return size % 2 == 0 ? size + 1 : size;
}

/// The weights of the steps of the exponent.
std::vector<float> MakeTable()
{
    std::vector<float> table;
    for (int step = 0; step < 8192; ++step)
    {
        table.push_back(static_cast<float>(std::exp(static_cast<double>(1.0F / 1024.0F) * -step)));
    }
    return table;
}

/// How much a candidate counts, 0 if it is dropped.
float WeightOf(float scaled)
{
    static std::vector<float> const table = MakeTable();
    // Not the other way round, for the sake of NaN. Below -1 there is no step in the table.
    if (!(scaled < 8192.0F) || scaled <= -1.0F) return 0.0F;
    return table[static_cast<std::size_t>(scaled)];
}

/// The sum of the differences of two patches, with each partial sum in type @p Sum.
template <class Sum>
float PatchDistance(cv::Mat1i const & values, cv::Point one, cv::Point other, int radius)
{
    Sum sum = 0;
    for (int y = -radius; y <= radius; ++y)
    {
        for (int x = -radius; x <= radius; ++x)
        {
            std::int64_t const left = values(one.y + y, one.x + x);
            std::int64_t const right = values(other.y + y, other.x + x);
            sum += static_cast<Sum>(left > right ? left - right : right - left);
        }
    }
    return static_cast<float>(sum);
}

/// The mean around a pixel, before it is cut; NaN without any candidate.
template <class Sum>
float MeanAt(cv::Mat1i const & values, cv::Point pixel, Likeness const & likeness, float centreBlend)
{
    int const patch = Odd(likeness.patchSize);
    int const reach = Odd(likeness.searchSize) / 2;
    float const factor = (1024.0F / likeness.h) * (1.0F / static_cast<float>(patch * patch));
    float sum = 0.0F;
    float total = 0.0F;
    float largest = 0.0F;
    for (int y = -reach; y <= reach; ++y)
    {
        for (int x = -reach; x <= reach; ++x)
        {
            if (x == 0 && y == 0) continue;
            cv::Point const candidate = pixel + cv::Point(x, y);
            float const weight = WeightOf(PatchDistance<Sum>(values, pixel, candidate, patch / 2) * factor);
            if (weight == 0.0F) continue;
            sum += static_cast<float>(values(candidate)) * weight;
            total += weight;
            largest = std::max(largest, weight);
        }
    }
    float const centre = (1.0F - centreBlend) * largest + centreBlend;
    sum += static_cast<float>(values(pixel)) * centre;
    total += centre;
    return total == 0.0F ? std::numeric_limits<float>::quiet_NaN() : sum / total;
}

double Clamped(double value, Span const & span)
{
    return std::clamp(value, static_cast<double>(span.least), static_cast<double>(span.most));
}

/// Whether a mean is a number of the type, as it is before it is cut. In 32 bits the next one above them counts too.
bool IsAccepted(double mean, int depth)
{
    Span const span = depth == CV_32S ? Span{-2147483648, 2147483648} : SpanOf(depth);
    return mean == Clamped(mean, span);
}

/// Calls @p visit with each pixel that is not too close to a border, and its mean.
template <class Sum, class Visit>
void ForEachMean(cv::Mat const & src, Likeness const & likeness, float centreBlend, Visit && visit)
{
    cv::Mat1i values;
    src.convertTo(values, CV_32S);
    int const margin = MarginOf(likeness);
    for (int y = margin; y < src.rows - margin; ++y)
    {
        for (int x = margin; x < src.cols - margin; ++x)
        {
            visit(cv::Point(x, y), static_cast<double>(MeanAt<Sum>(values, {x, y}, likeness, centreBlend)));
        }
    }
}

template <class Sum>
cv::Mat Means(cv::Mat const & src, Likeness const & likeness, float centreBlend)
{
    cv::Mat result = CopyOf(src);
    ForEachMean<Sum>(src, likeness, centreBlend, [&](cv::Point pixel, double mean) {
        if (std::isnan(mean) || !IsAccepted(mean, src.depth())) return;
        SetElement(result, pixel.y, pixel.x, 0, std::trunc(Clamped(mean, SpanOf(src.depth()))));
    });
    return result;
}

/// Calls @p make with each pixel of @p image, and stores what it gives.
template <class Make>
void FillPixels(cv::Mat & image, Make && make)
{
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            SetElement(image, y, x, 0, make(y, x));
        }
    }
}

/// The low 16 bits of each pixel.
cv::Mat In16Bits(cv::Mat const & src)
{
    cv::Mat work(src.rows, src.cols, CV_16SC1);
    FillPixels(
        work, [&](int y, int x) { return OracleLowBits(static_cast<std::int64_t>(ElementAt(src, y, x)), CV_16S); });
    return work;
}

/// Splits the base, filters each level, and joins them into @p work from the coarsest on.
void FilterLevels(cv::Mat const & base, Likeness const & likeness, int levels, cv::Mat & work)
{
    std::vector<Blocks> pyramid;
    for (int level = 0; level < levels; ++level)
    {
        pyramid.push_back(OracleDownSampling(Reduction::Mean, level == 0 ? base : pyramid.back().low));
    }
    for (int level = levels - 1; level >= 0; --level)
    {
        Blocks const & blocks = pyramid[static_cast<std::size_t>(level)];
        Likeness const weaker{likeness.patchSize, likeness.searchSize, std::ldexp(likeness.h, -(level + 1))};
        cv::Mat const filtered = OracleMeans(blocks.low, weaker, 1.0F);
        cv::Mat & finer = level == 0 ? work : pyramid[static_cast<std::size_t>(level) - 1].low;
        if (!filtered.empty()) finer = OracleUpSampling(filtered, blocks.high, finer);
    }
}

/// Adds the residual where it is above a threshold, reduced by it.
void GiveBack(cv::Mat const & residual, double threshold, cv::Mat & work)
{
    FillPixels(work, [&](int y, int x) {
        double value = ElementAt(work, y, x);
        double const rest = ElementAt(residual, y, x);
        if (rest > threshold) value += rest - threshold;
        if (rest < -threshold) value += rest + threshold;
        return OracleLowBits(static_cast<std::int64_t>(value), CV_16S);
    });
}

/// The work image in the type of the source.
cv::Mat Converted(cv::Mat const & work, int depth)
{
    cv::Mat result(work.rows, work.cols, depth);
    FillPixels(result, [&](int y, int x) { return Clamped(ElementAt(work, y, x), SpanOf(depth)); });
    return result;
}

} // namespace

cv::Mat OracleMeans(cv::Mat const & src, Likeness const & likeness, float centreBlend)
{
    return Means<float>(src, likeness, centreBlend);
}

cv::Mat MeansOfExactSums(cv::Mat const & src, Likeness const & likeness)
{
    return Means<double>(src, likeness, 0.0F);
}

int CountMeansBeyond(cv::Mat const & src, Likeness const & likeness)
{
    int beyond = 0;
    ForEachMean<float>(src, likeness, 0.0F, [&](cv::Point /*pixel*/, double mean) {
        beyond += std::isnan(mean) || IsAccepted(mean, src.depth()) ? 0 : 1;
    });
    return beyond;
}

cv::Mat OracleIteratedMeans(cv::Mat const & src, Likeness const & likeness, int iterations)
{
    cv::Mat current = CopyOf(src);
    for (int pass = 1; pass <= iterations; ++pass)
    {
        current = OracleMeans(current, likeness, static_cast<float>(pass) / static_cast<float>(iterations));
    }
    return current;
}

cv::Mat OracleMultiScaleMeans(cv::Mat const & src, Likeness const & likeness, int levels)
{
    cv::Mat work = In16Bits(src);
    cv::Mat const base = OracleMeans(work, {likeness.patchSize, likeness.searchSize, likeness.h * 1.5F});
    cv::Mat residual(src.rows, src.cols, CV_16SC1);
    FillPixels(
        residual, [&](int y, int x) { return Clamped(ElementAt(work, y, x) - ElementAt(base, y, x), SpanOf(CV_16S)); });
    FilterLevels(base, likeness, levels, work);
    GiveBack(residual, OracleElement(static_cast<double>(likeness.h), CV_16S), work);
    return Converted(work, src.depth());
}

cv::Mat OraclePlainMultiScaleMeans(cv::Mat const & src, Likeness const & likeness, int levels)
{
    cv::Mat work = In16Bits(src);
    cv::Mat const base = OracleMeans(work, likeness);
    FilterLevels(base, likeness, levels, work);
    return Converted(work, src.depth());
}

int MarginOf(Likeness const & likeness)
{
    return (Odd(likeness.searchSize) + Odd(likeness.patchSize)) / 2 - 1;
}

Span SpanOf(int depth)
{
    switch (depth)
    {
    case CV_8U:
        return {0, 255};
    case CV_16U:
        return {0, 65535};
    case CV_16S:
        return {-32768, 32767};
    default:
        return {-2147483648, 2147483647};
    }
}

cv::Mat NoisyImage(Random & random, cv::Size size, int depth, Span const & span)
{
    cv::Mat image(size.height, size.width, depth);
    auto const range = static_cast<double>(span.most - span.least);
    double const noise = random.Chance(0.5) ? 0.1 : 0.4;
    int const cell = 2 + random.Below(8);
    int const shift = random.Below(3);
    FillPixels(image, [&](int y, int x) {
        // Plateaus at both ends of the span and between them.
        double const plateau = 0.5 * ((x / cell + y / cell + shift) % 3);
        double const share = std::clamp(plateau + noise * (random.Unit() - 0.5), 0.0, 1.0);
        return static_cast<double>(span.least) + std::floor(share * range + 0.5);
    });
    return image;
}

cv::Mat NoisyImage(Random & random, cv::Size size, int depth)
{
    Span const all = SpanOf(depth);
    if (random.Chance(0.3)) return NoisyImage(random, size, depth, all);
    auto const range = static_cast<double>(all.most - all.least);
    auto const length = static_cast<std::int64_t>(range * std::pow(0.5, random.Below(depth == CV_32S ? 30 : 8)));
    auto const start = static_cast<std::int64_t>(random.Unit() * (range - static_cast<double>(length)));
    return NoisyImage(random, size, depth, {all.least + start, all.least + start + length});
}

float SomeStrength(Random & random, Span const & span)
{
    double const range = static_cast<double>(span.most - span.least) + 1.0;
    return static_cast<float>(range * std::pow(0.5, random.Below(9)) * (0.5 + random.Unit()));
}

std::string LikenessCase(cv::Mat const & src, Likeness const & likeness)
{
    std::ostringstream text;
    text << cv::typeToString(src.type()) << ", rows " << src.rows << ", columns " << src.cols << ", patch "
         << likeness.patchSize << ", search " << likeness.searchSize << ", h " << likeness.h;
    return text.str();
}

} // namespace morvane::tests
