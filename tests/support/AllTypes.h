/// @file
/// The tables that tests run over: element types, channel counts, label depths, neighbourhoods.
#pragma once

#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

#include <array>
#include <limits>
#include <string>

namespace morvane::tests
{

/// The six accepted depths.
inline constexpr std::array kDepths{CV_8U, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F};
/// The two refused depths.
inline constexpr std::array kRefusedDepths{CV_8S, CV_16F};
/// The accepted channel counts.
inline constexpr std::array kChannelCounts{1, 2, 3, 4};
/// The depths of label images.
inline constexpr std::array kLabelDepths{CV_8U, CV_16U, CV_16S, CV_32S};
/// The depths that label images must not have.
inline constexpr std::array kRefusedLabelDepths{CV_8S, CV_16F, CV_32F, CV_64F};

/// The number of neighbourhood shapes: 0 to 12.
inline constexpr int kConnexityCount = 13;

/// Shapes with 4 or 8 neighbours, plain and wrapped.
inline constexpr std::array kSmallConnexities{0, 1, 2, 3, 4};

/// Numbers outside the table of shapes: just beyond it, negative, and those whose low bits are a wrapped shape.
inline constexpr std::array kStrangeConnexities{
    13,
    14,
    32,
    33,
    36,
    65,
    256,
    257,
    1000,
    -1,
    -31,
    -1000,
    std::numeric_limits<int>::max(),
    std::numeric_limits<int>::min()};

/// The neighbourhood of a number, which may lie outside the table.
inline connexity::eConnexityType Shape(int number)
{
    return static_cast<connexity::eConnexityType>(number);
}

/// Calls @p test with each element type as a template argument.
template <class Test>
void ForEachElement(Test && test)
{
    test.template operator()<uchar>();
    test.template operator()<ushort>();
    test.template operator()<short>();
    test.template operator()<int>();
    test.template operator()<float>();
    test.template operator()<double>();
}

/// Calls @p test with each pixel vector of element type @p T as a template argument.
template <class T, class Test>
void ForEachVector(Test && test)
{
    test.template operator()<cv::Vec<T, 2>>();
    test.template operator()<cv::Vec<T, 3>>();
    test.template operator()<cv::Vec<T, 4>>();
}

/// The depths that OpenCV's morphology takes.
inline constexpr std::array kMorphologyDepths{CV_8U, CV_16U, CV_16S, CV_32F, CV_64F};

/// A line for SCOPED_TRACE.
inline std::string Case(int imageType, cv::Size size, int connexity)
{
    return cv::typeToString(imageType) + ", rows " + std::to_string(size.height) + ", columns " +
           std::to_string(size.width) + ", connexity " + std::to_string(connexity);
}

} // namespace morvane::tests
