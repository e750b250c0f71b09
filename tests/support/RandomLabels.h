/// @file
/// Random label images: labels that change at each pixel, long runs, large zones over many rows.
#pragma once

#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <array>

namespace morvane::tests
{

/// How the labels of an image lie.
enum class LabelPattern
{
    Scattered, ///< each pixel has a label of its own choice
    Runs,      ///< runs of 1 to about 50 pixels, unrelated from row to row
    Blocks,    ///< rectangles over many rows
    OneZone,   ///< one label everywhere
};

inline constexpr std::array kLabelPatterns{
    LabelPattern::Scattered, LabelPattern::Runs, LabelPattern::Blocks, LabelPattern::OneZone};

/// Which labels an image holds.
struct LabelMixture
{
    int largest = 20;         ///< labels are 0 to this, which the type must hold
    double zeroShare = 0.2;   ///< labels (not pixels) that are 0
    double negativeShare = 0; ///< labels that are negative, for `CV_16S` and `CV_32S`
};

/// A label image of one channel.
[[nodiscard]] cv::Mat
RandomLabels(Random & random, cv::Size size, int depth, LabelPattern pattern, LabelMixture const & mixture = {});

/// Widths that end within, at and beyond the strides of fast paths, and some heights.
[[nodiscard]] cv::Size RandomLabelSize(Random & random);

} // namespace morvane::tests
