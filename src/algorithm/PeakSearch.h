/// @file
/// Translations by correlation: the highest peaks as candidates.
#pragma once

#include "algorithm/PaddedReference.h"

#include <morvane/algorithm/TemplateMatching.h>

namespace morvane::algorithm
{

/// Correlates turned images with one reference.
class PeakSearch
{
public:
    /// @param padded the reference with its margin
    PeakSearch(cv::Mat const & padded, Frame const & frame, matching::TM_Parameters const & parameters);

    /// Finds the candidates of a turned image.
    ///
    /// @param station the station of the moving image, in the turned image
    /// @param queue where the candidates are pushed
    /// @param candidate the highest of them
    /// @return false when the images cannot be reduced, or the window misses all positions
    [[nodiscard]] bool Find(
        cv::Mat const & rotated, cv::Point_<double> const & station, CandidateQueues::value_type & queue,
        TemplateMatchingInfo & candidate) const;

private:
    /// The positions to search, of those there are; may be empty.
    [[nodiscard]] cv::Rect WindowAround(cv::Point_<double> const & station, cv::Size const & positions) const;

    cv::Mat m_reference; ///< reduced; empty when it cannot be
    Frame m_frame;
    matching::TM_Parameters m_parameters;
};

} // namespace morvane::algorithm
