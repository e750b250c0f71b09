/// @file
/// One geodesic step with an element of any size: what the operators of this namespace repeat.
#pragma once

#include <morvane/common/Neighbourhood.h>

#include <opencv2/core.hpp>

namespace morvane::geodesy
{

/// The checks that operators on a marker and a mask begin with; an empty @p out is made after the first.
///
/// @return whether the types, then the sizes, are the same
bool AreReady(cv::Mat const & marker, cv::Mat const & mask, cv::Mat & out);

/// One dilation of @p marker, clipped by @p mask before and after. Nothing is checked.
///
/// @param shape code of `cv::getStructuringElement`
/// @return whether @p out is not empty
/// @throws cv::Exception for what OpenCV's morphology does not take
bool GeoDilateBySize(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize);

/// One erosion of @p marker, bounded from below by @p mask. Otherwise as GeoDilateBySize().
bool GeoErodeBySize(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, cv::Size kernelSize);

/// The steps from a pixel to those that it reaches in one dilation or erosion, over an image of @p size.
///
/// @throws cv::Exception for a shape or a size that OpenCV does not take
[[nodiscard]] common::Neighbourhood ReachOfElement(int shape, cv::Size kernelSize, cv::Size size);

} // namespace morvane::geodesy
