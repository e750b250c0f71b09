/// @file
/// Masks of 0 and 1 that are hard for a labelling: late merges, long ways, single pixels at the borders of machine
/// words.
#pragma once

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace morvane::tests
{

/// A mask and its name.
struct Pattern
{
    std::string name;
    cv::Mat1b mask;
};

/// All patterns in one size, which may be empty or one pixel wide.
[[nodiscard]] std::vector<Pattern> AllPatterns(cv::Size size);

/// One line of pixels that winds inwards with a gap of one pixel between its turns.
[[nodiscard]] cv::Mat1b Spiral(cv::Size size);

} // namespace morvane::tests
