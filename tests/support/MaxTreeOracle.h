/// @file
/// Attribute filtering in two plain forms that share nothing but the measures: by the components of the upper level sets,
/// and by a flood with one stack for each level.
#pragma once

#include <morvane/common/Attributes.h>

#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace morvane::tests
{

inline constexpr std::array kAttributes{common::eAttributeHeight, common::eAttributeWidth, common::eAttributeStrain,
                                        common::eAttributeMinHW,  common::eAttributeArea,  common::eAttributeSqrtArea};

/// The depths of images that have a tree.
inline constexpr std::array kTreeDepths{CV_8U, CV_16U, CV_16S, CV_32S};

/// The level of a pixel. What is negative in `CV_16S` counts as its bits.
[[nodiscard]] std::int64_t OracleLevel(cv::Mat const & image, cv::Point point);

/// The low bits of a number as an element of an integer depth.
[[nodiscard]] double OracleBits(std::int64_t number, int depth);

/// What was measured of a component.
struct OracleMeasure
{
    int left = 0;
    int right = -1;
    int top = 0;
    int bottom = -1;
    std::uint64_t area = 0;

    void Take(cv::Point point);
    void Merge(OracleMeasure const & other);
};

/// The value of an attribute.
[[nodiscard]] std::uint64_t OracleValue(OracleMeasure const & measure, common::eAttributeType attribute);

/// A node of a flooded tree; 0 is none.
struct OracleNode
{
    std::int64_t level = 0;
    std::size_t parent = 0;
    std::size_t firstChild = 0;
    std::size_t nextSibling = 0;
    OracleMeasure measure{};
};

/// What the flood leaves. The root is node 1.
struct OracleTree
{
    std::vector<OracleNode> nodes; ///< number 0 is no node
    cv::Mat1i labels;              ///< 0 where the flood never came
};

/// Floods an image from its first darkest pixel.
[[nodiscard]] OracleTree OracleFlood(cv::Mat const & image, int connexity);

/// A connected component of an upper level set that has a pixel of just that level.
struct OracleComponent
{
    std::int64_t level = 0;
    OracleMeasure measure{};
};

/// The components that hold each pixel, from the largest on.
struct OraclePaths
{
    std::vector<OracleComponent> components;
    std::vector<std::vector<std::size_t>> ofPixel; ///< row by row; empty where no path joins it to the darkest pixel

    [[nodiscard]] OracleComponent const & Last(std::size_t pixel) const { return components[ofPixel[pixel].back()]; }
};

/// Cuts an image at each of its levels.
[[nodiscard]] OraclePaths OracleDecompose(cv::Mat const & image, int connexity);

/// The filtered image: at each pixel the highest component around it that measures enough, 0 where none does.
[[nodiscard]] cv::Mat OracleOpening(
    cv::Mat const & image, OraclePaths const & paths, common::eAttributeType attribute, unsigned int threshold);

/// The filtered image by a descent through a flooded tree.
[[nodiscard]] cv::Mat
OracleOpening(cv::Mat const & image, OracleTree const & tree, common::eAttributeType attribute, unsigned int threshold);

/// A random image of few levels, none negative, often blots that lie in each other.
/// @param levels about how many different ones
[[nodiscard]] cv::Mat HillyImage(Random & random, cv::Size size, int depth, int levels);

/// A line for SCOPED_TRACE.
[[nodiscard]] std::string TreeCase(cv::Mat const & image, int connexity);

} // namespace morvane::tests
