/// @file
/// Images written as lists of numbers.
#pragma once

#include <opencv2/core.hpp>

#include <initializer_list>

namespace morvane::tests
{

/// An image of one row with the listed pixels.
template <class Pixel>
[[nodiscard]] cv::Mat Row(std::initializer_list<Pixel> pixels)
{
    cv::Mat row(1, static_cast<int>(pixels.size()), cv::traits::Type<Pixel>::value);
    int x = 0;
    for (Pixel const & pixel : pixels)
    {
        row.ptr<Pixel>()[x++] = pixel;
    }
    return row;
}

} // namespace morvane::tests
