#include "support/SamplingOracle.h"

#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::tests
{

namespace
{

bool IsFloating(int depth)
{
    return depth == CV_32F || depth == CV_64F;
}

/// The integer of a depth that has the low bits of @p value.
std::int64_t LowBits(std::int64_t value, int depth)
{
    return static_cast<std::int64_t>(OracleLowBits(value, depth));
}

/// One channel of an image.
struct Plane
{
    cv::Mat image;
    int channel;

    [[nodiscard]] double At(cv::Point at) const { return ElementAt(image, at.y, at.x, channel); }
    [[nodiscard]] std::int64_t IntegerAt(cv::Point at) const { return static_cast<std::int64_t>(At(at)); }
    void Set(cv::Point at, double value) { SetElement(image, at.y, at.x, channel, value); }
    void Set(cv::Point at, std::int64_t value) { Set(at, OracleLowBits(value, image.depth())); }
    /// Integer types cut a number, others round it.
    void Convert(cv::Point at, double value) { Set(at, OracleElement(value, image.depth())); }
};

/// Whether the wider of two types, of which one is floating-point, has single precision.
bool IsSingle(int one, int other)
{
    return one != CV_64F && other != CV_64F;
}

double Sum(double one, double other, bool single)
{
    if (!single) return one + other;
    return static_cast<double>(static_cast<float>(one) + static_cast<float>(other));
}

double Difference(double one, double other, bool single)
{
    if (!single) return one - other;
    return static_cast<double>(static_cast<float>(one) - static_cast<float>(other));
}

/// The images of a reduction, in one channel.
struct Planes
{
    Plane src;
    Plane low;
    Plane high;

    [[nodiscard]] int SrcDepth() const { return src.image.depth(); }
    [[nodiscard]] int HighDepth() const { return high.image.depth(); }
};

using Pixels = std::vector<cv::Point>;

Pixels PixelsOf(cv::Point block)
{
    int const x = 2 * block.x;
    int const y = 2 * block.y;
    return {{x, y}, {x + 1, y}, {x, y + 1}, {x + 1, y + 1}};
}

void ReduceToWholeMean(Planes & planes, cv::Point block)
{
    bool const cutFirst = IsFloating(planes.SrcDepth());
    auto const read = [&](cv::Point pixel) {
        return cutFirst ? static_cast<std::int64_t>(OracleElement(planes.src.At(pixel), planes.HighDepth()))
                        : planes.src.IntegerAt(pixel);
    };
    std::int64_t sum = 2;
    for (cv::Point const pixel : PixelsOf(block))
    {
        sum += read(pixel);
    }
    std::int64_t const rest = ((LowBits(sum, CV_32S) % 4) + 4) % 4;
    std::int64_t const mean = (LowBits(sum, CV_32S) - rest) / 4;
    if (cutFirst)
    {
        planes.low.Set(block, static_cast<double>(mean));
    }
    else
    {
        planes.low.Set(block, mean);
    }
    for (cv::Point const pixel : PixelsOf(block))
    {
        planes.high.Set(pixel, read(pixel) - mean);
    }
}

void ReduceToMean(Planes & planes, cv::Point block)
{
    if (!IsFloating(planes.HighDepth()))
    {
        ReduceToWholeMean(planes, block);
        return;
    }
    bool const single = IsSingle(planes.SrcDepth(), planes.HighDepth());
    Pixels const pixels = PixelsOf(block);
    double sum = Sum(planes.src.At(pixels[0]), planes.src.At(pixels[1]), single);
    sum = Sum(sum, planes.src.At(pixels[2]), single);
    sum = Sum(sum, planes.src.At(pixels[3]), single);
    // A quarter of a small number rounds.
    double const mean = single ? static_cast<double>(static_cast<float>(sum) * 0.25F) : sum * 0.25;
    planes.low.Convert(block, mean);
    for (cv::Point const pixel : pixels)
    {
        planes.high.Set(pixel, Difference(planes.src.At(pixel), mean, single));
    }
}

void ReduceToOr(Planes & planes, cv::Point block)
{
    auto const read = [&](cv::Point pixel) {
        std::int64_t const value = planes.src.IntegerAt(pixel);
        return planes.SrcDepth() == CV_16S ? LowBits(value, CV_16U) : value;
    };
    std::int64_t all = 0;
    for (cv::Point const pixel : PixelsOf(block))
    {
        all |= read(pixel);
    }
    planes.low.Set(block, all);
    for (cv::Point const pixel : PixelsOf(block))
    {
        planes.high.Set(pixel, all ^ read(pixel));
    }
}

/// The detail of some pixels above or below the value of their block.
void WriteDifferences(Planes & planes, cv::Point block, Pixels const & pixels)
{
    double const value = planes.low.At(block);
    bool const whole = !IsFloating(planes.SrcDepth()) && !IsFloating(planes.HighDepth());
    bool const single = IsSingle(planes.SrcDepth(), planes.HighDepth());
    for (cv::Point const pixel : pixels)
    {
        if (whole)
        {
            planes.high.Set(pixel, planes.src.IntegerAt(pixel) - static_cast<std::int64_t>(value));
        }
        else
        {
            planes.high.Convert(pixel, Difference(planes.src.At(pixel), value, single));
        }
    }
}

void ReduceToMax(Planes & planes, cv::Point block)
{
    Pixels const pixels = PixelsOf(block);
    double most = planes.src.At(pixels.front());
    for (cv::Point const pixel : pixels)
    {
        if (planes.src.At(pixel) > most) most = planes.src.At(pixel);
    }
    planes.low.Set(block, most);
    WriteDifferences(planes, block, pixels);
}

/// Lets pixels enter a minimum.
double Least(Plane const & src, Pixels const & pixels, double least)
{
    for (cv::Point const pixel : pixels)
    {
        if (src.At(pixel) < least) least = src.At(pixel);
    }
    return least;
}

void ReduceToMin(Planes & planes, cv::Point block)
{
    Pixels pixels = PixelsOf(block);
    if (2 * block.x == planes.src.image.cols - 3)
    {
        pixels.emplace_back(2 * block.x + 2, 2 * block.y);
        pixels.emplace_back(2 * block.x + 2, 2 * block.y + 1);
    }
    planes.low.Set(block, Least(planes.src, pixels, planes.src.At(pixels.front())));
    WriteDifferences(planes, block, pixels);
}

/// Lets the last of an odd number of rows enter the blocks above it.
void FoldLastRow(Planes & planes)
{
    int const rows = planes.src.image.rows;
    int const cols = planes.src.image.cols;
    if (rows % 2 == 0 || rows < 3) return;
    for (int x = 0; x < cols / 2; ++x)
    {
        cv::Point const block(x, rows / 2 - 1);
        int const columns = 2 * x == cols - 3 ? 3 : 2;
        Pixels last;
        Pixels all;
        for (int column = 2 * x; column < 2 * x + columns; ++column)
        {
            last.emplace_back(column, rows - 1);
            for (int row = rows - 3; row < rows; ++row)
            {
                all.emplace_back(column, row);
            }
        }
        planes.low.Set(block, Least(planes.src, last, planes.low.At(block)));
        WriteDifferences(planes, block, all);
    }
}

using Reduce = void (*)(Planes & planes, cv::Point block);

Reduce ReduceOf(Reduction reduction)
{
    switch (reduction)
    {
    case Reduction::Mean:
        return ReduceToMean;
    case Reduction::LogicalOr:
        return ReduceToOr;
    case Reduction::Max:
        return ReduceToMax;
    default:
        return ReduceToMin;
    }
}

/// A copy of what is there, or zeros.
cv::Mat CopyOrMake(cv::Mat const & before, cv::Size size, int type)
{
    if (!before.empty()) return CopyOf(before);
    cv::Mat made(size.height, size.width, type);
    FillBytes(made, 0);
    return made;
}

std::int64_t Clamped(std::int64_t value, int depth)
{
    if (depth == CV_8U) return std::clamp<std::int64_t>(value, 0, 255);
    if (depth == CV_16U) return std::clamp<std::int64_t>(value, 0, 65535);
    if (depth == CV_16S) return std::clamp<std::int64_t>(value, -32768, 32767);
    return value;
}

/// The value of a block and the detail of a pixel, in integers.
std::int64_t JoinedWhole(std::int64_t low, int lowDepth, std::int64_t high, int highDepth, int dstDepth)
{
    if (lowDepth == CV_8U && highDepth == CV_8U) return LowBits(low + high, CV_8U);
    if (lowDepth == CV_8U && highDepth == CV_16S) return Clamped(LowBits(low + high, CV_16S), CV_8U);
    if (lowDepth == CV_8U) return Clamped(LowBits(low + high, CV_32S), CV_8U);
    if (lowDepth == CV_32S && highDepth == CV_8U) return LowBits(LowBits(low, CV_8U) + high, CV_8U);
    return Clamped(LowBits(low + high, CV_32S), dstDepth);
}

double Joined(Plane const & low, cv::Point block, Plane const & high, cv::Point pixel, int dstDepth)
{
    int const depth = low.image.depth();
    if (IsFloating(depth)) return Sum(low.At(block), high.At(pixel), depth == CV_32F);
    return static_cast<double>(
        JoinedWhole(low.IntegerAt(block), depth, high.IntegerAt(pixel), high.image.depth(), dstDepth));
}

/// Calls @p visit with each block of each channel.
template <class Visit>
void ForEachBlock(cv::Size blocks, int channels, Visit && visit)
{
    for (int y = 0; y < blocks.height; ++y)
    {
        for (int x = 0; x < blocks.width; ++x)
        {
            for (int channel = 0; channel < channels; ++channel)
            {
                visit(cv::Point(x, y), channel);
            }
        }
    }
}

} // namespace

Blocks OracleDownSampling(Reduction reduction, cv::Mat const & src, Blocks const & before)
{
    cv::Size const blocks(src.cols / 2, src.rows / 2);
    Blocks after{CopyOrMake(before.low, blocks, src.type()), CopyOrMake(before.high, src.size(), src.type())};
    ForEachBlock(blocks, src.channels(), [&](cv::Point block, int channel) {
        Planes planes{{src, channel}, {after.low, channel}, {after.high, channel}};
        ReduceOf(reduction)(planes, block);
    });
    for (int channel = 0; reduction == Reduction::Min && channel < src.channels(); ++channel)
    {
        Planes planes{{src, channel}, {after.low, channel}, {after.high, channel}};
        FoldLastRow(planes);
    }
    return after;
}

cv::Mat OracleUpSampling(cv::Mat const & low, cv::Mat const & high, cv::Mat const & before)
{
    cv::Mat after = CopyOrMake(before, {2 * low.cols, 2 * low.rows}, low.type());
    ForEachBlock(low.size(), low.channels(), [&](cv::Point block, int channel) {
        for (cv::Point const pixel : PixelsOf(block))
        {
            Plane dst{after, channel};
            dst.Set(pixel, Joined({low, channel}, block, {high, channel}, pixel, after.depth()));
        }
    });
    return after;
}

cv::Mat OracleRepeated(cv::Mat const & low, cv::Mat const & before)
{
    cv::Mat after = CopyOrMake(before, {2 * low.cols, 2 * low.rows}, low.type());
    ForEachBlock(low.size(), low.channels(), [&](cv::Point block, int channel) {
        for (cv::Point const pixel : PixelsOf(block))
        {
            Plane dst{after, channel};
            dst.Set(pixel, Plane{low, channel}.At(block));
        }
    });
    return after;
}

std::string SamplingCase(Reduction reduction, cv::Mat const & src, int highType)
{
    constexpr std::array names{"mean", "or", "max", "min"};
    return std::string(names[static_cast<std::size_t>(reduction)]) + ", " + cv::typeToString(src.type()) + " to " +
           cv::typeToString(highType) + ", rows " + std::to_string(src.rows) + ", columns " + std::to_string(src.cols);
}

} // namespace morvane::tests
