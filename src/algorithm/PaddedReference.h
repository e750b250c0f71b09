/// @file
/// The reference with a margin, and how placements on it are counted.
#pragma once

#include "algorithm/RotationSquare.h"
#include "common/Dispatch.h"

#include <morvane/common/Conversions.h>

#include <opencv2/core.hpp>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

namespace morvane::algorithm
{

/// Where placements are counted from.
struct Frame
{
    int margin;         ///< pixels around the reference
    cv::Size reference; ///< without the margin
    int diagonal;       ///< of the moving image

    /// The column at which a square of the side of the diagonal has its middle on that of the reference.
    [[nodiscard]] int OffsetX() const { return Offset(reference.width); }
    /// The row, likewise.
    [[nodiscard]] int OffsetY() const { return Offset(reference.height); }

private:
    [[nodiscard]] int Offset(int side) const
    {
        return common::TruncateTo<int>(std::floor(side * 0.5 + margin - diagonal * 0.5));
    }
};

/// The frame of a search. @return none for a margin that no image can have, and for more than two dimensions
[[nodiscard]] inline std::optional<Frame> FrameOf(cv::Mat const & reference, cv::Mat const & moving, double ratio)
{
    if (!common::IsRaster(reference) || !common::IsRaster(moving)) return std::nullopt;
    int const diagonal = DiagonalOf(moving.size());
    int const margin = common::TruncateTo<int>(std::floor(diagonal * ratio + 0.5));
    constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
    std::int64_t const longest = std::max(reference.rows, reference.cols) + 2 * std::int64_t{margin};
    if (margin < 0 || longest > kLargest) return std::nullopt;
    return Frame{margin, reference.size(), diagonal};
}

/// The reference with its margin of 0. @throws cv::Exception, std::bad_alloc when memory runs out
[[nodiscard]] inline cv::Mat Padded(cv::Mat const & reference, Frame const & frame)
{
    cv::Size const size(reference.cols + 2 * frame.margin, reference.rows + 2 * frame.margin);
    cv::Mat padded = cv::Mat::zeros(size, reference.type());
    // OpenCV does not copy nothing into a view.
    if (!reference.empty()) reference.copyTo(padded(cv::Rect({frame.margin, frame.margin}, reference.size())));
    return padded;
}

} // namespace morvane::algorithm
