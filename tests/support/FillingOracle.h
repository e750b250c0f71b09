/// @file
/// The fills pixel by pixel: windows without tricks, neighbours one after the other, lists that are sorted whole.
#pragma once

#include "support/AllTypes.h"
#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <array>
#include <string>

namespace morvane::tests
{

/// The fills by a square.
enum class SquareFill : int
{
    Closing,
    Dilation,
    Erosion,
    Opening
};

inline constexpr std::array kSquareFills{
    SquareFill::Closing, SquareFill::Dilation, SquareFill::Erosion, SquareFill::Opening};

/// Calls the operator.
[[nodiscard]] bool CallSquareFill(SquareFill fill, cv::Mat const & image, cv::Mat & out, int size);

/// The image after the filter alone, by windows that are cut at the borders. Without NaN; any number of channels.
[[nodiscard]] cv::Mat OracleFiltered(SquareFill fill, cv::Mat const & image, int size);

/// As OracleFiltered(), by OpenCV on a copy.
[[nodiscard]] cv::Mat FilteredByOpenCV(SquareFill fill, cv::Mat const & image, int size);

/// The filled image, from the filtered one.
[[nodiscard]] cv::Mat OracleSquareFill(SquareFill fill, cv::Mat const & image, cv::Mat const & filtered);

/// What FillImageWithMean() must leave in an output that is @p before first.
[[nodiscard]] cv::Mat
OracleMeanFill(cv::Mat const & image, cv::Mat const & mask, int connexity, cv::Mat const & before);

/// What the fills with the median must leave in an output that is @p before first.
///
/// @param closeUp whether neighbours that are not 0 close up first
[[nodiscard]] cv::Mat OracleMedianFill(cv::Mat const & image, int connexity, bool closeUp, cv::Mat const & before);

/// What a hole takes of the dilated image.
enum class HoleFill : int
{
    Max,
    Min
};

inline constexpr std::array kHoleFills{HoleFill::Max, HoleFill::Min};

/// Calls the operator.
[[nodiscard]] bool CallHoleFill(HoleFill fill, cv::Mat const & image, cv::Mat & out, int size);

/// The image without holes. Which of the measured regions is nearest is asked of OpenCV.
[[nodiscard]] cv::Mat OracleHoleFill(HoleFill fill, cv::Mat const & image, int size);

/// The image with 3 in place of NaN and one kind of zero, so that equal numbers are equal bytes.
[[nodiscard]] cv::Mat Plainly(cv::Mat const & image);

/// Plain numbers, extremes of the type, of which a share is 0 or the maximum.
[[nodiscard]] cv::Mat ImageToFill(Random & random, cv::Size size, int type);

/// Lines for SCOPED_TRACE.
[[nodiscard]] std::string FillCase(SquareFill fill, cv::Mat const & image, int size);
[[nodiscard]] std::string FillCase(HoleFill fill, cv::Mat const & image, int size);

} // namespace morvane::tests
