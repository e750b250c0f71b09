/// @file
/// Thinning, skeletons and their segments step by step, on whole images.
#pragma once

#include <morvane/features/Skeleton.h>

#include "support/RandomImages.h"

#include <opencv2/core.hpp>

namespace morvane::tests
{

/// Thinning by two passes over the image for each iteration.
[[nodiscard]] cv::Mat1b OracleThinning(cv::Mat const & src, int type, int maxIterations);

/// The sum of the residues of openings, joined and cleaned.
[[nodiscard]] cv::Mat OracleSkeletonByErosion(cv::Mat const & src, int shape, int kernelSize);

/// The branch of a zone from a seed to the first step after the rest has fallen apart.
[[nodiscard]] cv::Mat OracleMainSegment(cv::Mat const & zone, cv::Mat const & seed);

/// The branches of a skeleton, `CV_32S`: every piece is cut and labelled anew.
[[nodiscard]] cv::Mat OracleBranches(cv::Mat const & skeleton);

/// The segments of one branch.
[[nodiscard]] features::SegmentMap OracleSegmentsOfBranch(cv::Mat const & zone, double tolerance, int firstLabel);

/// The segments of labelled branches, drawn into @p segments and added to @p ends.
void OracleSegments(cv::Mat const & labels, double tolerance, cv::Mat & segments, features::SegmentMap & ends);

/// A random shape of 0 and 255: scattered pixels, lines, or blobs with holes.
[[nodiscard]] cv::Mat1b RandomShape(Random & random, cv::Size size);

} // namespace morvane::tests
