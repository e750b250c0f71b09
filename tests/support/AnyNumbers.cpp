#include "support/AnyNumbers.h"

#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace morvane::tests
{

namespace
{

double AnyWholeNumber(Random & random, int depth)
{
    constexpr std::array edges{0.0,          127.0,         128.0,         255.0,       256.0,    32767.0,
                               32768.0,      65535.0,       65536.0,       -1.0,        -32768.0, -32769.0,
                               2147483647.0, -2147483648.0, -2147483647.0, 1073741823.0};
    auto const edge = edges[static_cast<std::size_t>(random.Below(static_cast<int>(edges.size())))];
    auto const bits = static_cast<std::int64_t>(random.Next() >> 20U);
    int const kind = random.Below(3);
    std::int64_t const value = kind == 0 ? bits : kind == 1 ? static_cast<std::int64_t>(edge) : random.Below(9) - 3;
    return OracleLowBits(value, depth);
}

double AnyFloatingNumber(Random & random, int depth)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::array edges{-0.9,         0.5,          254.9,        255.5,         256.0,  -1.5,    300.7,
                               32767.5,      32768.0,      -32769.0,     65535.9,       65537., 1e9,     16777217.0,
                               2147483647.0, 2147483648.0, 2147483520.0, -2147483648.0, 5e9,    -1e10,   3e38,
                               infinity,     -infinity,    -0.0,         0.0,           1e-40,  -3.4e38, -2147483649.0};
    auto const edge = edges[static_cast<std::size_t>(random.Below(static_cast<int>(edges.size())))];
    switch (random.Below(5))
    {
    case 0:
        return edge;
    case 1:
        return random.Unit() * 1000.0 - 500.0;
    case 2:
        return std::ldexp(random.Unit() - 0.5, random.Below(depth == CV_64F ? 1000 : 130));
    case 3:
        return random.Chance(0.2) ? std::numeric_limits<double>::quiet_NaN() : random.Below(300);
    default:
        return random.Below(5) - 2;
    }
}

} // namespace

cv::Mat AnyNumbers(Random & random, cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    int const depth = image.depth();
    bool const floating = depth == CV_32F || depth == CV_64F;
    for (int y = 0; y < size.height; ++y)
    {
        for (int element = 0; element < size.width * image.channels(); ++element)
        {
            double const value = floating ? AnyFloatingNumber(random, depth) : AnyWholeNumber(random, depth);
            SetElement(image, y, element / image.channels(), element % image.channels(), value);
        }
    }
    return image;
}

} // namespace morvane::tests
