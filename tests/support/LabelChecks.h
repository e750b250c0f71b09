/// @file
/// The operators of the labelling family in tables, and checks of what they write.
#pragma once

#include <morvane/connexity/Labelling.h>

#include "support/StepOracle.h"

#include <opencv2/core.hpp>

#include <functional>
#include <vector>

namespace morvane::tests
{

/// The images of a call: one or two of the same size.
using Images = std::vector<cv::Mat>;

/// An operator that labels the zones of images.
using LabelCall = std::function<bool(Images const & images, cv::Mat & labels)>;

/// What @p call writes into a label image full of rubbish; expects that it succeeds and writes in place.
[[nodiscard]] cv::Mat Written(cv::Size size, int type, std::function<bool(cv::Mat & labels)> const & call);

/// Expects that the call labels just these zones: in every label depth, in a label image of several channels, and in
/// views with gaps between their rows. The images must stay as they are.
void ExpectZones(Random & random, LabelCall const & call, Images const & images, OracleZoneList const & zones);

/// A labelling operator over one image, with a delta of 1 where it takes one.
struct OperatorOfOne
{
    char const * name;
    bool (*call)(cv::Mat const & image, connexity::eConnexityType const & connexity, cv::Mat & labels);
};

/// The four labelling operators over one image beside Label().
[[nodiscard]] std::vector<OperatorOfOne> OperatorsOfOne();

/// A labelling operator over two images, with deltas of 1 and an area of 0 where it takes them.
struct OperatorOfTwo
{
    char const * name;
    bool (*call)(
        cv::Mat const & image, cv::Mat const & second, connexity::eConnexityType const & connexity, cv::Mat & labels);
    bool takesSeveralChannels;
    bool answersTrueToRefusedLeaf; ///< to labels of a refused depth, and to more than 4 channels
};

/// The five labelling operators over two images.
[[nodiscard]] std::vector<OperatorOfTwo> OperatorsOfTwo();

/// A row in which no pixel can be joined with its neighbours by the operators of the tables, one zone for each pixel.
[[nodiscard]] cv::Mat RowOfZones(int zones, int type);

/// Tells whether each zone of @p fine lies in one zone of @p coarse; both are `CV_32S`.
[[nodiscard]] bool Refines(cv::Mat const & fine, cv::Mat const & coarse);

/// The image with its first @p by columns moved behind its last.
[[nodiscard]] cv::Mat Turned(cv::Mat const & image, int by);

} // namespace morvane::tests
