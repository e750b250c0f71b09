/// @file
/// Images that fill the range of their type, for operators that compute with pixels.
#pragma once

#include "support/RandomImages.h"

#include <opencv2/core.hpp>

namespace morvane::tests
{

/// An image of any bits, extremes of the type, numbers around the limits of the integer types, and small ones.
[[nodiscard]] cv::Mat AnyNumbers(Random & random, cv::Size size, int type);

} // namespace morvane::tests
