/// @file
/// How an image of heights lies on another one: turned and shifted.
#pragma once

#include <opencv2/core.hpp>

#include <functional>
#include <optional>

namespace program
{

/// Where the moving image lies.
struct Pose
{
    double angle = 0.0;    ///< degrees by which it is turned about its middle, clockwise
    cv::Point2d middle;    ///< where its middle lies, in pixels of the reference
    double score = 0.0;    ///< 16 for each pair of equal levels
    int pairs = 0;         ///< pixels of the moving image that could be equal
    bool isFinest = false; ///< false when the search was ended early
};

/// What of the heights is compared.
struct HeightLevels
{
    double step = 0.0;      ///< heights between two multiples of it are equal
    double structure = 0.0; ///< only pixels count around which heights differ by this and more, of 3 x 3; 0 for all
};

/// The levels of two images of heights: 0 where nothing counts, else from 3 on, equal for equal heights.
///
/// @param heights one channel, 0 where nothing was measured
/// @param lowest height of the lowest level
[[nodiscard]] cv::Mat LevelsOf(cv::Mat const & heights, double lowest, HeightLevels const & levels);

/// Searches for the pose of the most equal levels, from coarse to fine.
///
/// @param reference `CV_32SC1`, see LevelsOf()
/// @param moving likewise
/// @param margin how far the moving image may reach over the reference, as a share of its diagonal
/// @param report told the share of the work that is done; false ends the search
/// @return the best pose so far; none when the search was ended before there was one, or no levels are equal anywhere
[[nodiscard]] std::optional<Pose>
FindPose(cv::Mat const & reference, cv::Mat const & moving, double margin, std::function<bool(double)> const & report);

/// Both images in one picture: the reference in red and blue, the moving image in green, grey where they agree.
///
/// @param reference a grey picture, 0 where nothing was measured
/// @param moving likewise
/// @return as large as it takes to show what is measured in one of them
[[nodiscard]] cv::Mat OverlayOf(cv::Mat const & reference, cv::Mat const & moving, Pose const & pose);

} // namespace program
