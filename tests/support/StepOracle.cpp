#include "support/StepOracle.h"

#include "support/ImageLiterals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

namespace morvane::tests
{

namespace
{

/// The low 32 bits, read with a sign.
int LowBits(std::int64_t value)
{
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value) & 0xFFFFFFFFU));
}

/// A delta on an integer type: cut to a 32-bit integer, of which the low bits of the type stay. What no 32-bit integer
/// holds reads as the smallest one.
int IntegerDelta(double delta, int depth)
{
    constexpr double limit = 2147483648.0;
    double const cut = std::trunc(delta);
    std::int64_t const whole =
        cut >= -limit && cut < limit ? static_cast<std::int64_t>(cut) : std::numeric_limits<int>::min();
    auto const bits = static_cast<std::uint64_t>(whole);
    if (depth == CV_8U) return static_cast<int>(bits & 0xFFU);
    int const low = static_cast<int>(bits & 0xFFFFU);
    if (depth == CV_16U) return low;
    if (depth == CV_16S) return low >= 0x8000 ? low - 0x10000 : low;
    return LowBits(whole);
}

bool AreWithin(cv::Mat const & image, double delta, cv::Point one, cv::Point other)
{
    double const a = ElementAt(image, one.y, one.x);
    double const b = ElementAt(image, other.y, other.x);
    if (image.depth() == CV_64F)
    {
        double const difference = a > b ? a - b : b - a;
        return delta >= difference;
    }
    if (image.depth() == CV_32F)
    {
        auto const single = static_cast<float>(a);
        auto const other32 = static_cast<float>(b);
        float const difference = single > other32 ? single - other32 : other32 - single;
        return static_cast<float>(delta) >= difference;
    }
    auto const larger = static_cast<std::int64_t>(std::max(a, b));
    auto const smaller = static_cast<std::int64_t>(std::min(a, b));
    return LowBits(larger - smaller) <= IntegerDelta(delta, image.depth());
}

/// The difference of one channel in the arithmetic of the element type.
double ChannelDifference(double a, double b, int depth)
{
    if (depth == CV_64F) return a - b;
    if (depth == CV_32F) return static_cast<double>(static_cast<float>(a) - static_cast<float>(b));
    return LowBits(static_cast<std::int64_t>(a) - static_cast<std::int64_t>(b));
}

double Distance(cv::Mat const & image, cv::Point one, cv::Point other)
{
    double sum = 0.0;
    for (int channel = 0; channel < image.channels(); ++channel)
    {
        double const difference = ChannelDifference(
            ElementAt(image, one.y, one.x, channel), ElementAt(image, other.y, other.x, channel), image.depth());
        sum += difference * difference;
    }
    return std::sqrt(sum);
}

} // namespace

OracleCondition EqualSteps(cv::Mat const & image)
{
    OracleCondition condition;
    condition.isConnected = [image](cv::Point from, cv::Point to, cv::Point) {
        for (int channel = 0; channel < image.channels(); ++channel)
        {
            if (ElementAt(image, from.y, from.x, channel) != ElementAt(image, to.y, to.x, channel)) return false;
        }
        return true;
    };
    return condition;
}

OracleCondition DeltaSteps(cv::Mat const & image, double delta)
{
    OracleCondition condition;
    condition.isConnected = [image, delta](cv::Point from, cv::Point to, cv::Point) {
        return image.channels() == 1 ? AreWithin(image, delta, from, to) : delta >= Distance(image, from, to);
    };
    return condition;
}

OracleCondition StepsOfBoth(OracleCondition const & first, OracleCondition const & second)
{
    OracleCondition condition;
    condition.isConnected = [first, second](cv::Point from, cv::Point to, cv::Point seed) {
        return first.isConnected(from, to, seed) && second.isConnected(from, to, seed);
    };
    return condition;
}

cv::Mat1b EveryPixel(cv::Size size)
{
    return cv::Mat1b(size.height, size.width, uchar{1});
}

OracleZoneList ZonesAbove(OracleZoneList const & zones, std::uint64_t area)
{
    OracleZoneList large;
    std::copy_if(zones.begin(), zones.end(), std::back_inserter(large), [area](auto const & zone) {
        return zone.size() > area;
    });
    return large;
}

cv::Mat GradedImage(Random & random, cv::Size size, int type)
{
    Mixture const mixture{0.5 * random.Unit(), 0.4 * random.Unit(), 1 + random.Below(10)};
    cv::Mat image = RandomImage(random, size, type, mixture);
    if (image.depth() < CV_32F || random.Chance(0.3)) return image;
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols * image.channels(); ++x)
        {
            int const column = x / image.channels();
            int const channel = x % image.channels();
            double const value = ElementAt(image, y, column, channel);
            if (value >= 1.0 && value < 100.0) SetElement(image, y, column, channel, value * 0.3);
        }
    }
    return image;
}

double RandomDelta(Random & random)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::array usual{0.0, 0.3, 0.5, 0.9, 1.0, 1.5, 2.0, 2.9, 3.0, 5.0};
    constexpr std::array strange{
        -0.0,    -0.5,         -1.0,         -2.0,          44.0,
        255.0,   256.0,        257.0,        300.7,         -300.7,
        32767.0, 32768.0,      40000.0,      65535.0,       65536.0,
        65537.9, 2147483647.0, 2147483648.0, -2147483648.0, 1e10,
        -1e10,   1e300,        infinity,     -infinity,     std::numeric_limits<double>::quiet_NaN()};
    auto const pick = [&](auto const & values) {
        return values[static_cast<std::size_t>(random.Below(static_cast<int>(values.size())))];
    };
    return random.Chance(0.6) ? pick(usual) : pick(strange);
}

cv::Size RandomFamilySize(Random & random)
{
    if (random.Chance(0.6)) return RandomSize(random, 20);
    int const width = 61 + random.Below(8) + 64 * random.Below(2);
    return {width, 1 + random.Below(6)};
}

} // namespace morvane::tests
