/// @file
/// Random pixels for what compares two of them.
#pragma once

#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <vector>

namespace morvane::tests
{

/// Random pixels of which neighbours in the list make interesting pairs: small numbers, the extremes of the type, NaN and
/// infinities, any bits at all, and pixels that differ from the one before in the lowest bit of one byte.
template <class In>
[[nodiscard]] std::vector<In> RandomPixels(Random & random, int count)
{
    cv::Mat const image = RandomImage(random, {count, 1}, cv::traits::Type<In>::value, {0.05, 0.3, 9});
    auto const * const row = image.ptr<In>();
    std::vector<In> pixels(row, row + count);
    for (std::size_t index = 1; index < pixels.size(); ++index)
    {
        auto * const bytes = reinterpret_cast<uchar *>(&pixels[index]);
        int const kind = random.Below(4);
        if (kind == 0)
        {
            for (std::size_t byte = 0; byte < sizeof(In); ++byte)
            {
                bytes[byte] = static_cast<uchar>(random.Below(256));
            }
        }
        else if (kind == 1)
        {
            pixels[index] = pixels[index - 1];
            bytes[random.Below(static_cast<int>(sizeof(In)))] ^= 1U;
        }
    }
    return pixels;
}

} // namespace morvane::tests
