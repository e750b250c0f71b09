/// @file
/// Non-local means in their direct form: each pixel, each candidate, each pair of pixels of both patches.
#pragma once

#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <array>
#include <cstdint>
#include <string>

namespace morvane::tests
{

/// The depths that are filtered.
inline constexpr std::array kFilteredDepths{CV_8U, CV_16U, CV_16S, CV_32S};

/// What a filter is asked for.
struct Likeness
{
    int patchSize;
    int searchSize;
    float h;
};

/// One pass.
[[nodiscard]] cv::Mat OracleMeans(cv::Mat const & src, Likeness const & likeness, float centreBlend = 0.0F);

/// One pass that rounds the sum of a patch's differences once, where the pass rounds after each of them: to tell whether
/// an image shows the difference.
[[nodiscard]] cv::Mat MeansOfExactSums(cv::Mat const & src, Likeness const & likeness);

/// How many means lie outside the numbers of the type, by rounding.
[[nodiscard]] int CountMeansBeyond(cv::Mat const & src, Likeness const & likeness);

/// Passes on passes, with a centre that counts more and more; at least one.
[[nodiscard]] cv::Mat OracleIteratedMeans(cv::Mat const & src, Likeness const & likeness, int iterations);

/// The multi-scale form, with the residual and a stronger first pass.
[[nodiscard]] cv::Mat OracleMultiScaleMeans(cv::Mat const & src, Likeness const & likeness, int levels);

/// The multi-scale form without them.
[[nodiscard]] cv::Mat OraclePlainMultiScaleMeans(cv::Mat const & src, Likeness const & likeness, int levels);

/// How far from a border pixels keep their values.
[[nodiscard]] int MarginOf(Likeness const & likeness);

/// The numbers of an image.
struct Span
{
    std::int64_t least;
    std::int64_t most;
};

/// All numbers of a depth.
[[nodiscard]] Span SpanOf(int depth);

/// An image of plateaus with noise, which reaches both ends of the span.
[[nodiscard]] cv::Mat NoisyImage(Random & random, cv::Size size, int depth, Span const & span);

/// The same over some part of the span of the depth.
[[nodiscard]] cv::Mat NoisyImage(Random & random, cv::Size size, int depth);

/// A strength with which patches of an image of this span are alike more or less.
[[nodiscard]] float SomeStrength(Random & random, Span const & span);

/// A line for SCOPED_TRACE.
[[nodiscard]] std::string LikenessCase(cv::Mat const & src, Likeness const & likeness);

} // namespace morvane::tests
