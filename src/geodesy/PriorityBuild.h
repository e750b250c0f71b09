/// @file
/// The floods behind the operators that build over or under a mask in one pass.
#pragma once

#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace morvane::geodesy::reconstruction_internals
{

/// Floods up from the regional minima of max(@p mask, @p marker), each pixel taking the larger of the mask and the level
/// of the flood.
///
/// @param mask, marker of one type
/// @param out made as OpenCV makes it, and written
/// @return false when the minima cannot be found in @p out
bool BuildOver(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType connexity, cv::Mat & out);

/// Floods down from the regional maxima of the minimum of both. Otherwise as BuildOver().
bool BuildUnder(cv::Mat const & mask, cv::Mat const & marker, connexity::eConnexityType connexity, cv::Mat & out);

} // namespace morvane::geodesy::reconstruction_internals
