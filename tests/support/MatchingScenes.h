/// @file
/// Random images to search in, and what is known of them beforehand.
#pragma once

#include "support/MatchingOracle.h"
#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <array>
#include <limits>
#include <vector>

namespace morvane::tests
{

/// A size, each side from 1 to @p largest.
[[nodiscard]] cv::Size SomeSize(Random & random, int largest);

/// Integers of some values.
[[nodiscard]] cv::Mat IntegersOf(Random & random, cv::Size size, std::vector<int> const & values);

/// A reference over which the moving image is strewn, turned and shifted.
[[nodiscard]] cv::Mat
StrewnReference(Random & random, cv::Mat const & moving, cv::Size size, std::vector<int> const & values);

/// Values around the borders of bytes and words, of which the low bits are equal, up to a largest.
[[nodiscard]] std::vector<int> ValuesUpTo(int largest);

/// Such largest values.
inline constexpr std::array kLargestValues{2, 6, 254, 255, 256, 65534, 65535, 65536, std::numeric_limits<int>::max()};

/// Stations in and around the images, ranges of all kinds, and some angles.
[[nodiscard]] Prior RandomPrior(Random & random, cv::Size reference, cv::Size moving);

} // namespace morvane::tests
