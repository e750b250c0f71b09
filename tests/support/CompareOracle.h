/// @file
/// The comparison of images pixel by pixel, in its plainest form, and one call for all forms of its operands.
#pragma once

#include <opencv2/core.hpp>

#include <cstdint>
#include <string>
#include <variant>

namespace morvane::tests
{

/// What an image is compared with.
using RightOperand = std::variant<cv::Mat, double>;
/// What the output takes.
using Selected = std::variant<cv::Mat, cv::Scalar>;

/// The arguments of one comparison, the output aside.
struct Comparison
{
    cv::Mat left;
    int code = 0;
    RightOperand right;
    Selected whenTrue;
    Selected whenFalse;
};

/// Calls the overload of common::ImageCompare() that the operands ask for.
[[nodiscard]] bool CallImageCompare(Comparison const & comparison, cv::Mat & output);

/// What @p output must hold afterwards. Pixel number y * cols + x of each image meets the same number of the others.
[[nodiscard]] cv::Mat OracleCompare(Comparison const & comparison, cv::Mat const & output);

/// Cuts towards zero to 32 bits; what does not fit is the smallest `int`.
[[nodiscard]] std::int64_t OracleCut(double value);

/// The element of @p depth with the low bits of @p value.
[[nodiscard]] double OracleLowBits(std::int64_t value, int depth);

/// The element of @p depth that stands for @p value: cut for integers, plain for floating point.
[[nodiscard]] double OracleElement(double value, int depth);

/// A line for SCOPED_TRACE.
[[nodiscard]] std::string Describe(Comparison const & comparison, cv::Mat const & output);

} // namespace morvane::tests
