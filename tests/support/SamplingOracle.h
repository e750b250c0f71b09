/// @file
/// The pyramid of blocks pixel by pixel.
#pragma once

#include <opencv2/core.hpp>

#include <array>
#include <string>

namespace morvane::tests
{

/// What becomes of a block.
enum class Reduction : int
{
    Mean,
    LogicalOr,
    Max,
    Min
};

inline constexpr std::array kReductions{Reduction::Mean, Reduction::LogicalOr, Reduction::Max, Reduction::Min};

/// Whether a reduction takes images of this depth.
[[nodiscard]] inline bool Serves(Reduction reduction, int depth)
{
    return reduction != Reduction::LogicalOr || depth < CV_32F;
}

/// Both images of a reduction.
struct Blocks
{
    cv::Mat low;
    cv::Mat high;
};

/// The images after a reduction, in copies of those that are there before it.
[[nodiscard]] Blocks OracleDownSampling(Reduction reduction, cv::Mat const & src, Blocks const & before = {});

/// The sum of the value of each block and the detail, in a copy of what is there before it.
[[nodiscard]] cv::Mat OracleUpSampling(cv::Mat const & low, cv::Mat const & high, cv::Mat const & before = {});

/// The value of each block at its four pixels, in a copy of what is there before it.
[[nodiscard]] cv::Mat OracleRepeated(cv::Mat const & low, cv::Mat const & before = {});

/// A line for SCOPED_TRACE.
[[nodiscard]] std::string SamplingCase(Reduction reduction, cv::Mat const & src, int highType);

} // namespace morvane::tests
