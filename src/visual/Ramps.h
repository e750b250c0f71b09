/// @file
/// The scales of the maps, each with one entry more before and after it.
#pragma once

#include <opencv2/core.hpp>

#include <array>
#include <vector>

namespace morvane::visual
{

/// A colour in the order of the image's channels.
struct Bgr
{
    std::array<uchar, 4> bytes{}; ///< blue, green, red, and one to make four
};

/// 255 steps of grey between 0 and 255.
[[nodiscard]] std::vector<uchar> GreyEntries();

/// 511 steps from green over yellow to red, between black and white.
[[nodiscard]] std::vector<Bgr> ColorEntries();

/// 1275 steps from black over blue, cyan, green and yellow to red, between black and white.
[[nodiscard]] std::vector<Bgr> ColorNoZeroEntries();

} // namespace morvane::visual
